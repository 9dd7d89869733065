#pragma once

#include "platform/WebBrowser.h"

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <utility>

namespace testing
{

/// A browser without pages: what is asked of it is recorded, what a page would do is done by the test through the
/// signals (`Q_EMIT browser->willSendRequest(…)`). Scripts are answered with `answer` in the next turn of the event
/// loop, or kept in `asked` until the test calls `answerAll` when `answersLater` is set.
class FakeWebBrowser final : public platform::WebBrowser
{
public:
    struct Question {
        QString script;
        std::function<void(const QString &)> then;
    };

    QWidget *view() override
    {
        if (!widget)
            widget = new QWidget;
        return widget;
    }
    void load(const QUrl &url) override
    {
        loaded.append(url);
        current = url;
        Q_EMIT navigationStarted();
    }
    void reload() override
    {
        ++reloads;
        Q_EMIT navigationStarted();
    }
    void stop() override { ++stops; }
    QUrl url() const override { return current; }
    void evaluate(const QString &script, std::function<void(const QString &)> then) override
    {
        scripts.append(script);
        if (answersLater)
            asked.append({script, std::move(then)});
        else
            QMetaObject::invokeMethod(
                this, [then = std::move(then), value = answer] { then(value); }, Qt::QueuedConnection);
    }
    void addScriptMessageHandler(const QString &name) override { handlers.append(name); }

    void answerAll(const QString &value)
    {
        for (const Question &question : std::exchange(asked, {}))
            question.then(value);
    }

    ~FakeWebBrowser() override { delete widget.data(); }

    QList<QUrl> loaded;
    QStringList scripts;
    QStringList handlers;
    QList<Question> asked;
    QUrl current;
    QString answer;
    bool answersLater = false;
    int reloads = 0;
    int stops = 0;
    QPointer<QWidget> widget;
};

/// Makes fake browsers and remembers the newest, null once it is gone.
struct FakeWebBrowsers {
    QPointer<FakeWebBrowser> newest;
    int made = 0;
    QString error; ///< set: no browser can be had
    bool answersLater = false;

    platform::WebBrowserMaker maker()
    {
        return [this](QString *text) -> std::unique_ptr<platform::WebBrowser> {
            if (!error.isEmpty()) {
                if (text)
                    *text = error;
                return nullptr;
            }
            ++made;
            auto browser = std::make_unique<FakeWebBrowser>();
            browser->answersLater = answersLater;
            newest = browser.get();
            return browser;
        };
    }
};

} // namespace testing
