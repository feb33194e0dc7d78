// Vantorel. MIT licence, see LICENSE.
// The window and its views as AppKit sees them.
#import <AppKit/AppKit.h>

#include <memory>

#include <gtest/gtest.h>

#import "platform/macos/bridge.h"
#import "platform/macos/view.h"
#include "tests/macos/native/mac_world.h"

namespace vantorel::mac::test {
namespace {

constexpr unsigned kOrdinaryStyle = 15;

std::shared_ptr<Window> makeMainWindow(Rect content = {{100, 100}, {900, 750}}) {
    return nativePlatform().makeWindow(content, kOrdinaryStyle);
}

TEST(MacWindow, IsMadeAsItIsAskedFor) {
    const auto window = makeMainWindow();
    NSWindow* const native = nativeWindow(*window);
    EXPECT_EQ(native.styleMask & kOrdinaryStyle, kOrdinaryStyle);
    EXPECT_FALSE(native.visible);
    EXPECT_TRUE(native.releasedWhenClosed);
    EXPECT_EQ(native.contentView.frame.size.width, 900);
    EXPECT_EQ(native.contentView.frame.size.height, 750);
    EXPECT_EQ(native.level, 0);
    EXPECT_EQ(native.sharingType, NSWindowSharingReadOnly);
}

TEST(MacWindow, TakesItsProperties) {
    const auto window = makeMainWindow();
    NSWindow* const native = nativeWindow(*window);
    window->setTitle("🤖 Vantor");
    EXPECT_EQ(toText(native.title), "🤖 Vantor");
    window->setMinSize({400, 350});
    EXPECT_EQ(native.minSize.width, 400);
    EXPECT_EQ(native.minSize.height, 350);
    window->setLevel(WindowLevel::floating);
    EXPECT_EQ(native.level, 3);
    window->setLevel(WindowLevel::normal);
    EXPECT_EQ(native.level, 0);
    window->setSharingType(WindowSharingType::none);
    EXPECT_EQ(native.sharingType, NSWindowSharingNone);
    window->setSharingType(WindowSharingType::readOnly);
    EXPECT_EQ(native.sharingType, NSWindowSharingReadOnly);
}

TEST(MacWindow, IsShownAndKeepsItsSizeInTheMiddle) {
    const auto window = makeMainWindow({{-3000, 5000}, {500, 400}});
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(nativeWindow(*window).visible);
    window->center();
    const Rect frame = window->frame();
    EXPECT_EQ(frame.size.width, 500);
    EXPECT_GT(frame.size.height, 400);
    EXPECT_GT(frame.origin.x, 0);
    EXPECT_GT(frame.origin.y, 0);
}

TEST(MacWindow, FrameIsReadableAfterTheClose) {
    const auto window = makeMainWindow();
    window->makeKeyAndOrderFront();
    const Rect before = window->frame();
    [nativeWindow(*window) close];
    runFor(0.1);
    EXPECT_EQ(window->frame().size, before.size);
}

TEST(MacWindow, SizesBeyondTheScreenAreCut) {
    const auto huge = makeMainWindow({{-1e300, 1e300}, {1e300, 1e300}});
    EXPECT_GT(huge->frame().size.width, 0);
    EXPECT_LE(huge->frame().size.width, 10'000);
    const auto nothing = makeMainWindow({{0, 0}, {-5, 0}});
    EXPECT_GE(nothing->contentView()->bounds().size.height, 0);
}

TEST(MacRect, NumbersThatAreNotFiniteCountAsNought) {
    const Rect rect = nativePlatform().rectFromString("{{1e999, nan}, {-inf, 4}}");
    EXPECT_EQ(rect.origin.x, 0);
    EXPECT_EQ(rect.origin.y, 0);
    EXPECT_EQ(rect.size.width, 0);
}

TEST(MacRect, FrameComesBackAsItWasStored) {
    for (const Rect& rect : {Rect{{100, 80}, {900, 778}}, Rect{{-1440.5, 0}, {400, 350.25}}}) {
        EXPECT_EQ(nativePlatform().rectFromString(nativePlatform().stringFromRect(rect)), rect);
    }
}

TEST(MacView, ColoursOfThePaletteAndOfNumbers) {
    EXPECT_TRUE([toNSColor(SystemColor::orange) isEqual:NSColor.orangeColor]);
    EXPECT_TRUE([toNSColor(SystemColor::red) isEqual:NSColor.redColor]);
    EXPECT_TRUE([toNSColor(SystemColor::systemGreen) isEqual:NSColor.systemGreenColor]);
    EXPECT_TRUE([toNSColor(SystemColor::clear) isEqual:NSColor.clearColor]);
    NSColor* const grey = [NSColor colorWithCalibratedRed:0.95 green:0.95 blue:0.95 alpha:1];
    EXPECT_TRUE([toNSColor(CalibratedRgb{0.95, 0.95, 0.95, 1}) isEqual:grey]);
}

TEST(MacView, SubviewsAreStackedBelowTheirSibling) {
    const auto window = makeMainWindow();
    const auto strip = nativePlatform().makeView({{0, 720}, {900, 30}});
    const auto page = nativePlatform().makeView({{0, 0}, {900, 720}});
    window->contentView()->addSubview(strip);
    window->contentView()->addSubview(page, OrderingMode::below, strip.get());
    NSArray<NSView*>* const stacked = nsViewOf(window->contentView().get()).subviews;
    ASSERT_EQ(stacked.count, 2U);
    EXPECT_EQ(stacked[0], nsViewOf(page.get()));
    EXPECT_EQ(stacked[1], nsViewOf(strip.get()));
}

TEST(MacView, LabelLooksLikeOne) {
    const auto label = nativePlatform().makeTextField({{10, 5}, {880, 20}});
    label->setEditable(false);
    label->setBordered(false);
    label->setBackgroundColor(SystemColor::clear);
    label->setSystemFont(11);
    label->setTextColor(SystemColor::red);
    auto* const native = static_cast<NSTextField*>(nsViewOf(label.get()));
    EXPECT_FALSE(native.editable);
    EXPECT_FALSE(native.bordered);
    EXPECT_FALSE(native.bezeled);
    EXPECT_TRUE([native.backgroundColor isEqual:NSColor.clearColor]);
    EXPECT_TRUE([native.textColor isEqual:NSColor.redColor]);
    EXPECT_EQ(native.font.pointSize, 11);
}

} // namespace
} // namespace vantorel::mac::test
