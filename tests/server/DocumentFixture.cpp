#include "server/DocumentFixture.h"

#include "support/Files.h"

#include <httplib.h>

#include <QDirIterator>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

DocumentFixture::DocumentFixture(const QJsonObject &documents)
{
    QJsonArray accounts = QJsonDocument::fromJson(testing::contentOf(server.options().dataFolder + "/accounts.json"_L1))
                              .object()
                              .value("accounts"_L1)
                              .toArray();
    accounts.append(
        QJsonObject{{u"account"_s, u"anna"_s}, {u"name"_s, u"Anna (A)"_s}, {u"password"_s, u"Anna-pass1"_s}});
    const QByteArray list = QJsonDocument(accounts).toJson().trimmed();
    if (!server.useAccounts(list.mid(1).chopped(1)))
        qFatal("no accounts");
    demoToken = server.signInToken();
    annaToken = server.signIn(u"anna"_s, u"Anna-pass1"_s).text("tokenid");
    actAs(User::Demo);
    if (annaToken.isEmpty() || !useDocumentSettings(documents))
        qFatal("the fixture does not work");
}

bool DocumentFixture::useDocumentSettings(const QJsonObject &documents)
{
    return server.useScenario({{u"documents"_s, documents}});
}

QString DocumentFixture::target(const char *name) const
{
    const QStringList parts = QString::fromLatin1(name).split(u'.');
    return "/api/v1/%1?method=%2&tokenid=%3"_L1.arg(parts[0], parts[1], token);
}

Answer DocumentFixture::call(const char *name, const QJsonObject &body) const
{
    return server.post(target(name), QJsonDocument(body).toJson());
}

QJsonArray DocumentFixture::callForArray(const char *name, const QJsonObject &body) const
{
    return QJsonDocument::fromJson(call(name, body).bytes).array();
}

QJsonArray DocumentFixture::callForArray(const char *name, const QString &docid) const
{
    return callForArray(name, {{u"docid"_s, docid}});
}

Answer DocumentFixture::read(const QString &docid, const QJsonValue &offset, const QJsonValue &length,
                             const QJsonValue &rev) const
{
    QJsonObject body{{u"docid"_s, docid}, {u"offset"_s, offset}, {u"length"_s, length}};
    if (!rev.isUndefined())
        body.insert("rev"_L1, rev);
    return call("file.read", body);
}

QByteArray DocumentFixture::framed(const QJsonObject &description, const QByteArray &content)
{
    QJsonObject complete = description;
    if (!complete.contains("length"_L1))
        complete.insert("length"_L1, content.size());
    return "--BOUNDARY\r\n\r\n" + QJsonDocument(complete).toJson(QJsonDocument::Compact) + "\r\n--BOUNDARY\r\n\r\n" +
           content + "\r\n--BOUNDARY--";
}

Answer DocumentFixture::postUpload(const QByteArray &body, const char *type) const
{
    httplib::Client client("127.0.0.1", server.httpPort());
    const auto result = client.Post(target("file.upload").toStdString(), body.toStdString(), type);
    if (!result)
        return {};
    const QByteArray bytes = QByteArray::fromStdString(result->body);
    return {result->status, bytes, QJsonDocument::fromJson(bytes).object(), {}};
}

Answer DocumentFixture::upload(const QJsonObject &description, const QByteArray &content) const
{
    return postUpload(framed(description, content));
}

QString DocumentFixture::entry(int type) const
{
    const QJsonArray entries = call("entrydoc2.get", {{u"doctype"_s, type}}).array("docinfos");
    return entries.first().toObject().value("docid"_L1).toString();
}

QString DocumentFixture::makeFolder(const QString &parent, const QString &name) const
{
    return call("dir.create", {{u"docid"_s, parent}, {u"name"_s, name}}).text("docid");
}

QString DocumentFixture::makeFile(const QString &parent, const QString &name, const QByteArray &content) const
{
    const QJsonObject description{{u"docid"_s, parent}, {u"name"_s, name}, {u"ondup"_s, 3}};
    return upload(description, content).text("docid");
}

QByteArray DocumentFixture::contentOf(const QString &docid) const
{
    return read(docid, 0, 1 << 30).bytes;
}

QStringList DocumentFixture::namesIn(const QString &folder) const
{
    QStringList names;
    const QJsonObject listing = call("dir.list", {{u"docid"_s, folder}, {u"attr"_s, true}}).json;
    for (const QLatin1String kind : {"dirs"_L1, "files"_L1})
        for (const QJsonValue &record : listing.value(kind).toArray())
            names.append(record.toObject().value("name"_L1).toString());
    return names;
}

qint64 DocumentFixture::used(int type) const
{
    const QJsonArray quotas = call("entrydoc2.getuserquota", QJsonObject()).array("quotainfos");
    for (const QJsonValue &quota : quotas)
        if (quota.toObject().value("doctype"_L1).toInt() == type)
            return quota.toObject().value("used"_L1).toInteger();
    return -1;
}

namespace
{
qsizetype filesBelow(const QString &folder)
{
    qsizetype count = 0;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    for (; files.hasNext(); files.next())
        ++count;
    return count;
}
} // namespace

qsizetype DocumentFixture::contentFiles() const
{
    return filesBelow(server.options().dataFolder + "/content"_L1);
}

qsizetype DocumentFixture::unfinishedFiles() const
{
    return filesBelow(server.options().dataFolder + "/content/incoming"_L1);
}
