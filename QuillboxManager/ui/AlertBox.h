#pragma once

#include <QList>
#include <QMessageBox>

/// A message box in the house look that can carry an accessory view below its texts and knows the order in which its
/// buttons were added. Texts are shown as they stand, never as markup. Main thread.
class AlertBox : public QMessageBox
{
    Q_OBJECT
public:
    AlertBox(Icon icon, const QString &message, const QString &informative);

    QPushButton *appendButton(const QString &title);
    /// Takes the view over.
    void setAccessoryView(QWidget *view);
    QWidget *accessoryView() const { return accessory; }

    /// Position of the button that was pressed; the last button's when the alert was left without one.
    int answeredButton() const;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void placeAccessory();

    QList<QAbstractButton *> buttonsInOrder;
    QWidget *accessory = nullptr;
};
