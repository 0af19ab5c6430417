// A switch of so many items on one file system against the bare calls that it can't do without: for each item an
// existence test at both places and a no-replace rename for what is there, one sync of each folder changed, and a small
// settings file made durable.

#include "menu/LLMenuLet.h"
#include "platform/linux/LocalNotificationCenter.h"
#include "platform/linux/PlistSettingsStore.h"
#include "platform/linux/PosixFileManager.h"
#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeMenu.h"
#include "tests/fakes/FakeRunLoop.h"
#include "tests/fakes/FakeRunningApplications.h"
#include "tests/fakes/FakeStatusBar.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace letterloft {
namespace {

[[noreturn]] void giveUp(const char* what) {
    std::perror(what);
    std::exit(1);
}

double secondsOf(auto work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// A home whose items lie live for account A, with nothing parked for account B.
struct Home {
    explicit Home(const std::string& folder, int count) : path{folder}, live{joined(folder, "live")} {
        std::filesystem::create_directories(live);
        for (const std::string& account : {a, b})
            std::filesystem::create_directories(accountFolder(path, account));
        for (int number = 0; number < count; ++number) {
            items.push_back(joined(live, "item-" + std::to_string(number)));
            std::ofstream{items.back()} << number;
        }
    }

    std::string path;
    std::string live;
    std::string a = "A";
    std::string b = "B";
    std::vector<std::string> items;
};

// The program's own switch, with everything but files and settings left away.
struct Ours {
    explicit Ours(const Home& home) : files{{log, calls, progress}, home.path, {}} {
        auto loaded = PlistSettingsStore::load(joined(home.path, "settings.plist"), calls, log,
                                               [this] { return files.makeMovesDurable(); });
        if (!loaded) giveUp("load");
        settings = std::move(*loaded);
        settings->setList(keys::accounts, {home.a, home.b});
        settings->setText(keys::currentUser, home.a);
        settings->setList(keys::apps, {"/application"});
        settings->setList("/application", home.items);
        if (!settings->synchronize()) giveUp("synchronize");
        menuLet.emplace(LLMenuLet::Services{*settings, files, running, launcher, runLoop, application, statusBar,
                                            images, notifications, log, nullptr},
                        menu);
        menuLet->awakeFromNib();
    }

    void switchTo(const std::string& account) {
        if (!menu.choose(account)) giveUp("the account can't be chosen");
    }

    FakeLog log;
    FileSystemCalls calls;
    FakeCopyProgress progress;
    PosixFileManager files;
    std::unique_ptr<PlistSettingsStore> settings;
    FakeRunLoop runLoop;
    FakeRunningApplications running{runLoop};
    FakeLauncher launcher;
    FakeApplication application;
    FakeStatusBar statusBar;
    FakeImages images;
    FakeMenu menu;
    LocalNotificationCenter notifications;
    std::optional<LLMenuLet> menuLet;
};

void syncFolder(const std::string& folder) {
    const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0 || fsync(opened) != 0 || close(opened) != 0) giveUp("sync");
}

void moveBarely(const std::string& from, const std::string& to) {
    struct stat status {};
    if (stat(from.c_str(), &status) != 0) return;
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0) giveUp("rename");
}

void switchBarely(const Home& home, const std::string& from, const std::string& to, const std::string& settings) {
    for (const std::string& item : home.items)
        moveBarely(item, parkedPath(accountFolder(home.path, from), item));
    for (const std::string& item : home.items)
        moveBarely(parkedPath(accountFolder(home.path, to), item), item);
    // B has nothing of its own, so no other folder changes.
    syncFolder(home.live);
    syncFolder(accountFolder(home.path, home.a));
    const std::string made = joined(home.path, "raw.new");
    const int file = open(made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0 || write(file, settings.data(), settings.size()) != static_cast<ssize_t>(settings.size()) ||
        fsync(file) != 0 || close(file) != 0 || std::rename(made.c_str(), joined(home.path, "raw").c_str()) != 0)
        giveUp("settings write");
    syncFolder(home.path);
}

// The median of the rounds' ratios, and the least time that one switch took.
struct Measured {
    double ratio;
    double seconds;
};

Measured measure(const std::string& folder, int count, int rounds) {
    const Home home{joined(folder, std::to_string(count)), count};
    Ours ours{home};
    std::ifstream file{joined(home.path, "settings.plist"), std::ios::binary};
    const std::string settings{std::istreambuf_iterator<char>{file}, {}};
    std::vector<double> ratios;
    double least = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double bare = secondsOf([&] {
            switchBarely(home, home.a, home.b, settings);
            switchBarely(home, home.b, home.a, settings);
        });
        const double own = secondsOf([&] {
            ours.switchTo(home.b);
            ours.switchTo(home.a);
        });
        ratios.push_back(own / bare);
        least = std::min(least, own);
    }
    if (!ours.log.lines.empty()) giveUp(ours.log.lines.front().c_str());
    std::nth_element(ratios.begin(), ratios.begin() + rounds / 2, ratios.end());
    return {ratios[static_cast<std::size_t>(rounds / 2)], least / 2};
}

} // namespace
} // namespace letterloft

int main(int argc, char** argv) {
    const bool isLong = argc > 1 && std::string_view{argv[argc - 1]} == "--long";
    const int rounds = isLong ? 101 : 21;
    std::string folder = std::filesystem::current_path() / "switch-benchmark-XXXXXX";
    if (!mkdtemp(folder.data())) letterloft::giveUp("mkdtemp");
    double seconds = 0;
    for (const int count : {1, 100, 1000}) {
        const auto measured = letterloft::measure(folder, count, rounds);
        const char* bounds = count == 1000 ? "1.5\t-" : "-\t-";
        std::printf("a switch of %d items, against the bare calls\t%.2f\t%s\n", count, measured.ratio, bounds);
        if (count == 1000)
            std::printf("a switch of ten times the items: growth over ten\t%.2f\t1.2\t-\n",
                        measured.seconds / seconds / 10);
        seconds = measured.seconds;
    }
    std::filesystem::remove_all(folder);
    return 0;
}
