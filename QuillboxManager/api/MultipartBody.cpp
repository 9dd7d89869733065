#include "api/MultipartBody.h"

#include <algorithm>
#include <cstring>

namespace
{

qint64 copy(const QByteArray &from, qint64 offset, char *into, qint64 most)
{
    const qint64 count = std::clamp<qint64>(from.size() - offset, 0, most);
    std::memcpy(into, from.constData() + offset, static_cast<size_t>(count));
    return count;
}

} // namespace

MultipartBody::MultipartBody(const QByteArray &boundary, const QByteArray &parameters, ByteSource &documentContents)
    : head("--" + boundary + "\r\n\r\n" + parameters + "\r\n--" + boundary + "\r\n\r\n"),
      tail("\r\n--" + boundary + "--"), contents(documentContents), contentsSize(documentContents.size())
{
}

QByteArray MultipartBody::contentType(const QByteArray &boundary)
{
    return "multipart/form-data;boundary=" + boundary;
}

qint64 MultipartBody::readAt(qint64 offset, char *into, qint64 most)
{
    if (offset < head.size())
        return copy(head, offset, into, most);
    const qint64 inContents = offset - head.size();
    if (inContents < contentsSize)
        return contents.readAt(inContents, into, std::min(most, contentsSize - inContents));
    return copy(tail, inContents - contentsSize, into, most);
}
