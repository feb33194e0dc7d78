// Vantorel. MIT licence, see LICENSE.
// Where the server is, what is reported about it, and what environment it gets.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "server/env_file.h"
#include "server/environment.h"
#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

using Entries = std::vector<std::pair<std::string, std::string>>;

TEST(EnvText, TakesKeyAndValueVerbatim) {
    EXPECT_EQ(parseEnvText("KEY=value"), (Entries{{"KEY", "value"}}));
    EXPECT_EQ(parseEnvText("KEY = value"), (Entries{{"KEY ", " value"}}));
    EXPECT_EQ(parseEnvText("KEY="), (Entries{{"KEY", ""}}));
    EXPECT_EQ(parseEnvText("=value"), (Entries{{"", "value"}}));
    EXPECT_EQ(parseEnvText("="), (Entries{{"", ""}}));
    EXPECT_EQ(parseEnvText("KEY=a=b"), (Entries{{"KEY", "a=b"}}));
    EXPECT_EQ(parseEnvText("KEY==a"), (Entries{{"KEY", "=a"}}));
    EXPECT_EQ(parseEnvText("KEY=#x"), (Entries{{"KEY", "#x"}}));
    EXPECT_EQ(parseEnvText("KEY=\"quoted\""), (Entries{{"KEY", "\"quoted\""}}));
    EXPECT_EQ(parseEnvText("KEY='a b'"), (Entries{{"KEY", "'a b'"}}));
    EXPECT_EQ(parseEnvText("export KEY=1"), (Entries{{"export KEY", "1"}}));
    EXPECT_EQ(parseEnvText("KEY=$HOME \\n"), (Entries{{"KEY", "$HOME \\n"}}));
    EXPECT_EQ(parseEnvText("ключ=🔑"), (Entries{{"ключ", "🔑"}}));
}

TEST(EnvText, SkipsWhatIsNoEntry) {
    EXPECT_THAT(parseEnvText(""), IsEmpty());
    EXPECT_THAT(parseEnvText("\n\n  \n\t\n"), IsEmpty());
    EXPECT_THAT(parseEnvText("# comment"), IsEmpty());
    EXPECT_THAT(parseEnvText("   # indented=comment"), IsEmpty());
    EXPECT_THAT(parseEnvText("#KEY=value"), IsEmpty());
    EXPECT_THAT(parseEnvText("no sign here"), IsEmpty());
}

TEST(EnvText, TrimsTheLineButNotItsParts) {
    EXPECT_EQ(parseEnvText(" \t KEY=value \t "), (Entries{{"KEY", "value"}}));
    EXPECT_EQ(parseEnvText("\u00A0KEY=value\u3000"), (Entries{{"KEY", "value"}}));
    EXPECT_EQ(parseEnvText("  KEY  =  value  "), (Entries{{"KEY  ", "  value"}}));
}

TEST(EnvText, EveryLineBreakSeparates) {
    const Entries both{{"A", "1"}, {"B", "2"}};
    for (const char* lineBreak : {"\n", "\v", "\f", "\r", "\r\n", "\u0085", "\u2028", "\u2029", "\n\n"}) {
        EXPECT_EQ(parseEnvText(std::string("A=1") + lineBreak + "B=2"), both);
        EXPECT_EQ(parseEnvText(std::string("A=1") + lineBreak + "B=2" + lineBreak), both);
    }
}

TEST(EnvText, KeepsOrderAndDuplicates) {
    EXPECT_EQ(parseEnvText("A=1\nB=2\nA=3\n"), (Entries{{"A", "1"}, {"B", "2"}, {"A", "3"}}));
}

TEST(ServerEnvironment, LaterLayersWin) {
    const Environment inherited{{"PATH", "/bin"}, {"HOME", "/home/me"}, {"WEBSOCKET_ENABLED", "no"}};
    const std::string text = "PATH=/opt\nNEW=1\nNEW=2\nWEBSOCKET_PORT=1\nDISABLE_NATIVE_HOTKEYS=false\n";
    EXPECT_THAT(composeServerEnvironment(inherited, text, 9000),
                ElementsAre(Pair("DISABLE_NATIVE_HOTKEYS", "true"), Pair("HOME", "/home/me"), Pair("NEW", "2"),
                            Pair("PATH", "/opt"), Pair("WEBSOCKET_ENABLED", "true"), Pair("WEBSOCKET_PORT", "9000")));
}

TEST(ServerEnvironment, WithoutAFileItIsInheritedAndFixed) {
    EXPECT_THAT(composeServerEnvironment({{"A", "b"}}, std::nullopt, -1),
                ElementsAre(Pair("A", "b"), Pair("DISABLE_NATIVE_HOTKEYS", "true"), Pair("WEBSOCKET_ENABLED", "true"),
                            Pair("WEBSOCKET_PORT", "-1")));
}

