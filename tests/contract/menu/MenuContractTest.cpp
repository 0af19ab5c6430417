#include "platform/qt/QtMenu.h"
#include "platform/qt/QtMenuView.h"
#include "tests/fakes/FakeMenu.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>

namespace letterloft {
namespace {

// A menu together with the hand that chooses from it.
struct FakeUnderTest {
    Menu& menu() { return fake; }
    void choose(const std::string& title) { fake.choose(title); }

    FakeMenu fake;
};

struct QtUnderTest {
    QtUnderTest() { view.follow(); }

    Menu& menu() { return real; }

    void choose(const std::string& title) {
        QCoreApplication::processEvents(); // the view follows
        const auto rows = view.widget().actions();
        const auto hasTitle = [&](QAction* row) { return row->text() == QString::fromStdString(title); };
        (*std::find_if(rows.begin(), rows.end(), hasTitle))->trigger();
        QCoreApplication::processEvents();
    }

    QtMenu real;
    QtMenuView view{real};
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

    std::shared_ptr<MenuItem> insert(const std::string& title, Action action = {}) {
        const auto item = menu.makeItem(title);
        item->setAction(std::move(action));
        menu.insertItem(item, 0);
        return item;
    }

    UnderTest test;
    Menu& menu = test.menu();
};

using Menus = testing::Types<FakeUnderTest, QtUnderTest>;
TYPED_TEST_SUITE(MenuContract, Menus);

using Titles = std::vector<std::string>;

TYPED_TEST(MenuContract, InsertsMovingTheItemsBelowDown) {
    this->insert("a");
    this->menu.insertItem(this->menu.makeSeparatorItem(), 1);
    this->insert("b");
    this->menu.insertItem(this->menu.makeItem("c"), 2);
    EXPECT_EQ(this->titles(), (Titles{"b", "a", "c", "-"}));
}

TYPED_TEST(MenuContract, RemovesTheItemItself_OfTwoWithOneTitle) {
    bool isChosen = false;
    this->insert("twin", [&](Sender*) { isChosen = true; });
    this->menu.removeItem(this->insert("twin"));
    EXPECT_EQ(this->titles(), (Titles{"twin"}));
    this->test.choose("twin");
    EXPECT_TRUE(isChosen);
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
