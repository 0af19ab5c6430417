#include "platform/qt/QtReadablePalette.h"

#include <gtest/gtest.h>

#include <cmath>

namespace letterloft {
namespace {

// Web Content Accessibility Guidelines 2.1, 1.4.3.
double contrast(const QPalette& colors, QPalette::ColorGroup group, QPalette::ColorRole text,
                QPalette::ColorRole page) {
    const auto luminance = [&](QPalette::ColorRole role) {
        const auto part = [](double value) {
            return value > 0.04045 ? std::pow((value + 0.055) / 1.055, 2.4) : value / 12.92;
        };
        const QColor color = colors.color(group, role);
        return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
    };
    const double one = luminance(text) + 0.05;
    const double other = luminance(page) + 0.05;
    return one > other ? one / other : other / one;
}

// Page, text, what is selected and its text, as usual themes have them.
TEST(TextsCanBeRead, OnLightPagesAndOnDarkOnes) {
    const QColor themes[][4] = {{Qt::white, Qt::black, QColor{48, 140, 198}, Qt::white},
                                {QColor{35, 38, 41}, QColor{239, 240, 241}, QColor{61, 174, 233}, Qt::white},
                                {Qt::black, Qt::white, QColor{90, 90, 90}, Qt::black}};
    for (const auto& [page, text, selection, selectedText] : themes) {
        QPalette theme;
        theme.setColor(QPalette::Base, page);
        theme.setColor(QPalette::Text, text);
        theme.setColor(QPalette::Highlight, selection);
        theme.setColor(QPalette::HighlightedText, selectedText);
        const QPalette pale = withReadablePaleTexts(theme);
        EXPECT_GE(contrast(pale, QPalette::Disabled, QPalette::Text, QPalette::Base), 4.5);
        EXPECT_GE(contrast(pale, QPalette::Active, QPalette::PlaceholderText, QPalette::Base), 4.5);
        const QPalette selected = withReadableSelection(theme).resolve(theme);
        for (const auto group : {QPalette::Active, QPalette::Inactive})
            EXPECT_GE(contrast(selected, group, QPalette::HighlightedText, QPalette::Highlight), 4.5);
    }
}

} // namespace
} // namespace letterloft
