#include "tests/contract/windows/QtManagerWindow.h"
#include "tests/fakes/FakeTableView.h"

#include <gmock/gmock.h>

#include <QLineEdit>
#include <QSignalSpy>
#include <QTableView>

#include <functional>
#include <string>
#include <vector>

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Names final : TableViewDataSource {
    std::size_t numberOfRowsInTableView(TableView&) override { return list.size(); }
    CellValue tableView_objectValueForTableColumn_row(TableView&, TableColumn*, std::size_t row) override {
        return row < list.size() ? CellValue{list[row]} : CellValue{};
    }
    void tableView_setObjectValue_forTableColumn_row(TableView&, const CellValue& value, TableColumn*,
                                                     std::size_t row) override {
        handedOver.push_back(std::to_string(row) + " " + std::get<std::string>(value));
        whenHandedOver();
    }

    std::vector<std::string> list{"Home", "Work", "Club"};
    std::vector<std::string> handedOver;
    std::function<void()> whenHandedOver = [] {};
};

struct FakeTable : FakeTableView {
    TableView& view = *this;
};

struct QtTable : QtManagerWindow {
    QtTable() { show(); }
    std::vector<std::string> texts() {
        std::vector<std::string> all;
        for (int row = 0; row < widget.model()->rowCount(); ++row)
            all.push_back(widget.model()->index(row, 0).data().toString().toStdString());
        return all;
    }
    void select(std::size_t row) { widget.selectRow(static_cast<int>(row)); }
    void beginEditing(std::size_t row) {
        select(row);
        QTest::keyClick(&widget, Qt::Key_F2);
        ASSERT_TRUE(editor());
    }
    QLineEdit* editor() {
        for (auto* const edit : widget.findChildren<QLineEdit*>())
            if (edit->isVisible()) return edit;
        return nullptr;
    }
    void commit(const std::string& text) {
        if (!editor()) return;
        editor()->setText(QString::fromStdString(text));
        QTest::keyClick(editor(), Qt::Key_Return);
    }
    void cancelEditing() { QTest::keyClick(editor(), Qt::Key_Escape); }

    TableView& view = *file->tableView("tableView");
    QTableView& widget = child<QTableView>("tableView");
};

template <typename Table>
class Tables : public testing::Test {
protected:
    Tables() { table.view.setDataSource(&source); }

    Names source;
    Table table;
};

using Both = testing::Types<FakeTable, QtTable>;
TYPED_TEST_SUITE(Tables, Both);

TYPED_TEST(Tables, AnswerFromTheSourceButAnnounceRowsOnReloadOnly) {
    this->source.list = {"Home", "Office", "Club", "New"};
    EXPECT_THAT(this->table.texts(), ElementsAre("Home", "Office", "Club"));
    this->source.list.resize(1);
    EXPECT_THAT(this->table.texts(), ElementsAre("Home", "", ""));
    this->table.view.reloadData();
    EXPECT_THAT(this->table.texts(), ElementsAre("Home"));
}

TYPED_TEST(Tables, SelectionFollowsItsRowOverAReload) {
    struct Reload {
        std::vector<std::string> list;
        std::optional<std::size_t> selected;
    };
    EXPECT_EQ(this->table.view.selectedRow(), std::nullopt);
    this->table.select(1);
    for (const Reload& reload : {Reload{{"Home", "Work", "Club", "New"}, 1}, Reload{{"Work", "Club", "New"}, 0},
                                 Reload{{"Club", "Lodge", "Work"}, 2}, Reload{{"Work", "Lodge", "Club"}, 0},
                                 Reload{{"Lodge", "Club"}, std::nullopt}}) {
        this->source.list = reload.list;
        this->table.view.reloadData();
        EXPECT_EQ(this->table.view.selectedRow(), reload.selected) << testing::PrintToString(reload.list);
    }
}

