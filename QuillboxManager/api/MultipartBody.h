#pragma once

#include "api/ByteSource.h"

#include <QByteArray>

/// An upload's body: a part with parameters, a part with a document's contents, both without headers of their own.
class MultipartBody : public ByteSource
{
public:
    /// `contents` outlives it.
    MultipartBody(const QByteArray &boundary, const QByteArray &parameters, ByteSource &contents);

    static QByteArray contentType(const QByteArray &boundary);

    qint64 size() const override { return head.size() + contentsSize + tail.size(); }
    qint64 readAt(qint64 offset, char *into, qint64 most) override;

private:
    const QByteArray head;
    const QByteArray tail;
    ByteSource &contents;
    const qint64 contentsSize;
};
