#include "platform/qt/QtAlerts.h"
#include "tests/contract/windows/QtManagerWindow.h"
#include "tests/fakes/FakeAlerts.h"

#include <gmock/gmock.h>

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <optional>
#include <vector>

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct FakeScreen {
    FakeScreen() { window.makeKeyAndOrderFront(); }
    std::string message() { return window.sheet ? window.sheet->messageText : ""; }
    void press(const std::string& title) { window.press(title); }
    void escape() { window.pressEscape(); }
    void closeSheet() { window.pressEscape(); }

    FakeNotificationCenter notifications;
    FakeWindow window{notifications};
    FakeAlerts alerts;
};

struct QtScreen {
    QtScreen() { manager.show(); }
    QMessageBox* box() { return manager.sheet<QMessageBox>(); }
    std::string message() { return box() ? box()->text().toStdString() : ""; }
    void press(const std::string& title) {
        for (auto* const button : box()->buttons())
            if (button->text().toStdString() == title) return button->click();
        FAIL() << "no button " << title;
    }
    void escape() { QTest::keyClick(box(), Qt::Key_Escape); }
    void closeSheet() { box()->close(); }

    QtManagerWindow manager;
    QtWindow& window = manager.window();
    QtAlerts alerts;
};

template <typename Screen>
class AlertSheets : public testing::Test {
protected:
    void ask(std::optional<std::string> other = "Cancel", std::optional<std::string> alternate = {}) {
        screen.alerts.beginCriticalAlertSheet({.messageText = "Sure?",
                                               .defaultButton = "OK",
                                               .alternateButton = alternate,
                                               .otherButton = other,
                                               .informativeText = "More."},
                                              screen.window, [this](int code) {
                                                  EXPECT_EQ(screen.message(), "") << "it went before";
                                                  answers.push_back(code);
                                              });
    }

    Screen screen;
    std::vector<int> answers;
};

using Both = testing::Types<FakeScreen, QtScreen>;
TYPED_TEST_SUITE(AlertSheets, Both);

TYPED_TEST(AlertSheets, AnswerWithTheCodeOfTheirButton_OfTheOtherOrTheOnlyOneForEscapeAndTheirOwnClose) {
    for (const char* title : {"OK", "Never", "Cancel"}) {
        this->ask("Cancel", "Never");
        this->screen.press(title);
    }
    for (const std::optional<std::string>& other : {std::optional<std::string>{"Cancel"}, {}}) {
        this->ask(other);
        this->screen.escape();
        this->ask(other);
        this->screen.closeSheet();
    }
    EXPECT_THAT(this->answers, ElementsAre(1, 0, -1, -1, -1, 1, 1));
}

TYPED_TEST(AlertSheets, ASecondOneIsDroppedWithItsAnswer) {
    this->ask();
    this->screen.alerts.beginAlertSheet("Second", "OK", this->screen.window);
    this->ask();
    EXPECT_EQ(this->screen.message(), "Sure?");
    this->screen.press("OK");
    EXPECT_EQ(this->screen.message(), "");
    EXPECT_THAT(this->answers, ElementsAre(1));
}

TYPED_TEST(AlertSheets, GoWithoutAnAnswerButANoticeIsSeenOnAClosedWindow) {
    this->ask();
    this->screen.window.endSheet();
    EXPECT_EQ(this->screen.message(), "");
    this->ask();
    this->screen.window.close();
    this->screen.window.endSheet();
    EXPECT_EQ(this->screen.message(), "");
    EXPECT_THAT(this->answers, IsEmpty());
    this->screen.alerts.beginAlertSheet("We're already managing %@!", "OK", this->screen.window);
    EXPECT_EQ(this->screen.message(), "We're already managing %@!");
    this->screen.press("OK");
    EXPECT_EQ(this->screen.message(), "");
}

TEST(QtAlertSheets, ShowEveryTextAsItIs) {
    QtScreen screen;
    screen.alerts.beginCriticalAlertSheet(
        {.messageText = "<b>A&B</b>", .defaultButton = "R&D", .informativeText = "<i>1 &lt; 2</i>"}, screen.window, {});
    for (auto* const label : screen.box()->findChildren<QLabel*>())
        EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText) << label->text().toStdString();
    EXPECT_EQ(screen.box()->informativeText().toStdString(), "<i>1 &lt; 2</i>");
    EXPECT_EQ(screen.box()->buttons().first()->text().toStdString(), "R&&D") << "drawn as R&D";
    EXPECT_EQ(screen.box()->icon(), QMessageBox::Critical);
}

} // namespace
} // namespace letterloft
