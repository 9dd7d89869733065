#pragma once

#include "ApiError.h"
#include "Scenario.h"
#include "Sessions.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <functional>
#include <optional>

namespace documentserver
{

/// One request as the calls see it.
struct Call {
    QString service;
    QString method;
    QString token;     ///< of the address; empty without
    QString signature; ///< "sign" of the address; empty without
    QString userid;    ///< of the older addresses; empty without
    QString origin;    ///< how the client calls this server, as "http://127.0.0.1:8080"
    QByteArray page;   ///< origin of the page that sends the request; empty without
    QByteArray bytes;  ///< the body as it came
    QJsonObject body;  ///< empty when there is no body
    ScenarioPointer scenario;
    std::optional<Session> session; ///< set when the token is valid
};

/// Answers with the reply or throws ApiError.
using CallHandler = std::function<QJsonObject(const Call &)>;

// Characters at most.
constexpr qsizetype longestAccountName = 128; ///< also of what vouches for an account
constexpr qsizetype longestCiphertext = 1024;
constexpr qsizetype longestCode = 64;

// Readers of a body: each throws IllegalParameter, naming the member, when the value is missing or of another type.
QString requiredText(const QJsonObject &body, const char *member, qsizetype longest);
QString optionalText(const QJsonObject &body, const char *member, qsizetype longest); ///< absent: empty
QJsonObject requiredObject(const QJsonObject &body, const char *member);
QJsonObject optionalObject(const QJsonObject &body, const char *member); ///< absent: empty
/// A whole number from `low` to `high`, also written as text.
qint64 requiredNumber(const QJsonObject &body, const char *member, qint64 low, qint64 high);
/// 0, 1, false or true.
bool requiredFlag(const QJsonObject &body, const char *member);

} // namespace documentserver
