// The least a Qt Widgets program can be: two fields and two buttons. Start-up is measured against it.
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QDialog dialog;
    QFormLayout layout(&dialog);
    QLineEdit address;
    QLineEdit port;
    QDialogButtonBox buttons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    layout.addRow(QStringLiteral("Address"), &address);
    layout.addRow(QStringLiteral("Port"), &port);
    layout.addRow(&buttons);
    dialog.show();
    return application.exec();
}
