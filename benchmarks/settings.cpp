// A settings write against the least that makes a small file durable: write, sync, rename, sync of the folder.

#include "platform/linux/PlistSettingsStore.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <unistd.h>

namespace letterloft {
namespace {

class NoLog final : public Log {
public:
    void write(const std::string& message) override { std::fprintf(stderr, "%s\n", message.c_str()); }
};

[[noreturn]] void giveUp(const char* what) {
    std::perror(what);
    std::exit(1);
}

void writeRaw(const std::string& folder, const std::string& bytes) {
    const std::string made = joined(folder, "raw.new");
    const int file = open(made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0 || write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) || fsync(file) != 0 ||
        close(file) != 0 || std::rename(made.c_str(), joined(folder, "raw").c_str()) != 0)
        giveUp("raw write");
    const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0 || fsync(opened) != 0 || close(opened) != 0) giveUp("raw sync");
}

double secondsOf(auto work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

std::vector<std::string> names(const char* begin, int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back(begin + std::to_string(i));
    return names;
}

void fill(SettingsStore& store, int accounts) {
    store.setList("Accounts", names("Account ", accounts));
    store.setList("Apps", names("/usr/share/applications/application-", accounts / 10));
    for (const std::string& app : store.list("Apps"))
        store.setList(app, names("/home/somebody/.config/item-", 3));
}

void compare(const std::string& folder, int accounts, int rounds) {
    FileSystemCalls calls;
    NoLog log;
    const std::string path = joined(folder, "settings-" + std::to_string(accounts));
    auto loaded = PlistSettingsStore::load(path, calls, log, [] { return Status::ok(); });
    if (!loaded) giveUp("load");
    SettingsStore& store = **loaded;
    fill(store, accounts);
    if (!store.synchronize()) giveUp("synchronize");
    std::ifstream file{path, std::ios::binary};
    const std::string bytes{std::istreambuf_iterator<char>{file}, {}};
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const double raw = secondsOf([&] { writeRaw(folder, bytes); });
        store.setText("Current User", "Account " + std::to_string(round));
        const double ours = secondsOf([&] {
            if (!store.synchronize()) giveUp("synchronize");
        });
        ratios.push_back(ours / raw);
    }
    std::nth_element(ratios.begin(), ratios.begin() + rounds / 2, ratios.end());
    const char* bounds = accounts <= 100 ? "1.3\t1.1" : "-\t-";
    std::printf("settings synchronize, %d accounts, against the raw calls\t%.2f\t%s\n", accounts,
                ratios[static_cast<std::size_t>(rounds / 2)], bounds);
}

} // namespace
} // namespace letterloft

int main(int argc, char** argv) {
    const bool isLong = argc > 1 && std::string_view{argv[argc - 1]} == "--long";
    std::string folder = std::filesystem::current_path() / "settings-benchmark-XXXXXX";
    if (!mkdtemp(folder.data())) letterloft::giveUp("mkdtemp");
    for (const int accounts : {10, 100, 10000})
        letterloft::compare(folder, accounts, isLong ? 1001 : 301);
    std::filesystem::remove_all(folder);
    return 0;
}
