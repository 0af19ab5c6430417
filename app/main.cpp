#include "app/InterruptedMoveFolders.h"
#include "app/LetterloftAppDelegate.h"
#include "manager/LLAccountController.h"
#include "menu/LLMenuLet.h"
#include "platform/linux/ActivationSocket.h"
#include "platform/linux/CopyNotice.h"
#include "platform/linux/FileSystemCalls.h"
#include "platform/linux/GioInstalledApplications.h"
#include "platform/linux/GioLauncher.h"
#include "platform/linux/InstanceLock.h"
#include "platform/linux/LinuxRunningApplications.h"
#include "platform/linux/LocalNotificationCenter.h"
#include "platform/linux/PlistSettingsStore.h"
#include "platform/linux/PosixFileManager.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/SyslogLog.h"
#include "platform/linux/SystemCalendar.h"
#include "platform/linux/UserFolders.h"
#include "platform/qt/QtActivationBus.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtDescriptorWatcher.h"
#include "platform/qt/QtHelpWindow.h"
#include "platform/qt/QtImage.h"
#include "platform/qt/QtImageResources.h"
#include "platform/qt/QtInterfaceFile.h"
#include "platform/qt/QtMainInterface.h"
#include "platform/qt/QtOpenPanel.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/QtSmallMenuWindow.h"
#include "platform/qt/QtStart.h"
#include "platform/qt/QtStatusBar.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <QApplication>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <unistd.h>

using namespace letterloft;

namespace {

// Where a standard stream is closed, the next file to be opened takes its number, and what the log writes to standard
// error goes into that file.
void occupyStandardStreams() {
    int file = open("/dev/null", O_RDWR);
    while (file >= 0 && file <= STDERR_FILENO)
        file = dup(file);
    if (file >= 0) close(file);
}

// The files below the user's folders that decide how the program runs.
struct Places {
    explicit Places(const UserFolders& folders)
        : home{folders.home()},
          settings{folders.settingsFile()},
          lock{folders.lockFile()},
          socket{expandedTilde("~/Library/Application Support/Letterloft.socket", home)} {}

    std::string home;
    std::string settings;
    std::string lock;
    std::string socket;
};

// The files with what they stand on.
struct Files {
    Files(const Places& places, Log& log, FileSystemCalls& calls)
        : manager{{log, calls, notice},
                  places.home,
                  {places.settings, places.lock, places.socket, supportFolder(places.home)}} {}

    CopyNotice notice;
    PosixFileManager manager;
};

// The lock of the one program per home; none when another one holds it and has been asked to show itself. In the end
// it may be a lock held by one that could not be asked.
std::optional<InstanceLock> takeLock(const Places& places, FileSystemCalls& calls) {
    // The holder listens a moment after it has the lock, and has it a moment longer than it listens.
    constexpr int attempts = 200;
    constexpr int pauseMilliseconds = 10;
    for (int attempt = 1;; ++attempt) {
        InstanceLock lock = InstanceLock::take(calls, places.lock);
        if (lock.outcome() != InstanceLock::Outcome::heldByAnother) return lock;
        if (ActivationSocket::ask(places.socket)) return std::nullopt;
        if (attempt == attempts) return lock;
        poll(nullptr, 0, pauseMilliseconds);
    }
}

// Where the file system takes no sockets.
int askOverBus(int argc, char** argv, Log& log) {
    const QCoreApplication application{argc, argv};
    if (QtActivationBus::askRunningProgram()) return EXIT_SUCCESS;
    log.write("Letterloft runs already, and can't be asked to show itself.");
    return EXIT_FAILURE;
}

// What the program is made of, in the order in which it is made. Nothing here comes to its end in an orderly way: the
// program ends from wherever it is.
struct Program {
    Program(SettingsStore& settings, Files& theFiles, Log& theLog) : log{theLog}, files{theFiles}, store{settings} {}

