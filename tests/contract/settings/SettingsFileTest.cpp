// What only a file can get wrong: damage, links, modes, values of other types, and the order of things on the disk;
// and the lock beside them.

#include "platform/linux/InstanceLock.h"
#include "platform/linux/PlistSettingsStore.h"
#include "platform/linux/PropertyListCheck.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/contract/settings/PropertyListText.h"
#include "tests/fakes/FakeLog.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace letterloft {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// XML would drop the fraction of a second.
PropertyList listWithBinaryDate() {
    PropertyList list = emptyPropertyList();
    plist_dict_set_item(list.get(), "date", plist_new_date(12345, 250000));
    plist_dict_set_item(list.get(), "a", plist_new_string("b"));
    return list;
}

class SettingsFileCase : public ::testing::Test {
protected:
    Result<std::unique_ptr<PlistSettingsStore>> tryToLoad() {
        return PlistSettingsStore::load(path_, calls_, log_, [this] {
            contentsAtSync_.push_back(contentsOf(path_));
            return syncOfMoves_;
        });
    }

    std::unique_ptr<PlistSettingsStore> load() {
        auto loaded = tryToLoad();
        EXPECT_TRUE(loaded) << loaded.status().sentence();
        return loaded ? std::move(*loaded) : nullptr;
    }

    ScratchFolders scratch_;
    std::string path_ = scratch_.at("config/letterloft/settings.plist");
    std::string previous_ = path_ + ".bak";
    FileSystemCalls calls_;
    FakeLog log_;
    Status syncOfMoves_ = Status::ok();
    std::vector<std::string> contentsAtSync_;
};

using ASettingsWrite = SettingsFileCase;
using ALinkAtTheSettings = SettingsFileCase;
using SettingsAreRefused = SettingsFileCase;

TEST_F(ASettingsWrite, KeepsThePreviousGeneration_UnlessNothingHasChanged) {
    const auto store = load();
    for (const char* value : {"1", "2", "2"}) {
        store->setText("a", value);
        store->setList("l", {});
        store->removeValue("absent");
        ASSERT_TRUE(store->synchronize());
    }
    EXPECT_THAT(contentsOf(previous_), HasSubstr("<string>1</string>"));
    EXPECT_THAT(contentsOf(path_), HasSubstr("<string>2</string>"));
}

TEST_F(ASettingsWrite, ComesAfterTheMovesAreDurable_AndIsTriedAgain) {
    const auto store = load();
    store->setText("a", "1");
    syncOfMoves_ = Status::failure("the disk is gone");
    EXPECT_FALSE(store->synchronize());
    EXPECT_FALSE(fs::exists(path_));
    syncOfMoves_ = Status::ok();
    writeFile(scratch_.at("config"), "a file where the folder should be");
    EXPECT_FALSE(store->synchronize());
    EXPECT_THAT(log_.lines, ElementsAre(AllOf(HasSubstr(path_), HasSubstr("the disk is gone")),
                                        AllOf(HasSubstr(path_), HasSubstr("Not a directory"))));
    fs::remove(scratch_.at("config"));
    EXPECT_TRUE(store->synchronize());
    EXPECT_THAT(contentsAtSync_, ElementsAre("", "", ""));
    EXPECT_EQ(load()->text("a"), "1");
}

// XML has no place for control characters, so the file becomes a binary one, which every reader of property lists
// takes.
TEST_F(ASettingsWrite, HoldsWhatIsNoProperTextAndRefusesWhatNoFileCan) {
    const std::string control = "a\x01\x1f\r\xef\xbf\xbe";
    const std::string latin = "M\xfcll\x01";
    const std::string nul{"latin\0b", 7};
    auto store = load();
    store->setList(control, {control, "b"});
    ASSERT_TRUE(store->synchronize());
    EXPECT_THAT(contentsOf(path_), StartsWith("bplist00"));
    store = load();
    EXPECT_THAT(store->list(control), ElementsAre(control, "b"));
    store->removeValue(control);
    store->setText("latin", latin);
    store->setText("latin", nul);
    store->setText(nul, "x");
    EXPECT_FALSE(store->hasValue(nul));
    EXPECT_EQ(log_.lines.size(), 2u);
    ASSERT_TRUE(store->synchronize());
    EXPECT_THAT(contentsOf(path_), StartsWith("<?xml"));
    EXPECT_EQ(load()->text("latin"), latin);
    store->removeValue("latin");
    store->setText("huge", std::string(largestPropertyList, 'x')); // what would be refused at the next start
    EXPECT_FALSE(store->synchronize());
    EXPECT_EQ(load()->text("latin"), latin);
}

