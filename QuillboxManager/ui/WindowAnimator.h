#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

/// Hands the place on the screen over from one window to the next with a flip. Main thread. The new window is real and
/// usable from the first moment; the flip is painted over it. Windows may be closed or destroyed, and `flip` called
/// again, at any time.
class WindowAnimator : public QObject
{
    Q_OBJECT
public:
    explicit WindowAnimator(QObject *parent = nullptr);
    ~WindowAnimator() override;

    /// Direction of the flips to come: right when going away from the login window, left when coming back.
    void setFlipRight(bool right) { flipRight = right; }
    bool isFlipRight() const { return flipRight; }

    /// Hides `from` and shows `to` centred on the same place. Without a visible `from` the new window is just shown,
    /// centred on the screen; without `to` nothing happens. Where the user wants no motion the windows change at once.
    void flip(QWidget *from, QWidget *to);
    bool isFlipping() const { return !cover.isNull(); }

private:
    void finish();

    bool flipRight = true;
    QPointer<QWidget> cover;
};
