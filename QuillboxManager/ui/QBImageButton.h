#pragma once

#include "ui/QBBaseButton.h"

#include <QIcon>
#include <QPixmap>

/// A picture that can be pressed, such as the picture code. The picture keeps its proportions and is centred.
class QBImageButton : public QBBaseButton
{
    Q_OBJECT
public:
    explicit QBImageButton(QWidget *parent = nullptr);

    /// A null picture empties the button.
    void setImage(const QImage &image);
    QImage image() const { return picture; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QRectF imageRect() const;

    QImage picture;
};
