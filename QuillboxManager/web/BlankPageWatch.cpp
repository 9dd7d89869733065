#include "web/BlankPageWatch.h"

#include <QPointer>
#include <QWebEnginePage>
#include <QWebEngineScript>

namespace
{
constexpr std::chrono::seconds AnswerTime{2};

QString question()
{
    return QStringLiteral("(() => {"
                          "const body = document.body;"
                          "if (!body) return false;"
                          "if (body.tagName === 'FRAMESET' || (body.innerText || '').trim()) return true;"
                          "return !!body.querySelector('input,button,img,svg,canvas,video,iframe,object,embed');"
                          "})()");
}
} // namespace

BlankPageWatch::BlankPageWatch(QWebEnginePage *watched) : page(watched)
{
    patienceTimer.setSingleShot(true);
    answerTimer.setSingleShot(true);
    connect(&patienceTimer, &QTimer::timeout, this, &BlankPageWatch::timeIsUp);
    connect(&answerTimer, &QTimer::timeout, this, [this] {
        end();
        Q_EMIT blank();
    });
}

void BlankPageWatch::begin(std::chrono::milliseconds patience)
{
    if (!patienceTimer.isActive() && !answerTimer.isActive())
        patienceTimer.start(patience);
}

void BlankPageWatch::look()
{
    if (!patienceTimer.isActive())
        return;
    ask([this, asked = round](bool shown) {
        if (shown && asked == round)
            end();
    });
}

void BlankPageWatch::end()
{
    ++round;
    patienceTimer.stop();
    answerTimer.stop();
}

void BlankPageWatch::timeIsUp()
{
    answerTimer.start(AnswerTime); // a busy page gives no answer at all
    ask([this, asked = round](bool shown) {
        if (asked != round)
            return;
        end();
        if (!shown)
            Q_EMIT blank();
    });
}

void BlankPageWatch::ask(std::function<void(bool)> then)
{
    page->runJavaScript(question(), QWebEngineScript::ApplicationWorld,
                        [guard = QPointer<BlankPageWatch>(this), then = std::move(then)](const QVariant &shown) {
                            if (guard)
                                then(shown.toBool());
                        });
}
