#pragma once

#include "platform/Cell.h"

#include <string>

namespace letterloft {

// A column of a table or an outline; lives as long as its view.
class TableColumn {
public:
    virtual ~TableColumn() = default;

    // The name the interface file gives it; not its title.
    virtual std::string identifier() const = 0;

    // In points. A width set here stays until the next one; the header shrinks or stretches nothing by itself.
    virtual double width() const = 0;
    virtual void setWidth(double widthInPoints) = 0;

    // The font of the column's prototype cell.
    virtual const Font& dataCellFont() const = 0;
};

} // namespace letterloft
