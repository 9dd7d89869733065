// Registers a file-manager extension for this user.
//
//   pluginkit -a EXTENSION
//       EXTENSION is a folder NAME.appex in Contents/PlugIns of an application. Its
//       Contents/Resources/actions/*.desktop go to $XDG_DATA_HOME/file-manager/actions and its
//       Contents/Resources/servicemenus/*.desktop to $XDG_DATA_HOME/kio/servicemenus; the word @EXECUTABLE@ in them
//       becomes the application's main executable, quoted for a desktop entry. Files of an earlier registration are
//       replaced.
//
// Exit status: 0 done, 1 failed (the reason is on standard error), 64 wrong usage.
//
// A program without Qt, because the first start of the application waits for it.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fs = std::filesystem;

namespace
{

constexpr int wrongUsage = 64;

fs::path dataFolder()
{
    const char *const data = std::getenv("XDG_DATA_HOME");
    if (data && *data == '/')
        return data;
    const char *const home = std::getenv("HOME");
    return fs::path(home ? home : "") / ".local/share";
}

bool isExecutable(const fs::path &file)
{
    return fs::is_regular_file(file) && access(file.c_str(), X_OK) == 0;
}

/// The executable of the application whose extension this is.
fs::path executableOf(const fs::path &extension)
{
    const fs::path folder = extension.parent_path().parent_path() / "MacOS";
    if (extension.parent_path().filename() == "PlugIns") {
        if (isExecutable(folder / "Quillbox"))
            return folder / "Quillbox";
        for (const fs::directory_entry &entry : fs::directory_iterator(folder))
            if (isExecutable(entry.path()))
                return entry.path();
    }
    throw std::runtime_error(extension.string() + " belongs to no application");
}

/// The path as one quoted word of an Exec line: quoting for the command, for field codes and for the text value.
std::string execWord(const std::string &path)
{
    std::string word = "\"";
    for (const char c : path) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f')
            throw std::runtime_error("control characters in " + path);
        if (c == '\\')
            word += "\\\\\\\\";
        else if (c == '"' || c == '$' || c == '`')
            (word += "\\\\") += c;
        else if (c == '%')
            word += "%%";
        else
            word += c;
    }
    return word + '"';
}

std::string filledIn(const fs::path &entry, const std::string &word)
{
    constexpr std::string_view mark = "@EXECUTABLE@";
    std::ifstream file(entry, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + word.size()))
        text.replace(at, mark.size(), word);
    return text;
}

/// In one step: nobody sees half an entry.
bool replaceFile(const fs::path &target, const std::string &text, mode_t mode)
{
    const fs::path half =
        target.parent_path() / (".quillbox-" + std::to_string(getpid()) + '-' + target.filename().string());
    const int file = open(half.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file < 0)
        return false;
    bool written =
        write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && fchmod(file, mode) == 0;
    written = close(file) == 0 && written && std::rename(half.c_str(), target.c_str()) == 0;
    if (!written)
        unlink(half.c_str());
    return written;
}

void installEntries(const fs::path &from, const fs::path &to, mode_t mode, const std::string &word)
{
    if (!fs::is_directory(from))
        return;
    for (const fs::directory_entry &entry : fs::directory_iterator(from)) {
        if (entry.path().extension() != ".desktop" || !entry.is_regular_file())
            continue;
        fs::create_directories(to);
        if (!replaceFile(to / entry.path().filename(), filledIn(entry.path(), word), mode))
            throw std::runtime_error(entry.path().filename().string() + " could not be installed");
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3 || std::string_view(argv[1]) != "-a") {
        std::fputs("usage: pluginkit -a EXTENSION\n", stderr);
        return wrongUsage;
    }
    try {
        const fs::path extension = fs::canonical(argv[2]);
        const fs::path resources = extension / "Contents/Resources";
        const std::string word = execWord(executableOf(extension).string());
        installEntries(resources / "actions", dataFolder() / "file-manager/actions", 0644, word);
        installEntries(resources / "servicemenus", dataFolder() / "kio/servicemenus", 0755, word);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "pluginkit: %s\n", failure.what());
        return 1;
    }
    return 0;
}
