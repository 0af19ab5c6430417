#pragma once

#include "platform/Image.h"

#include <QIcon>
#include <QString>

#include <memory>
#include <utility>

namespace letterloft {

// A picture in all the sizes it was drawn for, and what it says beside a title to those who don't see it.
class QtImage final : public Image {
public:
    explicit QtImage(QIcon icon, QString meaning = {}) : icon_{std::move(icon)}, meaning_{std::move(meaning)} {}

    // An empty icon for no image.
    static QIcon iconOf(const std::shared_ptr<const Image>& image) {
        const auto* own = dynamic_cast<const QtImage*>(image.get());
        return own ? own->icon_ : QIcon{};
    }

    // Empty for no image, and for one that says nothing.
    static QString meaningOf(const std::shared_ptr<const Image>& image) {
        const auto* own = dynamic_cast<const QtImage*>(image.get());
        return own ? own->meaning_ : QString{};
    }

private:
    QIcon icon_;
    QString meaning_;
};

} // namespace letterloft
