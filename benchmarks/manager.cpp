// The manager window over real settings, against bare views of the same size on lists of texts: opening it, adding an
// account, reloading the outline with all applications open. Everything up to the finished picture counts.

#include "manager/LLAccountController.h"
#include "platform/linux/LocalNotificationCenter.h"
#include "platform/linux/PlistSettingsStore.h"
#include "platform/linux/PosixFileManager.h"
#include "platform/linux/SystemCalendar.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtInterfaceFile.h"
#include "platform/qt/QtOpenPanel.h"
#include "storage/SettingsKeys.h"

#include <QApplication>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTableView>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace letterloft {
namespace {

struct StandardError final : Log {
    void write(const std::string& message) override { std::fprintf(stderr, "%s\n", message.c_str()); }
};

struct Silence final : CopyProgress {
    void began(const std::string&, std::uint64_t) override {}
    void progressed(std::uint64_t) override {}
    void ended() override {}
};

struct NoApplications final : InstalledApplications {
    std::vector<Application> all() const override { return {}; }
};

// Of the processor: all of it is computing, and what else runs on the machine is not to count.
double millisecondsOf(auto work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    const double begin = now();
    work();
    return now() - begin;
}

// The least of some rounds: what disturbs a measurement only adds to it.
double best(int rounds, auto measure) {
    double least = measure();
    for (int round = 1; round < rounds; ++round)
        least = std::min(least, measure());
    return least;
}

void finishPicture(QWidget& window) {
    QCoreApplication::sendPostedEvents();
    window.grab();
}

struct Size {
    int accounts;
    int apps;
};

std::vector<std::string> texts(const std::string& begin, int count) {
    std::vector<std::string> all;
    for (int i = 0; i < count; ++i)
        all.push_back(begin + std::to_string(i));
    return all;
}

// The whole window, over a settings file in a folder of its own.
class Ours {
public:
    Ours(const std::string& home, Size size)
        : settings_{std::move(*PlistSettingsStore::load(home + "/settings-" + std::to_string(size.accounts), calls_,
                                                        log_, [] { return Status::ok(); }))},
          files_{{log_, calls_, silence_}, home, {}} {
        settings_->setList(keys::accounts, texts("Account ", size.accounts));
        settings_->setText(keys::currentUser, "Account 0");
        settings_->setList(keys::apps, texts("/usr/share/applications/program-", size.apps));
        for (const std::string& app : settings_->list(keys::apps))
            settings_->setList(app, texts(app + "/item-", 10));
    }

    void open() {
        controller_ = LLAccountController::initWithWindow(
            {*settings_, files_, interfaceFiles_, alerts_, panels_, center_, calendar_, log_}, nullptr);
        controller_->showWindow();
        finishPicture(widget());
    }

    void addAccount() {
        auto names = settings_->list(keys::accounts);
        names.push_back("New");
        settings_->setList(keys::accounts, names);
        file().tableView("tableView")->reloadData();
        finishPicture(widget());
    }

    void openAllApps() {
        auto& tree = *widget().findChild<QTreeView*>(QStringLiteral("myView"));
        tree.expandToDepth(0);
        finishPicture(widget());
    }

    void reloadOutline() {
        file().outlineView("myView")->reloadData();
        finishPicture(widget());
    }

private:
    // Keeps what the controller loaded within reach.
    class Files final : public InterfaceFiles {
    public:
        explicit Files(NotificationCenter& center) : files_{center} {}
        std::unique_ptr<InterfaceFile> load(const std::string& name, const Actions& actions) override {
            auto made = files_.load(name, actions);
            last = made.get();
            return made;
        }
        InterfaceFile* last = nullptr;

    private:
        QtInterfaceFiles files_;
    };

    InterfaceFile& file() { return *interfaceFiles_.last; }
    QWidget& widget() { return dynamic_cast<QtWindow&>(file().window()).widget(); }

    FileSystemCalls calls_;
    StandardError log_;
    Silence silence_;
    std::unique_ptr<PlistSettingsStore> settings_;
    PosixFileManager files_;
    LocalNotificationCenter center_;
    Files interfaceFiles_{center_};
    QtAlerts alerts_;
    NoApplications applications_;
    QtOpenPanels panels_{applications_};
    SystemCalendar calendar_;
    std::unique_ptr<LLAccountController> controller_;
};

// The same window with both lists as texts in Qt's own models.
class Bare {
public:
    explicit Bare(Size size) : size_{size} {}

