// Vantorel. MIT licence, see LICENSE.
// The page's console on the log.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

ScriptValue text(const std::string& value) { return {value}; }

ScriptValue recordOf(ScriptValue type, ScriptValue message) {
    return {ScriptValue::Dictionary{{"type", std::move(type)}, {"message", std::move(message)}}};
}

class ScriptMessageTest : public ShellTest {
protected:
    void SetUp() override { launchQuietly(); }
    void post(const ScriptValue& body) { EXPECT_TRUE(page().configuration().post("consoleLog", body)); }
    void expectDropped(const ScriptValue& body) {
        post(body);
        EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
    }
};

TEST_F(ScriptMessageTest, EachKindHasItsPrefix) {
    post(recordOf(text("error"), text("e")));
    post(recordOf(text("warn"), text("w")));
    post(recordOf(text("log"), text("l")));
    post(recordOf(text("info"), text("x")));
    EXPECT_THAT(log_.lines(), ElementsAre("🔴 JS Error: e", "🟡 JS Warning: w", "🔵 JS Log: l", "JS: x"));
}

TEST_F(ScriptMessageTest, ComparisonIsExact) {
    for (const char* type : {"Error", "LOG", "Warn", " log", "log ", "", "logs"}) {
        post(recordOf(text(type), text("m")));
    }
    EXPECT_EQ(log_.lines().size(), 7U);
    EXPECT_EQ(log_.count("JS: m"), 7U);
}

TEST_F(ScriptMessageTest, EmptyMessageIsALineThatEndsAfterThePrefix) {
    post(recordOf(text("log"), text("")));
    EXPECT_THAT(log_.lines(), ElementsAre("🔵 JS Log: "));
}

TEST_F(ScriptMessageTest, MessageIsWrittenAsItIs) {
    post(recordOf(text("log"), text("  two\nlines 🦊  ")));
    EXPECT_THAT(log_.lines(), ElementsAre("🔵 JS Log:   two\nlines 🦊  "));
}

TEST_F(ScriptMessageTest, OtherMembersDoNotMatter) {
    post({ScriptValue::Dictionary{{"type", text("log")}, {"message", text("m")}, {"more", {1.0}}}});
    EXPECT_THAT(log_.lines(), ElementsAre("🔵 JS Log: m"));
}

TEST_F(ScriptMessageTest, BodiesThatAreNoRecordAreDropped) {
    expectDropped({});
    expectDropped({true});
    expectDropped({3.5});
    expectDropped(text("bare text"));
    expectDropped({ScriptValue::List{text("log"), text("m")}});
    expectDropped({ScriptValue::Dictionary{}});
}

TEST_F(ScriptMessageTest, MembersThatAreNoTextAreDropped) {
    expectDropped({ScriptValue::Dictionary{{"message", text("m")}}});
    expectDropped({ScriptValue::Dictionary{{"type", text("log")}}});
    expectDropped(recordOf({}, text("m")));
    expectDropped(recordOf({1.0}, text("m")));
    expectDropped(recordOf({false}, text("m")));
    expectDropped(recordOf(text("log"), {}));
    expectDropped(recordOf(text("log"), {42.0}));
    expectDropped(recordOf(text("log"), {ScriptValue::List{text("m")}}));
    expectDropped(recordOf(text("log"), {ScriptValue::Dictionary{{"message", text("m")}}}));
    expectDropped({ScriptValue::Dictionary{{"Type", text("log")}, {"Message", text("m")}}});
}

TEST_F(ScriptMessageTest, OtherChannelsAreIgnored) {
    for (const char* name : {"", "console", "consolelog", "consoleLog ", "ConsoleLog"}) {
        shell_->didReceiveScriptMessage(name, recordOf(text("log"), text("m")));
    }
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ScriptMessageTest, OnlyTheLogIsTouched) {
    post(recordOf(text("error"), text("m")));
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("log \"🔴 JS Error: m\""));
}

TEST_F(ScriptMessageTest, PostsForAControllerThatIsGoneDoNothing) {
    releaseShell();
    post(recordOf(text("log"), text("m")));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

} // namespace
} // namespace vantorel::fake
