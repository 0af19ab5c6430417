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
    FakeChooser() { fake.makeKeyAndOrderFront(); }
    Window& window() { return fake; }
    bool isShown() { return fake.sheet != nullptr; }
    void choose(const std::string& path) { panels.last.lock()->choose(path); }
    void cancel() { fake.pressEscape(); }

    FakeNotificationCenter notifications;
    FakeWindow fake{notifications};
    FakeOpenPanels panels;
};

struct QtChooser {
    QtChooser() { manager.show(); }
    Window& window() { return manager.window(); }
    bool isShown() { return manager.sheet() != nullptr; }
    QPushButton& button(const char* title, QDialog* within = nullptr) {
        QDialog* const dialog = within ? within : manager.sheet();
        for (auto* const button : dialog->findChildren<QPushButton*>())
            if (button->text() == QLatin1String{title} && button->window() == dialog) return *button;
        throw std::logic_error{"no such button"};
    }
    QPushButton& confirm() { return button("OK"); }
    // Whether the entry is listed, and then selected.
    bool select(const std::string& name, QDialog* within = nullptr) {
        auto& entries = *(within ? within : manager.sheet())->findChild<QTreeView*>();
        QModelIndexList found;
        const auto isListed = [&] {
            found = entries.model()->match(entries.model()->index(0, 0, entries.rootIndex()), Qt::DisplayRole,
                                           QString::fromStdString(name), 1, Qt::MatchExactly | Qt::MatchCaseSensitive);
            return !found.isEmpty();
        };
        if (!QTest::qWaitFor(isListed)) return false;
        entries.setCurrentIndex(found.first());
        return true;
    }
    void choose(const std::string& path) {
        ASSERT_TRUE(select(path.substr(path.rfind('/') + 1)));
        confirm().click();
    }
    void cancel() { QTest::keyClick(manager.sheet(), Qt::Key_Escape); }

    QtManagerWindow manager;
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
        panel->setCanChooseDirectories(folders);
        panel->setDirectoryURL(folder.path().toStdString());
        panel->setAllowedFileTypes(types);
        panel->beginSheetModalForWindow(chooser.window(), [this, weak = std::weak_ptr{panel}](int result) {
            EXPECT_FALSE(chooser.isShown());
            results.push_back(result);
            urls = weak.lock()->urls(); // the panel keeps itself until now
            chosen.insert(chosen.end(), urls.begin(), urls.end());
        });
        EXPECT_EQ(results.size(), before) << "answered inside the call";
    }

    QTemporaryDir folder;
    Chooser chooser;
    bool folders = true;
    std::vector<std::string> types;
    std::vector<int> results;
    std::vector<std::string> urls;
    std::vector<std::string> chosen; // by all together
};

using Both = testing::Types<FakeChooser, QtChooser>;
TYPED_TEST_SUITE(Choosers, Both);

TYPED_TEST(Choosers, YieldTheAbsolutePathOfAHiddenFileOrNothing) {
    this->begin();
    this->chooser.cancel();
    EXPECT_THAT(this->urls, IsEmpty());
    this->begin();
    this->chooser.choose(this->path(".hidden"));
    EXPECT_THAT(this->urls, ElementsAre(this->path(".hidden")));
    this->begin();
    this->chooser.window().close();
    EXPECT_FALSE(this->chooser.isShown());
    EXPECT_THAT(this->results, ElementsAre(OpenPanel::cancelResult, OpenPanel::okResult)) << "none for the last one";
}

class QtChoosers : public Choosers<QtChooser> {
protected:
    QtChoosers() { qputenv("HOME", folder.path().toUtf8()); }
    ~QtChoosers() override { qputenv("HOME", home); }

    void link(const char* target, const char* name) { ASSERT_EQ(::symlink(target, path(name).c_str()), 0); }
    void makeFolder(const char* name) { ASSERT_TRUE(QDir{folder.path()}.mkdir(QLatin1String{name})); }

    // In place of what stands in the field.
    QLineEdit& type(const std::string& text) {
        auto& location = *chooser.manager.sheet()->findChild<QLineEdit*>();
        location.selectAll();
        QTest::keyClick(&location, Qt::Key_Delete);
        QTest::keyClicks(&location, QString::fromStdString(text));
        return location;
    }

    const QByteArray home = qgetenv("HOME");
};

TEST_F(QtChoosers, TakeAFolderOnlyWhereOneIsWanted) {
    makeFolder("inside");
    begin();
    EXPECT_FALSE(chooser.confirm().isEnabled()) << "nothing is selected yet";
    chooser.choose(path("inside"));
    EXPECT_THAT(urls, ElementsAre(path("inside")));
    folders = false;
    begin();
    ASSERT_TRUE(chooser.select("inside"));
    EXPECT_FALSE(chooser.confirm().isEnabled());
}

