#pragma once

#include <QString>
#include <QVariantMap>

/// The branding file "QBOEM" among the main bundle's resources. Nothing is cached: every call reads the file afresh, so
/// that a replaced file takes effect. Any thread.
class Branding
{
public:
    /// `path` null: the main bundle's file, which need not exist.
    explicit Branding(const QString &path = {});

    /// Text of the key; `fallback` when the file or the key is missing or is no text.
    QString value(const QString &key, const QString &fallback = {}) const;

    /// There is a value of any type.
    bool contains(const QString &key) const;

    /// Sets one key and writes the file back atomically. False, and no file made, when it cannot be read or written.
    bool setValue(const QString &key, const QString &value) const;

    QString themeColor() const;    ///< normal accent
    QString hoverColor() const;    ///< pointer over a button
    QString pushColor() const;     ///< button pressed
    QString disabledColor() const; ///< button disabled
    QString presetServer() const;  ///< "IPAddress", empty when none

private:
    QString path;
};
