#include "server/ServerFixture.h"

#include "support/Files.h"

#include <httplib.h>

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace
{
const char *const contentType = "application/x-www-form-urlencoded charset=utf-8";

template <class Client> Answer send(Client &client, const QString &target, const QByteArray &body)
{
    client.set_connection_timeout(5);
    client.set_read_timeout(20);
    const auto result = client.Post(target.toStdString(), body.toStdString(), contentType);
    if (!result)
        return {};
    const QByteArray bytes = QByteArray::fromStdString(result->body);
    Answer answer{result->status, bytes, QJsonDocument::fromJson(bytes).object(), {}};
    for (const auto &[name, value] : result->headers)
        answer.headers.insert(QByteArray::fromStdString(name).toLower(), QByteArray::fromStdString(value));
    return answer;
}

/// Keys take long to make: the servers of one program share those of the first.
const QStringList keyFiles{u"password_key.pem"_s, u"password_certificate.pem"_s, u"tls_key.pem"_s,
                           u"tls_certificate.pem"_s};

QString knownKeys()
{
    static const QTemporaryDir folder;
    return folder.path();
}

QString folderPattern()
{
    const QFileInfo memory(u"/dev/shm"_s);
    const QString folder = memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
    return folder + "/server-test-XXXXXX"_L1;
}

void takeKnownKeys(const QString &dataFolder)
{
    QDir().mkpath(dataFolder);
    for (const QString &name : keyFiles)
        QFile::copy(knownKeys() + u'/' + name, dataFolder + u'/' + name);
}

void rememberKeys(const QString &dataFolder)
{
    for (const QString &name : keyFiles)
        QFile::copy(dataFolder + u'/' + name, knownKeys() + u'/' + name);
}
} // namespace

ServerFixture::ServerFixture(const QJsonObject &scenario) : directory(folderPattern())
{
    takeKnownKeys(options().dataFolder);
    if (!restart() || !useScenario(scenario))
        qFatal("the server does not start");
    rememberKeys(options().dataFolder);
}

documentserver::Options ServerFixture::options() const
{
    documentserver::Options options;
    options.dataFolder = folder() + "/data"_L1;
    options.codesFile = folder() + "/codes"_L1;
    options.certificateExport = folder() + "/public_key.der"_L1;
    options.passwordCost = 1024;
    options.now = [this] { return time.load(); };
    return options;
}

bool ServerFixture::restart()
{
    server.reset();
    server = std::make_unique<documentserver::Server>(options());
    return server->start();
}

void ServerFixture::talkTo(int httpPort, const QString &dataFolder)
{
    otherPort = httpPort;
    if (httpPort < 0)
        return;
    QFile certificate(dataFolder + "/public_key.der"_L1);
    if (!certificate.open(QIODevice::ReadOnly))
        qFatal("the program made no certificate");
    otherCertificate = certificate.readAll();
}

Answer ServerFixture::post(const QString &target, const QByteArray &body, bool https) const
{
    if (https) {
        httplib::SSLClient client("127.0.0.1", server->httpsPort());
        client.enable_server_certificate_verification(false);
        return send(client, target, body);
    }
    httplib::Client client("127.0.0.1", httpPort());
    return send(client, target, body);
}

Answer ServerFixture::call(const QString &name, const QJsonObject &body, const QString &token) const
{
    const QString target = "/api/v1/%1?method=%2"_L1.arg(name.section(u'.', 0, 0), name.section(u'.', 1));
    return post(token.isEmpty() ? target : target + "&tokenid="_L1 + token, QJsonDocument(body).toJson());
}

bool ServerFixture::useAccounts(const QByteArray &list) const
{
    return testing::writeFile(folder() + "/data/accounts.json"_L1, "{\"accounts\":[" + list + "]}", 0600);
}

QString ServerFixture::encrypted(const QString &password) const
{
    const QByteArray der = otherPort > 0 ? otherCertificate : server->passwordCertificate();
    const auto *bytes = reinterpret_cast<const unsigned char *>(der.constData());
    X509 *certificate = d2i_X509(nullptr, &bytes, der.size());
    EVP_PKEY_CTX *context = EVP_PKEY_CTX_new(X509_get0_pubkey(certificate), nullptr);
    const QByteArray plain = password.toUtf8();
    QByteArray cipher(128, '\0');
    size_t length = 128;
    EVP_PKEY_encrypt_init(context);
    EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PADDING);
    EVP_PKEY_encrypt(context, reinterpret_cast<unsigned char *>(cipher.data()), &length,
                     reinterpret_cast<const unsigned char *>(plain.constData()), plain.size());
    EVP_PKEY_CTX_free(context);
    X509_free(certificate);
    return QString::fromLatin1(cipher.toBase64());
}

QJsonObject ServerFixture::signInBody(const QString &account, const QString &password) const
{
    const QJsonObject device{
        {u"ostype"_s, 5}, {u"devicetype"_s, u"Mac"_s}, {u"name"_s, u"Macintosh"_s}, {u"udid"_s, u""_s}};
    return {{u"account"_s, account},
            {u"password"_s, encrypted(password)},
            {u"deviceinfo"_s, device},
            {u"vcodeinfo"_s, QJsonObject()},
            {u"dualfactorauthinfo"_s, QJsonObject()}};
}

Answer ServerFixture::signIn(const QString &account, const QString &password, const QJsonObject &vcodeinfo,
                             const QJsonObject &dualfactor) const
{
    QJsonObject body = signInBody(account, password);
    body.insert("vcodeinfo"_L1, vcodeinfo);
    body.insert("dualfactorauthinfo"_L1, dualfactor);
    return call(u"auth1.getnew"_s, body);
}

QString ServerFixture::signInToken() const
{
    return signIn(demoName(), demoPassword()).text("tokenid");
}

Answer ServerFixture::changePassword(const QString &account, const QString &oldPassword,
                                     const QString &newPassword) const
{
    const QJsonObject body{
        {u"account"_s, account}, {u"oldpwd"_s, encrypted(oldPassword)}, {u"newpwd"_s, encrypted(newPassword)}};
    const QByteArray bytes = QJsonDocument(body).toJson();
    const QByteArray sign = QCryptographicHash::hash(bytes + "qvxzt.kmn", QCryptographicHash::Md5).toHex();
    return post("/api/v1/auth1?method=modifypassword&sign="_L1 + QString::fromLatin1(sign), bytes);
}
