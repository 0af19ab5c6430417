#pragma once

#include <string>
#include <variant>

namespace letterloft {

// What a cell shows or hands over: nothing, a tick, or a text (UTF-8).
using CellValue = std::variant<std::monostate, bool, std::string>;

// One cell of an outline, made anew for each request; the view that asked owns it from then on.
struct Cell {
    enum class Kind { text, checkBox };
    enum class ImagePosition { noImage, imageOnly };

    Kind kind = Kind::text;
    std::string title = {};
    std::string stringValue = {};
    ImagePosition imagePosition = ImagePosition::noImage; // imageOnly: the box alone, without a label
    bool editable = false;
};

// The font that a column's cells are set in.
class Font {
public:
    virtual ~Font() = default;

    // The width, in points, of the text set on one line.
    virtual double widthInPoints(const std::string& text) const = 0;
};

} // namespace letterloft
