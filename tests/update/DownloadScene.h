#pragma once

#include "api/ApiClient.h"
#include "platform/PropertyList.h"
#include "support/Files.h"
#include "update/DownloadApp.h"

#include <QTest>

#include <condition_variable>
#include <mutex>

/// An installer on folders of its own. Its commands are doubles, but for the removal; what it does and what it tells is
/// kept as one list, in order.
struct DownloadScene : UpdateDownloadProgressDelegate, DownloadProgressWindowAndServerSettingWindowDelegate {
    DownloadScene()
    {
        const QVariantMap product{{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.velto.quillbox")},
                                  {QStringLiteral("CFBundleExecutable"), QStringLiteral("Quillbox")}};
        write("Quillbox.app/Contents/Info.plist", platform::PropertyList::serialize(product));
        write("Quillbox.app/Contents/MacOS/Quillbox", "client", 0755);
        write("Quillbox.app/Contents/Resources/appInstall.app/Contents/MacOS/appInstall", "helper");
    }
    ~DownloadScene() override { installer.reset(); }

    QString path(const char *name) const { return folder.filePath(QString::fromUtf8(name)); }
    QString downloads() const { return path("Downloads"); }
    /// Hidden files included.
    QStringList downloaded() const
    {
        return QDir(downloads()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    void write(const char *name, const QByteArray &content, mode_t mode = 0644) const
    {
        if (!testing::writeFile(path(name), content, mode))
            qFatal("cannot write");
    }

    /// The answers of the document server: which image there is, and where it is to be had.
    void offer(const QString &location, const QString &url)
    {
        client.networking.setDicUpdateVersion(QJsonObject{{QStringLiteral("downloadurl"), location}});
        const QByteArray reply = QJsonDocument(QJsonObject{{QStringLiteral("URL"), url}}).toJson();
        api.answerAll(testing::ScriptedAnswer::json(reply));
    }
    DownloadApp &app()
    {
        if (!installer) {
            UpdatePlaces places{downloads(), path("Caches/com.velto.appInstall/appInstall.app"), path("Volumes"),
                                QStringLiteral("hdiutil"), platform::Bundle(path("Quillbox.app"))};
            installer = std::make_unique<DownloadApp>(client.networking, client.transport, places, commands(),
                                                      std::chrono::milliseconds(400));
            installer->setUpdateDownloadProgressDelegate(this);
            installer->setDownloadProgressWindowAndServerSettingWindowDelegate(this);
        }
        return *installer;
    }

    /// The whole way with an image that the server has under this name; false when no end was told.
    bool download(const QString &name = QStringLiteral("q.dmg"), const QString &url = {})
    {
        offer(QStringLiteral("https://files.example/") + name, url.isNull() ? files.url() : url);
        app().downloadVersion();
        return waitForEnd();
    }
    /// Blocks until the end was told: "complete", or the text of the error.
    bool waitForEnd()
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(20), [this] { return isOver; });
    }
    /// Without the progress.
    QStringList eventsInOrder()
    {
        const std::lock_guard lock(mutex);
        return events;
    }

    void updateDownloadAppProgress(double percent) override
    {
        const std::lock_guard lock(mutex);
        steps.append(percent);
    }
    void doSthDownloadAppVersionComplete() override { note(QStringLiteral("complete"), true); }
    void doSthDownloadEroor() override { note(QStringLiteral("error"), false); }
    void DisplayServerSettingWindow(const QString &text) override { note(text, true); }

    QTemporaryDir folder;
    testing::ScriptedServer api;
    testing::ScriptedServer files; ///< that the addresses of images lead to
    ApiClient client{api};
    QByteArray info;     ///< printed by "hdiutil info"
    QByteArray attached; ///< printed by "hdiutil attach"
    QByteArray listing;  ///< printed by "ls"
    bool launches = true;
    QByteArray imageWhenAttached;
    QList<double> steps;
    std::unique_ptr<DownloadApp> installer;

private:
    void note(const QString &event, bool over)
    {
        const std::lock_guard lock(mutex);
        events.append(event);
        isOver = isOver || over;
        changed.notify_all();
    }
    UpdateCommands commands()
    {
        return {.run = [this](const QString &program, const QStringList &arguments) { return run(program, arguments); },
                .launch =
                    [this](const QString &program, const QStringList &arguments) {
                        note(QStringLiteral("launch ") + program + u' ' + arguments.join(u' '), false);
                        return launches;
                    }};
    }
    platform::TaskResult run(const QString &program, const QStringList &arguments)
    {
        note(program + u' ' + arguments.join(u' '), false);
        if (program == QLatin1String("/bin/sh"))
            return platform::runTask(program, arguments);
        QByteArray printed = program == QLatin1String("/bin/ls") ? listing : info;
        if (arguments.value(0) == QLatin1String("attach")) {
            QFile image(arguments.value(1));
            if (image.open(QIODevice::ReadOnly))
                imageWhenAttached = image.readAll();
            printed = attached;
        }
        return {.started = true, .status = 0, .output = printed};
    }

    std::mutex mutex;
    std::condition_variable changed;
    QStringList events;
    bool isOver = false;
};
