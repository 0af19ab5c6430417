#include "platform/qt/QtOpenPanel.h"
#include "tests/contract/windows/QtManagerWindow.h"
#include "tests/fakes/FakeOpenPanels.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeView>

#include <unistd.h>

#include <optional>

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Applications final : InstalledApplications {
    std::vector<Application> all() const override {
        return {{"Zeta Mail", "", "/apps/zeta.desktop"}, {"<b>alpha</b>", "none", "/apps/alpha.desktop"}};
    }
};

struct FakeChooser {
    FakeChooser() { window.makeKeyAndOrderFront(); }
    bool isShown() { return window.sheet != nullptr; }
    void choose(const std::string& path) { panels.last.lock()->choose(path); }
    void cancel() { window.pressEscape(); }

    FakeNotificationCenter notifications;
    FakeWindow window{notifications};
    FakeOpenPanels panels;
};

struct QtChooser {
    QtChooser() { manager.show(); }
    bool isShown() { return manager.sheet() != nullptr; }
    template <typename Widget>
    Widget& child() {
        return *manager.sheet()->findChild<Widget*>();
    }
    // The one of the window on top, where the sheet has opened another.
    QPushButton& button(const char* title) {
        QPushButton* found = nullptr;
        for (auto* const button : manager.sheet()->findChildren<QPushButton*>())
            if (button->text() == QLatin1String{title}) found = button;
        return *found;
    }
    bool canConfirm() { return button("OK").isEnabled(); }
    // Once the entry is listed.
    void select(const std::string& name) {
        auto& entries = child<QTreeView>();
        QModelIndexList found;
        ASSERT_TRUE(QTest::qWaitFor([&] {
            found = entries.model()->match(entries.model()->index(0, 0, entries.rootIndex()), Qt::DisplayRole,
                                           QString::fromStdString(name), 1, Qt::MatchExactly | Qt::MatchCaseSensitive);
            return !found.isEmpty();
        }));
        entries.setCurrentIndex(found.first());
    }
    void choose(const std::string& path) {
        select(path.substr(path.rfind('/') + 1));
        button("OK").click();
    }
    void cancel() { QTest::keyClick(manager.sheet(), Qt::Key_Escape); }

    QtManagerWindow manager;
    QtWindow& window = manager.window();
    Applications applications;
    QtOpenPanels panels{applications};
};

template <typename Chooser>
class Choosers : public testing::Test {
protected:
    Choosers() {
        QFile file{folder.filePath(QStringLiteral(".hidden"))};
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }

    std::string path(const std::string& name) { return folder.path().toStdString() + "/" + name; }

    void begin() {
        const std::size_t before = results.size();
        auto panel = chooser.panels.openPanel();
        panel->setPrompt("OK");
        panel->setMessage("<b>Select</b> File Or Folder...");
        panel->setCanChooseFiles(true);
        panel->setCanChooseDirectories(true);
        panel->setDirectoryURL(folder.path().toStdString());
        panel->setAllowedFileTypes(types);
        panel->beginSheetModalForWindow(chooser.window, [this, weak = std::weak_ptr{panel}](int result) {
            EXPECT_FALSE(chooser.isShown());
            results.push_back(result);
            for (const std::string& url : weak.lock()->urls()) // the panel keeps itself until now
                chosen.push_back(url);
        });
        EXPECT_EQ(results.size(), before) << "answered inside the call";
    }

    QTemporaryDir folder;
    Chooser chooser;
    std::vector<std::string> types;
    std::vector<int> results;
    std::vector<std::string> chosen; // by all together
};

using Both = testing::Types<FakeChooser, QtChooser>;
TYPED_TEST_SUITE(Choosers, Both);

TYPED_TEST(Choosers, YieldTheAbsolutePathOfAHiddenFileOrNothing) {
    this->begin();
    this->chooser.cancel();
    EXPECT_THAT(this->chosen, IsEmpty());
    this->begin();
    this->chooser.choose(this->path(".hidden"));
    EXPECT_THAT(this->chosen, ElementsAre(this->path(".hidden")));
    this->begin();
    this->chooser.window.close();
    EXPECT_FALSE(this->chooser.isShown());
    EXPECT_THAT(this->results, ElementsAre(OpenPanel::cancelResult, OpenPanel::okResult)) << "none for the last one";
}

class QtChoosers : public Choosers<QtChooser> {
protected:
    QtChoosers() {
        qputenv("HOME", folder.path().toUtf8());
        EXPECT_TRUE(QDir{folder.path()}.mkdir(QStringLiteral("inside.app")));
    }
    ~QtChoosers() override { qputenv("HOME", home); }

    void link(const char* target, const char* name) { ASSERT_EQ(::symlink(target, path(name).c_str()), 0); }

    // In place of what stands in the field.
    QLineEdit& type(const std::string& text) {
        auto& location = chooser.child<QLineEdit>();
        location.selectAll();
        QTest::keyClick(&location, Qt::Key_Delete);
        QTest::keyClicks(&location, QString::fromStdString(text));
        return location;
    }

    const QByteArray home = qgetenv("HOME");
};

