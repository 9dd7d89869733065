#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <memory>
#include <mutex>
#include <optional>

namespace documentserver
{

/// Every setting of the server, complete: what a scenario does not name has its default. A value, safe to share.
class Scenario
{
public:
    Scenario(); ///< all defaults

    /// The defaults with the given settings over them; nothing and a text in *error on unknown names or wrong types.
    static std::optional<Scenario> fromJson(const QJsonObject &given, QString *error);

    /// Settings by their path, as "lock.after". The path must exist in the defaults.
    bool flag(const char *path) const { return value(path).toBool(); }
    qint64 number(const char *path) const { return static_cast<qint64>(value(path).toDouble()); }
    QString text(const char *path) const { return value(path).toString(); }
    QJsonObject object(const char *path) const { return value(path).toObject(); }
    QJsonArray array(const char *path) const { return value(path).toArray(); }
    QJsonValue value(const char *path) const;

private:
    QJsonObject settings;
};

using ScenarioPointer = std::shared_ptr<const Scenario>;

/// The scenario in force: the file's, read again whenever it changed. A file that cannot be read leaves the last good
/// one in force and is reported once on standard error. Any thread.
class ScenarioSource
{
public:
    /// Reads the file; empty means defaults. False with a text in *error when it is not acceptable.
    bool open(const QString &file, QString *error);
    ScenarioPointer current();
    bool replace(const QJsonObject &given, QString *error);

private:
    bool read(QString *error);

    std::mutex mutex;
    QString path;
    QByteArray seen;
    ScenarioPointer scenario = std::make_shared<const Scenario>();
};

} // namespace documentserver
