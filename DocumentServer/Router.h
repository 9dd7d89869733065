#pragma once

#include "CallTable.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <deque>
#include <mutex>

namespace documentserver
{

/// Finds the call that an address names, checks token and body, and turns what happens into a reply. Any thread; the
/// router must outlive its receivers.
class Router
{
public:
    explicit Router(Services &all) : services(all), table(makeCallTable(all)) {}

    /// Never null: also what is going to be refused has a body to be read.
    std::unique_ptr<BodyReceiver> receive(const RequestHead &head);

    QStringList calls() const;
    void clearCalls();

private:
    friend class CollectingReceiver;

    std::unique_ptr<BodyReceiver> receiver(const RequestHead &head, const QString &name, Call *call);
    /// The call's entry, once the token is found good.
    const CallEntry &admit(const QString &name, Call *call);
    Reply answer(const QString &name, Call *call);
    bool answersWithArray(const QString &name) const;
    void remember(const QString &name);

    Services &services;
    CallTable table;
    mutable std::mutex mutex;
    std::deque<QString> seen;
};

} // namespace documentserver
