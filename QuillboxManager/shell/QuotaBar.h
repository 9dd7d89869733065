#pragma once

#include <QColor>
#include <QProgressBar>

class Branding;

/// A slim bar from 0 to 100 in the accent colour.
class QuotaBar : public QProgressBar
{
    Q_OBJECT
public:
    explicit QuotaBar(QWidget *parent = nullptr);

    void applyBranding(const Branding &branding);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor accent;
};
