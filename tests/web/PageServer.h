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

    QUrl url(const QString &path) const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
