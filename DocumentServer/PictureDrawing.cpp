#include "PictureDrawing.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRandomGenerator>
#include <QStringList>

#include <array>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr int pictureWidth = 200;
constexpr int pictureHeight = 72;

/// Strokes on a grid 4 wide and 6 high: each pair of digits is a point x y, "/" lifts the pen.
constexpr std::array glyphs = std::to_array<std::pair<char16_t, const char *>>({
    {u'A', "06 20 46/14 34"},
    {u'B', "00 06 36 45 44 33 03/33 42 41 30 00"},
    {u'C', "41 30 10 01 05 16 36 45"},
    {u'D', "00 06 26 44 42 20 00"},
    {u'E', "40 00 06 46/03 33"},
    {u'F', "40 00 06/03 33"},
    {u'G', "41 30 10 01 05 16 36 45 43 23"},
    {u'H', "00 06/40 46/03 43"},
    {u'J', "10 40/30 35 26 16 05"},
    {u'K', "00 06/40 03 46"},
    {u'L', "00 06 46"},
    {u'M', "06 00 23 40 46"},
    {u'N', "06 00 46 40"},
    {u'P', "06 00 30 41 42 33 03"},
    {u'Q', "10 01 05 16 36 45 41 30 10/24 46"},
    {u'R', "06 00 30 41 42 33 03/23 46"},
    {u'S', "41 30 10 01 02 13 33 44 45 36 16 05"},
    {u'T', "00 40/20 26"},
    {u'U', "00 05 16 36 45 40"},
    {u'V', "00 26 40"},
    {u'W', "00 16 22 36 40"},
    {u'X', "00 46/40 06"},
    {u'Y', "00 23 40/23 26"},
    {u'Z', "00 40 06 46"},
    {u'2', "01 10 30 41 42 06 46"},
    {u'3', "00 40 23 33 44 45 36 16 05"},
    {u'4', "36 30 04 44"},
    {u'5', "40 00 02 32 43 45 36 06"},
    {u'6', "40 20 02 05 16 36 45 44 33 03"},
    {u'7', "00 40 16"},
    {u'8', "13 02 01 10 30 41 42 33 13 04 05 16 36 45 44 33"},
    {u'9', "43 13 02 01 10 30 41 44 26 06"},
});

double between(double low, double high)
{
    return low + QRandomGenerator::system()->generateDouble() * (high - low);
}

QPainterPath strokes(QChar character)
{
    QPainterPath path;
    for (const auto &[known, text] : glyphs) {
        if (character != known)
            continue;
        const QStringList lines = QString::fromLatin1(text).split(u'/');
        for (const QString &line : lines) {
            const QStringList points = line.split(u' ');
            for (qsizetype i = 0; i < points.size(); ++i) {
                const QPointF point(points[i][0].digitValue(), points[i][1].digitValue());
                i == 0 ? path.moveTo(point) : path.lineTo(point);
            }
        }
    }
    return path;
}

/// Lets every point of the path swing along a wave, so that no line stays straight.
QPainterPath bent(const QPainterPath &path, double phase)
{
    QPainterPath out;
    const auto move = [phase](QPointF point) {
        return point + QPointF(2.5 * std::sin(point.y() / 11 + phase), 4 * std::sin(point.x() / 23 + phase));
    };
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPointF end = path.elementAt(i);
        if (path.elementAt(i).isMoveTo()) {
            out.moveTo(move(end));
            continue;
        }
        const QPointF start = path.elementAt(i - 1);
        for (int part = 1; part <= 8; ++part)
            out.lineTo(move(start + (end - start) * (part / 8.0)));
    }
    return out;
}

void drawCharacters(QPainter &painter, const QString &text)
{
    const double phase = between(0, 6.28);
    const double cell = double(pictureWidth - 24) / double(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        QTransform place;
        place.translate(12 + cell * (double(i) + 0.5), pictureHeight / 2.0 + between(-4, 4));
        place.rotate(between(-18, 18));
        place.scale(cell / 5.6 * between(0.85, 1.05), 7.4 * between(0.85, 1.05));
        place.translate(-2, -3);
        const QColor color = QColor::fromHsv(int(between(0, 359)), 200, 130);
        painter.setPen(QPen(color, between(3, 4.2), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(bent(place.map(strokes(text[i])), phase));
    }
}

void drawNoise(QPainter &painter)
{
    for (int i = 0; i < 5; ++i) {
        painter.setPen(QPen(QColor::fromHsv(int(between(0, 359)), 120, 170), 1.4));
        QPainterPath line(QPointF(0, between(0, pictureHeight)));
        line.cubicTo(between(40, 80), between(0, pictureHeight), between(110, 160), between(0, pictureHeight),
                     pictureWidth, between(0, pictureHeight));
        painter.drawPath(line);
    }
    for (int i = 0; i < 160; ++i) {
        painter.setPen(QPen(QColor::fromHsv(int(between(0, 359)), 90, 180), between(1, 2.2)));
        painter.drawPoint(QPointF(between(0, pictureWidth), between(0, pictureHeight)));
    }
}
} // namespace

QString pictureCodeAlphabet()
{
    QString alphabet;
    for (const auto &glyph : glyphs)
        alphabet.append(QChar(glyph.first));
    return alphabet;
}

QByteArray drawPictureCode(const QString &text)
{
    QImage image(pictureWidth, pictureHeight, QImage::Format_RGB32);
    image.fill(QColor(246, 247, 249));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawNoise(painter);
    drawCharacters(painter, text);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace documentserver
