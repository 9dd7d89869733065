#pragma once

#include <QIconEngine>
#include <QSharedPointer>

class QSvgRenderer;

/// An icon that renders its drawing at exactly the pixels asked for, so that it is sharp at every scale.
class SvgIconEngine : public QIconEngine
{
public:
    explicit SvgIconEngine(const QString &path);

    bool isValid() const;
    QSize ownSize() const;

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QIconEngine *clone() const override;
    bool isNull() override { return !isValid(); }

private:
    const QSharedPointer<QSvgRenderer> drawing;
};
