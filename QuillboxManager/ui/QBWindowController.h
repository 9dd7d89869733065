#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

/// The life every window controller shares: the window is made from its form on first use and belongs to the
/// controller. Main thread. A controller may be destroyed at any moment; its window goes with it and late results are
/// dropped, because background calls carry the controller as their context.
class QBWindowController : public QObject
{
    Q_OBJECT
public:
    explicit QBWindowController(QObject *parent = nullptr);
    ~QBWindowController() override;

    /// The window, made on first use.
    QWidget *window();
    bool isWindowLoaded() const { return loaded; }
    bool isVisible() const;

    /// Shows the window, raises it and makes it the active one.
    virtual void showWindow();
    /// Hides the window without asking `windowShouldClose`.
    void close();
    void center();

protected:
    /// Makes the window; the base class takes it over.
    virtual QWidget *loadWindow() = 0;
    /// Runs once, right after `loadWindow`; the window is dressed by then (see StyleKit::dressWindow) and its controls
    /// have their fonts.
    virtual void windowDidLoad() {}
    /// May the user resize, zoom and miniaturise the window? Asked once, before `windowDidLoad`.
    virtual bool isResizable() const { return false; }
    /// The user wants the window closed. False keeps it open.
    virtual bool windowShouldClose() { return true; }
    /// The user pressed Escape and no control wanted the key. True when that meant something here.
    virtual bool escapePressed() { return false; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool answerClose(QEvent *event);

    std::unique_ptr<QWidget> widget;
    bool loaded = false;
};
