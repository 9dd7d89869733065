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

QString escapeWord()
{
    return QStringLiteral("escape");
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
    // Listeners of the page that come after this one have their say too before the key counts as unwanted.
    return QStringLiteral("console.log('%1%2');"
                          "addEventListener('keydown', event => {"
                          "  if (event.key === 'Escape' && event.isTrusted && !event.isComposing)"
                          "    setTimeout(() => { if (!event.defaultPrevented) console.log('%1%3'); });"
                          "});")
        .arg(prefix, readyWord(), escapeWord());
}

std::optional<ScriptBridge::Line> ScriptBridge::read(const QString &consoleLine) const
{
    if (consoleLine.size() > LongestLine || !consoleLine.startsWith(prefix))
        return std::nullopt;
    const QString content = consoleLine.mid(prefix.size());
    if (content == readyWord())
        return Line{.kind = Line::Kind::Ready, .handler = {}, .body = {}};
    if (content == escapeWord())
        return Line{.kind = Line::Kind::Escape, .handler = {}, .body = {}};
    const QJsonArray message = QJsonDocument::fromJson(content.toUtf8()).array();
    const QString handler = message.at(0).toString();
    if (message.size() != 2 || !handlers.contains(handler))
        return std::nullopt;
    const QJsonValue body = message.at(1);
    return Line{.kind = Line::Kind::Message, .handler = handler, .body = body.isNull() ? QVariant() : body.toVariant()};
}
