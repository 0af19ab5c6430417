// A rebuild of the account menu, the account folders looked at and the result in a QMenu, against a QMenu that is only
// filled with as many actions.

#include "menu/LLMenuLet.h"
#include "platform/linux/LocalNotificationCenter.h"
#include "platform/linux/PosixFileManager.h"
#include "platform/qt/QtImageResources.h"
#include "platform/qt/QtMenuView.h"
#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeRunLoop.h"
#include "tests/fakes/FakeRunningApplications.h"
#include "tests/fakes/FakeSettingsStore.h"
#include "tests/fakes/FakeStatusBar.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>

namespace letterloft {
namespace {

double millisecondsOf(auto work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

// A home with so many accounts, and the menu over it.
struct Home {
    explicit Home(int count) {
        std::vector<std::string> accounts;
        for (int number = 0; number < count; ++number) {
            accounts.push_back("Account " + std::to_string(number));
            std::filesystem::create_directories(accountFolder(path, accounts.back()));
        }
        settings.setList(keys::accounts, accounts);
        settings.setText(keys::currentUser, accounts.front());
        for (const char* const title : {"Manage Accounts...", "Letterloft Help", "Quit"})
            menu.addCommand(title, [](Sender*) {});
        menuLet.awakeFromNib();
    }
    ~Home() { std::filesystem::remove_all(path); }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    // Into a view that shows the accounts already, as after a switch.
    double rebuild() { return rebuildInto(shown); }

    // All rows are new to the view, as at the start.
    double build() {
        QtMenuView view{menu};
        return rebuildInto(view);
    }

    double rebuildInto(QtMenuView& view) {
        return millisecondsOf([&] {
            menuLet.populateMenuWithAccounts();
            view.update();
        });
    }

    std::string folderTemplate = (std::filesystem::temp_directory_path() / "letterloft-menu-XXXXXX").string();
    std::string path = mkdtemp(folderTemplate.data());
    FakeLog log;
    FileSystemCalls calls;
    FakeCopyProgress progress;
    PosixFileManager files{{log, calls, progress}, path, {}};
    FakeSettingsStore settings;
    FakeRunLoop runLoop;
    FakeRunningApplications running{runLoop};
    FakeLauncher launcher;
    FakeApplication application;
    FakeStatusBar statusBar;
    QtImageResources images;
    LocalNotificationCenter notifications;
    QtMenu menu;
    LLMenuLet menuLet{{settings, files, running, launcher, runLoop, application, statusBar, images, notifications, log,
                       [] { return nullptr; }},
                      menu};
    QtMenuView shown{menu};
};

double fill(int count) {
    QMenu menu;
    return millisecondsOf([&] {
        for (int number = 0; number < count; ++number)
            menu.addAction(QStringLiteral("Account %1").arg(number));
    });
}

double best(int rounds, auto measure) {
    double least = measure();
    for (int round = 1; round < rounds; ++round)
        least = std::min(least, measure());
    return least;
}

void compare(int rounds) {
    std::map<int, double> rebuilds;
    for (const int count : {10, 1000, 10000}) {
        Home home{count};
        const double build = best(rounds, [&] { return home.build(); });
        const double bare = best(rounds, [&] { return fill(count); });
        home.rebuild();
        rebuilds[count] = best(rounds, [&] { return home.rebuild(); });
        std::printf("%d accounts: build %.2f ms, rebuild %.2f ms, bare fill %.2f ms\n", count, build, rebuilds[count],
                    bare);
        std::printf("menu of %d accounts built against a QMenu filled\t%.2f\t%s\t-\n", count, build / bare,
                    count == 10000 ? "2" : "-");
    }
    std::printf("menu rebuilt after a switch, per account, 10000 against 1000\t%.2f\t1.5\t-\n",
                rebuilds[10000] / rebuilds[1000] / 10);
}

} // namespace
} // namespace letterloft

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application{argc, argv};
    letterloft::compare(std::string_view{argv[argc - 1]} == "--long" ? 20 : 5);
    return EXIT_SUCCESS;
}
