#include "platform/qt/QtAlerts.h"

#include "platform/qt/QtText.h"
#include "platform/qt/QtWindow.h"

#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <memory>
#include <utility>

namespace letterloft {

namespace {

// A label breaks no line within a word, and a name may be a word of 255 letters.
QString breakable(const QString& text) {
    constexpr int longestRun = 60;
    constexpr QChar mayBreak{0x200B};
    QString out;
    int run = 0;
    for (const QChar c : text) {
        out += c;
        run = c.isSpace() || c == QLatin1Char{'/'} ? 0 : run + 1;
        if (run < longestRun || c.isHighSurrogate()) continue;
        out += mayBreak;
        run = 0;
    }
    return out;
}

std::unique_ptr<QMessageBox> messageBox(QMessageBox::Icon icon, const std::string& text) {
    auto box = std::make_unique<QMessageBox>();
    box->setIcon(icon);
    box->setWindowTitle(QGuiApplication::applicationDisplayName());
    box->setTextFormat(Qt::PlainText);
    box->setText(breakable(toQt(text)));
    return box;
}

void setInformativeText(QMessageBox& box, const std::string& text) {
    box.setInformativeText(toQt(text));
    // setTextFormat() leaves this label auto-detecting HTML (Qt 6.4).
    if (auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
        label->setTextFormat(Qt::PlainText);
}

QPushButton* addButton(QMessageBox& box, const std::string& title, QMessageBox::ButtonRole role) {
    return box.addButton(plainTitle(toQt(title)), role);
}

} // namespace

void QtAlerts::beginCriticalAlertSheet(const CriticalAlert& alert, Window& window, Completion completion) {
    auto box = messageBox(QMessageBox::Critical, alert.messageText);
    setInformativeText(*box, alert.informativeText);
    auto* const standard = addButton(*box, alert.defaultButton, QMessageBox::AcceptRole);
    auto* const alternate =
        alert.alternateButton ? addButton(*box, *alert.alternateButton, QMessageBox::DestructiveRole) : nullptr;
    auto* const other = alert.otherButton ? addButton(*box, *alert.otherButton, QMessageBox::RejectRole) : nullptr;
    box->setDefaultButton(standard);
    box->setEscapeButton(other ? other : standard);
    const QMessageBox* const shown = box.get();
    dynamic_cast<QtWindow&>(window).beginSheet(std::move(box), [=, completion = std::move(completion)] {
        if (!completion) return;
        const QAbstractButton* pressed = shown->clickedButton();
        if (!pressed) pressed = shown->escapeButton(); // closed: Qt 6.4 names the button only after this
        if (pressed == standard)
            completion(defaultReturn);
        else
            completion(alternate && pressed == alternate ? alternateReturn : otherReturn);
    });
}

void QtAlerts::beginAlertSheet(const std::string& messageText, const std::string& button, Window& window) {
    auto box = messageBox(QMessageBox::Warning, messageText);
    auto* const only = addButton(*box, button, QMessageBox::AcceptRole);
    box->setDefaultButton(only);
    box->setEscapeButton(only);
    dynamic_cast<QtWindow&>(window).beginSheet(std::move(box), [] {});
}

} // namespace letterloft
