#include "platform/linux/RedirectPage.h"

#include "platform/Dispatch.h"
#include "platform/Log.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QTemporaryFile>

namespace platform::RedirectPage
{

namespace
{

constexpr std::chrono::seconds life(60);

void removeOldPages(const QString &folder)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QFileInfo &page : QDir(folder).entryInfoList({QStringLiteral("page-*.html")}, QDir::Files))
        if (page.lastModified().secsTo(now) > life.count())
            QFile::remove(page.filePath());
}

QByteArray contents(const QUrl &address)
{
    const QByteArray target = QString::fromLatin1(address.toEncoded()).toHtmlEscaped().toUtf8();
    return "<!DOCTYPE html>\n<meta charset=\"utf-8\"><meta name=\"referrer\" content=\"no-referrer\">\n"
           "<meta http-equiv=\"refresh\" content=\"0;url=" +
           target + "\">\n<title>Quillbox</title>\n";
}

} // namespace

QString write(const QString &folder, const QUrl &address)
{
    if (folder.isNull())
        return {};
    removeOldPages(folder);
    // Such a file is made with rights for its owner alone and removes itself.
    auto *page = new QTemporaryFile(folder + QStringLiteral("/page-XXXXXX.html"), QCoreApplication::instance());
    const QByteArray text = contents(address);
    if (!page->open() || page->write(text) != text.size() || !page->flush()) {
        log(QStringLiteral("The page for the browser cannot be written in %1").arg(folder));
        delete page;
        return {};
    }
    page->close();
    dispatchAfter(life, page, [page] { page->deleteLater(); });
    return page->fileName();
}

} // namespace platform::RedirectPage
