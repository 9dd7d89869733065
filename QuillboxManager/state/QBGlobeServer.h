#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

/// The document server the client talks to. Null texts: not known yet. A value.
struct QBGlobeServer {
    QString address;              ///< host name or IP address as the user typed it
    QString authPort;             ///< port of the API service, kept as text
    std::optional<bool> useHttps; ///< absent counts as plain HTTP

    static QBGlobeServer globeServerWithDic(const QVariantMap &dictionary) { return initWithDic(dictionary); }
    /// Missing entries and entries of another type stay unknown.
    static QBGlobeServer initWithDic(const QVariantMap &dictionary);
    /// Holds what is known only.
    QVariantMap descriptor() const;
};
