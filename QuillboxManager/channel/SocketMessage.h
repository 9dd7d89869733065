#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// One message between the manager and its companion: a JSON object with exactly one member, a text. A value.
struct SocketMessage {
    QString key;
    QString text;

    bool operator==(const SocketMessage &other) const = default;

    /// Pretty-printed UTF-8, without length or terminator.
    QByteArray bytes() const;
    /// Nothing for any other shape.
    static std::optional<SocketMessage> parse(const QByteArray &bytes);

    static QString appEvent();           ///< key: an address of the application's scheme was opened
    static QString rightService();       ///< key: text from the Services menu
    static QString statusBarSearching(); ///< key: text of the search field
};

/// Finds the messages in what a socket's reads bring, joined and cut at will. What is no message is skipped up to the
/// next opening brace; a message of more than `maximumBytes` counts as none. One thread at a time, one per connection.
class SocketMessageSplitter
{
public:
    static constexpr qsizetype maximumBytes = 1024 * 1024;

    /// The messages that `bytes` complete, in order.
    QList<SocketMessage> feed(const QByteArray &bytes);
    /// How many broken messages and stretches of garbage were skipped so far.
    qsizetype skipped() const { return skippedCount; }
    /// True while a message has begun and not ended.
    bool hasPartialMessage() const { return state != State::Outside && state != State::Garbage; }

private:
    enum class State { Outside, Garbage, BeforeKey, InKey, AfterKey, BeforeText, InText, AfterText };

    /// True when `byte` ends a message.
    bool take(char byte);
    bool takeInString(char byte, State after);
    void expect(char byte, char wanted, State next);
    void skip(char byte);
    void begin();

    State state = State::Outside;
    bool escaped = false;
    QByteArray message;
    qsizetype skippedCount = 0;
};
