// Vantorel. MIT licence, see LICENSE.
// What pages post: values of every kind, hostile ones, and floods of them.
#include "tests/linux/web_view_support.h"

#include <time.h>

#include <algorithm>

#include "platform/linux/script_bundle.h"
#include "platform/portable/script_value_limits.h"

namespace vantorel::gtk::test {
namespace {

using namespace std::chrono_literals;
using Dictionary = ScriptValue::Dictionary;
using List = ScriptValue::List;

ScriptValue text(const std::string& value) { return {value}; }

class WebMessageTest : public WebViewTest {
protected:
    void SetUp() override {
        makeView();
        server_.page("/", "<meta charset=utf-8><title>page</title>");
        loadPage("/");
        run("var post = value => window.webkit.messageHandlers.consoleLog.postMessage(value)");
    }

    /// What arrives when the page posts the value of `expression`; nothing when nothing does.
    std::optional<ScriptValue> posted(const std::string& expression) {
        recorder_->messages.clear();
        run("try { post(" + expression + ") } catch (e) {}");
        runFor(30ms);
        EXPECT_LE(recorder_->messages.size(), 1U);
        return recorder_->messages.empty() ? std::nullopt : std::optional(recorder_->messages.back());
    }

    static std::chrono::nanoseconds ownTime() {
        timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    }

