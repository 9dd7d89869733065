#include "CommandLine.h"

#include <functional>
#include <map>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
using Setter = std::function<bool(CommandLine *, const QString &)>;

Setter text(QString Options::*member)
{
    return [member](CommandLine *line, const QString &value) {
        line->options.*member = value;
        return !value.isEmpty();
    };
}

Setter number(int Options::*member, int low, int high)
{
    return [=](CommandLine *line, const QString &value) {
        bool isNumber = false;
        line->options.*member = value.toInt(&isNumber);
        return isNumber && line->options.*member >= low && line->options.*member <= high;
    };
}

bool setSalt(CommandLine *line, const QString &value)
{
    line->options.passwordChangeSalt = value.toUtf8();
    return !value.isEmpty();
}

bool setNewAccount(CommandLine *line, const QString &value)
{
    line->task = CommandLine::Task::AddAccount;
    line->newAccount = value;
    return !value.isEmpty();
}

const std::map<QString, Setter> &settings()
{
    static const std::map<QString, Setter> table{
        {u"--data"_s, text(&Options::dataFolder)},
        {u"--accounts"_s, text(&Options::accountsFile)},
        {u"--scenario"_s, text(&Options::scenarioFile)},
        {u"--host"_s, text(&Options::host)},
        {u"--http-port"_s, number(&Options::httpPort, -1, 65535)},
        {u"--https-port"_s, number(&Options::httpsPort, -1, 65535)},
        {u"--export-certificate"_s, text(&Options::certificateExport)},
        {u"--demo-documents"_s, text(&Options::demoDocuments)},
        {u"--codes"_s, text(&Options::codesFile)},
        {u"--delay"_s, number(&Options::replyDelay, 0, 600'000)},
        {u"--password-salt"_s, setSalt},
        {u"--add-account"_s, setNewAccount},
    };
    return table;
}

QString problemOf(const CommandLine &line, bool passwordOnStdin)
{
    if (line.options.dataFolder.isEmpty())
        return u"--data is missing"_s;
    if ((line.task == CommandLine::Task::AddAccount) != passwordOnStdin)
        return u"--add-account and --password-stdin go together"_s;
    if (line.options.httpPort < 0 && line.options.httpsPort < 0)
        return u"both ports are off"_s;
    return {};
}
} // namespace

CommandLine parseCommandLine(const QStringList &arguments)
{
    CommandLine line;
    line.options.printCodes = true;
    bool passwordOnStdin = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        QString name = arguments[i];
        if (name == "--help"_L1 || name == "-h"_L1) {
            line.task = CommandLine::Task::Help;
            return line;
        }
        if (name == "--password-stdin"_L1) {
            passwordOnStdin = true;
            continue;
        }
        const qsizetype sign = name.indexOf(u'=');
        const QString inlined = sign < 0 ? QString() : name.mid(sign + 1);
        const auto setter = settings().find(sign < 0 ? name : name.left(sign));
        if (setter == settings().end())
            line.error = u"unknown option %1"_s.arg(name);
        else if (sign < 0 && i + 1 == arguments.size())
            line.error = u"%1 needs a value"_s.arg(name);
        else if (!setter->second(&line, sign < 0 ? arguments[++i] : inlined))
            line.error = u"the value of %1 is not acceptable"_s.arg(setter->first);
        if (!line.error.isEmpty())
            return line;
    }
    line.error = problemOf(line, passwordOnStdin);
    return line;
}

QString helpText()
{
    return QStringLiteral(R"(quillbox-server: a small document server for trying and testing the client.

usage: quillbox-server --data DIR [options]

  --data DIR                 where accounts, keys and sessions are kept; made at first start
  --accounts FILE            accounts (JSON); default: accounts.json in DIR, made with a demo account
  --scenario FILE            settings (JSON), read again whenever the file changes
  --host ADDRESS             address to listen on; default 127.0.0.1
  --http-port N              0 takes any free port (default), -1 switches HTTP off
  --https-port N             0 takes any free port (default), -1 switches HTTPS off
  --export-certificate FILE  copy the certificate for password encryption (DER) to FILE
  --demo-documents FOLDER    copy what FOLDER holds into the demo account's documents, at the first start only
  --codes FILE               also write codes sent by SMS or e-mail to FILE, one JSON line each
  --delay MS                 answer every request MS milliseconds late
  --password-salt TEXT       salt of the password-change signature; default qvxzt.kmn
  --add-account NAME --password-stdin
                             add an account with the password read from standard input, and end
  --help                     show this text

When it listens, the line "ready http=PORT https=PORT" is printed (-1: switched off). SIGTERM or SIGINT end it.
Codes sent by SMS or e-mail are printed as "code WAY ACCOUNT CODE".

Demo account: name demo, password Quillbox-demo1
)");
}

} // namespace documentserver
