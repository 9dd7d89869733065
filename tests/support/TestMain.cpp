#include "support/TestMain.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace testing
{

namespace
{
std::map<std::string, std::function<std::unique_ptr<QObject>()>> &registry()
{
    static std::map<std::string, std::function<std::unique_ptr<QObject>()>> tests;
    return tests;
}

/// No test may see or change the home of whoever runs it.
void useHome(const QString &home)
{
    const auto set = [&](const char *name, const QString &value) { qputenv(name, value.toUtf8()); };
    set("HOME", home);
    set("XDG_CONFIG_HOME", home + QLatin1String("/.config"));
    set("XDG_DATA_HOME", home + QLatin1String("/.local/share"));
    set("XDG_CACHE_HOME", home + QLatin1String("/.cache"));
    set("XDG_RUNTIME_DIR", home + QLatin1String("/run"));
    set("TMPDIR", home);
    set("QUILLBOX_VOLUMES", home + QLatin1String("/Volumes"));
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "HTTP_PROXY", "HTTPS_PROXY", "ALL_PROXY"})
        qunsetenv(name);
    qputenv("LC_ALL", "C.UTF-8");
    qunsetenv("LANGUAGE");
}
} // namespace

Registration::Registration(const char *name, std::function<std::unique_ptr<QObject>()> make)
{
    registry()[name] = std::move(make);
}

} // namespace testing

/// usage: test [TestClass] [Qt Test options]; without a class name all of the program's tests run.
int main(int argc, char **argv)
{
    QTemporaryDir home;
    if (!home.isValid()) {
        std::fputs("no temporary home\n", stderr);
        return 1;
    }
    testing::useHome(home.path());
    // A crash ends the program at once: the debugger that Qt Test would start for a stack trace may hang for minutes.
    if (!qEnvironmentVariableIsSet("QTEST_DISABLE_STACK_DUMP"))
        qputenv("QTEST_DISABLE_STACK_DUMP", "1");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    std::string only;
    std::vector<char *> arguments(argv, argv + argc);
    if (arguments.size() > 1 && std::string(arguments[1]).rfind("Test", 0) == 0) {
        only = arguments[1];
        arguments.erase(arguments.begin() + 1);
    }
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);

    QApplication application(count, arguments.data());
    int failures = 0;
    int run = 0;
    for (const auto &[name, make] : testing::registry()) {
        if (!only.empty() && name != only)
            continue;
        ++run;
        failures += QTest::qExec(make().get(), count, arguments.data());
    }
    if (run == 0) {
        std::fprintf(stderr, "no test named %s\n", only.c_str());
        return 1;
    }
    return failures == 0 ? 0 : 1;
}
