#include "platform/linux/Spawn.h"

#include <QFile>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>
#include <vector>

namespace platform
{

namespace
{

class FileActions
{
public:
    explicit FileActions(const SpawnOptions &options)
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (options.standardOutput >= 0)
            posix_spawn_file_actions_adddup2(&actions, options.standardOutput, STDOUT_FILENO);
        if (options.detached) {
            posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
            posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
            posix_spawn_file_actions_addchdir_np(&actions, "/");
        }
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions); }
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;

    posix_spawn_file_actions_t actions;
};

class Attributes
{
public:
    explicit Attributes(const SpawnOptions &options)
    {
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setpgroup(&attributes, 0);
        const int group = options.ownGroup ? POSIX_SPAWN_SETPGROUP : 0;
        const int session = options.detached ? POSIX_SPAWN_SETSID : 0;
        posix_spawnattr_setflags(&attributes,
                                 static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group | session));
    }
    ~Attributes() { posix_spawnattr_destroy(&attributes); }
    Attributes(const Attributes &) = delete;
    Attributes &operator=(const Attributes &) = delete;

    posix_spawnattr_t attributes;
};

/// The words as the system takes them; empty when one holds a NUL, which would cut it short.
std::vector<QByteArray> encodedWords(const QString &program, const QStringList &arguments)
{
    std::vector<QByteArray> words{QFile::encodeName(program)};
    for (const QString &argument : arguments)
        words.push_back(argument.toUtf8());
    for (const QByteArray &word : words)
        if (word.contains('\0'))
            return {};
    return words;
}

} // namespace

pid_t spawn(const QString &program, const QStringList &arguments, const SpawnOptions &options)
{
    std::vector<QByteArray> words = encodedWords(program, arguments);
    if (words.empty() || program.isEmpty())
        return -1;
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (QByteArray &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const FileActions actions(options);
    const Attributes attributes(options);
    pid_t child = -1;
    const int failure =
        posix_spawnp(&child, pointers.front(), &actions.actions, &attributes.attributes, pointers.data(), environ);
    return failure == 0 ? child : -1;
}

} // namespace platform
