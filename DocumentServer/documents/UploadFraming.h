#pragma once

#include <QByteArray>

#include <functional>

namespace documentserver
{

/// Takes an upload's body apart while it comes, in pieces of any size:
/// "--B\r\n\r\n" DESCRIPTION "\r\n--B\r\n\r\n" CONTENT "\r\n--B--", where B is the boundary. How many bytes the content
/// has is known from the description, so that it may hold anything. Throws IllegalParameter on any other form.
class UploadFraming
{
public:
    /// Gets the description, answers with the length of the content.
    using DescriptionTaker = std::function<qint64(const QByteArray &)>;
    using ContentTaker = std::function<void(const char *, qint64)>;

    UploadFraming(const QByteArray &boundary, DescriptionTaker descriptionTaker, ContentTaker contentTaker);

    void take(const char *data, qint64 length);
    /// Throws where the end has not come yet.
    void finish() const;

private:
    enum class Part { Opening, Description, Content, Closing, End };

    qint64 takeExpected(const QByteArray &expected, Part next, const char *data, qint64 length);
    qint64 takeDescription(const char *data, qint64 length);
    qint64 takeContent(const char *data, qint64 length);
    qint64 takeEnd(const char *data, qint64 length);

    const QByteArray opening;
    const QByteArray between;
    const QByteArray closing;
    const DescriptionTaker takeDescriptionText;
    const ContentTaker takeContentBytes;
    Part part = Part::Opening;
    qsizetype matched = 0;
    QByteArray description;
    qint64 remaining = 0;
    qint64 afterEnd = 0;
};

/// The boundary that a content type names; empty where there is none that can be used.
QByteArray boundaryIn(const QByteArray &contentType);

} // namespace documentserver