TYPED_TEST(Tables, AnEditIsHandedOverOnceUnlessEscapeOrAReloadDropsIt) {
    this->table.beginEditing(1);
    this->table.cancelEditing();
    this->table.beginEditing(1);
    this->table.view.reloadData();
    this->table.commit("Dropped");
    this->table.beginEditing(1);
    this->table.commit("Office");
    this->table.beginEditing(2);
    this->table.commit("Club"); // unchanged
    EXPECT_THAT(this->source.handedOver, ElementsAre("1 Office", "2 Club"));
}

class QtTables : public Tables<QtTable> {};

TEST_F(QtTables, AKeySelectsTheFirstRowWhenNoneIsSelected) {
    for (const auto key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Home, Qt::Key_End, Qt::Key_F2}) {
        table.widget.clearFocus();
        table.view.reloadData();
        table.widget.setFocus();
        ASSERT_EQ(table.view.selectedRow(), std::nullopt);
        QTest::keyClick(&table.widget, key);
        EXPECT_EQ(table.view.selectedRow(), key == Qt::Key_End ? 2U : 0U) << key;
        EXPECT_EQ(table.editor() != nullptr, key == Qt::Key_F2);
        table.widget.clearSelection();
    }
}

TEST_F(QtTables, AKeyPressedInAnEditStaysThere) {
    table.beginEditing(1);
    for (const auto& [key, text] : {std::pair{Qt::Key_Home, "a"}, {Qt::Key_End, "b"}, {Qt::Key_Up, "c"}}) {
        for (const auto modifiers : {Qt::NoModifier, Qt::ControlModifier})
            QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        QTest::keyClicks(QApplication::focusWidget(), QLatin1String{text});
    }
    ASSERT_TRUE(table.editor());
    QTest::keyClick(table.editor(), Qt::Key_Return);
    EXPECT_THAT(source.handedOver, ElementsAre("1 aWorkbc"));
}

TEST_F(QtTables, AnEditIsHandedOverByTabAndByLeavingTheCell) {
    table.beginEditing(0);
    EXPECT_FALSE(table.editor()->accessibleName().isEmpty());
    QTest::keyClick(table.editor(), Qt::Key_Tab);
    EXPECT_EQ(table.editor(), nullptr) << "no further cell opens";
    table.beginEditing(1);
    table.child<QWidget>("addAppButton").setFocus();
    table.beginEditing(2);
    table.select(0);
    EXPECT_THAT(source.handedOver, ElementsAre("0 Home", "1 Work", "2 Club"));
}

TEST_F(QtTables, AnEditThatRaisesAnAlertIsHandedOverOnce) {
    source.whenHandedOver = [this] {
        table.window().beginSheet(std::make_unique<QDialog>(), [] {});
        ASSERT_TRUE(QTest::qWaitForWindowActive(table.sheet()));
    };
    table.beginEditing(1);
    table.commit("Office");
    QTest::keyClick(table.sheet(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&table.window().widget()));
    table.child<QWidget>("addAppButton").setFocus();
    EXPECT_THAT(source.handedOver, ElementsAre("1 Office"));
}

TEST_F(QtTables, AnEditSurvivesAnotherWindowComingToTheFront) {
    table.beginEditing(1);
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_THAT(source.handedOver, IsEmpty());
    ASSERT_TRUE(table.editor());
    other.hide();
    table.show();
    table.commit("Office");
    EXPECT_THAT(source.handedOver, ElementsAre("1 Office"));
}

TEST_F(QtTables, AnEditIsDroppedByEveryWayTheWindowCloses) {
    table.beginEditing(0);
    table.window().close();
    table.show();
    table.beginEditing(1);
    table.window().widget().close();
    table.show();
    table.beginEditing(2);
    QEvent quit{QEvent::Quit};
    QCoreApplication::sendEvent(QCoreApplication::instance(), &quit);
    EXPECT_THAT(source.handedOver, IsEmpty());
}

TEST_F(QtTables, AToolTipShowsItsTextAsItIs) {
    source.list = {"<b>A&B</b>", "", ""};
    const QString tip = table.widget.model()->index(0, 0).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(tip.contains(QLatin1String{"&lt;b&gt;A&amp;B&lt;/b&gt;"})) << tip.toStdString();
}

} // namespace
} // namespace letterloft
