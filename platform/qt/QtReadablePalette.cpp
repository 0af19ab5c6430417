#include "platform/qt/QtReadablePalette.h"

#include <algorithm>
#include <cmath>

namespace letterloft {

namespace {

// Three fifths of the way to `text`: black on white becomes a grey with a contrast of more than 5 to 1.
QColor towards(const QColor& text, const QColor& page) {
    const auto between = [](int more, int less) { return (3 * more + 2 * less) / 5; };
    return {between(text.red(), page.red()), between(text.green(), page.green()), between(text.blue(), page.blue())};
}

// Relative luminance, contrast and what is enough for texts: Web Content Accessibility Guidelines 2.1, 1.4.3.
constexpr double enough = 4.5;

double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

QPalette withReadablePaleTexts(QPalette colors) {
    const QColor inert = towards(colors.color(QPalette::Active, QPalette::Text), colors.color(QPalette::Base));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        colors.setColor(QPalette::Disabled, role, inert);
    // Themes that say nothing of it leave it as it is meant for light pages (Qt 6.4).
    colors.setColor(QPalette::PlaceholderText, inert);
    return colors;
}

QPalette withReadableSelection(const QPalette& colors) {
    QPalette changed;
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        const QColor text = colors.color(group, QPalette::HighlightedText);
        QColor page = colors.color(group, QPalette::Highlight);
        const bool isLightText = luminance(text) > luminance(page);
        constexpr int steps = 30; // of a twentieth each
        for (int step = 0; step < steps && contrast(text, page) < enough; ++step)
            page = isLightText ? page.darker(105) : page.lighter(105);
        // What is set here stays when the desktop's theme changes.
        if (page != colors.color(group, QPalette::Highlight)) changed.setColor(group, QPalette::Highlight, page);
    }
    return changed;
}

} // namespace letterloft
