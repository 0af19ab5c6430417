#include "platform/qt/QtMenu.h"
#include "platform/qt/QtImage.h"
#include "platform/qt/QtMenuListModel.h"
#include "platform/qt/QtMenuTitle.h"
#include "platform/qt/QtMenuView.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QPointer>

#include <gtest/gtest.h>

#include <functional>

namespace letterloft {
namespace {

using Titles = std::vector<std::string>;

// What an event posts is served by the next turn.
void serveEvents() {
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

// A menu, what was chosen from it, and an account item's action that serves the event loop until it is told to end.
class HeldChoices : public testing::Test {
protected:
    HeldChoices() {
        menu.addCommand("Help", [this](Sender*) { chosen.push_back("Help"); });
        rebuild({"c", "b", "a"});
    }

    void rebuild(const Titles& accounts) {
        for (const auto& item : menu.itemArray()) {
            if (item->title() != "Help") menu.removeItem(item);
        }
        for (const std::string& account : accounts) {
            const auto item = menu.makeItem(account);
            if (account != inert) item->setAction([this, account](Sender*) { act(account); });
            menu.insertItem(item, 0);
        }
    }

    void act(const std::string& account) {
        chosen.push_back(account);
        if (!duringChoice) return;
        const auto during = std::exchange(duringChoice, nullptr);
        during();
        serveEvents();
        chosen.push_back(account + " ends");
    }

    void pick(const std::string& title) {
        for (const auto& item : menu.items()) {
            if (item->title() == title) return menu.choose(item);
        }
        FAIL() << title;
    }

    QtMenu menu;
    Titles chosen;
    std::string inert;
    std::function<void()> duringChoice;
};

TEST_F(HeldChoices, TheLastOneFollows_UnlessItsItemIsGoneOrInertByThen) {
    struct Case {
        Titles accounts;
        std::string inert;
        Titles expected;
    };
    for (const Case& then : {Case{{"b", "a"}, "", {"a", "a ends", "b"}}, Case{{"a"}, "", {"a", "a ends"}},
                             Case{{"b", "a"}, "b", {"a", "a ends"}}}) {
        chosen.clear();
        inert.clear();
        rebuild({"c", "b", "a"});
        duringChoice = [&] {
            pick("c");
            pick("b");
            serveEvents();
            inert = then.inert;
            rebuild(then.accounts);
        };
        pick("a");
        serveEvents();
        EXPECT_EQ(chosen, then.expected);
    }
}

TEST_F(HeldChoices, CommandsAreNotHeld) {
    duringChoice = [this] { pick("Help"); };
    pick("a");
    serveEvents();
    EXPECT_EQ(chosen, (Titles{"a", "Help", "a ends"}));
}

TEST_F(HeldChoices, AChoiceOfARowThatWasJustReplaced_IsOneOfItsSuccessor) {
    pick("b");
    rebuild({"c", "b", "a"});
    serveEvents();
    EXPECT_EQ(chosen, (Titles{"b"}));
}

TEST(MenuView, MakesOnlyDifferentRowsAnew) {
    QtMenu menu;
    QtMenuView view{menu};
    const auto image = std::make_shared<QtImage>(QIcon{QPixmap{16, 16}});
    // Guarded: a new row may take the place of a deleted one in memory.
    using Rows = QList<QPointer<QAction>>;
    const auto rebuilt = [&](const Titles& accounts, const std::string& current) {
        for (const auto& item : menu.itemArray())
            menu.removeItem(item);
        for (const std::string& account : accounts) {
            const auto item = menu.makeItem(account);
            if (account == current) item->setImage(image);
            if (account != current) item->setAction([](Sender*) {});
            menu.insertItem(item, 0);
        }
        view.update();
        const auto actions = view.widget().actions();
        return Rows{actions.begin(), actions.end()};
    };
    const auto survivors = [](const Rows& before, const Rows& after) {
        Titles found;
        for (const QPointer<QAction>& action : after) {
            if (before.contains(action)) found.push_back(action->text().toStdString());
        }
        return found;
    };
    const Rows first = rebuilt({"d", "c", "b", "a"}, "a");
    const Rows second = rebuilt({"d", "c", "b", "a"}, "c"); // a switch
    EXPECT_EQ(survivors(first, second), (Titles{"b", "d"}));
    EXPECT_FALSE(second[2]->isEnabled() || second[2]->icon().isNull());
    EXPECT_TRUE(second[0]->isEnabled() && second[0]->icon().isNull());
    EXPECT_EQ(survivors(second, rebuilt({"d", "c", "new", "b", "a"}, "c")), (Titles{"a", "b", "c", "d"}));
    const Rows last = rebuilt({"d", "c"}, "c");
    EXPECT_EQ(survivors(second, last), (Titles{"c", "d"}));
    EXPECT_EQ(last.size(), 2);
}

TEST(MenuList, ShowsTheMenuAndChoosesFromIt) {
    QtMenu menu;
    std::string chosen;
    menu.addCommand("Quit", [&](Sender*) { chosen = "Quit"; });
    QtMenuListModel model{menu};
    menu.insertItem(menu.makeSeparatorItem(), 0);
    menu.insertItem(menu.makeItem("R&D\t_"), 0);
    serveEvents();
    ASSERT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.index(0).data().toString().toStdString(), "R&D _");
    EXPECT_EQ(model.flags(model.index(0)), Qt::NoItemFlags);
    EXPECT_TRUE(model.isSeparator(model.index(1)));
    model.choose(model.index(2));
    EXPECT_EQ(chosen, ""); // never inside the call
    serveEvents();
    EXPECT_EQ(chosen, "Quit");
}

// What a panel makes of a label: "__" is a '_', any other '_' only marks a shortcut.
std::string shownByPanel(const std::string& title) {
    std::string label = titleForBusMenu(title).toStdString();
    const auto first = label.find('&'); // Qt's part of the work
    if (first != std::string::npos && first + 1 != label.size()) label[first] = '_';
    std::string shown;
    for (std::size_t i = 0; i < label.size(); ++i) {
        if (label[i] == '_' && ++i == label.size()) break;
        shown += label[i];
    }
    return shown;
}

TEST(MenuTitles, ArriveAtAPanelAsTheyAre) {
    for (const char* const title : {"R&D", "A & B & C", "a_b", "_&x", "x&", "&", "&&", "__", "_", "&_", "a__b&&c",
                                    "x_&", "&x&", "<b>A&B</b>", "100%_&_"}) {
        EXPECT_EQ(shownByPanel(title), title);
    }
    EXPECT_EQ(shownByPanel("a\tb\nc\x7F"), "a b c ");
}

TEST(MenuTitles, AreDrawnByQtAsTheyAre) {
    EXPECT_EQ(titleForQtMenu("A & B_&&").toStdString(), "A && B_&&&&");
    EXPECT_EQ(titleForQtMenu("a\tb\r\xE2\x80\xA8").toStdString(), "a b  "); // a tab would start a shortcut's text
}

} // namespace
} // namespace letterloft
