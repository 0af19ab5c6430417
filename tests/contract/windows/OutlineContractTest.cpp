#include "tests/contract/windows/QtManagerWindow.h"
#include "tests/fakes/FakeOutlineView.h"

#include <gmock/gmock.h>

#include <QScrollBar>

#include <map>
#include <string>
#include <vector>

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Children by their parent's text, "" for the top; ticks by text. "Column 2" has a check box in rows that have one.
struct Tree final : OutlineViewDataSource, OutlineViewDelegate {
    std::vector<std::string>& below(const OutlineItem& item) { return children[item.value_or("")]; }
    std::size_t outlineView_numberOfChildrenOfItem(OutlineView&, const OutlineItem& item) override {
        return below(item).size();
    }
    OutlineItem outlineView_child_ofItem(OutlineView&, std::size_t index, const OutlineItem& item) override {
        ++childrenAsked;
        return below(item).at(index);
    }
    bool outlineView_isItemExpandable(OutlineView&, const OutlineItem& item) override { return !below(item).empty(); }
    CellValue outlineView_objectValueForTableColumn_byItem(OutlineView&, TableColumn* column,
                                                           const OutlineItem& item) override {
        if (column->identifier() == "Column 1") return *item;
        return ticks.count(*item) ? CellValue{ticks[*item]} : CellValue{};
    }
    void outlineView_setObjectValue_forTableColumn_byItem(OutlineView& outline, const CellValue& value, TableColumn*,
                                                          const OutlineItem& item) override {
        ticks[*item] = std::get<bool>(value);
        outline.reloadData();
    }
    std::optional<Cell> outlineView_dataCellForTableColumn_item(OutlineView&, TableColumn* column,
                                                                const OutlineItem& item) override {
        if (column->identifier() == "Column 1" || !ticks.count(*item)) return Cell{};
        return Cell{.kind = Cell::Kind::checkBox, .imagePosition = Cell::ImagePosition::imageOnly, .editable = true};
    }
    bool outlineView_shouldExpandItem(OutlineView&, const OutlineItem& item) override {
        asked.push_back("open " + *item);
        return !refuses;
    }
    bool outlineView_shouldCollapseItem(OutlineView&, const OutlineItem& item) override {
        asked.push_back("close " + *item);
        return !refuses;
    }

    std::map<std::string, std::vector<std::string>> children{
        {"", {"/mail", "/news"}}, {"/mail", {"/m1", "/both"}}, {"/news", {"/n1", "/both"}}};
    std::map<std::string, bool> ticks{{"/mail", false}, {"/news", true}};
    std::vector<std::string> asked;
    bool refuses = false;
    int childrenAsked = 0;
};

struct FakeOutline : FakeOutlineView {
    OutlineView& view = *this;
};

struct QtOutline : QtManagerWindow {
    QtOutline() {
        show();
        widget.setFocus();
    }
    void press(Qt::Key key) { QTest::keyClick(&widget, key); }
    // By the keyboard, as the user does.
    void select(std::size_t row) {
        press(Qt::Key_Home);
        for (; row > 0; --row)
            press(Qt::Key_Down);
    }
    void expand(std::size_t row) {
        select(row);
        press(Qt::Key_Right);
    }
    void collapse(std::size_t row) {
        select(row);
        press(Qt::Key_Left);
    }
    QRect cell(int column) { return widget.visualRect(widget.model()->index(0, column)); }

    OutlineView& view = *file->outlineView("myView");
    QtOutlineWidget& widget = dynamic_cast<QtOutlineWidget&>(child<QTreeView>("myView"));
};

template <typename Outline>
class Outlines : public testing::Test {
protected:
    Outlines() {
        outline.view.setDataSource(&tree);
        outline.view.setDelegate(&tree);
    }

    std::vector<std::string> rows() {
        std::vector<std::string> shown;
        while (const OutlineItem item = outline.view.itemAtRow(shown.size()))
            shown.push_back(*item);
        return shown;
    }

    Tree tree;
    Outline outline;
};

using Both = testing::Types<FakeOutline, QtOutline>;
TYPED_TEST_SUITE(Outlines, Both);

TYPED_TEST(Outlines, AskBeforeTheUserOpensOrClosesARow) {
    this->tree.refuses = true;
    this->outline.expand(0);
    EXPECT_THAT(this->rows(), ElementsAre("/mail", "/news"));
    this->tree.refuses = false;
    this->outline.expand(0);
    EXPECT_THAT(this->rows(), ElementsAre("/mail", "/m1", "/both", "/news"));
    EXPECT_TRUE(this->outline.view.isItemExpanded("/mail"));
    EXPECT_FALSE(this->outline.view.isItemExpanded("/news"));
    this->outline.collapse(0);
    EXPECT_THAT(this->rows(), ElementsAre("/mail", "/news"));
    EXPECT_FALSE(this->outline.view.isItemExpanded("/mail"));
    EXPECT_THAT(this->tree.asked, ElementsAre("open /mail", "open /mail", "close /mail"));
}

