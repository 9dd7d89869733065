#include "web/ScriptBridge.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QUuid>

namespace
{
constexpr qsizetype LongestLine = 1 << 20;

QString readyWord()
{
    return QStringLiteral("ready");
}
} // namespace

ScriptBridge::ScriptBridge() : prefix(QUuid::createUuid().toString()) {}

bool ScriptBridge::addHandler(const QString &name)
{
    static const QRegularExpression identifier(QStringLiteral("\\A[A-Za-z_$][A-Za-z0-9_$]*\\z"));
    if (!identifier.match(name).hasMatch() || handlers.contains(name))
        return false;
    handlers.append(name);
    return true;
}

QString ScriptBridge::handlerScript() const
{
    const QByteArray names = QJsonDocument(QJsonArray::fromStringList(handlers)).toJson(QJsonDocument::Compact);
    // The functions are fetched before the page can replace them.
    return QStringLiteral("(() => {"
                          "const line = console.log.bind(console), text = JSON.stringify, handlers = {};"
                          "for (const name of %1)"
                          "  handlers[name] = Object.freeze({postMessage(value) {"
                          "    line('%2' + text([name, value === undefined ? null : value]));"
                          "  }});"
                          "const webkit = window.webkit || {};"
                          "webkit.messageHandlers = Object.freeze(handlers);"
                          "window.webkit = webkit;"
                          "})();")
        .arg(QString::fromUtf8(names), prefix);
}

QString ScriptBridge::readyScript() const
{
    return QStringLiteral("console.log('%1%2');").arg(prefix, readyWord());
}

std::optional<ScriptBridge::Line> ScriptBridge::read(const QString &consoleLine) const
{
    if (consoleLine.size() > LongestLine || !consoleLine.startsWith(prefix))
        return std::nullopt;
    const QString content = consoleLine.mid(prefix.size());
    if (content == readyWord())
        return Line{.isReady = true, .handler = {}, .body = {}};
    const QJsonArray message = QJsonDocument::fromJson(content.toUtf8()).array();
    const QString handler = message.at(0).toString();
    if (message.size() != 2 || !handlers.contains(handler))
        return std::nullopt;
    const QJsonValue body = message.at(1);
    return Line{.isReady = false, .handler = handler, .body = body.isNull() ? QVariant() : body.toVariant()};
}
