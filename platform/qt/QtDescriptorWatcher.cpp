#include "platform/qt/QtDescriptorWatcher.h"

#include <QSocketNotifier>

#include <utility>

namespace letterloft {

namespace {

class NotifierWatch final : public DescriptorWatcher::Watch {
public:
    NotifierWatch(int descriptor, std::function<void()> handler) : notifier_{descriptor, QSocketNotifier::Read} {
        QObject::connect(&notifier_, &QSocketNotifier::activated, [handler = std::move(handler)] {
            const auto running = handler; // the handler may destroy this watch
            running();
        });
    }

private:
    QSocketNotifier notifier_;
};

} // namespace

std::unique_ptr<DescriptorWatcher::Watch> QtDescriptorWatcher::watchReadable(int descriptor,
                                                                             std::function<void()> handler) {
    return std::make_unique<NotifierWatch>(descriptor, std::move(handler));
}

} // namespace letterloft
