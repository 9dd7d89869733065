#pragma once

#include "CallTable.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrlQuery>

#include <deque>
#include <mutex>

namespace documentserver
{

/// What goes back over the wire.
struct Reply {
    int status = 200;
    QByteArray body;
    QByteArray type = QByteArrayLiteral("application/json; charset=utf-8");
};

/// The reply that tells an error.
Reply replyFor(const ApiError &error);

/// Finds the call that an address names, checks token and body, and turns what happens into a reply. Any thread.
class Router
{
public:
    explicit Router(Services &all) : services(all), table(makeCallTable(all)) {}

    /// `path` without query, `query` without "?", both as they came.
    Reply handle(const QString &path, const QByteArray &query, const QByteArray &body);

    QStringList calls() const;
    void clearCalls();

private:
    QJsonObject answer(Call *call, const QString &name);
    void remember(const QString &name);

    Services &services;
    CallTable table;
    mutable std::mutex mutex;
    std::deque<QString> seen;
};

} // namespace documentserver
