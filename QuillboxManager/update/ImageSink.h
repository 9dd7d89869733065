#pragma once

#include "api/HttpTransport.h"
#include "platform/FileDescriptor.h"
#include "update/DownloadFault.h"

#include <QString>

#include <functional>

/// Takes one image from the server. The bytes go to a hidden file beside the target, which takes the target's name when
/// the last announced byte is safe on the disk, before that byte is reported. Whatever ends earlier leaves nothing
/// behind. One thread.
class ImageSink final : public ReplySink
{
public:
    /// Told after every piece that was written.
    using Progress = std::function<void(qint64 written, qint64 expected)>;

    ImageSink(const QString &target, Progress progress);
    ~ImageSink() override;
    ImageSink(const ImageSink &) = delete;
    ImageSink &operator=(const ImageSink &) = delete;

    /// The whole image stands at the target.
    bool isKept() const { return kept; }
    DownloadFault fault() const { return failure; }
    /// Goes with HttpStatus and TargetTaken.
    QString faultDetail() const { return detail; }

    void announceLength(qint64 length) override { expected = length; }
    bool takes(int status, const QByteArray &contentType) override;
    bool write(const char *bytes, qint64 count) override;

private:
    bool fail(DownloadFault reason, const QString &about = {});
    bool failFor(int systemError);
    bool makeFile();
    bool append(const char *bytes, qint64 count);
    bool keep();

    const QString target;
    const QString partial;
    const Progress report;
    platform::FileDescriptor file;
    QByteArray beginning; ///< of the image, as much as tells a page from it
    qint64 expected = -1;
    qint64 written = 0;
    bool kept = false;
    DownloadFault failure = DownloadFault::None;
    QString detail;
};
