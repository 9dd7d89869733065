#pragma once

#include <QString>
#include <QUrl>

#include <memory>

/// A small web site on a loopback port, served from threads of its own.
class PageServer
{
public:
    PageServer();
    ~PageServer();
    PageServer(const PageServer &) = delete;
    PageServer &operator=(const PageServer &) = delete;

    /// One for all tests: its end waits for connections that the browser opened in advance.
    static PageServer &shared();

    QUrl url(const QString &path) const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
