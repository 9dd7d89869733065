#include "Scenario.h"

#include "PrivateFile.h"
#include "ScenarioDefaults.h"

#include <QJsonDocument>
#include <QStringList>

#include <cmath>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 largestScenario = 1024 * 1024;
constexpr double largestNumber = 1e9;
constexpr double largestSize = 1e15;

/// Objects whose members the scenario may choose freely.
bool isOpen(const QString &path)
{
    return path == "oem"_L1 || path == "fail"_L1 || path == "cut"_L1;
}

/// Values that may have another type than their default.
bool isAcceptable(const QString &path, const QJsonValue &usual, const QJsonValue &given)
{
    if (path == "thirdauth"_L1)
        return given.isNull() || given.isObject();
    if (path == "server_version"_L1)
        return given.isString() || given.isDouble();
    if (given.type() != usual.type())
        return false;
    const double number = given.toDouble();
    const double largest = path.startsWith("documents."_L1) ? largestSize : largestNumber;
    return !given.isDouble() || (number >= 0 && number <= largest && number == std::floor(number));
}

bool merge(QJsonObject *settings, const QJsonObject &given, const QString &prefix, QString *error)
{
    for (auto it = given.begin(); it != given.end(); ++it) {
        const QString path = prefix + it.key();
        const QJsonValue usual = settings->value(it.key());
        const bool free = isOpen(prefix.chopped(prefix.isEmpty() ? 0 : 1));
        if (!free && (usual.isUndefined() || !isAcceptable(path, usual, it.value()))) {
            *error = usual.isUndefined() ? u"unknown setting \"%1\""_s.arg(path)
                                         : u"setting \"%1\" has the wrong type or range"_s.arg(path);
            return false;
        }
        QJsonValue merged = it.value();
        if (!free && usual.isObject()) {
            QJsonObject inner = usual.toObject();
            if (!merge(&inner, it.value().toObject(), path + u'.', error))
                return false;
            merged = inner;
        }
        settings->insert(it.key(), merged);
    }
    return true;
}
} // namespace

Scenario::Scenario() : settings(scenarioDefaults()) {}

std::optional<Scenario> Scenario::fromJson(const QJsonObject &given, QString *error)
{
    Scenario scenario;
    if (!merge(&scenario.settings, given, QString(), error))
        return std::nullopt;
    return scenario;
}

QJsonValue Scenario::value(const char *path) const
{
    QJsonValue value = settings;
    const QStringList names = QString::fromLatin1(path).split(u'.');
    for (const QString &name : names)
        value = value.toObject().value(name);
    Q_ASSERT(!value.isUndefined());
    return value;
}

bool ScenarioSource::open(const QString &file, QString *error)
{
    const std::lock_guard lock(mutex);
    path = file;
    scenario = std::make_shared<const Scenario>();
    seen = fileState(path);
    return path.isEmpty() || read(error);
}

bool ScenarioSource::read(QString *error)
{
    const auto bytes = readFile(path, largestScenario, error);
    if (!bytes)
        return false;
    QJsonParseError problem;
    const QJsonDocument document = QJsonDocument::fromJson(*bytes, &problem);
    QString text = document.isObject() ? QString() : problem.errorString();
    const auto made = document.isObject() ? Scenario::fromJson(document.object(), &text) : std::nullopt;
    if (made)
        scenario = std::make_shared<const Scenario>(*made);
    else
        *error = u"%1 is not a scenario: %2"_s.arg(path, text);
    return made.has_value();
}

ScenarioPointer ScenarioSource::current()
{
    const std::lock_guard lock(mutex);
    const QByteArray state = path.isEmpty() ? seen : fileState(path);
    if (state != seen) {
        seen = state;
        QString error;
        if (!read(&error))
            std::fprintf(stderr, "the scenario stays as it was: %s\n", qPrintable(error));
    }
    return scenario;
}

bool ScenarioSource::replace(const QJsonObject &given, QString *error)
{
    QString problem;
    const auto made = Scenario::fromJson(given, &problem);
    if (error)
        *error = problem;
    if (!made)
        return false;
    const std::lock_guard lock(mutex);
    scenario = std::make_shared<const Scenario>(*made);
    return true;
}

} // namespace documentserver
