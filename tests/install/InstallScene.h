#pragma once

#include "install/Installer.h"

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

namespace testing
{

/// Whether this user may mount images; some machines offer the device to root alone. Where it can be opened, or an
/// image was mounted all the same, no test is left out.
bool imagesCanBeAttached();

void writeFile(const QString &path, const QByteArray &content, int mode = 0644);

/// A bundle of the product with the client of these tests in it.
void makeBundle(const QString &bundle, const QByteArray &version, const QByteArray &behaviour = "works");
/// Lists everything that is in the bundle now.
void writeCodeResources(const QString &bundle);

/// An installation in a folder of its own, an image with a new version, and the real disk-image tool. Everything is
/// ended, detached and removed with it.
class InstallScene
{
public:
    InstallScene();
    ~InstallScene();
    InstallScene(const InstallScene &) = delete;
    InstallScene &operator=(const InstallScene &) = delete;

    QString path(const QString &name) const { return folder.filePath(name); }
    QString content() const { return path(QStringLiteral("content")); } ///< what makeImage puts into the image

    /// Makes the image and attaches it.
    void attachImage();
    install::UpdateRequest request() const;
    install::Installer::Surroundings surroundings();
    install::ClientRuns client() const;
    /// The stepper's end: killed after `step`, or its exit status.
    bool killedAfter(install::Installer::Step step);

    QString installedVersion() const;
    /// The version that runs, null when none does.
    QString runningVersion() const;
    QStringList leftBeside() const; ///< names beside the bundle
    qsizetype attached() const;

    QStringList steps; ///< names of the steps that were reached

private:
    const QTemporaryDir folder;

public:
    const QString bundle;
    const QString image;
    QString mountPoint; ///< null until the image is attached
};

} // namespace testing
