// The client of a test: the file "Contents/behaviour" of its bundle says what it does. Asked for its version it ends at
// once; with another argument it is a manager that has just started the installer and is about to end.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

int main(int argc, char **argv)
{
    using namespace std::chrono_literals;
    std::error_code failure;
    const std::filesystem::path contents =
        std::filesystem::read_symlink("/proc/self/exe", failure).parent_path().parent_path();
    std::string behaviour;
    std::ifstream(contents / "behaviour") >> behaviour;
    if (argc > 1) {
        const bool asked = std::string(argv[1]) == "--version";
        std::this_thread::sleep_for(asked ? 0ms : 300ms);
        return asked && behaviour == "foreign" ? 127 : 0; // as the loader says that a library is missing
    }
    if (behaviour == "crashes")
        std::abort();
    if (behaviour != "hangs")
        std::filesystem::remove(contents / "update-pending", failure);
    std::this_thread::sleep_for(behaviour == "leaves" ? 100ms : 20s);
    return 0;
}