    void start() {
        QtMainInterface::load(menu, {{"manageAccounts:", [this](Sender* sender) { menuLet.manageAccounts(sender); }},
                                     {"showHelp:", [this](Sender*) { help.show(); }},
                                     {"terminate:", [this](Sender*) { application.terminate(); }}});
        menuLet.awakeFromNib();
        QGuiApplication::setWindowIcon(QtImage::iconOf(images.imageNamed("letter_icon")));
        QMetaObject::invokeMethod(
            &application, [this] { delegate.applicationDidFinishLaunching(); }, Qt::QueuedConnection);
    }

    Log& log;
    Files& files;
    SettingsStore& store;
    LocalNotificationCenter notifications;
    QtDescriptorWatcher watcher;
    SessionBus bus{log};
    QtApplication application{store, [this] { bus.flush(); }};
    QtTrayHost trayHost;
    QtMenu menu;
    QtSmallMenuWindow smallMenu{menu, trayHost, notifications};
    QtHelpWindow help{notifications};
    QtStatusBar statusBar{trayHost, [this] { smallMenu.showAsAsked(); }};
    QtImageResources images;
    QtRunLoop runLoop;
    LinuxRunningApplications runningApplications{bus, watcher, log};
    GioLauncher launcher{bus, log};
    SystemCalendar calendar;
    GioInstalledApplications installedApplications;
    QtInterfaceFiles interfaceFiles{notifications};
    QtAlerts alerts;
    QtOpenPanels openPanels{installedApplications};
    LetterloftAppDelegate delegate{store, files.manager};
    LLMenuLet menuLet{{store, files.manager, runningApplications, launcher, runLoop, application, statusBar, images,
                       notifications, log, [this] { return makeAccountController(); }},
                      menu};

private:
    std::unique_ptr<WindowController> makeAccountController() {
        return LLAccountController::initWithWindow(
            {store, files.manager, interfaceFiles, alerts, openPanels, notifications, calendar, log}, nullptr);
    }
};

int runProgram(int argc, char** argv, const Places& places, Log& log, FileSystemCalls& calls) {
    std::optional<InstanceLock> lock = takeLock(places, calls);
    if (!lock) return EXIT_SUCCESS;
    if (lock->outcome() == InstanceLock::Outcome::heldByAnother) return askOverBus(argc, argv, log);
    std::optional<ActivationSocket> socket;
    if (lock->outcome() == InstanceLock::Outcome::taken) socket.emplace(places.socket);

    Files files{places, log, calls};
    auto settings =
        PlistSettingsStore::load(places.settings, calls, log, [&files] { return files.manager.makeMovesDurable(); });
    if (!settings) {
        log.write(escaped(settings.status().sentence()));
        socket.reset();
        lock.reset();
    }
    const auto qt = QtStart::makeApplication(argc, argv, log);
    if (!settings) return QtStart::showFailure(settings.status().sentence());
    if (lock->outcome() == InstanceLock::Outcome::impossible) log.write(escaped(lock->reason()));
    if (socket && !socket->status()) log.write(escaped(socket->status().sentence()));
    files.manager.settle(interruptedMoveFolders(**settings, files.manager));

    Program program{**settings, files, log};
    const auto showMenu = [&program] { program.smallMenu.showAsAsked(); };
    program.start();
    const QtActivationBus activationBus{[&program] { program.smallMenu.showAsActivated(); }};
    if (socket) socket->serve(program.watcher, showMenu);
    QApplication::exec();
    program.application.terminate();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // whoever reads what the log writes may go at any time
    occupyStandardStreams();
    SyslogLog log;
    FileSystemCalls calls;
    const Result<UserFolders> folders = UserFolders::fromEnvironment();
    if (!folders) {
        log.write(escaped(folders.status().sentence()));
        return EXIT_FAILURE;
    }
    return runProgram(argc, argv, Places{*folders}, log, calls);
}
