#include "tests/contract/windows/QtManagerWindow.h"
#include "tests/fakes/FakeWindow.h"

#include <QMenu>
#include <QPushButton>
#include <QToolTip>

namespace letterloft {
namespace {

struct FakeManager {
    Window& window() { return fake; }
    void attachSheet() {
        FakeSheet sheet;
        sheet.messageText = "Sure?";
        fake.attach(sheet);
    }
    void answerSheet() { fake.answer(0); }
    bool hasSheet() { return fake.sheet != nullptr; }
    bool isVisible() { return fake.isVisible; }

    FakeNotificationCenter notifications;
    FakeWindow fake{notifications};
};

struct QtManager : QtManagerWindow {
    void attachSheet() {
        window().beginSheet(std::make_unique<QDialog>(), [] {});
    }
    void answerSheet() { sheet()->accept(); }
    bool hasSheet() { return sheet() != nullptr; }
    bool isVisible() { return window().widget().isVisible(); }
};

template <typename Manager>
class Windows : public testing::Test {
protected:
    std::size_t closings() { return manager.notifications.countOf(NotificationCenter::windowWillClose); }

    Manager manager;
};

using Both = testing::Types<FakeManager, QtManager>;
TYPED_TEST_SUITE(Windows, Both);

TYPED_TEST(Windows, TellEachClosingOnceAndBeforeTheyDisappear) {
    Window& window = this->manager.window();
    bool wasVisible = false;
    this->manager.notifications.addObserver(NotificationCenter::windowWillClose, &window, [&] {
        wasVisible = this->manager.isVisible();
        EXPECT_FALSE(this->manager.hasSheet()) << "it went before";
    });
    window.makeKeyAndOrderFront();
    this->manager.attachSheet();
    this->manager.answerSheet();
    this->manager.attachSheet();
    window.endSheet();
    EXPECT_EQ(this->closings(), 0U) << "only sheets ended";
    this->manager.attachSheet();
    window.close();
    EXPECT_TRUE(wasVisible);
    EXPECT_FALSE(this->manager.isVisible());
    window.close();
    EXPECT_EQ(this->closings(), 1U) << "a hidden one does not close";
    window.makeKeyAndOrderFront();
    EXPECT_TRUE(this->manager.isVisible());
    window.close();
    EXPECT_EQ(this->closings(), 2U);
}

class QtWindows : public Windows<QtManager> {};

TEST_F(QtWindows, TellOfTheUsersCloseOfAnyOfThem) {
    QtWindow other{std::make_unique<QWidget>(), manager.notifications};
    std::size_t closed = 0;
    for (QtWindow* const window : {&other, &manager.window()}) {
        window->makeKeyAndOrderFront();
        window->widget().close();
        EXPECT_EQ(closings(), ++closed);
    }
    EXPECT_FALSE(manager.isVisible());
}

TEST_F(QtWindows, DoNotTellOfMenusToolTipsAndMinimizing) {
    manager.show();
    QMenu menu;
    menu.addAction(QStringLiteral("Item"));
    menu.popup({10, 10});
    menu.close();
    QToolTip::showText({10, 10}, QStringLiteral("Tip"), &manager.window().widget());
    QToolTip::hideText();
    manager.window().widget().showMinimized();
    EXPECT_EQ(closings(), 0U);
}

TEST_F(QtWindows, CloseOnceThoughAHandlerClosesThemAgain) {
    manager.notifications.addObserver(NotificationCenter::windowWillClose, nullptr,
                                      [this] { manager.window().close(); });
    manager.show();
    manager.window().close();
    EXPECT_EQ(closings(), 1U);
}

TEST_F(QtWindows, DoNotTellOfTheEndOfTheProgram) {
    manager.show();
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(closings(), 0U);
    manager.file.reset();
    EXPECT_EQ(closings(), 0U);
}

TEST(ManagerWindow, EveryControlSendsItsOperationAndHasAName) {
    QtManagerWindow manager;
    std::map<std::string, int> sent;
    InterfaceFiles::Actions actions;
    for (const char* name :
         {"insertAccount:", "removeAccount:", "resetAllData:", "insertApp:", "insertFile:", "removeAppOrFile:"})
        actions[name] = [&sent, name](Sender* sender) { sent[name] += sender ? 1 : 0; };
    manager.file = manager.files.load("LLAccountWindow", actions);
    manager.show();
    for (auto* const button : manager.window().widget().findChildren<QPushButton*>()) {
        button->click();
        EXPECT_FALSE(button->accessibleName().isEmpty()) << button->text().toStdString();
    }
    for (const auto& [name, action] : actions)
        EXPECT_EQ(sent[name], 1) << name;

    manager.child<QWidget>("tableView").setFocus();
    QTest::keyClick(&manager.child<QWidget>("tableView"), Qt::Key_Delete);
    EXPECT_EQ(sent["removeAccount:"], 2);
    manager.child<QWidget>("myView").setFocus();
    QTest::keyClick(&manager.child<QWidget>("myView"), Qt::Key_Delete);
    EXPECT_EQ(sent["removeAppOrFile:"], 2);
    QTest::keyClick(&manager.child<QWidget>("myView"), Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(sent["insertAccount:"], 2);
    EXPECT_EQ(manager.files.load("Other", actions), nullptr);
}

} // namespace
} // namespace letterloft