    void open() {
        fillAccounts();
        fillApps();
        file_ = interfaceFiles_.load("LLAccountWindow", {});
        table().setModel(&accounts_);
        tree().setModel(&apps_);
        file_->window().makeKeyAndOrderFront();
        finishPicture(widget());
    }

    void addAccount() {
        auto names = accounts_.stringList();
        names.append(QStringLiteral("New"));
        accounts_.setStringList(names);
        finishPicture(widget());
    }

    void reloadOutline() {
        fillApps();
        tree().expandToDepth(0);
        finishPicture(widget());
    }

private:
    void fillAccounts() {
        QStringList names;
        for (const std::string& name : texts("Account ", size_.accounts))
            names.append(QString::fromStdString(name));
        accounts_.setStringList(names);
    }

    void fillApps() {
        apps_.clear();
        for (const std::string& app : texts("/usr/share/applications/program-", size_.apps)) {
            auto* const row = new QStandardItem{QString::fromStdString(app)};
            for (const std::string& item : texts(app + "/item-", 10))
                row->appendRow(new QStandardItem{QString::fromStdString(item)});
            apps_.appendRow(row);
        }
    }

    QWidget& widget() { return dynamic_cast<QtWindow&>(file_->window()).widget(); }
    QTableView& table() { return *widget().findChild<QTableView*>(); }
    QTreeView& tree() { return *widget().findChild<QTreeView*>(QStringLiteral("myView")); }

    Size size_;
    QStringListModel accounts_;
    QStandardItemModel apps_;
    LocalNotificationCenter center_;
    QtInterfaceFiles interfaceFiles_{center_};
    std::unique_ptr<InterfaceFile> file_;
};

struct Times {
    double opening;
    double adding;
    double reloading;
};

Times timesOf(int rounds, auto& window, auto make) {
    Times times{};
    times.opening = best(rounds, [&] {
        window = make();
        return millisecondsOf([&] { window->open(); });
    });
    constexpr int shortOnes = 4; // the shorter a piece of work, the more of it something else can be
    times.adding = best(rounds * shortOnes, [&] { return millisecondsOf([&] { window->addAccount(); }); });
    if constexpr (requires { window->openAllApps(); }) window->openAllApps();
    times.reloading = best(rounds, [&] { return millisecondsOf([&] { window->reloadOutline(); }); });
    return times;
}

void print(const std::string& what, double ratio, const char* must) {
    std::printf("%s\t%.2f\t%s\t-\n", what.c_str(), ratio, must);
}

void compare(const std::string& home, int rounds) {
    const Size large{10'000, 1'000};
    const Size small{1'000, 100};
    std::unique_ptr<Ours> ours;
    std::unique_ptr<Bare> bare;
    const Times few = timesOf(rounds, ours, [&] { return std::make_unique<Ours>(home, small); });
    const Times many = timesOf(rounds, ours, [&] { return std::make_unique<Ours>(home, large); });
    const Times plain = timesOf(rounds, bare, [&] { return std::make_unique<Bare>(large); });
    std::printf("milliseconds at 10,000 accounts and 1,000 applications: opening %.1f, adding %.1f, reloading %.1f\n",
                many.opening, many.adding, many.reloading);
    print("opening the manager window / bare views", many.opening / plain.opening, "2");
    print("adding an account / bare view", many.adding / plain.adding, "2");
    print("reloading the open outline / bare view", many.reloading / plain.reloading, "2");
    print("opening at ten times the size / ten times the time", many.opening / few.opening / 10, "1");
    print("adding at ten times the size / ten times the time", many.adding / few.adding / 10, "1");
    print("reloading at ten times the size / ten times the time", many.reloading / few.reloading / 10, "1");
}

} // namespace
} // namespace letterloft

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "qt.qpa.*=false");
    QApplication application{argc, argv};
    std::string folder = "/tmp/letterloft-manager-XXXXXX";
    if (!mkdtemp(folder.data())) return EXIT_FAILURE;
    letterloft::compare(folder, argc > 1 && std::string_view{argv[1]} == "--long" ? 20 : 5);
    return std::system(("rm -r " + folder).c_str()) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
