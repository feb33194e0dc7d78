// Vantorel. MIT licence, see LICENSE.
// Alerts: what they show, what they give back, and what goes on meanwhile.
#import <AppKit/AppKit.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#import "platform/macos/bridge.h"
#import "platform/macos/view.h"
#include "tests/macos/native/mac_world.h"

namespace vantorel::mac::test {
namespace {

std::shared_ptr<Alert> makeOkCancel() {
    auto alert = nativePlatform().makeAlert();
    alert->setMessageText("Vantor");
    alert->setInformativeText("Really?");
    alert->setAlertStyle(AlertStyle::warning);
    alert->addButtonWithTitle("OK");
    alert->addButtonWithTitle("Cancel");
    return alert;
}

/// Presses the button of that title as soon as the alert is up.
void pressWhenModal(const std::string& title) {
    whenModal([title](NSWindow* modal) {
        NSButton* const button = buttonTitled(modal, title);
        ASSERT_NE(button, nil) << title;
        [button performClick:nil];
    });
}

TEST(MacAlert, GivesTheButtonsCode) {
    pressWhenModal("OK");
    EXPECT_EQ(makeOkCancel()->runModal(), kAlertFirstButtonReturn);
    pressWhenModal("Cancel");
    EXPECT_EQ(makeOkCancel()->runModal(), kAlertFirstButtonReturn + 1);
}

TEST(MacAlert, TimersAndTheMainQueueGoOnMeanwhile) {
    int ticks = 0;
    bool queued = false;
    const auto timer = nativePlatform().scheduleRepeatingTimer(0.05, [&] { ++ticks; });
    const auto alert = makeOkCancel();
    whenModal([&](NSWindow* modal) {
        nativePlatform().mainQueue().async([&queued] { queued = true; });
        nativePlatform().mainQueue().asyncAfter(0.3, [modal] { [buttonTitled(modal, "OK") performClick:nil]; });
    });
    alert->runModal();
    timer->invalidate();
    EXPECT_TRUE(queued);
    EXPECT_GT(ticks, 2);
}

TEST(MacAlert, AccessoryFieldHasTheKeyboardAndKeepsItsText) {
    const auto field = nativePlatform().makeTextField({{0, 0}, {300, 24}});
    field->setStringValue("before");
    const auto alert = makeOkCancel();
    alert->setAccessoryView(field);
    NSView* const native = nsViewOf(field.get());
    whenModal([&](NSWindow* modal) {
        EXPECT_EQ(native.window, modal);
        EXPECT_EQ(modal.initialFirstResponder, native);
        EXPECT_EQ(native.frame.size.width, 300);
        field->setStringValue("after 🤖");
        [buttonTitled(modal, "OK") performClick:nil];
    });
    EXPECT_EQ(alert->runModal(), kAlertFirstButtonReturn);
    EXPECT_EQ(field->stringValue(), "after 🤖");
}

} // namespace
} // namespace vantorel::mac::test