TEST_F(ASettingsWrite, KeepsAForeignValueThatOnlyABinaryFileHolds) {
    const PropertyList list = listWithBinaryDate();
    writeFile(path_, *propertyListBytes(list));
    const auto store = load();
    store->setText("ours", "1");
    ASSERT_TRUE(store->synchronize());
    plist_dict_set_item(list.get(), "ours", plist_new_string("1"));
    EXPECT_EQ(contentsOf(path_), *propertyListBytes(list));
    EXPECT_THAT(contentsOf(path_), StartsWith("bplist00"));
}

TEST_F(ALinkAtTheSettings, IsFollowedAndKept_EvenToNothingButNotToItself) {
    fs::create_directories(fs::path{path_}.parent_path());
    fs::create_directory(scratch_.at("dotfiles"));
    for (const std::string& text : {scratch_.at("dotfiles/ll.plist"), std::string{"../../dotfiles/ll.plist"}}) {
        fs::remove(path_);
        fs::create_symlink(text, path_);
        const auto store = load();
        store->setText("link", text);
        ASSERT_TRUE(store->synchronize());
        EXPECT_EQ(fs::read_symlink(path_), text);
        EXPECT_THAT(contentsOf(scratch_.at("dotfiles/ll.plist")), HasSubstr(text));
    }
    EXPECT_TRUE(fs::exists(scratch_.at("dotfiles/ll.plist.bak")));
    fs::remove(path_);
    fs::create_symlink("settings.plist", path_);
    EXPECT_FALSE(tryToLoad());
}

struct Damage {
    const char* name;
    std::string bytes;
    const char* reason;
};

std::string nested(int levels) {
    std::string value;
    for (; levels > 0; --levels)
        value = "<array>" + value + "</array>";
    return propertyListWith("<dict><key>k</key>" + value + "</dict>");
}

std::string replaced(std::string bytes, const std::string& part, const std::string& by) {
    return bytes.replace(bytes.find(part), part.size(), by);
}

std::vector<Damage> damages() {
    const std::string whole = propertyListWith("<dict><key>a</key><string>b</string></dict>");
    const auto entry = [](const std::string& value) {
        return propertyListWith("<dict><key>a</key>" + value + "</dict>");
    };
    const std::string binary = *propertyListBytes(listWithBinaryDate());
    return {
        {"something behind", whole + "x", "goes on"},
        {"no property list", "[letterloft]\naccounts=1\n", "no property list"},
        {"nothing at the top", propertyListWith(""), "no value"},
        {"key without value", propertyListWith("<dict><key>a</key></dict>"), "no value"},
        {"value without key", propertyListWith("<dict><string>a</string></dict>"), "than a key"},
        {"one key twice", propertyListWith("<dict><key>a</key><true/><key>a</key><false/></dict>"), "two values"},
        {"entities", "<!DOCTYPE plist [<!ENTITY a \"lol\"><!ENTITY b \"&a;&a;\">]>" + entry("<string>&b;</string>"),
         "entities"},
        {"unknown entity", entry("<string>&b;</string>"), "&"},
        {"enormous integer", entry("<integer>" + std::string(1000, '9') + "</integer>"), "integer"},
        {"no integer", entry("<integer>seven</integer>"), "integer"},
        {"enormous real", entry("<real>1e999</real>"), "real"},
        {"no date", entry("<date>yesterday</date>"), "date"},
        {"no data", entry("<data>A!</data>"), "data"},
        {"unknown element", entry("<set/>"), "no value"},
        {"nested 129 deep", nested(128), "too deep"},
        {"binary, a text cut at a NUL", replaced(binary, "Qb", std::string{"Q\0", 2}), "exactly"},
        {"binary, a text of no characters", replaced(binary, "Qb", "Q\xfc"), "exactly"},
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
        EXPECT_EQ(contentsOf(path_), damage.bytes) << damage.name;
    }
    EXPECT_TRUE(parsedPropertyList(nested(127)));
}

TEST_F(SettingsAreRefused, CutShortAnywhere) {
    std::string xml = propertyListWith("<dict><key>a</key><array><string>b &amp; c</string></array></dict>");
    xml.pop_back(); // a line feed
    for (const std::string& whole : {xml, *propertyListBytes(listWithBinaryDate())}) {
        EXPECT_TRUE(parsedPropertyList(whole));
        for (std::size_t length = 0; length < whole.size(); ++length)
            EXPECT_FALSE(parsedPropertyList(whole.substr(0, length))) << length;
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

TEST(TheInstanceLock, IsImpossibleWhereALinkIsInItsWay) {
    const ScratchFolders scratch;
    const std::string path = scratch.at("Letterloft.lock");
    FileSystemCalls calls;
    fs::create_symlink(scratch.at("victim"), path);
    const InstanceLock planted = InstanceLock::take(calls, path);
    EXPECT_EQ(planted.outcome(), InstanceLock::Outcome::impossible);
    EXPECT_THAT(planted.reason(), HasSubstr(path));
    EXPECT_FALSE(fs::exists(scratch.at("victim")));
}

} // namespace
} // namespace letterloft
