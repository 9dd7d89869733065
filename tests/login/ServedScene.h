#pragma once

#include "DocumentServer/Account.h"
#include "DocumentServer/OneTimePassword.h"
#include "DocumentServer/Server.h"
#include "LoginScene.h"
#include "login/LoginVerifyWindowController.h"
#include "login/LoginWindowController.h"
#include "login/ServerSettingWindowController.h"

#include <QDateTime>

/// The login windows over a real document server in a folder of its own.
struct ServedScene : LoginScene {
    explicit ServedScene(const QJsonObject &scenario = {})
    {
        documentserver::Options options;
        options.dataFolder = folder.filePath(QStringLiteral("data"));
        documents = std::make_unique<documentserver::Server>(options);
        QString problem;
        if (!documents->start(&problem) || !documents->setScenario(scenario, &problem))
            qFatal("%s", qPrintable(problem));
        QFile key(client.certificatePath());
        if (!key.open(QIODevice::WriteOnly | QIODevice::Truncate) || key.write(documents->passwordCertificate()) < 0)
            qFatal("no temporary folder");
        key.close();
        client.globe.setServer({QStringLiteral("127.0.0.1"), QString::number(documents->httpPort()), false});
        ClientServices patient = client.services();
        patient.callTimeout = patient.probeTimeout = patient.reachabilityTimeout = std::chrono::seconds(10);
        networking = &keep(std::make_unique<QBNetworking>(client.globe, client.transport, client.defaults, patient));
    }
    ~ServedScene() override
    {
        login.reset();
        client.transport.shutDown();
        documents->stop();
    }

    static QString account() { return QStringLiteral("demo"); }
    static QString password() { return QStringLiteral("Quillbox-demo1"); }

    QString address(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1").arg(documents->httpPort()) + path;
    }
    QWidget *window() { return login->window(); }
    bool idle() { return !find<QAbstractButton>(window(), "btnLogin")->text().isEmpty(); }
    QString error() { return message(window(), "txtErrorMessage"); }

    void openLogin()
    {
        login = std::make_unique<LoginWindowController>(*networking, client.defaults, center, *this);
        login->showLoginWindowAutoLoginIfNeeded(false);
        AWAIT(shows(window(), "viewNormal"));
    }
    void fillIn(const QString &typedPassword)
    {
        type(window(), "txtUserName", account());
        type(window(), "txtPassword", typedPassword);
    }
    void signIn(const QString &typedPassword)
    {
        fillIn(typedPassword);
        press(window(), "btnLogin");
        AWAIT(idle());
    }
    static QString oneTimePassword()
    {
        using namespace documentserver;
        const auto secret = fromBase32(Account(demoAccount()).otpSecret());
        return counterCode(*secret, static_cast<quint64>(timeStep(QDateTime::currentMSecsSinceEpoch())));
    }
    /// A window that a controller of the scene opened by itself.
    static QWidget *openWindow(const char *name)
    {
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (widget->objectName() == QLatin1String(name) && widget->isVisible())
                return widget;
        return nullptr;
    }

    QTemporaryDir folder;
    std::unique_ptr<documentserver::Server> documents;
    QBNetworking *networking = nullptr;
    std::unique_ptr<LoginWindowController> login;
};
