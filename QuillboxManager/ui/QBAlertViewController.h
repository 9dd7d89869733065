#pragma once

#include <QWidget>

#include <memory>

namespace Ui
{
class QBAlertViewController;
}

/// Accessory panel of an error alert: recovery suggestion, error code and, where offered, the silencing check box.
class QBAlertViewController : public QWidget
{
    Q_OBJECT
public:
    explicit QBAlertViewController(QWidget *parent = nullptr);
    ~QBAlertViewController() override;

    void setInformationText(const QString &text);
    void setErrorCodeTitle(const QString &title);
    /// Null hides the check box.
    void setCheckBoxTitle(const QString &title);
    bool isCheckBoxTicked() const;

private:
    const std::unique_ptr<Ui::QBAlertViewController> ui;
};
