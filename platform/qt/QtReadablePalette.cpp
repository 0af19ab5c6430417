#include "platform/qt/QtReadablePalette.h"

namespace letterloft {

namespace {

// Three fifths of the way to `text`: black on white becomes a grey with a contrast of more than 5 to 1.
QColor towards(const QColor& text, const QColor& page) {
    const auto between = [](int more, int less) { return (3 * more + 2 * less) / 5; };
    return {between(text.red(), page.red()), between(text.green(), page.green()), between(text.blue(), page.blue())};
}

} // namespace

QPalette withReadableInertRows(QPalette colors) {
    const QColor inert = towards(colors.color(QPalette::Active, QPalette::Text), colors.color(QPalette::Base));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        colors.setColor(QPalette::Disabled, role, inert);
    return colors;
}

} // namespace letterloft
