#pragma once

#include <memory>
#include <string>

namespace letterloft {

// A picture for a status item or a menu item; what it holds is the platform's affair.
class Image {
public:
    virtual ~Image() = default;
};

// The images among the program's own resources. Owned by main; outlives the controllers. Main thread only.
class ImageResources {
public:
    virtual ~ImageResources() = default;

    // The image resource of that name, given without folder or extension; none if there is no such resource.
    virtual std::shared_ptr<const Image> imageNamed(const std::string& name) const = 0;
};

} // namespace letterloft
