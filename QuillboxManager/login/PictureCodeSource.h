#pragma once

#include "api/QBNetworking.h"

#include <QImage>
#include <QObject>

/// Fetches picture codes and remembers which one is on show. Main thread; the calls run on the background pool and only
/// the newest one's answer counts. The client must outlive the calls.
class PictureCodeSource final : public QObject
{
    Q_OBJECT
public:
    explicit PictureCodeSource(QBNetworking &networking);

    /// Names the newest picture at the server; null before the first.
    QString uuid() const { return shown; }
    /// A fresh picture.
    void fetch();
    /// Another picture in place of the one on show, when the server can be reached.
    void refresh();

Q_SIGNALS:
    /// Null when the server sent no usable picture.
    void arrived(const QImage &picture);
    void unreachable();

private:
    void fetchInPlaceOf(const QString &previous);

    QBNetworking &networking;
    QString shown;
    int number = 0; ///< of the newest call
};