TYPED_TEST(Outlines, KeepOpenRowsAndSelectionOverAReloadWithoutAsking) {
    this->outline.expand(1);
    this->outline.select(3);
    this->tree.asked.clear();
    this->tree.children[""].insert(this->tree.children[""].begin(), "/new");
    this->outline.view.reloadData();
    EXPECT_THAT(this->rows(), ElementsAre("/new", "/mail", "/news", "/n1", "/both"));
    EXPECT_EQ(this->outline.view.selectedRow(), 4U);
    EXPECT_THAT(this->tree.asked, IsEmpty());

    this->tree.children["/news"] = {"/n1"};
    this->outline.view.reloadData();
    EXPECT_EQ(this->outline.view.selectedRow(), std::nullopt);
    this->tree.children[""] = {"/mail"};
    this->outline.view.reloadData();
    EXPECT_FALSE(this->outline.view.isItemExpanded("/news"));
}

TYPED_TEST(Outlines, AnswerForTheSelectedRowWhereATextStandsTwice) {
    this->outline.expand(1);
    this->outline.expand(0);
    EXPECT_EQ(this->outline.view.parentForItem("/both"), "/mail");
    this->outline.select(5);
    EXPECT_EQ(this->outline.view.parentForItem("/both"), "/news");
    EXPECT_EQ(this->outline.view.parentForItem("/m1"), "/mail");
    EXPECT_EQ(this->outline.view.parentForItem("/mail"), std::nullopt);
}

TYPED_TEST(Outlines, NestAnItemInItselfAsFarAsItIsOpened) {
    this->tree.children = {{"", {"/self"}}, {"/self", {"/self"}}};
    this->outline.view.reloadData();
    this->outline.expand(0);
    this->outline.expand(1);
    EXPECT_THAT(this->rows(), ElementsAre("/self", "/self", "/self"));
    this->outline.view.reloadData();
    EXPECT_THAT(this->rows(), ElementsAre("/self", "/self", "/self"));
    EXPECT_LT(this->tree.childrenAsked, 100);
}

class QtOutlines : public Outlines<QtOutline> {};

TEST_F(QtOutlines, AClickOnTheTriangleOrADoubleClickAsksAndOneOnTheBoxTicks) {
    QWidget* const shown = outline.widget.viewport();
    const QPoint row = outline.cell(0).center();
    const QPoint triangle{outline.cell(0).left() - outline.widget.indentation() / 2, row.y()};
    QTest::mouseClick(shown, Qt::LeftButton, {}, triangle);
    EXPECT_TRUE(outline.view.isItemExpanded("/mail"));
    outline.select(1);
    QTest::mouseClick(shown, Qt::LeftButton, {}, triangle);
    EXPECT_EQ(outline.view.selectedRow(), std::nullopt) << "it went with its row";
    QTest::mouseClick(shown, Qt::LeftButton, {}, row);
    QTest::mouseDClick(shown, Qt::LeftButton, {}, row);
    EXPECT_THAT(tree.asked, ElementsAre("open /mail", "close /mail", "open /mail"));
    QTest::mouseClick(shown, Qt::LeftButton, {}, {outline.cell(1).left() + 8, row.y()});
    EXPECT_TRUE(tree.ticks["/mail"]);
}

TEST_F(QtOutlines, AKeySelectsTheRowFirst) {
    const auto pressed = [this](Qt::Key key) {
        outline.widget.clearFocus();
        outline.view.reloadData();
        outline.widget.setFocus();
        outline.press(key);
        return outline.view.selectedRow();
    };
    EXPECT_EQ(pressed(Qt::Key_Space), std::nullopt);
    EXPECT_FALSE(tree.ticks["/mail"]);
    EXPECT_EQ(pressed(Qt::Key_Right), 0U);
    EXPECT_EQ(rows().size(), 4U);
    outline.press(Qt::Key_Space);
    EXPECT_TRUE(tree.ticks["/mail"]);
    outline.press(Qt::Key_Asterisk); // would open rows for ever where an item nests in itself
    EXPECT_EQ(rows().size(), 4U);
}

TEST_F(QtOutlines, KeepTheScrollPlaceOverAReload) {
    for (int number = 0; number < 300; ++number)
        tree.children[""].push_back("/app" + std::to_string(number));
    outline.view.reloadData();
    QScrollBar& bar = *outline.widget.verticalScrollBar();
    bar.setValue(bar.maximum() / 2);
    const QString topmost = outline.widget.indexAt({0, 0}).data().toString();
    tree.children[""].erase(tree.children[""].begin());
    outline.view.reloadData();
    EXPECT_EQ(outline.widget.indexAt({0, 0}).data().toString(), topmost);
}

TEST_F(QtOutlines, OnlyASetWidthChangesTheFirstColumn) {
    TableColumn& column = *outline.view.tableColumnWithIdentifier("Column 1");
    for (const double width : {column.width(), column.dataCellFont().widthInPoints(std::string(100, 'm'))}) {
        column.setWidth(width);
        outline.window().widget().resize(1500, 600);
        outline.expand(0);
        outline.window().widget().resize(300, 300);
        outline.view.reloadData();
        EXPECT_EQ(column.width(), width);
        EXPECT_EQ(outline.widget.columnWidth(0), static_cast<int>(std::ceil(width)));
    }
}

} // namespace
} // namespace letterloft
