#include "shell/UncaughtExceptionHandler.h"

#include "platform/Localization.h"
#include "platform/Log.h"
#include "shell/CrashFolder.h"
#include "shell/CrashText.h"

#include <array>
#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

#include <cxxabi.h>
#include <execinfo.h>

namespace
{

constexpr int mostFrames = 128;

shell::CrashFolder reports;

struct FreeMemory {
    void operator()(void *memory) const { std::free(memory); }
};

QStringList callStackSymbols()
{
    std::array<void *, mostFrames> frames;
    const int count = ::backtrace(frames.data(), mostFrames);
    const std::unique_ptr<char *, FreeMemory> symbols(::backtrace_symbols(frames.data(), count));
    QStringList stack;
    for (int frame = 0; symbols && frame < count; ++frame)
        stack.append(QString::fromLocal8Bit(symbols.get()[frame]));
    return stack;
}

QString nameOfException()
{
    const std::type_info *type = abi::__cxa_current_exception_type();
    if (!type)
        return QStringLiteral("terminate");
    int status = 0;
    const std::unique_ptr<char, FreeMemory> name(abi::__cxa_demangle(type->name(), nullptr, nullptr, &status));
    return QString::fromUtf8(name ? name.get() : type->name());
}

QString reasonOfException()
{
    try {
        if (const std::exception_ptr exception = std::current_exception())
            std::rethrow_exception(exception);
    } catch (const std::exception &exception) {
        return QString::fromUtf8(exception.what());
    } catch (...) {
    }
    return {};
}

[[noreturn]] void handle()
{
    const QString report = shell::withoutSecrets(
        UncaughtExceptionHandler::text(nameOfException(), reasonOfException(), callStackSymbols()));
    platform::log(report);
    UncaughtExceptionHandler::saveCreash(report);
    std::abort(); // the usual handler would print the message as it is
}

bool fillText(int file, const void *what)
{
    const auto *text = static_cast<const QByteArray *>(what);
    return shell::writeBytes(file, text->constData(), static_cast<std::size_t>(text->size()));
}

} // namespace

void UncaughtExceptionHandler::installUncaughtExceptionHandler(const QString &cachesFolder)
{
    reports.setPath(cachesFolder.isEmpty() ? QString() : cachesFolder + QStringLiteral("/OCCrash"));
    std::set_terminate(handle);
}

QString UncaughtExceptionHandler::text(const QString &name, const QString &reason, const QStringList &stack)
{
    QString frames = QStringLiteral("(\n");
    for (qsizetype frame = 0; frame < stack.size(); ++frame)
        frames += QStringLiteral("    \"%1\"%2\n")
                      .arg(stack.at(frame), frame + 1 < stack.size() ? QStringLiteral(",") : QString());
    return platform::fillPlaceholders(QStringLiteral("Exception reason：%@\nException name：%@\nException stack：%@"),
                                      {name, reason, frames + u')'});
}

bool UncaughtExceptionHandler::saveCreash(const QString &text)
{
    const QByteArray bytes = shell::withoutSecrets(text).toUtf8();
    const bool done = reports.write(fillText, &bytes);
    platform::log(QStringLiteral("write OCCrash sucess:%1").arg(int(done)));
    return done;
}
