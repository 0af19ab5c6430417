#pragma once

#include "platform/TableColumn.h"

#include <QHeaderView>

namespace letterloft {

// Measures text as the view draws it.
class QtFont final : public Font {
public:
    explicit QtFont(const QWidget& view) : view_{view} {}

    double widthInPoints(const std::string& text) const override;

private:
    const QWidget& view_;
};

// One section of a view's header.
class QtTableColumn final : public TableColumn {
public:
    QtTableColumn(QHeaderView& header, int section, std::string identifier, const QWidget& view);

    std::string identifier() const override { return identifier_; }
    double width() const override;
    void setWidth(double widthInPoints) override;
    const Font& dataCellFont() const override { return font_; }

private:
    QHeaderView& header_;
    int section_;
    std::string identifier_;
    QtFont font_;
    double widthSet_ = 0;
};

} // namespace letterloft
