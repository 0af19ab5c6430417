#include "tests/contract/windows/QtManagerWindow.h"

#include <QMenu>
#include <QPushButton>
#include <QToolTip>

namespace letterloft {
namespace {

class Windows : public testing::Test {
protected:
    std::size_t closings() { return manager.notifications.countOf(NotificationCenter::windowWillClose); }
    bool isVisible() { return window.widget().isVisible(); }
    void attachSheet() {
        window.beginSheet(std::make_unique<QDialog>(), [] {});
    }

    QtManagerWindow manager;
    QtWindow& window = manager.window();
};

TEST_F(Windows, TellEachClosingOnceAndBeforeTheyDisappear) {
    bool wasVisible = false;
    manager.notifications.addObserver(NotificationCenter::windowWillClose, nullptr, [&] {
        wasVisible = isVisible();
        EXPECT_FALSE(manager.sheet()) << "it went before";
        window.close(); // within its closing
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
    window.widget().close(); // the user's
    EXPECT_FALSE(isVisible());
    EXPECT_EQ(closings(), 2U);
}

TEST_F(Windows, DoNotTellOfMenusToolTipsMinimizingAndTheEndOfTheProgram) {
    manager.show();
    QMenu menu;
    menu.addAction(QStringLiteral("Item"));
    menu.popup({10, 10});
    menu.close();
    QToolTip::showText({10, 10}, QStringLiteral("Tip"), &window.widget());
    QToolTip::hideText();
    window.widget().showMinimized();
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
    EXPECT_EQ(QCoreApplication::exec(), 0);
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
