#pragma once

#include "install/Installer.h"
#include "support/FakeHost.h"

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

namespace testing
{

/// A bundle of the product with the client of these tests in it.
void makeBundle(const QString &bundle, const QByteArray &version, const QByteArray &behaviour = "works");
/// Lists everything that is in the bundle now.
void writeCodeResources(const QString &bundle);

/// An installation in a folder of its own, an image with a new version, and a disk-image tool. Everything is ended,
/// detached and removed with it.
class InstallScene
{
public:
    enum class Images { Copied, Mounted }; ///< by the tool's double, or by the real tool
    explicit InstallScene(Images images = Images::Copied);
    ~InstallScene();
    InstallScene(const InstallScene &) = delete;
    InstallScene &operator=(const InstallScene &) = delete;

    QString path(const QString &name) const { return folder.filePath(name); }
    QString content() const { return path(QStringLiteral("content")); } ///< of the image
    QString application() const { return content() + QStringLiteral("/Quillbox.app"); }
    void setNewBehaviour(const QByteArray &behaviour) const;

    /// Makes an image of the content and attaches it.
    void attachImage();
    void attach(const QString &file);
    install::UpdateRequest request() const { return {bundle, mountPoint + QStringLiteral("/Quillbox.app"), image}; }
    install::Installer::Surroundings surroundings();
    /// With what is attached as its volumes.
    const platform::Host &host();
    install::ClientRuns client() const;
    /// The stepper's end: killed after `step`, or its exit status.
    bool killedAfter(install::Installer::Step step);

    QString installedVersion() const;
    /// The version that runs, null when none does.
    QString runningVersion() const;
    QStringList leftBeside() const; ///< names beside the bundle
    QList<install::AttachedImage> attached() { return surroundings().images.list(); }
    /// Nothing stands beside the bundle, is attached or pending.
    void checkTidy();

    QStringList steps; ///< names of the steps that were reached

private:
    const QTemporaryDir folder;
    const Images images;
    FakeHost fake{folder.path()};

public:
    const QString bundle;
    const QString image;
    QString mountPoint; ///< null until the image is attached
};

} // namespace testing