TEST(ServerEnvironment, NamesAreCaseSensitiveAndMayBeOdd) {
    const Environment environment = composeServerEnvironment({}, "path=1\n=empty\nKEY =v\n", 8080);
    EXPECT_THAT(environment, Contains(Pair("path", "1")));
    EXPECT_THAT(environment, Contains(Pair("", "empty")));
    EXPECT_THAT(environment, Contains(Pair("KEY ", "v")));
    EXPECT_EQ(environment.size(), 6U);
}

class ServerLaunchTest : public ShellTest {
protected:
    /// A controller with a strip, as far as the server's start needs one.
    void start() {
        construct();
        shell_->setWindow(platform_.makeWindow({{0, 0}, {900, 750}}, 15));
        shell_->createStatusBar();
        platform_.recorder.clear();
        shell_->startGoServer();
    }
    const Environment& given() { return child().environment().value(); }
    /// Nothing is logged while the environment is put together: the one line of it follows that of the launch.
    void expectNoWordOfTheFile() {
        const std::string launching = std::string("🚀 Launching server from directory: ") + kResources;
        const std::string environment =
            "🌍 Environment: WEBSOCKET_ENABLED=true, WEBSOCKET_PORT=8080, DISABLE_NATIVE_HOTKEYS=true";
        EXPECT_THAT(between(log_.lines(), launching, environment), ElementsAre(launching, environment));
    }
};

TEST_F(ServerLaunchTest, MissingServerIsReportedAndEndsTheStart) {
    platform_.files.remove(kServer);
    platform_.files.addFile(kEnvFile, "A=1");
    start();
    EXPECT_EQ(
        joined(platform_.recorder.lines()),
        joined({"log \"\\n========================================\"", "log \"🔴 ENTERING startGoServer() method\"",
                "log \"========================================\\n\"", "mainQueue.async()",
                "log \"📁 App bundle: /Applications/Vantorel.app\"",
                "log \"📁 Resources path: /Applications/Vantorel.app/Contents/Resources\"",
                "log \"📁 Server path: /Applications/Vantorel.app/Contents/Resources/vantor-srv\"",
                "log \"📁 .env path: /Applications/Vantorel.app/Contents/Resources/.env\"",
                "fileManager.fileExists(\"/Applications/Vantorel.app/Contents/Resources/vantor-srv\")",
                "mainQueue.async()", "mainQueue.async()"}));
    expectStatus("❌ Server binary not found at: /Applications/Vantorel.app/Contents/Resources/vantor-srv",
                 SystemColor::red);
    EXPECT_EQ(alert().messageText(), "Server binary not found");
    EXPECT_EQ(alert().informativeText(), "Please rebuild the application with the Go server included.");
    EXPECT_EQ(alert().style(), AlertStyle::critical);
    EXPECT_THAT(alert().buttons(), ElementsAre("OK"));
    EXPECT_EQ(shell_->serverProcess(), nullptr);
    EXPECT_FALSE(shell_->isServerRunning());
}

TEST_F(ServerLaunchTest, MissingServerStaysOnTheStrip) {
    platform_.files.remove(kServer);
    launch();
    platform_.advance(60);
    expectStatus("❌ Server binary not found at: /Applications/Vantorel.app/Contents/Resources/vantor-srv",
                 SystemColor::red);
    EXPECT_EQ(platform_.http.taskCount(), 0U);
    EXPECT_THAT(page().loads(), IsEmpty());
    EXPECT_EQ(platform_.alerts.size(), 1U);
}

TEST_F(ServerLaunchTest, FirstStatusIsTheStart) {
    start();
    ASSERT_TRUE(platform_.loop.runOneMainBlock());
    EXPECT_EQ(label().stringValue(), "🔄 Starting Go server...");
    EXPECT_EQ(label().textColor(), Color(SystemColor::orange));
}

TEST_F(ServerLaunchTest, EnvFileIsAnnounced) {
    platform_.files.addFile(kEnvFile, "A=1");
    start();
    EXPECT_EQ(log_.count("✅ .env file found (will be loaded into environment)"), 1U);
    EXPECT_EQ(given().at("A"), "1");
}

TEST_F(ServerLaunchTest, PathsGoByTheBundle) {
    platform_.bundle.path = "/opt/some where/X.app";
    start();
    EXPECT_THAT(log_.lines(), Contains("📁 App bundle: /opt/some where/X.app"));
    EXPECT_THAT(log_.lines(), Contains("📁 Resources path: /opt/some where/X.app/Contents/Resources"));
    EXPECT_THAT(log_.lines(), Contains("📁 Server path: /opt/some where/X.app/Contents/Resources/vantor-srv"));
    EXPECT_THAT(log_.lines(), Contains("📁 .env path: /opt/some where/X.app/Contents/Resources/.env"));
}

TEST_F(ServerLaunchTest, ServerBecomesExecutable) {
    platform_.files.addFile(kServer, kProgram, 0600);
    start();
    EXPECT_EQ(platform_.files.mode(kServer), 0755U);
    EXPECT_TRUE(shell_->isServerRunning());
}

