#pragma once

#include <QByteArray>
#include <QString>

namespace documentserver
{

/// The characters a picture code is made of: none that is easily taken for another.
QString pictureCodeAlphabet();

/// Draws the text, made of that alphabet, as a distorted picture with noise. Returns PNG bytes.
QByteArray drawPictureCode(const QString &text);

} // namespace documentserver
