#include "platform/qt/QtOpenPanel.h"

#include "platform/qt/QtApplicationChooser.h"
#include "platform/qt/QtText.h"
#include "platform/qt/QtWindow.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace letterloft {

void QtOpenPanel::setPrompt(const std::string& prompt) { wanted_.prompt = toQt(prompt); }

void QtOpenPanel::setMessage(const std::string& message) { wanted_.message = toQt(message); }

void QtOpenPanel::setDirectoryURL(const std::string& folder) { wanted_.folder = toQt(folder); }

void QtOpenPanel::beginSheetModalForWindow(Window& window, std::function<void(int result)> handler) {
    if (std::find(types_.begin(), types_.end(), "app") != types_.end())
        return begin(std::make_unique<QtApplicationChooser>(wanted_, applications_.all()), window, std::move(handler));
    const auto canChoose = [types = types_, files = canChooseFiles_,
                            folders = canChooseDirectories_](const QFileInfo& entry) {
        const bool fits = types.empty() || std::find(types.begin(), types.end(), fromQt(entry.suffix())) != types.end();
        return fits && (entry.isDir() ? folders : files);
    };
    begin(std::make_unique<QtFileChooser>(wanted_, canChoose), window, std::move(handler));
}

template <typename Chooser>
void QtOpenPanel::begin(std::unique_ptr<Chooser> chooser, Window& window, std::function<void(int result)> handler) {
    const Chooser* const shown = chooser.get();
    const auto answered = [self = shared_from_this(), shown, handler = std::move(handler)] {
        if (!shown->chosen().isEmpty()) self->urls_ = {fromQt(shown->chosen())};
        handler(self->urls_.empty() ? cancelResult : okResult);
    };
    dynamic_cast<QtWindow&>(window).beginSheet(std::move(chooser), answered);
}

} // namespace letterloft
