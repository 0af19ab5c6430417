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
    FakeScreen() { fake.makeKeyAndOrderFront(); }
    Window& window() { return fake; }
    bool hasSheet() { return fake.sheet != nullptr; }
    std::string message() { return fake.sheet->messageText; }
    void press(const std::string& title) { fake.press(title); }
    void escape() { fake.pressEscape(); }

    FakeNotificationCenter notifications;
    FakeWindow fake{notifications};
    FakeAlerts alerts;
};

struct QtScreen {
    QtScreen() { manager.show(); }
    Window& window() { return manager.window(); }
    QMessageBox* box() { return manager.sheet<QMessageBox>(); }
    bool hasSheet() { return box() != nullptr; }
    std::string message() { return box()->text().toStdString(); }
    void press(const std::string& title) {
        for (auto* const button : box()->buttons())
            if (button->text().toStdString() == title) return button->click();
        FAIL() << "no button " << title;
    }
    void escape() { QTest::keyClick(box(), Qt::Key_Escape); }

    QtManagerWindow manager;
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
                                              screen.window(), [this](int code) {
                                                  EXPECT_FALSE(screen.hasSheet());
                                                  answers.push_back(code);
                                              });
    }

    Screen screen;
    std::vector<int> answers;
};

using Both = testing::Types<FakeScreen, QtScreen>;
TYPED_TEST_SUITE(AlertSheets, Both);

TYPED_TEST(AlertSheets, AnswerWithTheCodeOfTheirButton) {
    for (const char* title : {"OK", "Never", "Cancel"}) {
        this->ask("Cancel", "Never");
        ASSERT_TRUE(this->screen.hasSheet());
        this->screen.press(title);
        EXPECT_FALSE(this->screen.hasSheet());
    }
    EXPECT_THAT(this->answers, ElementsAre(1, 0, -1));
}

TYPED_TEST(AlertSheets, TakeEscapeForTheOtherOrTheOnlyButton) {
    this->ask();
    this->screen.escape();
    this->ask(std::nullopt);
    this->screen.escape();
    EXPECT_THAT(this->answers, ElementsAre(-1, 1));
}

TYPED_TEST(AlertSheets, ASecondOneIsDroppedWithItsAnswer) {
    this->ask();
    this->screen.alerts.beginAlertSheet("Second", "OK", this->screen.window());
    this->ask();
    EXPECT_EQ(this->screen.message(), "Sure?");
    this->screen.press("OK");
    EXPECT_FALSE(this->screen.hasSheet());
    EXPECT_THAT(this->answers, ElementsAre(1));
}

TYPED_TEST(AlertSheets, GoWithoutAnAnswerButANoticeIsSeenOnAClosedWindow) {
    this->ask();
    this->screen.window().endSheet();
    EXPECT_FALSE(this->screen.hasSheet());
    this->ask();
    this->screen.window().close();
    this->screen.window().endSheet();
    EXPECT_FALSE(this->screen.hasSheet());
    EXPECT_THAT(this->answers, IsEmpty());
    this->screen.alerts.beginAlertSheet("We're already managing %@!", "OK", this->screen.window());
    ASSERT_TRUE(this->screen.hasSheet());
    EXPECT_EQ(this->screen.message(), "We're already managing %@!");
    this->screen.press("OK");
    EXPECT_FALSE(this->screen.hasSheet());
}

class QtAlertSheets : public AlertSheets<QtScreen> {};

TEST_F(QtAlertSheets, ShowEveryTextAsItIs) {
    screen.alerts.beginCriticalAlertSheet(
        {.messageText = "<b>A&B</b>", .defaultButton = "R&D", .informativeText = "<i>1 &lt; 2</i>"}, screen.window(),
        {});
    for (auto* const label : screen.box()->findChildren<QLabel*>())
        EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText) << label->text().toStdString();
    EXPECT_EQ(screen.box()->informativeText().toStdString(), "<i>1 &lt; 2</i>");
    EXPECT_EQ(screen.box()->buttons().first()->text().toStdString(), "R&&D") << "drawn as R&D";
    EXPECT_EQ(screen.box()->icon(), QMessageBox::Critical);
}

TEST_F(QtAlertSheets, TakeTheirOwnCloseForTheOtherOrTheOnlyButton) {
    ask();
    screen.box()->close();
    ask(std::nullopt);
    screen.box()->close();
    EXPECT_THAT(answers, ElementsAre(-1, 1));
}

} // namespace
} // namespace letterloft
