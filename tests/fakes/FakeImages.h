#pragma once

#include "platform/Image.h"

#include <memory>
#include <string>
#include <utility>

namespace letterloft {

struct FakeImage final : Image {
    explicit FakeImage(std::string theName) : name{std::move(theName)} {}

    // The name of the resource that was handed over; empty for no image.
    static std::string nameOf(const std::shared_ptr<const Image>& image) {
        const auto* fake = dynamic_cast<const FakeImage*>(image.get());
        return fake ? fake->name : std::string{};
    }

    std::string name;
};

// The program's three images, and no others.
class FakeImages final : public ImageResources {
public:
    std::shared_ptr<const Image> imageNamed(const std::string& name) const override {
        const bool exists = name == "letter_icon" || name == "letter_alternate_icon" || name == "mailbox";
        return exists ? std::make_shared<const FakeImage>(name) : nullptr;
    }
};

} // namespace letterloft