TEST_F(ServerLaunchTest, FailedModeChangeIsLoggedAndTheLaunchTriedAllTheSame) {
    platform_.files.addFile(kEnvFile, "A=1");
    platform_.files.permissionError = PlatformError{"for people", "for the log"};
    start();
    const std::string path = std::string("📁 .env path: ") + kEnvFile;
    EXPECT_THAT(between(log_.lines(), path, "⚙️ Creating Process object..."),
                ElementsAre(path, "✅ .env file found (will be loaded into environment)",
                            "⚠️ Warning: Could not set executable permissions: for the log",
                            "⚙️ Creating Process object..."));
    EXPECT_TRUE(shell_->isServerRunning());
}

TEST_F(ServerLaunchTest, FileThatStaysWithoutPermissionFailsAsALaunch) {
    platform_.files.addFile(kServer, kProgram, 0600);
    platform_.files.permissionError = PlatformError{"for people", "for the log"};
    start();
    platform_.runMainQueue();
    EXPECT_FALSE(shell_->isServerRunning());
    EXPECT_EQ(alert().messageText(), "Server Start Failed");
}

TEST_F(ServerLaunchTest, EnvironmentReplacesTheInheritedOne) {
    platform_.surroundings.variables = {{"HOME", "/home/me"}, {"PATH", "/bin"}, {"WEBSOCKET_PORT", "9000"}};
    platform_.files.addFile(kEnvFile, "PATH=/opt\r\n# PATH=/no\r\nDISABLE_NATIVE_HOTKEYS=0\r\nWEBSOCKET_PORT=1\r\n");
    start();
    EXPECT_THAT(given(),
                ElementsAre(Pair("DISABLE_NATIVE_HOTKEYS", "true"), Pair("HOME", "/home/me"), Pair("PATH", "/opt"),
                            Pair("WEBSOCKET_ENABLED", "true"), Pair("WEBSOCKET_PORT", "9000")));
    EXPECT_EQ(log_.count("🌍 Environment: WEBSOCKET_ENABLED=true, WEBSOCKET_PORT=9000, DISABLE_NATIVE_HOTKEYS=true"),
              1U);
}

TEST_F(ServerLaunchTest, UnreadableEnvFileIsAsIfItWereEmpty) {
    platform_.files.addFile(kEnvFile, "A=1");
    platform_.files.makeUnreadable(kEnvFile);
    start();
    EXPECT_THAT(given(), Not(Contains(Pair("A", "1"))));
    EXPECT_EQ(log_.count("✅ .env file found (will be loaded into environment)"), 1U);
    expectNoWordOfTheFile();
    EXPECT_TRUE(shell_->isServerRunning());
}

TEST_F(ServerLaunchTest, EnvFileThatIsNotUtf8GivesNoEntryAtAll) {
    platform_.files.addFile(kEnvFile, "A=1\nB=\xFF\nC=3\n");
    start();
    EXPECT_EQ(given().size(), 3U);
    expectNoWordOfTheFile();
}

TEST_F(ServerLaunchTest, DirectoryInTheFilesPlaceGivesNoEntry) {
    platform_.files.addDirectory(kEnvFile);
    start();
    EXPECT_EQ(given().size(), 3U);
    EXPECT_EQ(log_.count("✅ .env file found (will be loaded into environment)"), 1U);
    expectNoWordOfTheFile();
}

TEST_F(ServerLaunchTest, FileThatAppearsBetweenTheTwoTestsIsRead) {
    int tests = 0;
    platform_.files.onExistenceTest = [this, &tests](const std::string& path) {
        if (path == kEnvFile && ++tests == 2)
            platform_.files.addFile(kEnvFile, "LATE=1");
    };
    start();
    EXPECT_EQ(tests, 2);
    EXPECT_EQ(log_.count(std::string("⚠️ Warning: .env file not found at: ") + kEnvFile), 1U);
    EXPECT_EQ(given().at("LATE"), "1");
}

TEST_F(ServerLaunchTest, FileThatVanishesBetweenTheTwoTestsIsNotRead) {
    platform_.files.addFile(kEnvFile, "A=1");
    int tests = 0;
    platform_.files.onExistenceTest = [this, &tests](const std::string& path) {
        if (path == kEnvFile && ++tests == 2)
            platform_.files.remove(kEnvFile);
    };
    start();
    EXPECT_EQ(given().size(), 3U);
    EXPECT_EQ(platform_.recorder.countStartingWith("fileManager.readUtf8File("), 0U);
}

TEST_F(ServerLaunchTest, InheritedEnvironmentIsReadAfresh) {
    construct();
    platform_.surroundings.variables["LATER"] = "1";
    shell_->setWindow(platform_.makeWindow({{0, 0}, {900, 750}}, 15));
    shell_->createStatusBar();
    shell_->startGoServer();
    EXPECT_EQ(given().at("LATER"), "1");
}

} // namespace
} // namespace vantorel::fake
