#pragma once

#include "platform/Image.h"

#include <QIcon>

#include <memory>
#include <utility>

namespace letterloft {

// A picture in all the sizes it was drawn for.
class QtImage final : public Image {
public:
    explicit QtImage(QIcon icon) : icon_{std::move(icon)} {}

    // An empty icon for no image.
    static QIcon iconOf(const std::shared_ptr<const Image>& image) {
        const auto* own = dynamic_cast<const QtImage*>(image.get());
        return own ? own->icon_ : QIcon{};
    }

private:
    QIcon icon_;
};

} // namespace letterloft
