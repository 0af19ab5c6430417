// What only a file can get wrong: damage, links, modes, values of other types, and the order of things on the disk.

#include "platform/linux/PlistSettingsStore.h"
#include "tests/contract/settings/ScratchFolder.h"
#include "tests/fakes/FakeLog.h"

#include <gmock/gmock.h>

#include <clocale>
#include <sys/resource.h>
#include <unistd.h>

namespace letterloft {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class SettingsFileCase : public ::testing::Test {
protected:
    Result<std::unique_ptr<PlistSettingsStore>> tryToLoad() {
        return PlistSettingsStore::load(path_, calls_, log_, [this] {
            contentsAtSync_.push_back(readFile(path_));
            return syncOfMoves_;
        });
    }

    std::unique_ptr<PlistSettingsStore> load() {
        auto loaded = tryToLoad();
        EXPECT_TRUE(loaded) << loaded.status().sentence();
        return loaded ? std::move(*loaded) : nullptr;
    }

    // What stands beside one another in the settings folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator{fs::path{path_}.parent_path()})
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    ScratchFolder scratch_;
    std::string path_ = scratch_.at("config/letterloft/settings.plist");
    std::string previous_ = path_ + ".bak";
    FileSystemCalls calls_;
    FakeLog log_;
    Status syncOfMoves_ = Status::ok();
    std::vector<std::string> contentsAtSync_;
};

using ASettingsWrite = SettingsFileCase;
using AForeignValue = SettingsFileCase;
using ALinkAtTheSettings = SettingsFileCase;
using SettingsAreRefused = SettingsFileCase;

TEST_F(ASettingsWrite, IsPrivateWhateverTheUmask) {
    for (const mode_t umaskNow : {0000, 0777}) {
        const mode_t former = umask(umaskNow);
        auto store = load();
        store->setText("a", "b");
        const Status written = store->synchronize();
        umask(former);
        EXPECT_TRUE(written) << written.sentence();
        EXPECT_EQ(modeOf(path_), 0600u);
        EXPECT_EQ(modeOf(fs::path{path_}.parent_path()), 0700u);
        EXPECT_EQ(modeOf(scratch_.at("config")), 0700u);
        fs::remove_all(scratch_.at("config"));
    }
}

TEST_F(ASettingsWrite, KeepsThePreviousGenerationAndNothingElse) {
    auto store = load();
    store->setText("a", "1");
    ASSERT_TRUE(store->synchronize());
    EXPECT_THAT(names(), ElementsAre("settings.plist"));
    const std::string first = readFile(path_);
    store->setText("a", "2");
    ASSERT_TRUE(store->synchronize());
    EXPECT_THAT(names(), ElementsAre("settings.plist", "settings.plist.bak"));
    EXPECT_EQ(readFile(previous_), first);
}

TEST_F(ASettingsWrite, IsNotMadeWhereNothingHasChanged) {
    writeFile(path_, propertyListWith("<dict><key>a</key><string>1</string><key>l</key><array/></dict>"));
    const std::string before = readFile(path_);
    auto store = load();
    store->setText("a", "1");
    store->setList("l", {});
    store->removeValue("absent");
    ASSERT_TRUE(store->synchronize());
    EXPECT_EQ(readFile(path_), before);
    EXPECT_THAT(names(), ElementsAre("settings.plist"));
}

TEST_F(ASettingsWrite, ComesAfterTheMovesAreDurableOrNotAtAll) {
    auto store = load();
    store->setText("a", "1");
    syncOfMoves_ = Status::failure("the disk is gone");
    EXPECT_FALSE(store->synchronize());
    EXPECT_FALSE(fs::exists(path_));
    EXPECT_THAT(log_.lines, ElementsAre(AllOf(HasSubstr(path_), HasSubstr("the disk is gone"))));
    syncOfMoves_ = Status::ok();
    EXPECT_TRUE(store->synchronize());
    EXPECT_THAT(contentsAtSync_, ElementsAre("", ""));
    EXPECT_THAT(readFile(path_), HasSubstr("<key>a</key>"));
}

TEST_F(ASettingsWrite, IsNotStoppedByWhatStandsAtItsTemporaryNames) {
    writeFile(scratch_.at("victim"), "untouched");
    for (const char* planted : {".new", ".bak.new", ".bak"}) {
        auto store = load();
        fs::remove_all(path_ + planted);
        fs::create_directories(fs::path{path_}.parent_path());
        fs::create_symlink(scratch_.at("victim"), path_ + planted);
        store->setText("planted", planted);
        EXPECT_TRUE(store->synchronize()) << planted;
        EXPECT_EQ(load()->text("planted"), planted);
    }
    EXPECT_EQ(readFile(scratch_.at("victim")), "untouched");
    EXPECT_THAT(names(), ElementsAre("settings.plist", "settings.plist.bak"));
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(ASettingsWrite, ThatFailsIsLoggedAndTriedAgain) {
    auto store = load();
    store->setText("a", "1");
    writeFile(scratch_.at("config"), "a file where the folder should be");
    EXPECT_FALSE(store->synchronize());
    EXPECT_FALSE(store->synchronize());
    ASSERT_EQ(log_.lines.size(), 2u);
    EXPECT_THAT(log_.lines[0], AllOf(HasSubstr(path_), HasSubstr("Not a directory"), Not(HasSubstr("\n"))));
    fs::remove(scratch_.at("config"));
    EXPECT_TRUE(store->synchronize());
    EXPECT_EQ(load()->text("a"), "1");
}

// XML has no place for them, so the file becomes a binary one, which every reader of property lists takes.
TEST_F(ASettingsWrite, HoldsControlCharactersAndGoesBackToXmlWithoutThem) {
    const std::string control = "a\x01"
                                "b\x1f\r\xef\xbf\xbe";
    auto store = load();
    store->setList(control, {control, "b"});
    ASSERT_TRUE(store->synchronize());
    EXPECT_THAT(readFile(path_), StartsWith("bplist00"));
    store = load();
    EXPECT_THAT(store->list(control), ElementsAre(control, "b"));
    store->removeValue(control);
    ASSERT_TRUE(store->synchronize());
    EXPECT_THAT(readFile(path_), StartsWith("<?xml"));
}

TEST_F(ASettingsWrite, HoldsBytesThatAreNoUtf8AndRefusesNul) {
    auto store = load();
    store->setText("latin", "M\xfcll\x01");
    store->setText("nul", "before");
    store->setText("nul", std::string{"a\0b", 3});
    store->setText(std::string{"latin\0b", 7}, "x");
    EXPECT_FALSE(store->hasValue(std::string{"latin\0b", 7}));
    EXPECT_EQ(log_.lines.size(), 2u);
    ASSERT_TRUE(store->synchronize());
    store = load();
    EXPECT_EQ(store->text("latin"), "M\xfcll\x01");
    EXPECT_EQ(store->text("nul"), "before");
}

TEST_F(AForeignValue, SurvivesASaveInXml) {
    const std::string foreign =
        "<key>date</key>\n\t<date>2011-02-03T04:05:06Z</date>\n\t"
        "<key>old</key>\n\t<date>1812-02-29T04:05:06Z</date>\n\t"
        "<key>data</key>\n\t<data>\n\tAAECAwQ=\n\t</data>\n\t"
        "<key>nested</key>\n\t<dict>\n\t\t<key>a</key>\n\t\t<array>\n\t\t\t<dict/>\n\t\t\t"
        "<false/>\n\t\t</array>\n\t</dict>\n\t<key>real</key>\n\t<real>0.5</real>\n\t"
        "<key>uid</key>\n\t<dict>\n\t\t<key>CF$UID</key>\n\t\t<integer>5</integer>\n\t</dict>\n\t"
        "<key>small</key>\n\t<integer>-9223372036854775808</integer>\n\t"
        "<key>large</key>\n\t<integer>18446744073709551615</integer>\n\t";
    writeFile(path_, propertyListWith("<dict>" + foreign + "</dict>"));
    auto store = load();
    store->setText("ours", "1");
    ASSERT_TRUE(store->synchronize());
    EXPECT_THAT(readFile(path_), HasSubstr(foreign));
}

// 0.25 seconds after the epoch of dates: XML would drop the fraction.
TEST_F(AForeignValue, ThatOnlyABinaryFileHoldsSurvives) {
    PropertyList list = emptyPropertyList();
    plist_dict_set_item(list.get(), "date", plist_new_date(12345, 250000));
    const Result<std::string> bytes = propertyListBytes(list);
    ASSERT_TRUE(bytes);
    writeFile(path_, *bytes);
    auto store = load();
    store->setText("ours", "1");
    ASSERT_TRUE(store->synchronize());
    const auto read = parsedPropertyList(readFile(path_));
    ASSERT_TRUE(read);
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(plist_dict_get_item(read->get(), "date"), &seconds, &microseconds);
    EXPECT_EQ(seconds, 12345);
    EXPECT_EQ(microseconds, 250000);
}

TEST_F(ALinkAtTheSettings, IsFollowedAndKept) {
    const std::string real = scratch_.at("dotfiles/ll.plist");
    writeFile(real, propertyListWith("<dict><key>a</key><string>1</string></dict>"));
    fs::create_directories(fs::path{path_}.parent_path());
    for (const std::string& text : {real, std::string{"../../dotfiles/ll.plist"}}) {
        fs::remove(path_);
        fs::create_symlink(text, path_);
        auto store = load();
        ASSERT_TRUE(store->text("a"));
        store->setText("link", text);
        ASSERT_TRUE(store->synchronize());
        EXPECT_EQ(fs::read_symlink(path_), text);
        EXPECT_THAT(readFile(real), HasSubstr(text));
        EXPECT_TRUE(fs::exists(real + ".bak"));
    }
}

TEST_F(ALinkAtTheSettings, ToNothingIsAFirstRunAndToItselfIsNot) {
    fs::create_directories(fs::path{path_}.parent_path());
    fs::create_symlink(scratch_.at("elsewhere/new.plist"), path_);
    auto store = load();
    store->setText("a", "1");
    ASSERT_TRUE(store->synchronize());
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_EQ(load()->text("a"), "1");
    fs::remove(path_);
    fs::create_symlink("settings.plist", path_);
    EXPECT_FALSE(tryToLoad());
}

struct Damage {
    const char* name;
    std::string bytes;
    const char* reason;
};

std::string binaryList(const PropertyList& list) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(list.get(), &bytes, &length);
    std::string binary{bytes, length};
    plist_to_bin_free(bytes);
    return binary;
}

// Lists that each hold the next one twice: 2^60 values in some 500 bytes.
std::string binaryLaughs() {
    std::string bytes = "bplist00";
    std::string table;
    for (int i = 0; i < 60; ++i) {
        table += static_cast<char>(bytes.size());
        bytes += {'\xa2', static_cast<char>(i + 1), static_cast<char>(i + 1)};
    }
    table += static_cast<char>(bytes.size());
    bytes += "\x09";
    const char tableAt = static_cast<char>(bytes.size());
    bytes += table + std::string{"\0\0\0\0\0\0\1\1\0\0\0\0\0\0\0\x3d\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 31} + tableAt;
    return bytes;
}

std::string nested(int levels) {
    std::string bytes = "<dict><key>k</key>";
    for (int i = 0; i < levels; ++i)
        bytes += "<array>";
    for (int i = 0; i < levels; ++i)
        bytes += "</array>";
    return propertyListWith(bytes + "</dict>");
}

std::string replaced(std::string bytes, const std::string& part, const std::string& by) {
    return bytes.replace(bytes.find(part), part.size(), by);
}

std::vector<Damage> damages() {
    const std::string whole = propertyListWith("<dict><key>a</key><string>b</string></dict>");
    const auto entry = [](const std::string& value) {
        return propertyListWith("<dict><key>a</key>" + value + "</dict>");
    };
    PropertyList list = emptyPropertyList();
    plist_dict_set_item(list.get(), "a", plist_new_string("b"));
    const std::string binary = binaryList(list);
    return {
        {"empty", "", "is empty"},
        {"zeroed", std::string(4096, '\0'), "NUL"},
        {"end zeroed", whole.substr(0, 60) + std::string(40, '\0'), "NUL"},
        {"without end", whole.substr(0, whole.find("</plist>")), "has no end"},
        {"something behind", whole + "x", "goes on"},
        {"another behind", whole + whole, "goes on"},
        {"no property list", "[letterloft]\naccounts=1\n", "no property list"},
        {"list at the top", propertyListWith("<array><string>a</string></array>"), "no dictionary"},
        {"text at the top", propertyListWith("<string>a</string>"), "no dictionary"},
        {"nothing at the top", propertyListWith(""), "no value"},
        {"key without value", propertyListWith("<dict><key>a</key></dict>"), "no value"},
        {"value without key", propertyListWith("<dict><string>a</string></dict>"), "than a key"},
        {"one key twice", propertyListWith("<dict><key>a</key><true/><key>a</key><false/></dict>"), "two values"},
        {"entities", "<!DOCTYPE plist [<!ENTITY a \"lol\"><!ENTITY b \"&a;&a;\">]>" + entry("<string>&b;</string>"),
         "entities"},
        {"unknown entity", entry("<string>&b;</string>"), "&"},
        {"numbered NUL", entry("<string>&#0;</string>"), "&"},
        {"enormous integer", entry("<integer>" + std::string(1000, '9') + "</integer>"), "integer"},
        {"no integer", entry("<integer>seven</integer>"), "integer"},
        {"enormous real", entry("<real>1e999</real>"), "real"},
        {"no such day", entry("<date>2011-02-30T00:00:00Z</date>"), "date"},
        {"no date", entry("<date>yesterday</date>"), "date"},
        {"no data", entry("<data>A!</data>"), "data"},
        {"unknown element", entry("<set/>"), "no value"},
        {"crossed elements", entry("<array><dict></array></dict>"), "than a key"},
        {"nested 129 deep", nested(128), "too deep"},
        {"nested 100,000 deep", nested(100000), "too deep"},
        {"binary, nothing behind its name", "bplist00", "table"},
        {"binary in a circle",
         std::string{"bplist00\xa1\0\x08\0\0\0\0\0\0\1\1\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x0a", 43},
         "circle"},
        {"binary laughs", binaryLaughs(), "unfolds"},
        {"binary, a text cut at a NUL", replaced(binary, "Qb", std::string{"Q\0", 2}), "exactly"},
        {"binary, a text of no characters", replaced(binary, "Qb", "Q\xfc"), "exactly"},
        {"binary without its last byte", binary.substr(0, binary.size() - 1), ""},
        {"binary without its first object", "bplist00" + binary.substr(10), ""},
    };
}

TEST_F(SettingsAreRefused, ForEveryDamageWithASentenceAndLeftAsTheyAre) {
    writeFile(previous_, propertyListWith("<dict><key>a</key><string>b</string></dict>"));
    for (const Damage& damage : damages()) {
        writeFile(path_, damage.bytes);
        const auto loaded = tryToLoad();
        ASSERT_FALSE(loaded) << damage.name;
        EXPECT_THAT(loaded.status().sentence(), AllOf(HasSubstr("\"" + path_ + "\""), HasSubstr(damage.reason),
                                                      HasSubstr("copy that file"), HasSubstr("\"" + previous_ + "\"")))
            << damage.name;
        EXPECT_EQ(readFile(path_), damage.bytes) << damage.name;
    }
    EXPECT_TRUE(parsedPropertyList(nested(127)));
}

TEST_F(SettingsAreRefused, CutShortAnywhere) {
    auto store = load();
    store->setText("Current User", "Default User");
    store->setList("Accounts", {"Default User", "Work & Play"});
    ASSERT_TRUE(store->synchronize());
    const std::string xml = readFile(path_);
    store->setText("control", "\x01");
    ASSERT_TRUE(store->synchronize());
    const std::string binary = readFile(path_);
    const std::size_t end = xml.find("</plist>") + 8; // only a line feed follows
    for (std::size_t length = 0; length < end; ++length) {
        EXPECT_FALSE(parsedPropertyList(xml.substr(0, length))) << length;
    }
    for (std::size_t length = 0; length < binary.size(); ++length) {
        EXPECT_FALSE(parsedPropertyList(binary.substr(0, length))) << length;
    }
}

TEST_F(SettingsAreRefused, WhereTheyAreNoFileOrTooLarge) {
    fs::create_directories(path_);
    EXPECT_THAT(tryToLoad().status().sentence(), AllOf(HasSubstr("is no file"), HasSubstr("no previous generation")));
    fs::remove(path_);
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_THAT(tryToLoad().status().sentence(), HasSubstr("is no file"));
    fs::remove(path_);
    writeFile(path_, "<plist>");
    fs::resize_file(path_, std::uintmax_t{2} << 30);
    EXPECT_THAT(tryToLoad().status().sentence(), HasSubstr("larger than 16 MiB"));
    fs::resize_file(path_, 1);
    writeFile(previous_, "");
    EXPECT_THAT(tryToLoad().status().sentence(), AllOf(HasSubstr(previous_), HasSubstr("is empty")));
}

} // namespace
} // namespace letterloft
