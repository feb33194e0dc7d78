// Vantorel. MIT licence, see LICENSE.
// Values across the border between C++ and Objective-C. Needs Foundation only: on Linux it runs over a stand-in of it.
#import <Foundation/Foundation.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#import "platform/macos/bridge.h"
#import "platform/macos/script_values.h"
#include "platform/portable/script_value_limits.h"

namespace vantorel::mac::test {
namespace {

using namespace std::string_literals;

TEST(MacText, ComesBackAsItWent) {
    for (const std::string& text : {""s, "plain"s, "🔄 Starting server..."s, "nul \0 inside"s, "ü\u00FC\u2028"s}) {
        EXPECT_EQ(toText(toNSString(text)), text);
    }
    EXPECT_EQ(toText(nil), "");
}

TEST(MacText, BytesThatAreNoUtf8AreTakenAsLatin1) {
    EXPECT_EQ(toText(toNSString("a\xFFz")), "a\u00FFz");
}

TEST(MacText, HalvesOfCharactersAreReplaced) {
    const std::vector<unichar> units = {0xDC00, 'a', 0xD83D, 0xFC, 0x20AC, 0xD83E, 0xDD16, 0xD83D};
    const std::string repaired = "\uFFFDa\uFFFDü€🤖\uFFFD";
    EXPECT_EQ(repairedUtf8(units), repaired);
    NSString* const text = [NSString stringWithCharacters:units.data() length:units.size()];
    if (text == nil) {
        GTEST_SKIP() << "this Foundation makes no such texts";
    }
    EXPECT_EQ(toText(text), repaired);
}

TEST(MacScriptValue, KeepsKindsApart) {
    const ScriptValue value = toScriptValue(
        @{@"flag" : @(YES), @"one" : @1, @"half" : @0.5, @"text" : @"ü", @"list" : @[ @"a", NSNull.null ]});
    const ScriptValue::Dictionary* const entries = value.asDictionary();
    ASSERT_NE(entries, nullptr);
    EXPECT_EQ(entries->at("flag"), ScriptValue{true});
    EXPECT_EQ(entries->at("one"), ScriptValue{1.0});
    EXPECT_EQ(entries->at("half"), ScriptValue{0.5});
    EXPECT_EQ(entries->at("text"), ScriptValue{"ü"s});
    EXPECT_EQ(entries->at("list"), (ScriptValue{ScriptValue::List{ScriptValue{"a"s}, ScriptValue{}}}));
    EXPECT_EQ(toScriptValue(nil), ScriptValue{});
}

TEST(MacScriptValue, IsBoundedInDepthAndNumber) {
    NSMutableArray* const inner = [NSMutableArray array];
    NSMutableArray* nested = inner;
    for (std::size_t depth = 0; depth < 3 * kMaxScriptValueDepth; ++depth) {
        NSMutableArray* const outer = [NSMutableArray array];
        [outer addObject:nested];
        nested = outer;
    }
    std::size_t depth = 0;
    const ScriptValue converted = toScriptValue(nested);
    const ScriptValue* value = &converted;
    while (const auto* const list = std::get_if<ScriptValue::List>(&value->value)) {
        ++depth;
        if (list->empty()) {
            break;
        }
        value = &list->front();
    }
    EXPECT_LE(depth, kMaxScriptValueDepth + 1);

    NSMutableArray* const many = [NSMutableArray array];
    for (std::size_t count = 0; count < 3 * kMaxScriptValueMembers; ++count) {
        [many addObject:@1];
    }
    EXPECT_LE(std::get<ScriptValue::List>(toScriptValue(many).value).size(), kMaxScriptValueMembers);
}

TEST(MacError, SaysSomethingInAnyCase) {
    EXPECT_EQ(toPlatformError(nil), std::nullopt);
    EXPECT_FALSE(toFailure(nil).localizedDescription.empty());
    NSError* const error = [NSError errorWithDomain:NSURLErrorDomain code:NSURLErrorBadURL userInfo:nil];
    EXPECT_FALSE(toFailure(error).localizedDescription.empty());
    EXPECT_FALSE(toFailure(error).description.empty());
}

} // namespace
} // namespace vantorel::mac::test
