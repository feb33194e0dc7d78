// Vantorel. MIT licence, see LICENSE.
// The backend's Foundation part at work: defaults, files, environment, bundle, addresses, colours.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#import "platform/macos/addresses.h"
#import "platform/macos/bridge.h"
#import "platform/macos/bundle.h"
#import "platform/macos/files.h"
#import "platform/macos/process_info.h"
#import "platform/macos/user_defaults.h"

namespace vantorel::mac {
namespace {

using namespace std::string_literals;

TEST(Defaults, ComeBackByTheStoresConversions) {
    const auto defaults = makeUserDefaults();
    EXPECT_FALSE(defaults->hasObject("absent"));
    EXPECT_FALSE(defaults->boolForKey("absent"));
    EXPECT_EQ(defaults->stringForKey("absent"), std::nullopt);
    for (const bool value : {true, false}) {
        defaults->setBool(value, "flag");
        EXPECT_TRUE(defaults->hasObject("flag"));
        EXPECT_EQ(defaults->boolForKey("flag"), value);
    }
    for (const std::string& text : {"{{100, 80}, {900, 778}}"s, ""s, "emoji 🤖"s}) {
        defaults->setString(text, "text");
        EXPECT_EQ(defaults->stringForKey("text"), text);
    }
    for (const char* text : {"YES", "true", "1"}) {
        defaults->setString(text, "mixed");
        EXPECT_TRUE(defaults->boolForKey("mixed")) << text;
    }
}

class Files : public testing::Test {
protected:
    Files() {
        std::string name = (std::filesystem::temp_directory_path() / "vantorel-files.XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
    }
    ~Files() override { std::filesystem::remove_all(folder_); }
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder_ + "/" + name, std::ios::binary) << bytes;
        return folder_ + "/" + name;
    }

    std::string folder_;
};

TEST_F(Files, AreReadAsTheyAreOrNotAtAll) {
    const auto files = makeFileManager();
    for (const std::string& text : {""s, "A=1\r\nB=2\n"s, "nul \0 inside"s, "ünlaut 🤖"s, "\xEF\xBB\xBFmark"s}) {
        EXPECT_EQ(files->readUtf8File(write("good", text)), text);
    }
    for (const std::string& bytes : {"\xFF"s, "good \xC3"s, "\xED\xA0\x80"s}) {
        EXPECT_EQ(files->readUtf8File(write("bad", bytes)), std::nullopt);
    }
    EXPECT_EQ(files->readUtf8File(folder_ + "/none"), std::nullopt);
    EXPECT_EQ(files->readUtf8File(folder_), std::nullopt);
}

TEST_F(Files, ExistOrDoNotAndTakeAMode) {
    const auto files = makeFileManager();
    const std::string path = write("ünter 🤖", "");
    EXPECT_TRUE(files->fileExists(path));
    EXPECT_FALSE(files->fileExists(folder_ + "/none"));
    EXPECT_EQ(files->setPosixPermissions(path, 0755), std::nullopt);
    struct stat found {};
    ASSERT_EQ(::stat(path.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777U, 0755U);
    const auto error = files->setPosixPermissions(folder_ + "/none", 0755);
    ASSERT_TRUE(error.has_value());
    EXPECT_FALSE(error->localizedDescription.empty());
    EXPECT_FALSE(error->description.empty());
}

TEST(Surroundings, EnvironmentAndBundle) {
    const Environment environment = makeProcessInfo()->environment();
    ASSERT_TRUE(environment.contains("HOME"));
    EXPECT_EQ(environment.at("HOME"), std::getenv("HOME"));
    const std::string path = makeBundle()->bundlePath();
    ASSERT_FALSE(path.empty());
    EXPECT_EQ(path.front(), '/');
    EXPECT_NE(path.back(), '/');
}

TEST(Addresses, BecomeRequestsWithWhatWasAsked) {
    const std::string address = "http://localhost:8080/";
    EXPECT_TRUE(isAddress(address));
    EXPECT_FALSE(isAddress("no address"));
    NSURLRequest* const request = toURLRequest({address, CachePolicy::reloadIgnoringLocalAndRemoteCacheData, 30});
    ASSERT_NE(request, nil);
    EXPECT_EQ(toText(request.URL.absoluteString), address);
    EXPECT_EQ(static_cast<unsigned>(request.cachePolicy), 4U);
    EXPECT_EQ(request.timeoutInterval, 30);
    EXPECT_FALSE(toFailure(badAddressError()).localizedDescription.empty());
}

TEST(Colours, KeepTheirComponents) {
    NSColor* const grey = toNSColor(CalibratedRgb{0.95, 0.9, 0.85, 1});
    EXPECT_EQ(grey->red, 0.95);
    EXPECT_EQ(grey->green, 0.9);
    EXPECT_EQ(grey->blue, 0.85);
    EXPECT_EQ(grey->alpha, 1);
    EXPECT_EQ(toNSColor(SystemColor::clear)->alpha, 0);
    EXPECT_EQ(toNSColor(SystemColor::systemGreen)->green, 1);
    EXPECT_EQ(toNSColor(SystemColor::red)->green, 0);
    EXPECT_EQ(toNSColor(SystemColor::orange)->green, 0.5);
}

} // namespace
} // namespace vantorel::mac
