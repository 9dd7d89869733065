#pragma once

#include <QProcess>
#include <QRegularExpression>

/// The real program.
class Program
{
public:
    explicit Program(const QStringList &arguments) { process.start(QStringLiteral(SERVER_PROGRAM), arguments); }
    ~Program()
    {
        process.kill();
        process.waitForFinished();
    }

    QByteArray firstLine()
    {
        while (!process.canReadLine() && process.waitForReadyRead(20'000)) {
        }
        return process.readLine();
    }
    int exitCode() { return process.waitForFinished(20'000) ? process.exitCode() : -1; }

    QProcess process;
};

/// Of the line that says that the server listens; 0 for any other line.
inline int httpPortOf(const QByteArray &line)
{
    const auto match =
        QRegularExpression(QStringLiteral("^ready http=(-?\\d+) https=(-?\\d+)\\n$")).match(QString::fromUtf8(line));
    return match.hasMatch() ? match.captured(1).toInt() : 0;
}
