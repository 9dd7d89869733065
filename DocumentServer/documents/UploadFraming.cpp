#include "UploadFraming.h"

#include "DocumentServer/ApiError.h"

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype longestDescription = 64 * 1024;
constexpr qsizetype longestBoundary = 70;

[[noreturn]] void refuse(const char *where)
{
    throw ApiError{IllegalParameter, {}, u"upload: %1"_s.arg(QLatin1String(where)), {}};
}
} // namespace

UploadFraming::UploadFraming(const QByteArray &boundary, DescriptionTaker descriptionTaker, ContentTaker contentTaker)
    : opening("--" + boundary + "\r\n\r\n"), between("\r\n--" + boundary + "\r\n\r\n"),
      closing("\r\n--" + boundary + "--"), takeDescriptionText(std::move(descriptionTaker)),
      takeContentBytes(std::move(contentTaker))
{
}

void UploadFraming::take(const char *data, qint64 length)
{
    while (length > 0) {
        qint64 count = 0;
        switch (part) {
        case Part::Opening:
            count = takeExpected(opening, Part::Description, data, length);
            break;
        case Part::Description:
            count = takeDescription(data, length);
            break;
        case Part::Content:
            count = takeContent(data, length);
            break;
        case Part::Closing:
            count = takeExpected(closing, Part::End, data, length);
            break;
        case Part::End:
            count = takeEnd(data, length);
            break;
        }
        data += count;
        length -= count;
    }
}

qint64 UploadFraming::takeExpected(const QByteArray &expected, Part next, const char *data, qint64 length)
{
    const qint64 count = std::min<qint64>(length, expected.size() - matched);
    if (std::memcmp(expected.constData() + matched, data, static_cast<size_t>(count)) != 0)
        refuse(next == Part::End ? "more or fewer bytes than announced" : "no opening boundary");
    matched += count;
    if (matched == expected.size()) {
        part = next;
        matched = 0;
    }
    return count;
}

qint64 UploadFraming::takeDescription(const char *data, qint64 length)
{
    const qsizetype before = description.size();
    const qint64 room = longestDescription + between.size() - before;
    description.append(data, std::min(length, room));
    const qsizetype end = description.indexOf(between, std::max<qsizetype>(0, before - between.size() + 1));
    if (end < 0 && description.size() >= longestDescription + between.size())
        refuse("the description has no end");
    if (end < 0)
        return description.size() - before;
    const qint64 count = end + between.size() - before;
    description.truncate(end);
    remaining = takeDescriptionText(description);
    part = remaining > 0 ? Part::Content : Part::Closing;
    return count;
}

qint64 UploadFraming::takeContent(const char *data, qint64 length)
{
    const qint64 count = std::min(length, remaining);
    takeContentBytes(data, count);
    remaining -= count;
    if (remaining == 0)
        part = Part::Closing;
    return count;
}

/// A line end may follow the last boundary.
qint64 UploadFraming::takeEnd(const char *data, qint64)
{
    if (afterEnd >= 2 || *data != "\r\n"[afterEnd])
        refuse("bytes after the end");
    ++afterEnd;
    return 1;
}

void UploadFraming::finish() const
{
    if (part != Part::End)
        refuse("ended before its end");
}

QByteArray boundaryIn(const QByteArray &contentType)
{
    const QByteArray name = "boundary=";
    const qsizetype start = contentType.toLower().startsWith("multipart/form-data") ? contentType.indexOf(name) : -1;
    if (start < 0)
        return {};
    QByteArray boundary = contentType.mid(start + name.size());
    boundary = boundary.split(';').first().trimmed();
    if (boundary.size() >= 2 && boundary.startsWith('"') && boundary.endsWith('"'))
        boundary = boundary.mid(1, boundary.size() - 2);
    return boundary.size() <= longestBoundary ? boundary : QByteArray();
}

} // namespace documentserver
