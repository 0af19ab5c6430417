// What the controllers rely on, of the settings file and of its twin in memory.

#include "platform/linux/PlistSettingsStore.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/contract/settings/PropertyListText.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeSettingsStore.h"

#include <gmock/gmock.h>

namespace letterloft {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Both begin with a text, a list, a list with values of other types in it, and values that are neither.
class FileFixture {
public:
    FileFixture() {
        writeFile(path_, propertyListWith("<dict><key>text</key><string>a</string><key>empty</key><string/>"
                                          "<key>list</key><array><string>a</string><string>b</string></array>"
                                          "<key>mixed</key><array><integer>1</integer><string>a</string><dict/>"
                                          "<string>b</string></array><key>none</key><array/>"
                                          "<key>number</key><integer>7</integer></dict>"));
        restart();
    }
    SettingsStore& store() { return *store_; }
    void restart() {
        auto loaded = PlistSettingsStore::load(path_, calls_, log_, [] { return Status::ok(); });
        ASSERT_TRUE(loaded) << loaded.status().sentence();
        store_ = std::move(*loaded);
    }

private:
    ScratchFolders scratch_;
    std::string path_ = scratch_.at("letterloft/settings.plist");
    FileSystemCalls calls_;
    FakeLog log_;
    std::unique_ptr<PlistSettingsStore> store_;
};

class FakeFixture {
public:
    FakeFixture() {
        using List = std::vector<FakeSettingsStore::Element>;
        store_.values = {{"text", "a"},
                         {"empty", ""},
                         {"list", List{"a", "b"}},
                         {"mixed", List{std::monostate{}, "a", std::monostate{}, "b"}},
                         {"none", List{}},
                         {"number", std::monostate{}}};
        store_.saved = store_.values;
    }
    SettingsStore& store() { return store_; }
    void restart() { store_.values = store_.saved; }

private:
    FakeSettingsStore store_;
};

template <typename Fixture>
class SettingsContract : public ::testing::Test {
protected:
    SettingsStore& store() { return fixture_.store(); }
    void restart() { fixture_.restart(); }

private:
    Fixture fixture_;
};

using Fixtures = ::testing::Types<FileFixture, FakeFixture>;
TYPED_TEST_SUITE(SettingsContract, Fixtures);

TYPED_TEST(SettingsContract, AnswersWhatIsThereWhateverItsType) {
    SettingsStore& store = this->store();
    for (const char* key : {"text", "empty", "list", "mixed", "none", "number"})
        EXPECT_TRUE(store.hasValue(key)) << key;
    EXPECT_FALSE(store.hasValue("absent"));
    EXPECT_FALSE(store.hasValue(""));
    EXPECT_EQ(store.text("text"), "a");
    EXPECT_EQ(store.text("empty"), "");
    for (const char* key : {"list", "none", "number", "absent"})
        EXPECT_EQ(store.text(key), std::nullopt) << key;
    EXPECT_THAT(store.list("list"), ElementsAre("a", "b"));
    EXPECT_THAT(store.list("mixed"), ElementsAre("a", "b"));
    for (const char* key : {"text", "none", "number", "absent"})
        EXPECT_THAT(store.list(key), IsEmpty()) << key;
    EXPECT_EQ(store.countOfList("mixed"), 2U);
    EXPECT_EQ(store.textInList("mixed", 1), "b");
    EXPECT_EQ(store.textInList("mixed", 2), std::nullopt);
    EXPECT_TRUE(store.isInList("mixed", "b") && !store.isInList("mixed", "c") && !store.isInList("absent", ""));
    EXPECT_EQ(store.countOfList("number"), 0U);
    EXPECT_EQ(store.textInList("absent", 0), std::nullopt);
}

TYPED_TEST(SettingsContract, AWriteReplacesAValueOfAnyType) {
    SettingsStore& store = this->store();
    EXPECT_EQ(store.countOfList("list") + store.countOfList("mixed"), 4U); // no later read may answer from this one
    store.setText("list", "a");
    store.setText("number", "");
    store.setList("text", {"b", "b", ""});
    store.setList("mixed", {"a", "b"});
    store.setList("mixed", {"c"});
    store.setList("new", {});
    store.setList("gone", {"a"});
    store.removeValue("gone");
    store.removeValue("empty");
    store.removeValue("absent");
    const auto check = [&](const SettingsStore& read) {
        EXPECT_EQ(read.text("list"), "a");
        EXPECT_THAT(read.list("list"), IsEmpty());
        EXPECT_THAT(read.list("mixed"), ElementsAre("c"));
        EXPECT_THAT(read.list("gone"), IsEmpty());
        EXPECT_EQ(read.text("number"), "");
        EXPECT_THAT(read.list("text"), ElementsAre("b", "b", ""));
        EXPECT_EQ(read.text("text"), std::nullopt);
        EXPECT_TRUE(read.hasValue("new"));
        EXPECT_FALSE(read.hasValue("empty"));
    };
    check(store);
    ASSERT_TRUE(store.synchronize());
    store.setText("list", "not synchronized");
    this->restart();
    check(this->store());
}

TYPED_TEST(SettingsContract, OddTextsSurviveAsKeysAndAsValues) {
    const std::vector<std::string> odd = {"/Applications/A & B <\"'>.app",
                                          "/home/u/.mail/Über/邮件/😀",
                                          "a\nb\tc",
                                          "",
                                          " both ends ",
                                          "]]>",
                                          "&amp;#10;<!-- -->",
                                          "\x7f",
                                          "e\u0301\u2028",
                                          "CF$UID",
                                          std::string(5000, 'x')};
    for (const std::string& text : odd)
        this->store().setText(text, text);
    this->store().setList("all", odd);
    ASSERT_TRUE(this->store().synchronize());
    this->restart();
    for (const std::string& text : odd)
        EXPECT_EQ(this->store().text(text), text);
    EXPECT_EQ(this->store().list("all"), odd);
}

} // namespace
} // namespace letterloft
