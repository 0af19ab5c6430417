#include "tests/contract/windows/QtManagerWindow.h"

#include <QMenu>
#include <QPushButton>
#include <QToolTip>

namespace letterloft {
namespace {

class Windows : public testing::Test {
protected:
    std::size_t closings() { return manager.notifications.countOf(NotificationCenter::windowWillClose); }
    bool isVisible() { return manager.window().widget().isVisible(); }
    void attachSheet() {
        manager.window().beginSheet(std::make_unique<QDialog>(), [] {});
    }

    QtManagerWindow manager;
};

TEST_F(Windows, TellEachClosingOnceAndBeforeTheyDisappear) {
    Window& window = manager.window();
    bool wasVisible = false;
    manager.notifications.addObserver(NotificationCenter::windowWillClose, &window, [&] {
        wasVisible = isVisible();
        EXPECT_FALSE(manager.sheet()) << "it went before";
    });
    window.makeKeyAndOrderFront();
    attachSheet();
    manager.sheet()->accept();
    attachSheet();
    window.endSheet();
    EXPECT_EQ(closings(), 0U) << "only sheets ended";
    attachSheet();
    window.close();
    EXPECT_TRUE(wasVisible);
    EXPECT_FALSE(isVisible());
    window.close();
    EXPECT_EQ(closings(), 1U) << "a hidden one does not close";
    window.makeKeyAndOrderFront();
    EXPECT_TRUE(isVisible());
    window.close();
    EXPECT_EQ(closings(), 2U);
}

TEST_F(Windows, TellOfTheUsersCloseOfAnyOfThem) {
    QtWindow other{std::make_unique<QWidget>(), manager.notifications};
    std::size_t closed = 0;
    for (QtWindow* const window : {&other, &manager.window()}) {
        window->makeKeyAndOrderFront();
        window->widget().close();
        EXPECT_EQ(closings(), ++closed);
    }
    EXPECT_FALSE(isVisible());
}

TEST_F(Windows, DoNotTellOfMenusToolTipsAndMinimizing) {
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

TEST_F(Windows, CloseOnceThoughAHandlerClosesThemAgain) {
    manager.notifications.addObserver(NotificationCenter::windowWillClose, nullptr,
                                      [this] { manager.window().close(); });
    manager.show();
    manager.window().close();
    EXPECT_EQ(closings(), 1U);
}

TEST_F(Windows, DoNotTellOfTheEndOfTheProgram) {
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
    EXPECT_EQ(manager.files.load("Other", actions), nullptr);
}

} // namespace
} // namespace letterloft
