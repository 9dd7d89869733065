#pragma once

#include <QImage>
#include <QJsonObject>
#include <QString>

/// The picture code of a server's reply. A value; any thread.
struct PictureCode {
    QImage image; ///< null when the reply holds no usable picture
    QString uuid; ///< names the picture at the server

    /// Accepts PNG, JPEG, GIF and BMP of at most 2000 × 2000 points; characters outside Base64 are skipped.
    static PictureCode of(const QJsonObject &reply);
};
