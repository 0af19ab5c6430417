#pragma once

#include "platform/Image.h"

#include <map>

namespace letterloft {

// The images compiled into the program, each in five sizes from 16 to 48 pixels.
class QtImageResources final : public ImageResources {
public:
    QtImageResources();

    std::shared_ptr<const Image> imageNamed(const std::string& name) const override;

private:
    // An image that is asked for again is the same one, so that a menu can tell that a row has not changed.
    mutable std::map<std::string, std::shared_ptr<const Image>> loaded_;
};

} // namespace letterloft
