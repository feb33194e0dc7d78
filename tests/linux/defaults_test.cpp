// Vantorel. MIT licence, see LICENSE.
// The preferences in their key file: values, conversions, damage, and places that cannot be written.

#include "platform/linux/user_defaults.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/linux/system_support.h"

namespace vantorel::gtk::test {
namespace {

class UserDefaultsTest : public testing::Test {
protected:
    std::unique_ptr<UserDefaults> open() const { return makeUserDefaults(path_); }
    std::unique_ptr<UserDefaults> openWith(const std::string& lines) const {
        std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
        writeFile(path_, "[defaults]\n" + lines);
        return open();
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.file("config/Vantorel/defaults.ini");
};

TEST_F(UserDefaultsTest, IsEmptyAtFirst) {
    const auto defaults = open();
    EXPECT_FALSE(defaults->hasObject("alwaysOnTop"));
    EXPECT_FALSE(defaults->boolForKey("alwaysOnTop"));
    EXPECT_EQ(defaults->stringForKey("windowFrame"), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(path_)) << "reading makes no file";
}

TEST_F(UserDefaultsTest, KeepsValuesBetweenLaunches) {
    open()->setBool(true, "alwaysOnTop");
    open()->setBool(false, "hideInScreenshots");
    open()->setString("{{100, 80}, {900, 778}}", "windowFrame");
    const auto defaults = open();
    EXPECT_TRUE(defaults->boolForKey("alwaysOnTop"));
    EXPECT_TRUE(defaults->hasObject("hideInScreenshots"));
    EXPECT_FALSE(defaults->boolForKey("hideInScreenshots"));
    EXPECT_EQ(defaults->stringForKey("windowFrame"), "{{100, 80}, {900, 778}}");
    EXPECT_EQ(readFile(path_), "[defaults]\nalwaysOnTop=true\nhideInScreenshots=false\n"
                               "windowFrame={{100, 80}, {900, 778}}\n");
}

TEST_F(UserDefaultsTest, GivesTextsBackAsTheyWere) {
    for (const std::string& text : std::vector<std::string>{" leading", "trailing ", "two\nlines\r\n\ttab",
                                                            "back\\slash \\n", "🤖 ü", "", "a;b=c#d"}) {
        open()->setString(text, "key");
        EXPECT_EQ(open()->stringForKey("key"), text);
    }
}

TEST_F(UserDefaultsTest, ReadsBooleansOfOtherTypes) {
    const std::pair<const char*, bool> readings[] = {
        {"true", true}, {"YES", true}, {"yes", true}, {"Y", true},      {"1", true},      {"42", true},  {"-1", true},
        {"0.5", true},  {"T", true},   {"007", true}, {"0x", false},    {"false", false}, {"NO", false}, {"0", false},
        {"0.0", false}, {"", false},   {"on", false}, {"hello", false}, {"00", false}};
    for (const auto& [text, truth] : readings) {
        EXPECT_EQ(openWith(std::string("key=") + text + "\n")->boolForKey("key"), truth) << text;
    }
}

TEST_F(UserDefaultsTest, ReadsBooleansAsText) {
    const auto defaults = open();
    defaults->setBool(true, "windowFrame");
    EXPECT_EQ(defaults->stringForKey("windowFrame"), "true");
}

TEST_F(UserDefaultsTest, TakesATextThatBreaksTheRulesAsItStands) {
    EXPECT_EQ(openWith("key=a\\qb\n")->stringForKey("key"), "a\\qb");
}

TEST_F(UserDefaultsTest, LeavesTheRestOfTheFileAlone) {
    openWith("# a note\nother=1\n\n[another]\nkey[de]=Wert\n")->setBool(true, "alwaysOnTop");
    const std::string text = readFile(path_);
    for (const char* part : {"# a note\n", "other=1\n", "[another]\n", "key[de]=Wert\n", "alwaysOnTop=true\n"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
}

TEST_F(UserDefaultsTest, KeepsWhatAnotherProgramWroteMeanwhile) {
    const auto first = open();
    const auto second = open();
    first->setBool(true, "alwaysOnTop");
    second->setString("x", "windowFrame");
    EXPECT_TRUE(open()->boolForKey("alwaysOnTop"));
    EXPECT_EQ(open()->stringForKey("windowFrame"), "x");
}

TEST_F(UserDefaultsTest, TakesADamagedFileForEmptyAndKeepsACopy) {
    const std::string damage("\xff\xfe not a key file \0 at all", 26);
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
    writeFile(path_, damage);
    const auto defaults = open();
    EXPECT_FALSE(defaults->hasObject("alwaysOnTop"));
    defaults->setBool(true, "alwaysOnTop");
    EXPECT_TRUE(open()->boolForKey("alwaysOnTop"));
    EXPECT_EQ(readFile(path_ + ".damaged"), damage);
}

TEST_F(UserDefaultsTest, TakesAFolderInItsPlaceForEmpty) {
    std::filesystem::create_directories(path_ + "/x");
    const auto defaults = open();
    defaults->setBool(true, "alwaysOnTop");
    EXPECT_TRUE(defaults->boolForKey("alwaysOnTop"));
    EXPECT_TRUE(std::filesystem::is_directory(path_));
}

TEST_F(UserDefaultsTest, KeepsValuesForThisRunWhereItCannotWrite) {
    writeFile(folder_.file("config"), "a file where the folder should be");
    const auto defaults = open();
    defaults->setBool(true, "alwaysOnTop");
    defaults->setString("x", "windowFrame");
    EXPECT_TRUE(defaults->boolForKey("alwaysOnTop"));
    EXPECT_EQ(defaults->stringForKey("windowFrame"), "x");
    // The next change that can be written takes the others along.
    std::filesystem::remove(folder_.file("config"));
    defaults->setBool(false, "hideInScreenshots");
    EXPECT_TRUE(open()->boolForKey("alwaysOnTop"));
    EXPECT_EQ(open()->stringForKey("windowFrame"), "x");
}

TEST_F(UserDefaultsTest, KeepsTheFileWholeOnAFullDisk) {
    openWith("alwaysOnTop=true\n");
    const auto defaults = makeUserDefaults("/dev/full/defaults.ini");
    defaults->setBool(true, "alwaysOnTop");
    EXPECT_TRUE(defaults->boolForKey("alwaysOnTop"));
}

TEST_F(UserDefaultsTest, WorksWithoutAPlace) {
    const auto defaults = makeUserDefaults("");
    defaults->setString("x", "windowFrame");
    EXPECT_EQ(defaults->stringForKey("windowFrame"), "x");
}

TEST_F(UserDefaultsTest, WritesThroughALink) {
    writeFile(folder_.file("target.ini"), "[defaults]\nalwaysOnTop=true\n");
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
    std::filesystem::create_symlink(folder_.file("target.ini"), path_);
    open()->setString("x", "windowFrame");
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_NE(readFile(folder_.file("target.ini")).find("windowFrame=x"), std::string::npos);
}

TEST_F(UserDefaultsTest, KeepsWhatTheFileCannotHoldForThisRun) {
    const auto defaults = open();
    defaults->setString("x", "odd=key");
    defaults->setString(std::string("a\0b", 3), "nul");
    defaults->setString("\xff", "bytes");
    defaults->setString("fine", "windowFrame");
    EXPECT_EQ(defaults->stringForKey("odd=key"), "x");
    EXPECT_EQ(defaults->stringForKey("nul"), std::string("a\0b", 3));
    EXPECT_EQ(defaults->stringForKey("bytes"), "\xff");
    EXPECT_EQ(open()->stringForKey("windowFrame"), "fine");
    EXPECT_FALSE(open()->hasObject("bytes"));
}

class VariableGuard {
public:
    VariableGuard(const char* name, const char* value) : name_(name) {
        const char* before = g_getenv(name);
        hadValue_ = before != nullptr;
        before_ = hadValue_ ? before : "";
        set(value);
    }
    ~VariableGuard() { set(hadValue_ ? before_.c_str() : nullptr); }
    VariableGuard(const VariableGuard&) = delete;
    VariableGuard& operator=(const VariableGuard&) = delete;

private:
    void set(const char* value) const {
        if (value != nullptr) {
            g_setenv(name_, value, TRUE);
        } else {
            g_unsetenv(name_);
        }
    }

    const char* name_;
    bool hadValue_ = false;
    std::string before_;
};

TEST(UserDefaultsPathTest, FollowsTheConfigurationHome) {
    const VariableGuard home("HOME", "/");
    {
        const VariableGuard config("XDG_CONFIG_HOME", "/cfg");
        EXPECT_EQ(userDefaultsPath(), "/cfg/Vantorel/defaults.ini");
    }
    for (const char* unusable : {"", "relative", static_cast<const char*>(nullptr)}) {
        const VariableGuard config("XDG_CONFIG_HOME", unusable);
        EXPECT_EQ(std::filesystem::path(userDefaultsPath()).filename(), "defaults.ini");
        EXPECT_NE(userDefaultsPath().find("/.config/Vantorel/"), std::string::npos);
    }
}

} // namespace
} // namespace vantorel::gtk::test
