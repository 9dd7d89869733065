// The client of a test: the file "Contents/behaviour" of its bundle says what it does. With an argument it is a manager
// that has just started the installer and is about to end.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

int main(int argc, char **)
{
    using namespace std::chrono_literals;
    if (argc > 1) {
        std::this_thread::sleep_for(300ms);
        return 0;
    }
    std::error_code failure;
    const std::filesystem::path contents =
        std::filesystem::read_symlink("/proc/self/exe", failure).parent_path().parent_path();
    std::string behaviour;
    std::ifstream(contents / "behaviour") >> behaviour;
    if (behaviour == "crashes")
        std::abort();
    if (behaviour != "hangs")
        std::filesystem::remove(contents / "update-pending", failure);
    std::this_thread::sleep_for(behaviour == "leaves" ? 100ms : 20s);
    return 0;
}
