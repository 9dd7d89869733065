#include "channel/SocketMessage.h"

#include <QJsonDocument>
#include <QJsonObject>

QString SocketMessage::appEvent()
{
    return QStringLiteral("AppEvent");
}

QString SocketMessage::rightService()
{
    return QStringLiteral("RightService");
}

QString SocketMessage::statusBarSearching()
{
    return QStringLiteral("StatusBarSearching");
}

QByteArray SocketMessage::bytes() const
{
    return QJsonDocument(QJsonObject{{key, text}}).toJson(QJsonDocument::Indented).trimmed();
}

std::optional<SocketMessage> SocketMessage::parse(const QByteArray &bytes)
{
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    if (object.size() != 1 || !object.begin().value().isString())
        return std::nullopt;
    return SocketMessage{object.begin().key(), object.begin().value().toString()};
}

QList<SocketMessage> SocketMessageSplitter::feed(const QByteArray &bytes)
{
    QList<SocketMessage> complete;
    for (const char byte : bytes) {
        if (!take(byte))
            continue;
        if (const auto parsed = SocketMessage::parse(message))
            complete.append(*parsed);
        else
            ++skippedCount;
        message.clear();
        state = State::Outside;
    }
    return complete;
}

bool SocketMessageSplitter::take(char byte)
{
    const bool blank = byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
    if (state == State::Outside || state == State::Garbage) {
        if (byte == '{')
            begin();
        else if (!blank && state == State::Outside)
            skip(byte);
        return false;
    }
    if (message.size() >= maximumBytes) {
        skip(byte);
        return false;
    }
    message.append(byte);
    if (state == State::InKey)
        return takeInString(byte, State::AfterKey);
    if (state == State::InText)
        return takeInString(byte, State::AfterText);
    if (blank)
        return false;
    if (state == State::AfterText && byte == '}')
        return true;
    expect(byte,
           state == State::AfterKey    ? ':'
           : state == State::AfterText ? '}'
                                       : '"',
           static_cast<State>(static_cast<int>(state) + 1));
    return false;
}

bool SocketMessageSplitter::takeInString(char byte, State after)
{
    if (static_cast<unsigned char>(byte) < 0x20)
        skip(byte); // JSON has no bare control characters in texts: this one was cut off
    else if (escaped)
        escaped = false;
    else if (byte == '\\')
        escaped = true;
    else if (byte == '"')
        state = after;
    return false;
}

void SocketMessageSplitter::expect(char byte, char wanted, State next)
{
    if (byte == wanted)
        state = next;
    else
        skip(byte);
}

/// The broken message is given up; a brace may already be the beginning of the next one.
void SocketMessageSplitter::skip(char byte)
{
    ++skippedCount;
    message.clear();
    escaped = false;
    state = State::Garbage;
    if (byte == '{')
        begin();
}

void SocketMessageSplitter::begin()
{
    message = QByteArrayLiteral("{");
    state = State::BeforeKey;
}
