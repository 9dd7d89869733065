#pragma once

#include <QObject>

/// Lets tests find controls from outside: while QUILLBOX_TEST_IDS is 1 every named widget carries "#" + objectName as
/// its accessible description. Main thread.
class TestIdentifiers : public QObject
{
    Q_OBJECT
public:
    /// Installs the application-wide filter when the environment asks for it; does nothing otherwise.
    static void installIfWanted();
    static bool wanted();

    explicit TestIdentifiers(QObject *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};
