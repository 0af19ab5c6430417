#include "platform/qt/QtMenu.h"
#include "platform/qt/QtImage.h"
#include "platform/qt/QtMenuListModel.h"
#include "platform/qt/QtMenuTitle.h"
#include "platform/qt/QtMenuView.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QPointer>

#include <gmock/gmock.h>

#include <functional>

namespace letterloft {
namespace {

using testing::ElementsAre;
using Titles = std::vector<std::string>;

// What an event posts is served by the next turn.
void serveEvents() {
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

class QtMenus : public testing::Test {
protected:
    // New items in place of all that are there. The current account's has an image and no action.
    void rebuild(const Titles& accounts, const std::string& current = {}) {
        for (const auto& item : menu.itemArray())
            menu.removeItem(item);
        for (const std::string& account : accounts) {
            const auto item = menu.makeItem(account);
            if (account == current)
                item->setImage(image);
            else
                item->setAction([this, account](Sender*) { act(account); });
            menu.insertItem(item, menu.items().size());
        }
    }

    // Serves the event loop for as long as the first choice is to take.
    void act(const std::string& account) {
        chosen.push_back(account);
        if (!duringChoice) return;
        std::exchange(duringChoice, nullptr)();
        serveEvents();
        chosen.push_back(account + " ends");
    }

    void pick(std::size_t row) { menu.choose(menu.items().at(row)); }

    const std::shared_ptr<const Image> image = std::make_shared<QtImage>(QIcon{QPixmap{16, 16}});
    QtMenu menu;
    Titles chosen;
    std::function<void()> duringChoice;
};

TEST_F(QtMenus, HoldTheLastChoice_UnlessItsItemIsGoneOrInertByThen) {
    struct Case {
        Titles accounts;
        std::string current;
        Titles expected;
    };
    for (const Case& then : {Case{{"a", "b"}, "a", {"a", "a ends", "b"}}, Case{{"a"}, "", {"a", "a ends"}},
                             Case{{"a", "b"}, "b", {"a", "a ends"}}}) {
        chosen.clear();
        rebuild({"a", "b", "c"});
        duringChoice = [&] {
            pick(2);
            pick(1);
            serveEvents();
            rebuild(then.accounts, then.current);
        };
        pick(0);
        serveEvents();
        EXPECT_EQ(chosen, then.expected);
    }
}

TEST_F(QtMenus, TakeTheChoiceOfARowThatWasJustReplacedForItsSuccessors) {
    rebuild({"a", "b"});
    pick(1);
    rebuild({"a", "b"});
    serveEvents();
    EXPECT_THAT(chosen, ElementsAre("b"));
}

TEST_F(QtMenus, AreShownWithOnlyDifferentRowsMadeAnew) {
    QtMenuView view{menu};
    QList<QPointer<QAction>> rows; // guarded: a new row may take the place of a deleted one in memory
    const auto survivors = [&](const Titles& accounts, const std::string& current) {
        const auto before = rows;
        rebuild(accounts, current);
        view.update();
        const auto actions = view.widget().actions();
        rows = {actions.begin(), actions.end()};
        Titles found;
        for (const QPointer<QAction>& row : rows)
            if (before.contains(row)) found.push_back(row->text().toStdString());
        return found;
    };
    survivors({"a", "b", "c", "d"}, "a");
    EXPECT_THAT(survivors({"a", "b", "c", "d"}, "c"), ElementsAre("b", "d")) << "after a switch";
    EXPECT_THAT(survivors({"a", "b", "new", "c", "d"}, "c"), ElementsAre("a", "b", "c", "d"));
    EXPECT_TRUE(rows[0]->isEnabled() && rows[0]->icon().isNull());
    EXPECT_FALSE(rows[3]->isEnabled() || rows[3]->icon().isNull());
    EXPECT_THAT(survivors({"c", "d"}, "c"), ElementsAre("c", "d"));
    EXPECT_EQ(rows.size(), 2);
}

TEST_F(QtMenus, AreShownInAListAndChosenFromThere) {
    rebuild({"a", "R&D\t_"}, "R&D\t_");
    QtMenuListModel model{menu};
    menu.insertItem(menu.makeSeparatorItem(), 0);
    serveEvents();
    ASSERT_EQ(model.rowCount({}), 3);
    EXPECT_TRUE(model.isSeparator(model.index(0)));
    EXPECT_EQ(model.index(2).data().toString().toStdString(), "R&D _");
    EXPECT_EQ(model.flags(model.index(2)), Qt::NoItemFlags);
    model.choose(model.index(1));
    EXPECT_EQ(chosen, Titles{}) << "inside the call";
    serveEvents();
    EXPECT_THAT(chosen, ElementsAre("a"));
}

TEST(MenuTitles, AreDrawnByQtAsTheyAre) {
    EXPECT_EQ(titleForQtMenu("A & B_&&").toStdString(), "A && B_&&&&");
    EXPECT_EQ(titleForQtMenu("a\tb\r\xE2\x80\xA8").toStdString(), "a b  "); // a tab would start a shortcut's text
}

} // namespace
} // namespace letterloft
