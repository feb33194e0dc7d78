// Vantorel. MIT licence, see LICENSE.
// What platform/foundation.h promises of the defaults store, the file manager and the surroundings.
#include <optional>
#include <string>

#include "tests/contract/world.h"

namespace vantorel::contract {
namespace {

using namespace std::string_literals;

class DefaultsContract : public ContractTest {
protected:
    UserDefaults& defaults() { return platform().userDefaults(); }
};

TEST_F(DefaultsContract, AbsentKeys) {
    EXPECT_FALSE(defaults().hasObject("contract-absent"));
    EXPECT_FALSE(defaults().boolForKey("contract-absent"));
    EXPECT_EQ(defaults().stringForKey("contract-absent"), std::nullopt);
}

TEST_F(DefaultsContract, BooleansAreKept) {
    for (const bool value : {true, false, true}) {
        defaults().setBool(value, "contract-flag");
        EXPECT_TRUE(defaults().hasObject("contract-flag"));
        EXPECT_EQ(defaults().boolForKey("contract-flag"), value);
    }
}

TEST_F(DefaultsContract, TextsAreKeptAsTheyAre) {
    for (const std::string& text : {"{{100, 80}, {900, 778}}"s, ""s, "  blanks around  "s, "lines\nand\ttabs"s,
                                    "a\\b;c=d#e[f]"s, "emoji 🤖 and ünlaute"s}) {
        defaults().setString(text, "contract-text");
        EXPECT_TRUE(defaults().hasObject("contract-text"));
        EXPECT_EQ(defaults().stringForKey("contract-text"), text);
    }
}

TEST_F(DefaultsContract, TextsReadAsBooleans) {
    for (const char* text : {"YES", "true", "1"}) {
        defaults().setString(text, "contract-mixed");
        EXPECT_TRUE(defaults().boolForKey("contract-mixed")) << text;
    }
    for (const char* text : {"NO", "false", "0", "", "perhaps", "{{1, 1}, {1, 1}}"}) {
        defaults().setString(text, "contract-mixed");
        EXPECT_FALSE(defaults().boolForKey("contract-mixed")) << text;
    }
}

TEST_F(DefaultsContract, BooleansReadAsTextsOfTheSameTruth) {
    for (const bool value : {true, false}) {
        defaults().setBool(value, "contract-mixed");
        const auto text = defaults().stringForKey("contract-mixed");
        ASSERT_TRUE(text.has_value());
        defaults().setString(*text, "contract-mixed");
        EXPECT_EQ(defaults().boolForKey("contract-mixed"), value);
    }
}

TEST_F(DefaultsContract, LaterValueReplacesTheEarlierOfAnyType) {
    defaults().setString("text", "contract-replaced");
    defaults().setBool(true, "contract-replaced");
    EXPECT_TRUE(defaults().boolForKey("contract-replaced"));
    defaults().setString("no", "contract-replaced");
    EXPECT_FALSE(defaults().boolForKey("contract-replaced"));
    EXPECT_EQ(defaults().stringForKey("contract-replaced"), "no");
}

class FilesContract : public ContractTest {
protected:
    std::string in(const std::string& name) { return world_->folder() + "/" + name; }
    FileManager& files() { return platform().fileManager(); }
};

TEST_F(FilesContract, AnythingAtThePathExists) {
    EXPECT_FALSE(files().fileExists(in("none")));
    world_->makeFile(in("file"), "", 0644);
    EXPECT_TRUE(files().fileExists(in("file")));
    EXPECT_TRUE(files().fileExists(world_->folder()));
    EXPECT_FALSE(files().fileExists(""));
}

TEST_F(FilesContract, LinksAreFollowed) {
    world_->makeFile(in("file"), "text", 0644);
    world_->makeLink(in("good"), in("file"));
    world_->makeLink(in("dangling"), in("none"));
    EXPECT_TRUE(files().fileExists(in("good")));
    EXPECT_EQ(files().readUtf8File(in("good")), "text");
    EXPECT_FALSE(files().fileExists(in("dangling")));
    EXPECT_EQ(files().readUtf8File(in("dangling")), std::nullopt);
}

TEST_F(FilesContract, PermissionsAreSet) {
    world_->makeFile(in("file"), "", 0600);
    EXPECT_EQ(files().setPosixPermissions(in("file"), 0755), std::nullopt);
    EXPECT_EQ(world_->modeOf(in("file")), 0755U);
}

TEST_F(FilesContract, PermissionsOfNothingAreAnError) {
    const auto error = files().setPosixPermissions(in("none"), 0755);
    ASSERT_TRUE(error.has_value());
    EXPECT_FALSE(error->localizedDescription.empty());
    EXPECT_FALSE(error->description.empty());
}

TEST_F(FilesContract, WholeFilesAreReadAsText) {
    const std::string big(3'000'000, 'x');
    for (const std::string& text :
         {""s, "A=1\r\nB=2\n"s, "nul \0 inside"s, "ünlaut 🤖"s, "\xEF\xBB\xBFmark"s, big}) {
        world_->makeFile(in("file"), text, 0644);
        EXPECT_EQ(files().readUtf8File(in("file")), text);
    }
}

TEST_F(FilesContract, WhatIsNoTextIsNotRead) {
    for (const std::string& bytes : {"\xFF"s, "good \xC3"s, "\xC0\x80"s, "\xED\xA0\x80"s, "\xF4\x90\x80\x80"s}) {
        world_->makeFile(in("file"), bytes, 0644);
        EXPECT_EQ(files().readUtf8File(in("file")), std::nullopt);
    }
    EXPECT_EQ(files().readUtf8File(in("none")), std::nullopt);
    EXPECT_EQ(files().readUtf8File(world_->folder()), std::nullopt);
}

class SurroundingsContract : public ContractTest {};

TEST_F(SurroundingsContract, BundlePathIsAbsoluteAndHasNoSlashAtItsEnd) {
    const std::string path = platform().mainBundle().bundlePath();
    ASSERT_FALSE(path.empty());
    EXPECT_EQ(path.front(), '/');
    EXPECT_NE(path.back(), '/');
}

TEST_F(SurroundingsContract, EnvironmentIsReadWithoutChangingIt) {
    EXPECT_EQ(platform().processInfo().environment(), platform().processInfo().environment());
}

TEST_F(SurroundingsContract, RectanglesAsText) {
    EXPECT_EQ(platform().stringFromRect({{100, 80}, {900, 778}}), "{{100, 80}, {900, 778}}");
    EXPECT_EQ(platform().stringFromRect({{-0.5, 0.1}, {1e6, 0}}), "{{-0.5, 0.1}, {1000000, 0}}");
    EXPECT_EQ(platform().rectFromString("{{100, 80}, {900, 778}}"), (Rect{{100, 80}, {900, 778}}));
    EXPECT_EQ(platform().rectFromString("{{1, 2}, {3"), (Rect{{1, 2}, {3, 0}}));
    EXPECT_EQ(platform().rectFromString(""), Rect{});
    EXPECT_EQ(platform().rectFromString("nothing"), Rect{});
}

TEST_F(SurroundingsContract, AddressesAreTold) {
    EXPECT_TRUE(platform().isAddress("http://localhost:8080/"));
    EXPECT_TRUE(platform().isAddress("http://localhost:8080"));
    EXPECT_FALSE(platform().isAddress(""));
    EXPECT_FALSE(platform().isAddress("http://"));
    EXPECT_FALSE(platform().isAddress("no address"));
}

} // namespace
} // namespace vantorel::contract
