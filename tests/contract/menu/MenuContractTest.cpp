#include "platform/qt/QtMenu.h"
#include "platform/qt/QtMenuView.h"
#include "tests/fakes/FakeMenu.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

namespace letterloft {
namespace {

using testing::ElementsAre;

// A menu together with the hand that chooses from it.
struct FakeUnderTest : FakeMenu {
    Menu& menu = *this;
};

struct QtUnderTest {
    QtUnderTest() { view.follow(); }

    void choose(const std::string& title) {
        QCoreApplication::processEvents(); // the view follows
        for (QAction* const row : view.widget().actions())
            if (row->text() == QString::fromStdString(title)) row->trigger();
        QCoreApplication::processEvents();
    }

    QtMenu menu;
    QtMenuView view{menu};
};

template <typename UnderTest>
class MenuContract : public testing::Test {
protected:
    std::vector<std::string> titles() {
        std::vector<std::string> found;
        for (const auto& item : menu.itemArray())
            found.push_back(item->isSeparatorItem() ? "-" : item->title());
        return found;
    }

    std::shared_ptr<MenuItem> insert(const std::string& title, Action action = {}, std::size_t index = 0) {
        const auto item = menu.makeItem(title);
        item->setAction(std::move(action));
        menu.insertItem(item, index);
        return item;
    }

    UnderTest test;
    Menu& menu = test.menu;
};

using Menus = testing::Types<FakeUnderTest, QtUnderTest>;
TYPED_TEST_SUITE(MenuContract, Menus);

TYPED_TEST(MenuContract, InsertsMovingTheItemsBelowDownAndRemovesTheItemItself_OfTwoWithOneTitle) {
    std::string chosen;
    this->insert("twin", [&](Sender*) { chosen = "the first"; });
    this->menu.insertItem(this->menu.makeSeparatorItem(), 1);
    const auto twin = this->insert("twin", [&](Sender*) { chosen = "the second"; });
    this->insert("a", {}, 2);
    EXPECT_THAT(this->titles(), ElementsAre("twin", "twin", "a", "-"));
    this->menu.removeItem(twin);
    EXPECT_THAT(this->titles(), ElementsAre("twin", "a", "-"));
    this->test.choose("twin");
    EXPECT_EQ(chosen, "the first");
}

TYPED_TEST(MenuContract, SendsTheItemWithItsActionOnly) {
    Sender* sender = nullptr;
    const auto item = this->insert("a", [&](Sender* by) { sender = by; });
    this->test.choose("a");
    EXPECT_EQ(sender, item.get());
    EXPECT_EQ(item->description(), "menu item \"a\"");
    sender = nullptr;
    item->setAction({});
    this->test.choose("a");
    EXPECT_EQ(sender, nullptr);
}

TYPED_TEST(MenuContract, KeepsARunningItem_AfterItsRemoval) {
    std::string title;
    this->insert("running", [&](Sender* sender) {
        for (const auto& item : this->menu.itemArray())
            this->menu.removeItem(item);
        title = dynamic_cast<MenuItem*>(sender)->title();
    });
    this->test.choose("running");
    EXPECT_EQ(title, "running");
}

} // namespace
} // namespace letterloft
