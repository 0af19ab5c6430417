#pragma once

#include "platform/TableColumn.h"

#include <cassert>
#include <string>
#include <utility>

namespace letterloft {

// Every byte is as wide as the next.
struct FakeFont final : Font {
    double widthInPoints(const std::string& text) const override { return 7.0 * static_cast<double>(text.size()); }
};

class FakeTableColumn final : public TableColumn {
public:
    FakeTableColumn(std::string identifier, double width) : identifier_{std::move(identifier)}, width_{width} {}

    std::string identifier() const override { return identifier_; }
    double width() const override { return width_; }
    void setWidth(double widthInPoints) override {
        assert(widthInPoints > 0);
        width_ = widthInPoints;
    }
    const Font& dataCellFont() const override { return font_; }

private:
    std::string identifier_;
    double width_;
    FakeFont font_;
};

} // namespace letterloft
