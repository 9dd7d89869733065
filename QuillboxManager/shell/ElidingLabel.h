#pragma once

#include <QLabel>

/// One line of text that ends in dots where it does not fit; the tool tip then holds all of it. Spoken whole.
class ElidingLabel : public QLabel
{
    Q_OBJECT
public:
    explicit ElidingLabel(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
