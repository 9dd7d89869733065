#pragma once

#include "DocumentServer/Server.h"
#include "LoginScene.h"

/// A real document server in a folder of its own, and a client of it.
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
        client.transport.shutDown();
        documents->stop();
    }

    static QString account() { return QStringLiteral("demo"); }
    static QString password() { return QStringLiteral("Quillbox-demo1"); }

    QString address(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1").arg(documents->httpPort()) + path;
    }

    QTemporaryDir folder;
    std::unique_ptr<documentserver::Server> documents;
    QBNetworking *networking = nullptr;
};
