#include "ui/QBAlertViewController.h"

#include "ui/StyleKit.h"
#include "ui_QBAlertViewController.h"

QBAlertViewController::QBAlertViewController(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::QBAlertViewController>())
{
    ui->setupUi(this);
    // The code is a mark to read out to support, not something to press.
    ui->errorCodeBtn->setAttribute(Qt::WA_TransparentForMouseEvents);
    ui->errorCodeBtn->setTextColor(StyleKit::statusColor());
    setCheckBoxTitle({});
}

QBAlertViewController::~QBAlertViewController() = default;

void QBAlertViewController::setInformationText(const QString &text)
{
    ui->informationText->setText(text);
    ui->informationText->setVisible(!text.isEmpty());
}

void QBAlertViewController::setErrorCodeTitle(const QString &title)
{
    ui->errorCodeBtn->setText(title);
    ui->errorCodeBtn->setAccessibleName(title);
}

void QBAlertViewController::setCheckBoxTitle(const QString &title)
{
    ui->checkBoxBtn->setText(title);
    ui->checkBoxBtn->setAccessibleName(title);
    ui->checkBoxBtn->setVisible(!title.isNull());
}

bool QBAlertViewController::isCheckBoxTicked() const
{
    return ui->checkBoxBtn->isChecked();
}