TEST_F(QtChoosers, TakeWhatWasSaidLast) {
    makeFolder("inside");
    link(".hidden", "link");
    link("nowhere", "dangling");
    for (const char* text : {"~/inside", "~/inside/", "inside/../.hidden", "dangling"}) {
        begin();
        ASSERT_TRUE(chooser.select("link"));
        type(text);
        chooser.confirm().click();
    }
    begin();
    type("~/inside");
    chooser.choose(path("link"));
    EXPECT_THAT(chosen, ElementsAre(path("inside"), path("inside"), path(".hidden"), path("dangling"), path("link")));
}

TEST_F(QtChoosers, TakeNoHomeAndNothingThatIsNotThere) {
    begin();
    for (const char* text : {"/nowhere", "", "/", "~"}) {
        ASSERT_TRUE(chooser.select(".hidden"));
        auto& location = type(text);
        EXPECT_FALSE(chooser.confirm().isEnabled()) << text;
        QTest::keyClick(&location, Qt::Key_Return);
        EXPECT_FALSE(chooser.confirm().isEnabled()) << text;
        QTest::keyClick(&type("~"), Qt::Key_Return); // where the next one starts
    }
    EXPECT_THAT(results, IsEmpty());
}

TEST_F(QtChoosers, GoIntoFoldersByReturnAndTakeTheOneGoneInto) {
    makeFolder("inside");
    begin();
    ASSERT_TRUE(chooser.select("inside"));
    auto& entries = *chooser.manager.sheet()->findChild<QTreeView*>();
    entries.setFocus();
    EXPECT_FALSE(chooser.confirm().isDefault());
    QTest::keyClick(&entries, Qt::Key_Return);
    EXPECT_TRUE(chooser.confirm().isEnabled());
    chooser.button("&Up").click();
    EXPECT_FALSE(entries.selectionModel()->selectedRows().isEmpty()) << "where it came from";
    chooser.confirm().click();
    begin();
    QTest::keyClick(&type("inside"), Qt::Key_Return);
    ASSERT_TRUE(chooser.isShown());
    chooser.confirm().click();
    begin();
    chooser.button("&Up").click();
    EXPECT_FALSE(chooser.confirm().isEnabled()) << "home, or what holds it";
    QTest::keyClick(&type("~/.hidden"), Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(path("inside"), path("inside"), path(".hidden")));
}

TEST_F(QtChoosers, ReturnPressesTheButtonThatHasTheFocus) {
    const auto cancel = [this] {
        chooser.button("Cancel").setFocus();
        QTest::keyClick(&chooser.button("Cancel"), Qt::Key_Return);
    };
    begin();
    ASSERT_TRUE(chooser.select(".hidden"));
    cancel();
    types = {"app"};
    begin();
    chooser.manager.sheet()->findChild<QListWidget*>()->setCurrentRow(0);
    cancel();
    EXPECT_THAT(results, ElementsAre(OpenPanel::cancelResult, OpenPanel::cancelResult));
}

TEST_F(QtChoosers, SayThatANameThatIsNoUtf8IsLeftOut) {
    QFile file{folder.filePath(QStringLiteral("x"))};
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const std::string latin1 = path("caf\xe9");
    ASSERT_EQ(::rename(path("x").c_str(), latin1.c_str()), 0);
    begin();
    ASSERT_TRUE(chooser.select(".hidden"));
    const auto& entries = *chooser.manager.sheet()->findChild<QTreeView*>();
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
    auto& list = *chooser.manager.sheet()->findChild<QListWidget*>();
    ASSERT_EQ(list.count(), 2);
    EXPECT_EQ(list.item(0)->text(), QLatin1String{"<b>alpha</b>"});
    auto& search = *chooser.manager.sheet()->findChild<QLineEdit*>();
    chooser.manager.sheet()->activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return search.hasFocus(); }));
    QTest::keyClick(&search, Qt::Key_Down);
    EXPECT_TRUE(list.item(0)->isSelected());
    QTest::keyClicks(&search, QStringLiteral("mail"));
    EXPECT_TRUE(list.item(0)->isHidden());
    QTest::keyClick(&search, Qt::Key_Return);
    EXPECT_THAT(urls, ElementsAre("/apps/zeta.desktop"));
}

TEST_F(QtChoosers, BrowseForAnApplicationOfAnotherKind) {
    makeFolder("Mail.app");
    types = {"app"};
    begin();
    QDialog* const applications = chooser.manager.sheet();
    chooser.button("&Browse...").click();
    auto* const browser = applications->findChild<QDialog*>();
    ASSERT_TRUE(browser);
    const auto& ok = chooser.button("OK", browser);
    EXPECT_FALSE(ok.isEnabled());
    ASSERT_TRUE(chooser.select(".hidden", browser));
    EXPECT_FALSE(ok.isEnabled()) << "no application";
    ASSERT_TRUE(chooser.select("Mail.app", browser));
    chooser.button("OK", browser).click();
    EXPECT_THAT(urls, ElementsAre(path("Mail.app")));
    EXPECT_FALSE(chooser.isShown());
}

} // namespace
} // namespace letterloft
