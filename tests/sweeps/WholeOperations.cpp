#include "tests/sweeps/WholeOperations.h"

#include "app/InterruptedMoveFolders.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <sys/wait.h>
#include <utility>

namespace letterloft {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::IsEmpty;

namespace {

const Texts accounts{"A", "B", "C"};
const std::string mail = "/Applications/Mail.app";
const std::string draw = "/usr/share/applications/draw.desktop";

// Those whose names begin with a capital are folders.
Texts itemsOf(const std::string& app, const std::string& near, const std::string& far) {
    if (app == mail) return {near + "/Library/Mail", near + "/.mailrc", far + "/Pictures", far + "/archive"};
    return {near + "/Drawings", near + "/.drawrc"};
}

void makeItem(const std::string& path, const std::string& text, long& time) {
    const bool isFolder = std::isupper(static_cast<unsigned char>(lastComponent(path).front())) != 0;
    fs::create_directories(isFolder ? path + "/Inner/Empty" : fs::path{path}.parent_path().native());
    const auto makeFile = [&](const std::string& name) {
        writeFile(path + name, text + name);
        setTime(path + name, time += 1000);
    };
    if (!isFolder) return makeFile("");
    makeFile("/one");
    makeFile("/Inner/two");
    fs::create_symlink(text + " link", path + "/link");
    setTime(path + "/link", time += 1000);
}

bool isMarked(const std::string& path) { return path.find("/.letterloft-") != std::string::npos; }

std::vector<std::string> without(const ManagedHome::Files& all, const ManagedHome::Files& known) {
    std::vector<std::string> rest;
    std::set_difference(all.begin(), all.end(), known.begin(), known.end(), std::back_inserter(rest));
    return rest;
}

void answerOk(ProgramOverFakes& program, const char* operation) {
    program.press(operation);
    program.window().press("OK");
}

void deleteB(ProgramOverFakes& program) {
    program.table().select(1);
    answerOk(program, "removeAccount:");
}

void removeMail(ProgramOverFakes& program) {
    program.outline().select(0);
    answerOk(program, "removeAppOrFile:");
}

void reset(ProgramOverFakes& program) { answerOk(program, "resetAllData:"); }

// Runs it in a process of its own; whether that was ended by a fault.
bool isEnded(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_THAT(status, AnyOf(0, W_EXITCODE(FaultyCalls::endedHere, 0)));
    return status != 0;
}

} // namespace

const std::vector<Operation> wholeOperations{{"Switch", [](ProgramOverFakes& program) { program.menu.choose("B"); }},
                                             {"Deletion", deleteB},
                                             {"DeletionWithBackupsFar", deleteB, false, true},
                                             {"RemovalOfAnApplication", removeMail},
                                             {"Rename",
                                              [](ProgramOverFakes& program) {
                                                  program.table().beginEditing(0);
                                                  program.table().commit(std::string{"Z"});
                                              }},
                                             {"Reset", reset, true}};

ManagedHome::ManagedHome(std::string near, std::string far, bool backsUpFar)
    : near_{std::move(near) + "/near"}, far_{std::move(far) + "/far"}, backsUpFar_{backsUpFar} {}

void ManagedHome::make() const {
    fs::remove_all(near_);
    fs::remove_all(far_);
    fs::create_directories(far_ + "/backups");
    long time = 1000000000;
    FaultyCalls calls;
    FakeLog log;
    const auto store = PlistSettingsStore::load(settingsFile(), calls, log, [] { return Status::ok(); });
    (*store)->setList(keys::accounts, accounts);
    (*store)->setText(keys::currentUser, accounts.front());
    (*store)->setList(keys::apps, {mail, draw});
    for (const std::string& app : {mail, draw}) {
        (*store)->setList(app, itemsOf(app, folder(), far_));
        for (const std::string& item : itemsOf(app, folder(), far_))
            for (const std::string& account : accounts) {
                const bool isLive = account == accounts.front();
                fs::create_directories(accountFolder(folder(), account));
                makeItem(isLive ? item : parkedPath(accountFolder(folder(), account), item), account + item, time);
            }
    }
    EXPECT_TRUE((*store)->synchronize());
    if (backsUpFar_) fs::create_directory_symlink(far_ + "/backups", supportFolder(folder()) + "/OldData");
}

std::string ManagedHome::currentUser() const {
    FileSystemCalls calls;
    FakeLog log;
    const auto store = PlistSettingsStore::load(settingsFile(), calls, log, [] { return Status::ok(); });
    return store ? (*store)->text(keys::currentUser).value_or("none") : store.status().sentence();
}

ManagedHome::Places ManagedHome::places() const {
    Places places;
    for (const std::string& root : {folder(), far_})
        for (auto& [path, text] : described(root))
            // 4xxxx is a folder's mode.
            if (!text.starts_with('4') && !path.ends_with("/OldData")) places.emplace(root + path, text);
    return places;
}

ManagedHome::Files ManagedHome::filesOf(const Places& places) {
    Files files;
    for (const auto& [path, text] : places)
        if (!isMarked(path)) files.insert(text);
    return files;
}

ManagedHome::Files ManagedHome::liveFiles() const {
    Files files;
    for (const auto& [path, text] : places())
        if (!path.starts_with(supportFolder(folder()))) files.insert(text);
    return files;
}

RealDisk::RealDisk(const ManagedHome& managed, FileSystemCalls& calls)
    : files{{diskLog, calls, progress}, managed.folder(), {managed.settingsFile(), supportFolder(managed.folder())}} {
    auto loaded =
        PlistSettingsStore::load(managed.settingsFile(), calls, diskLog, [this] { return files.makeMovesDurable(); });
    if (!loaded) throw std::runtime_error{loaded.status().sentence()};
    settings = std::move(*loaded);
}

RealProgram::RealProgram(const ManagedHome& managed, FileSystemCalls& calls)
    : RealDisk{managed, calls}, ProgramOverFakes{*RealDisk::settings, RealDisk::files} {
    files.settle(interruptedMoveFolders(*settings, files));
    start();
}

OperationTrial::OperationTrial(const Operation& operation, const std::string& near, const std::string& far)
    : operation_{operation}, home_{near, far, operation.backsUpFar} {
    home_.make();
    FaultyCalls calls;
    RealProgram program{home_, calls};
    program.openManager();
    allowed_ = ManagedHome::filesOf(home_.places());
    required_ = operation_.isReset ? home_.liveFiles() : allowed_;
    settingsBefore_ = home_.settings();
    calls.strikeAt(FaultyCalls::Fault::none, 0);
    operation_.run(program);
    points_ = calls.count;
    cuttable_ = calls.cuttable;
    settingsAfter_ = home_.settings();
    placesAfter_ = home_.places();
    EXPECT_THAT(program.diskLog.lines, IsEmpty());
    EXPECT_NE(settingsBefore_, settingsAfter_);
    expectNothingLost();
}

bool OperationTrial::diesAt(int at, bool syncs) const {
    return isEnded([&] {
        FaultyCalls calls;
        calls.syncs = syncs;
        RealProgram program{home_, calls};
        program.openManager();
        calls.strikeAt(FaultyCalls::Fault::ends, at);
        operation_.run(program);
    });
}

bool OperationTrial::startDiesAt(int at) const {
    return isEnded([&] {
        FaultyCalls calls{FaultyCalls::Fault::ends, at};
        const RealProgram program{home_, calls};
    });
}

OperationTrial::Outcome OperationTrial::failsAt(FaultyCalls::Fault fault, int at) const {
    FaultyCalls calls;
    RealProgram program{home_, calls};
    program.openManager();
    calls.strikeAt(fault, at);
    operation_.run(program);
    calls.strikeAt(FaultyCalls::Fault::none, 0); // its end closes files
    const bool isOneError = fault == FaultyCalls::Fault::fails;
    return {isOneError, isOneError && !program.diskLog.lines.empty()};
}

void OperationTrial::expectNothingLost(const Outcome& outcome) const {
    const ManagedHome::Places places = home_.places();
    EXPECT_THAT(without(required_, ManagedHome::filesOf(places)), IsEmpty()) << "lost";
    const std::string settings = home_.settings();
    EXPECT_THAT(settings, AnyOf(settingsBefore_, settingsAfter_));
    if (settings == settingsAfter_ && !outcome.mayLackMoves) {
        EXPECT_TRUE(places == placesAfter_) << "the settings are newer than the moves";
    }
}

void OperationTrial::expectDone() const {
    EXPECT_EQ(home_.settings(), settingsAfter_);
    EXPECT_TRUE(home_.places() == placesAfter_) << "a move is not durable";
}

void OperationTrial::expectFiles(const Outcome& outcome) const {
    const ManagedHome::Places places = home_.places();
    const ManagedHome::Files files = ManagedHome::filesOf(places);
    EXPECT_THAT(without(required_, files), IsEmpty()) << "lost";
    if (!outcome.mayHaveCopies) {
        EXPECT_THAT(without(files, allowed_), IsEmpty()) << "more than once";
    }
    EXPECT_TRUE(std::none_of(places.begin(), places.end(), [](const auto& place) { return isMarked(place.first); }));
}

void OperationTrial::expectRecovery(int switches, const Outcome& outcome) const {
    FaultyCalls calls;
    RealProgram program{home_, calls};
    expectFiles(outcome);
    expectNextSwitches(program, switches, outcome);
    if (!outcome.mayHaveCopies) {
        EXPECT_THAT(program.diskLog.lines, IsEmpty());
    }
}

void OperationTrial::expectNextSwitches(RealProgram& program, int switches, const Outcome& outcome) const {
    if (operation_.isReset) return expectNextReset(program, outcome);
    int left = switches;
    for (const std::string& account : program.settings->list(keys::accounts)) {
        if (left == 0 || !program.menu.choose(account)) continue;
        --left;
        EXPECT_EQ(home_.currentUser(), account);
        expectFiles(outcome);
    }
    EXPECT_TRUE(switches == 0 || left < switches);
}

// A switch would first park what a reset must leave where it is.
void OperationTrial::expectNextReset(RealProgram& program, const Outcome& outcome) const {
    program.openManager();
    reset(program);
    EXPECT_EQ(home_.currentUser(), keys::defaultUser);
    expectFiles(outcome);
}

} // namespace letterloft
