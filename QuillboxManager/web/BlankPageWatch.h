#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

class QWebEnginePage;

/// Tells when a page has had nothing to look at for too long, whatever the reason: no answer, a script that never ends,
/// redirects without end, an empty page. Main thread.
class BlankPageWatch final : public QObject
{
    Q_OBJECT
public:
    /// The page must outlive the watch.
    explicit BlankPageWatch(QWebEnginePage *page);

    /// A page is on its way. The time runs from the first one after a page that could be seen.
    void begin(std::chrono::milliseconds patience);
    /// The document is there: looks whether it shows something.
    void look();
    void end();
    /// Does the page show something now? Answered later, once, unless the watch is gone by then.
    void ask(std::function<void(bool shown)> then);

Q_SIGNALS:
    void blank();

private:
    void timeIsUp();

    QWebEnginePage *const page;
    QTimer patienceTimer;
    QTimer answerTimer;
    int round = 0; ///< answers of earlier rounds are dropped
};
