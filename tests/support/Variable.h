#pragma once

#include <QFile>

namespace testing
{

/// Sets a variable of the environment while it lives; null unsets it.
class Variable
{
public:
    Variable(const char *variable, const QString &value)
        : name(variable), wasSet(qEnvironmentVariableIsSet(variable)), before(qgetenv(variable))
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, QFile::encodeName(value));
    }
    ~Variable()
    {
        if (wasSet)
            qputenv(name, before);
        else
            qunsetenv(name);
    }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *const name;
    const bool wasSet;
    const QByteArray before;
};

} // namespace testing
