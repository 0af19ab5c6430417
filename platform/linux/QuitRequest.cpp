#include "platform/linux/QuitRequest.h"

#include "platform/linux/DisplayConnections.h"
#include "storage/Text.h"

#include <algorithm>
#include <utility>

namespace letterloft {

namespace {

using std::chrono::steady_clock;

// The slowest clean end after the last window, over many programs, took less than two.
constexpr std::chrono::seconds timeToEndWithoutWindows{5};

bool holds(const std::vector<XWindows::Window>& windows, std::uint32_t id) {
    return std::any_of(windows.begin(), windows.end(), [id](const auto& window) { return window.id == id; });
}

bool anyCanBeClosed(const std::vector<XWindows::Window>& windows) {
    return std::any_of(windows.begin(), windows.end(), [](const auto& window) { return window.takesDeleteRequest; });
}

} // namespace

QuitRequest::QuitRequest(Addressee addressee, SessionBus& bus, DescriptorWatcher& watcher, Log& log)
    : addressee_{std::move(addressee)},
      bus_{bus},
      watcher_{watcher},
      log_{log},
      display_{std::make_unique<XWindows>()} {}

void QuitRequest::say(const char* sentence) const {
    log_.write(filledForLog(sentence, {addressee_.applicationPath, std::to_string(addressee_.program.pid())}));
}

void QuitRequest::send(const std::vector<pid_t>& pids) {
    const Windows shown = windowsOf(pids);
    hadWindows_ = anyCanBeClosed(shown);
    if (hadWindows_) watchWindows();
    const bool asked = askOnBus(pids, shown) || askNextWindow(shown);
    if (!asked) askBySignal();
    if (!hadWindows_) finish();
}

// The program's own windows; those of its other processes only where it has none, as a launcher's have.
QuitRequest::Windows QuitRequest::windowsOf(const std::vector<pid_t>& pids) {
    Windows ofInstance;
    Windows ofProgram;
    for (const XWindows::Window& window : display_->clientWindows()) {
        if (window.pid == addressee_.program.pid()) ofProgram.push_back(window);
        if (std::find(pids.begin(), pids.end(), window.pid) != pids.end()) ofInstance.push_back(window);
    }
    return anyCanBeClosed(ofProgram) ? ofProgram : ofInstance;
}

// A window tells the id of a program that owns no well-known name.
bool QuitRequest::askOnBus(std::vector<pid_t> pids, const Windows& windows) {
    if (addressee_.program.isStopped()) return false; // could not tell what it offers
    pids.insert(pids.end(), addressee_.proxies.begin(), addressee_.proxies.end());
    std::vector<SessionBus::ApplicationObject> objects;
    for (const auto& [uniqueName, names] : bus_.connectionsOf(pids)) {
        for (const std::string& name : names)
            objects.push_back({uniqueName, SessionBus::objectPathForId(name)});
        for (const XWindows::Window& window : windows) {
            if (window.uniqueBusName == uniqueName) objects.push_back({uniqueName, window.applicationObjectPath});
        }
        objects.push_back({uniqueName, SessionBus::objectPathForId(addressee_.applicationId)});
    }
    std::sort(objects.begin(), objects.end());
    objects.erase(std::unique(objects.begin(), objects.end()), objects.end());
    const auto object = bus_.objectOfferingQuit(objects);
    if (object) bus_.requestQuit(*object);
    return object.has_value();
}

// Newest first: closing a program's main window before the one with the unsaved text may drop the text. A dialog is
// left to the window it belongs to, and whatever does not take the request is never closed: that would be a kill.
bool QuitRequest::askNextWindow(const Windows& windows) {
    const bool anyMainWindow = std::any_of(windows.begin(), windows.end(), [](const XWindows::Window& window) {
        return window.takesDeleteRequest && !window.isDialog;
    });
    const auto next = std::find_if(windows.rbegin(), windows.rend(), [&](const XWindows::Window& window) {
        const bool hasOwner = window.transientFor != window.id && holds(windows, window.transientFor);
        const bool isForItsOwner = hasOwner || (window.isDialog && anyMainWindow); // an owner may not be told
        return window.takesDeleteRequest && !isForItsOwner && asked_.count(window.id) == 0;
    });
    if (next == windows.rend()) return false;
    known_.clear();
    dialogs_.clear();
    ofDialogs_.clear();
    for (const XWindows::Window& window : windows) {
        known_.insert(window.id);
        if (window.isDialog || window.transientFor != 0) dialogs_.insert(window.id);
    }
    questionStood_ = false;
    lastAsked_ = next->id;
    asked_.insert(next->id);
    display_->requestClose(*next);
    return true;
}

void QuitRequest::askBySignal() {
    const HeldProcess& program = addressee_.program;
    if (program.hasEnded()) return;
    const auto effect = program.sigtermEffect();
    const DisplayConnections shownOn = DisplayConnections::ofProcess(program.pid());
    const bool isSafe = effect == HeldProcess::SigtermEffect::handled ||
                        (effect == HeldProcess::SigtermEffect::deadly && !shownOn.x11 && !shownOn.wayland);
    if (isSafe && program.sendSigterm()) return;
    if (!program.hasEnded()) say("%@ (process %@) can't be asked to quit; waiting until it is ended by hand.");
}

void QuitRequest::followUp(const std::vector<pid_t>& pids) {
    if (finished_ || addressee_.program.hasEnded()) return;
    const Windows shown = windowsOf(pids);
    if (!display_->isConnected()) return finish(); // what is on the screen can't be known any more
    if (lastAsked_ != 0) followWindows(shown);
    followDisappearance(shown);
}

// A window that was not there when the last one was asked is a question, or may be one. Where the asked window goes
// with the question, the user has agreed; where it stays, the user has refused; where it went before the question came,
// the question is about the rest, and is for the user alone.
void QuitRequest::followWindows(const Windows& windows) {
    noteWindowsOfDialogs(windows);
    const bool questionStands =
        std::any_of(windows.begin(), windows.end(), [&](const auto& window) { return known_.count(window.id) == 0; });
    const bool askedIsThere = holds(windows, lastAsked_);
    if (questionStands) {
        questionStood_ = true;
        if (!askedIsThere) refused_ = true;
        return;
    }
    if (askedIsThere) {
        if (questionStood_) {
            refused_ = true;
        } else if (anyDialogHasGone(windows)) {
            asked_.erase(lastAsked_);
            askNextWindow(windows);
        }
        return;
    }
    if (!refused_) askNextWindow(windows);
}

// What a dialog that stood before opens over itself, such as "Really cancel?", answers the dialog's user and not us.
// The oldest windows come first.
void QuitRequest::noteWindowsOfDialogs(const Windows& windows) {
    for (const XWindows::Window& window : windows) {
        const bool isOfDialog = dialogs_.count(window.transientFor) != 0 || ofDialogs_.count(window.transientFor) != 0;
        if (isOfDialog && known_.insert(window.id).second) ofDialogs_.insert(window.id);
    }
}

// A window behind a dialog that stood before it was asked drops the request, in GTK at least: it is asked again once
// the dialog has gone.
bool QuitRequest::anyDialogHasGone(const Windows& windows) const {
    return std::any_of(dialogs_.begin(), dialogs_.end(), [&](const auto dialog) { return !holds(windows, dialog); });
}

// Some programs keep windows that nobody can close and that ask nothing, such as an icon of their own.
bool QuitRequest::keepsOnScreen(const XWindows::Window& window) const {
    const bool isNew = lastAsked_ != 0 && known_.count(window.id) == 0;
    return window.takesDeleteRequest || window.isDialog || window.transientFor != 0 || isNew;
}

// A program may go on without windows: in the tray, or because it never ends with them.
void QuitRequest::followDisappearance(const Windows& windows) {
    if (std::any_of(windows.begin(), windows.end(), [&](const auto& window) { return keepsOnScreen(window); })) {
        windowlessSince_.reset();
        return;
    }
    const auto now = steady_clock::now();
    if (!windowlessSince_) windowlessSince_ = now;
    if (now - *windowlessSince_ < timeToEndWithoutWindows) return;
    finish();
    const HeldProcess& program = addressee_.program;
    const bool handlesIt = program.sigtermEffect() == HeldProcess::SigtermEffect::handled;
    if (handlesIt && !DisplayConnections::ofProcess(program.pid()).wayland && program.sendSigterm()) return;
    if (!program.hasEnded()) say("%@ (process %@) goes on without a window; waiting until it is ended by hand.");
}

// Lets the next window be asked as soon as the last one has gone.
void QuitRequest::watchWindows() {
    display_->noticeChanges();
    displayWatch_ = watcher_.watchReadable(display_->descriptor(), [this] {
        if (!display_->takeNotices()) displayWatch_.reset();
    });
}

void QuitRequest::finish() {
    finished_ = true;
    displayWatch_.reset();
    display_.reset();
}

} // namespace letterloft
