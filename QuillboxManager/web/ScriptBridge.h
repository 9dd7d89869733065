#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

/// The way from a page's scripts to the application: scripts of ours write lines with a prefix of their own to the
/// console, which the page object reads. A value; main thread.
class ScriptBridge
{
public:
    /// One line of a page.
    struct Line {
        enum class Kind {
            Ready,   ///< the document is there
            Escape,  ///< the key was pressed, and the page did nothing with it
            Message, ///< a handler was sent the body
        };

        Kind kind = Kind::Message;
        QString handler;
        QVariant body;
    };

    ScriptBridge();

    /// False, and nothing done, for a name that is no identifier or is there already.
    bool addHandler(const QString &name);
    /// To run before a page's own scripts, in their world: `window.webkit.messageHandlers`.
    QString handlerScript() const;
    /// To run when the document has been read, in a world of its own.
    QString readyScript() const;

    /// What a console line of the page means; none for the page's own lines, unknown handlers and lines beyond 1 MiB.
    std::optional<Line> read(const QString &consoleLine) const;

private:
    const QString prefix;
    QStringList handlers;
};
