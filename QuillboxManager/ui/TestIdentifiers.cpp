#include "ui/TestIdentifiers.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

TestIdentifiers::TestIdentifiers(QObject *parent) : QObject(parent) {}

bool TestIdentifiers::wanted()
{
    return qgetenv("QUILLBOX_TEST_IDS") == "1";
}

void TestIdentifiers::installIfWanted()
{
    if (wanted())
        qApp->installEventFilter(new TestIdentifiers(qApp));
}

bool TestIdentifiers::eventFilter(QObject *watched, QEvent *event)
{
    // Polish comes once, before the first show; Show catches a name given later.
    if ((event->type() == QEvent::Polish || event->type() == QEvent::Show) && watched->isWidgetType() &&
        !watched->objectName().isEmpty()) {
        auto *widget = static_cast<QWidget *>(watched);
        const QString identifier = QLatin1Char('#') + widget->objectName();
        if (widget->accessibleDescription() != identifier)
            widget->setAccessibleDescription(identifier);
    }
    return QObject::eventFilter(watched, event);
}
