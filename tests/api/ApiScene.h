#pragma once

#include "ApiClient.h"

#include <QJsonDocument>
#include <QTest>

/// What most tests of the client need: a server that follows a script and a client of it, new for each of them.
class ApiScene : public QObject
{
protected:
    using Answer = testing::ScriptedAnswer;

    void open(std::chrono::milliseconds timeout = std::chrono::milliseconds(400))
    {
        client.reset();
        server = std::make_unique<testing::ScriptedServer>();
        client = std::make_unique<ApiClient>(*server, timeout);
    }
    /// Ends every test: all that was expected came, and nothing more.
    void close()
    {
        QCOMPARE(server->complaint(), QString());
        client.reset();
        server.reset();
    }

    /// The next request begins like this and gets this JSON.
    void expect(const QByteArray &start, const QByteArray &json) { server->expect(start, Answer::json(json)); }
    void answer(const QByteArrayList &replies)
    {
        for (const QByteArray &json : replies)
            expect("POST ", json);
    }
    QBNetworking &networking() const { return client->networking; }
    QJsonObject sent(qsizetype request) const { return QJsonDocument::fromJson(server->bodies().at(request)).object(); }
    QBGlobeInformation stored() const { return QBGlobeInformation(client->globe.path(), true); }

    std::unique_ptr<testing::ScriptedServer> server;
    std::unique_ptr<ApiClient> client;
};
