#pragma once

#include <QProgressBar>

/// A slim bar in the accent colour that fills from the leading side. Says its value to screen readers; shows no text.
class UpdateProgressBar : public QProgressBar
{
    Q_OBJECT
public:
    explicit UpdateProgressBar(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
};