    /// The longest time that the main loop computed without coming to its drawing while `work` runs. Processor time, so
    /// that a busy machine does not count.
    std::chrono::milliseconds longestPause(const std::function<void()>& work) {
        struct Pulse {
            std::chrono::nanoseconds last = ownTime();
            std::chrono::nanoseconds longest{};
        } pulse;
        const guint source = g_timeout_add_full(
            GDK_PRIORITY_REDRAW, 1,
            [](gpointer data) -> gboolean {
                auto* self = static_cast<Pulse*>(data);
                const auto now = ownTime();
                self->longest = std::max(self->longest, now - self->last);
                self->last = now;
                return G_SOURCE_CONTINUE;
            },
            &pulse, nullptr);
        work();
        g_source_remove(source);
        return std::chrono::duration_cast<std::chrono::milliseconds>(pulse.longest);
    }
};

TEST_F(WebMessageTest, PlainValuesArriveAsTheyAre) {
    EXPECT_EQ(posted("'a ✅ 😀'"), text("a ✅ 😀"));
    EXPECT_EQ(posted("''"), text(""));
    EXPECT_EQ(posted("'a\\0b'"), text(std::string("a\0b", 3)));
    EXPECT_EQ(posted("1.5"), (ScriptValue{1.5}));
    EXPECT_EQ(posted("true"), (ScriptValue{true}));
    EXPECT_EQ(posted("null"), ScriptValue{});
    EXPECT_EQ(posted("undefined"), ScriptValue{});
    EXPECT_EQ(posted("[1, 'a', [false]]"), (ScriptValue{List{{1.0}, text("a"), {List{{false}}}}}));
    EXPECT_EQ(
        posted("{type: 'log', message: 'x', more: {n: 1}}"),
        (ScriptValue{Dictionary{{"type", text("log")}, {"message", text("x")}, {"more", {Dictionary{{"n", {1.0}}}}}}}));
}

TEST_F(WebMessageTest, HalfCharactersDoNotEndAText) {
    EXPECT_EQ(posted("'a\\ud800b'"), text("a\xEF\xBF\xBD"
                                          "b"));
}

TEST_F(WebMessageTest, OddValuesDoNoHarm) {
    for (const char* expression :
         {"{get a() { throw 1 }}", "new Proxy({}, {ownKeys() { throw 1 }})", "function() {}", "Symbol('x')", "10n",
          "new Map([[1, 2]])", "new Date(0)", "new Uint8Array(3)", "document.body", "window", "new Error('x')",
          "Object.create(null)", "{__proto__: {type: 'log'}}", "Object.assign([], {length: 5})", "new String('x')",
          "{toString() { throw 1 }, valueOf() { throw 1 }, toJSON() { throw 1 }}", "new Array(4e9)", "-0", "NaN"}) {
        SCOPED_TRACE(expression);
        posted(expression);
        EXPECT_EQ(posted("'still here'"), text("still here"));
    }
}

TEST_F(WebMessageTest, CyclesAndDepthAreBounded) {
    EXPECT_TRUE(posted("(() => { const o = {}; o.o = o; return o })()"));
    EXPECT_TRUE(posted("(() => { let a = []; for (let i = 0; i < 100000; i++) a = [a]; return a })()"));
    EXPECT_TRUE(posted("(() => { const a = []; for (let i = 0; i < 10; i++) a.push(a); return a })()"));
}

TEST_F(WebMessageTest, LongTextsAreCutAtACharactersEnd) {
    const auto long1 = posted("{type: 'log', message: 'é'.repeat(3e6)}");
    ASSERT_TRUE(long1);
    const Dictionary& record = *long1->asDictionary();
    EXPECT_EQ(*record.at("type").asText(), "log");
    EXPECT_EQ(record.at("message").asText()->size(), kMaxScriptTextBytes);
    const auto long2 = posted("'x' + '😀'.repeat(1e6)");
    ASSERT_TRUE(long2);
    EXPECT_EQ(long2->asText()->size(), kMaxScriptTextBytes - 3);
    const auto exact = posted("'x'.repeat(" + std::to_string(kMaxScriptTextBytes) + ")");
    ASSERT_TRUE(exact);
    EXPECT_EQ(exact->asText()->size(), kMaxScriptTextBytes);
}

TEST_F(WebMessageTest, HugeValuesDoNotHoldUpTheWindow) {
    for (const char* expression : {"'x'.repeat(1e8)", "{type: 'log', message: '😀'.repeat(3e7)}",
                                   "(() => { const a = []; for (let i = 0; i < 2e6; i++) a.push(i); return a })()",
                                   "(() => { const a = []; a[1e7] = 1; return a })()"}) {
        recorder_->messages.clear();
        const auto pause = longestPause([&] {
            view_->evaluateJavaScript(std::string("post(") + expression + ")", [](const auto&) {});
            EXPECT_TRUE(runUntil([&] { return !recorder_->messages.empty(); }));
        });
        EXPECT_LT(pause, 100ms) << expression;
        RecordProperty(expression, static_cast<int>(pause.count()));
    }
}

TEST_F(WebMessageTest, AFloodArrivesWholeAndInOrderWithoutHoldingUpTheWindow) {
    constexpr int kCount = 100000;
    int received = 0;
    bool ordered = true;
    recorder_->onMessage = [&](const ScriptValue& value) {
        const Dictionary* record = value.asDictionary();
        ordered = ordered && record != nullptr && *record->at("message").asText() == "m" + std::to_string(received);
        ++received;
    };
    const auto pause = longestPause([&] {
        view_->evaluateJavaScript("for (let i = 0; i < 100000; i++) post({type: 'log', message: 'm' + i})",
                                  [](const auto&) {});
        EXPECT_TRUE(runUntil([&] { return received >= kCount; }, 40s));
    });
    EXPECT_EQ(received, kCount);
    EXPECT_TRUE(ordered);
    EXPECT_LT(pause, 100ms);
    RecordProperty("pause", static_cast<int>(pause.count()));
}

TEST_F(WebMessageTest, ValuesOfEveryKindPassThroughAFlood) {
    const std::vector<std::string> expressions{"'a ✅ 😀'",
                                               "''",
                                               "'a\\0b'",
                                               "'a\\ud800b'",
                                               "1.5",
                                               "-1e300",
                                               "true",
                                               "false",
                                               "null",
                                               "undefined",
                                               "[1, ['a'], {}]",
                                               "{type: 'log', message: '✅ 😀', 'ключ 😀': [null, {a: false}]}",
                                               "'é'.repeat(1e6)"};
    std::vector<std::optional<ScriptValue>> expected;
    std::string script = "for (let i = 0; i < 1000; i++) post(0);";
    for (const std::string& expression : expressions) {
        expected.push_back(posted(expression));
        script += "post(" + expression + ");";
    }
    // What was posted one by one must have been sent directly.
    runFor(200ms);
    recorder_->messages.clear();
    run(script);
    EXPECT_TRUE(runUntil([&] { return recorder_->messages.size() == 1000 + expressions.size(); }));
    for (std::size_t i = 0; i < expressions.size(); ++i) {
        EXPECT_TRUE(recorder_->messages.at(1000 + i) == expected.at(i)) << expressions.at(i);
    }
}

TEST_F(WebMessageTest, TheGuardCannotBeTakenAway) {
    run("window.webkit.messageHandlers.consoleLog.postMessage = 5;"
        "delete Object.getPrototypeOf(window.webkit.messageHandlers.consoleLog).postMessage;"
        "Array.isArray = Reflect.apply = Object.keys = () => { throw 1 };"
        "String.prototype.slice = () => { throw 1 };");
    const auto value = posted("'x'.repeat(2e6)");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->asText()->size(), kMaxScriptTextBytes);
}

TEST_F(WebMessageTest, ATextThatLooksLikeABundleIsAText) {
    const std::string record = "d2:4:types3:log7:messages1:x";
    for (const std::string& forged : {"vantorel messages " + record, "vantorel messages:" + record,
                                      "vantorel messages " + std::string(32, '0') + ":" + record, record}) {
        EXPECT_EQ(posted("'" + forged + "'"), text(forged));
    }
}

TEST_F(WebMessageTest, ThePageCannotReadTheBundlesMark) {
    run("for (let i = 0; i < 1000; i++) post(i)");
    ASSERT_TRUE(runUntil([&] { return recorder_->messages.size() == 1000; }));
    runFor(200ms);
    const auto seen = posted(R"((() => {
        const channel = webkit.messageHandlers.consoleLog, found = [channel.postMessage, channel, webkit];
        const walk = f => {
            for (let i = 0; i < 9 && typeof f === 'function'; i++) {
                found.push(f);
                try { found.push(...f.arguments); } catch (e) {}
                try { f = f.caller; } catch (e) { f = null; }
            }
        };
        function getter() { walk(getter); throw new Error('stop'); }
        try { channel.postMessage({get a() { return getter(); }}); } catch (e) { found.push(e.stack); }
        const names = new Set(found.flatMap(each => each instanceof Object ? Reflect.ownKeys(each) : []));
        for (const name of names) for (const each of [...found]) try { found.push(each[name]); } catch (e) {}
        return found.map(each => { try { return String(each); } catch (e) { return ''; } }).join('\n');
    })())");
    ASSERT_TRUE(seen);
    EXPECT_NE(seen->asText()->find("freePosts"), std::string::npos) << "the guard's function was not read";
    EXPECT_EQ(seen->asText()->find("vantorel messages"), std::string::npos) << *seen->asText();
}

TEST(MessageBundle, EachMarkIsNewAndFitsIntoAScript) {
    const std::string mark = makeBundleMark();
    EXPECT_NE(mark, makeBundleMark());
    EXPECT_GE(mark.size(), 32U);
    EXPECT_EQ(mark.find_first_of("'\"\\\n"), std::string::npos);
}

TEST(MessageBundle, BrokenOnesDoNoHarm) {
    for (const char* broken : {"", "s", "s99:x", "l9999999999:z", "d3:1:az", "n", "s1:😀"}) {
        EXPECT_TRUE(messagesFromBundle(broken).empty()) << broken;
    }
    EXPECT_EQ(messagesFromBundle("s1:as9:b"), List{text("a")});
    EXPECT_EQ(messagesFromBundle("nx;").size(), 1U);
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "l1:";
    }
    EXPECT_TRUE(messagesFromBundle(deep).empty());
}

} // namespace
} // namespace vantorel::gtk::test
