#pragma once

#include "server/ServerFixture.h"

#include <QJsonArray>

/// A server with two signed-in users, and the document requests of a client.
class DocumentFixture
{
public:
    /// `documents`: the scenario's section of that name.
    explicit DocumentFixture(const QJsonObject &documents = {});

    enum class User { Demo, Anna };
    void actAs(User user) { token = user == User::Demo ? demoToken : annaToken; }
    bool useDocumentSettings(const QJsonObject &documents);

    /// "service.method"
    Answer call(const char *name, const QJsonObject &body) const;
    Answer call(const char *name, const QString &docid) const { return call(name, {{QStringLiteral("docid"), docid}}); }
    QJsonArray callForArray(const char *name, const QJsonObject &body) const;
    QJsonArray callForArray(const char *name, const QString &docid) const;
    /// Null `rev`: of the newest revision.
    Answer read(const QString &docid, const QJsonValue &offset, const QJsonValue &length,
                const QJsonValue &rev = QJsonValue::Undefined) const;
    Answer upload(const QJsonObject &description, const QByteArray &content) const;
    /// An upload's body as it is sent, with the boundary "BOUNDARY".
    static QByteArray framed(const QJsonObject &description, const QByteArray &content);
    Answer postUpload(const QByteArray &body, const char *type = "multipart/form-data;boundary=BOUNDARY") const;
    QString target(const char *name) const;

    // What goes well without saying; each gives the docid, empty when it did not go well.
    QString entry(int type = 1) const;
    QString makeFolder(const QString &parent, const QString &name) const;
    QString makeFile(const QString &parent, const QString &name, const QByteArray &content = "content") const;
    QByteArray contentOf(const QString &docid) const;
    QStringList namesIn(const QString &folder) const;
    /// Bytes in use of the entry document of this type.
    qint64 used(int type = 1) const;
    /// Files below the folder of contents; those of unfinished uploads alone.
    qsizetype contentFiles() const;
    qsizetype unfinishedFiles() const;

    ServerFixture server;
    QString token;

private:
    QString demoToken;
    QString annaToken;
};