TEST_F(QtChoosers, TakeWhatWasSaidLast) {
    link(".hidden", "link");
    link("nowhere", "dangling");
    for (const char* text : {"~/inside.app", "~/inside.app/", "inside.app/../.hidden", "dangling"}) {
        begin();
        EXPECT_FALSE(chooser.canConfirm()) << "nothing is said yet";
        chooser.select("link");
        type(text);
        chooser.button("OK").click();
    }
    for (const char* name : {"link", "inside.app"}) {
        begin();
        type("~/.hidden");
        chooser.choose(path(name));
    }
    EXPECT_THAT(chosen, ElementsAre(path("inside.app"), path("inside.app"), path(".hidden"), path("dangling"),
                                    path("link"), path("inside.app")));
}

TEST_F(QtChoosers, TakeNoHomeAndNothingThatIsNotThere) {
    begin();
    for (const char* text : {"/nowhere", "", "/", "~"}) {
        chooser.select(".hidden");
        auto& location = type(text);
        EXPECT_FALSE(chooser.canConfirm()) << text;
        QTest::keyClick(&location, Qt::Key_Return);
        EXPECT_FALSE(chooser.canConfirm()) << text;
        QTest::keyClick(&type("~"), Qt::Key_Return); // where the next one starts
    }
    EXPECT_THAT(results, IsEmpty());
}

TEST_F(QtChoosers, GoIntoFoldersByReturnAndTakeTheOneGoneInto) {
    begin();
    chooser.select("inside.app");
    auto& entries = chooser.child<QTreeView>();
    entries.setFocus();
    EXPECT_FALSE(chooser.button("OK").isDefault());
    QTest::keyClick(&entries, Qt::Key_Return);
    EXPECT_TRUE(chooser.canConfirm());
    chooser.button("&Up").click();
    EXPECT_FALSE(entries.selectionModel()->selectedRows().isEmpty()) << "where it came from";
    chooser.button("OK").click();
    begin();
    QTest::keyClick(&type("inside.app"), Qt::Key_Return);
    ASSERT_TRUE(chooser.isShown());
    chooser.button("OK").click();
    begin();
    chooser.button("&Up").click();
    EXPECT_FALSE(chooser.canConfirm()) << "home, or what holds it";
    QTest::keyClick(&type("~/.hidden"), Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(path("inside.app"), path("inside.app"), path(".hidden")));
}

TEST_F(QtChoosers, ReturnPressesTheButtonThatHasTheFocus) {
    for (const bool fromAList : {false, true}) {
        if (fromAList) types = {"app"};
        begin();
        fromAList ? chooser.child<QListWidget>().setCurrentRow(0) : chooser.select(".hidden");
        chooser.button("Cancel").setFocus();
        QTest::keyClick(&chooser.button("Cancel"), Qt::Key_Return);
    }
    EXPECT_THAT(results, ElementsAre(OpenPanel::cancelResult, OpenPanel::cancelResult));
}

TEST_F(QtChoosers, SayThatANameThatIsNoUtf8IsLeftOut) {
    const std::string latin1 = path("caf\xe9");
    ASSERT_EQ(::rename(path(".hidden").c_str(), latin1.c_str()), 0);
    begin();
    chooser.select("inside.app");
    const auto& entries = chooser.child<QTreeView>();
    EXPECT_EQ(entries.model()->rowCount(entries.rootIndex()), 1);
    bool told = false;
    for (auto* const label : chooser.manager.sheet()->findChildren<QLabel*>()) {
        told = told || (label->isVisible() && label->text().contains(QLatin1String{"UTF-8"}));
        EXPECT_TRUE(!label->text().contains(QLatin1String{"<b>"}) || label->textFormat() == Qt::PlainText);
    }
    EXPECT_TRUE(told);
    ::unlink(latin1.c_str()); // which QTemporaryDir can't
}

TEST_F(QtChoosers, SearchTheInstalledApplications) {
    types = {"app"};
    begin();
    auto& list = chooser.child<QListWidget>();
    EXPECT_EQ(list.item(0)->text(), QLatin1String{"<b>alpha</b>"}) << "by name";
    auto& search = chooser.child<QLineEdit>();
    chooser.manager.sheet()->activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return search.hasFocus(); }));
    QTest::keyClick(&search, Qt::Key_Down);
    EXPECT_TRUE(list.item(0)->isSelected());
    QTest::keyClicks(&search, QStringLiteral("mail"));
    EXPECT_TRUE(list.item(0)->isHidden());
    QTest::keyClick(&search, Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre("/apps/zeta.desktop"));
}

TEST_F(QtChoosers, BrowseForAnApplicationOfAnotherKind) {
    types = {"app"};
    begin();
    chooser.button("&Browse...").click();
    chooser.select(".hidden");
    EXPECT_FALSE(chooser.canConfirm()) << "no application";
    chooser.choose(path("inside.app"));
    EXPECT_THAT(chosen, ElementsAre(path("inside.app")));
    EXPECT_FALSE(chooser.isShown());
}

} // namespace
} // namespace letterloft
