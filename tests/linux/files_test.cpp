// Vantorel. MIT licence, see LICENSE.
// Files, the bundle's place, and the environment.

#include "platform/linux/files.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/linux/bundle.h"
#include "platform/linux/process_info.h"
#include "tests/linux/system_support.h"

namespace vantorel::gtk::test {
namespace {

class FilesTest : public testing::Test {
protected:
    TemporaryFolder folder_;
    std::unique_ptr<FileManager> files_ = makeFileManager();
};

TEST_F(FilesTest, TellsWhetherAnythingIsThere) {
    writeFile(folder_.file("file"), "");
    std::filesystem::create_symlink(folder_.file("file"), folder_.file("link"));
    std::filesystem::create_symlink(folder_.file("nowhere"), folder_.file("broken"));
    EXPECT_TRUE(files_->fileExists(folder_.file("file")));
    EXPECT_TRUE(files_->fileExists(folder_.path().string()));
    EXPECT_TRUE(files_->fileExists(folder_.file("link")));
    EXPECT_FALSE(files_->fileExists(folder_.file("broken")));
    EXPECT_FALSE(files_->fileExists(folder_.file("none")));
    EXPECT_FALSE(files_->fileExists(""));
    EXPECT_FALSE(files_->fileExists(folder_.file("file") + std::string("\0x", 2)));
}

TEST_F(FilesTest, SetsPermissions) {
    const std::string path = folder_.file("file");
    writeFile(path, "", 0600);
    EXPECT_FALSE(files_->setPosixPermissions(path, 0755));
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0755));
}

TEST_F(FilesTest, WordsAFailure) {
    const std::string path = folder_.file("none");
    const auto error = files_->setPosixPermissions(path, 0755);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription,
              "Could not change the permissions of \"" + path + "\": No such file or directory");
    EXPECT_EQ(error->description, error->localizedDescription + " [ENOENT 2]");
}

TEST_F(FilesTest, ReadsText) {
    const std::vector<std::string> texts{"", "A=1\r\n🤖=ü\n", std::string("nul\0inside", 10),
                                         std::string(3'000'000, 'x')};
    for (const std::string& text : texts) {
        writeFile(folder_.file("text"), text);
        EXPECT_EQ(files_->readUtf8File(folder_.file("text")), text);
    }
}

TEST_F(FilesTest, ReadsNothingElse) {
    writeFile(folder_.file("latin1"), "gr\xfc\xdf");
    writeFile(folder_.file("overlong"), "\xc0\x80");
    ASSERT_EQ(::mkfifo(folder_.file("fifo").c_str(), 0600), 0);
    for (const char* name : {"latin1", "overlong", "fifo", "none", "."}) {
        EXPECT_EQ(files_->readUtf8File(folder_.file(name)), std::nullopt) << name;
    }
    EXPECT_EQ(files_->readUtf8File("/dev/zero"), std::nullopt);
}

TEST_F(FilesTest, ReadsWhatHasNoSize) {
    const auto text = files_->readUtf8File("/proc/self/status");
    ASSERT_TRUE(text);
    EXPECT_NE(text->find("Threads:"), std::string::npos);
}

TEST(BundleTest, IsTheAppFolder) {
    EXPECT_EQ(bundlePathOf("/opt/My Apps/Vantorel.app/Contents/Linux/Vantorel"), "/opt/My Apps/Vantorel.app");
    EXPECT_EQ(bundlePathOf("/x/y.app/Contents/Linux/other"), "/x/y.app");
}

TEST(BundleTest, IsElseTheExecutablesFolder) {
    EXPECT_EQ(bundlePathOf("/usr/bin/Vantorel"), "/usr/bin");
    EXPECT_EQ(bundlePathOf("/x/y/Contents/Linux/Vantorel"), "/x/y/Contents/Linux");
    EXPECT_EQ(bundlePathOf("/x/y.app/Contents/MacOS/Vantorel"), "/x/y.app/Contents/MacOS");
    EXPECT_EQ(bundlePathOf("/x/y.app/Linux/Vantorel"), "/x/y.app/Linux");
}

TEST(BundleTest, FindsTheRunningProgram) {
    EXPECT_EQ(makeBundle()->bundlePath(), std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
}

TEST(ProcessInfoTest, HandsOutTheEnvironmentAsItWas) {
    g_setenv("VANTOREL_TEST", "a=b", TRUE);
    const auto info = makeProcessInfo();
    g_setenv("VANTOREL_TEST", "changed", TRUE);
    EXPECT_EQ(info->environment().at("VANTOREL_TEST"), "a=b");
    EXPECT_EQ(currentEnvironment().at("VANTOREL_TEST"), "changed");
    g_unsetenv("VANTOREL_TEST");
    EXPECT_EQ(currentEnvironment().count("VANTOREL_TEST"), 0U);
    EXPECT_EQ(makeProcessInfo({{"A", "1"}})->environment(), (Environment{{"A", "1"}}));
}

} // namespace
} // namespace vantorel::gtk::test
