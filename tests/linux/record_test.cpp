// Vantorel. MIT licence, see LICENSE.
// Key presses as the X server tells them: each once, at once, told apart by the window that has the keyboard.

#include "platform/linux/record_source.h"

#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "platform/linux/own_windows.h"
#include "platform/portable/virtual_keys.h"
#include "tests/linux/key_driver.h"
#include "tests/linux/system_support.h"

namespace vantorel::gtk::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::uint64_t kAllFour =
    modifier_bits::kShift | modifier_bits::kControl | modifier_bits::kOption | modifier_bits::kCommand;
constexpr std::uint16_t kVirtualA = 0;
constexpr std::uint16_t kVirtualS = 1;
constexpr milliseconds kLatest{50};

struct Seen {
    KeyEvent event;
    KeyTarget target;
    Clock::time_point at;
};

class RecordTest : public testing::Test {
protected:
    void SetUp() override {
        if (!driver_ || !own_) {
            FAIL() << "no X display; tools/with_display brings one";
        }
        otherWindow_ = driver_.makeWindow(KeyPressMask);
        deafWindow_ = driver_.makeWindow(NoEventMask);
        // The second connection stands for the toolkit's.
        ownWindow_ = own_.makeWindow(KeyPressMask);
        source_ =
            RecordSource::start("", windowNumbersOf(own_.display()), [this](const KeyEvent& event, KeyTarget target) {
                const std::lock_guard lock(mutex_);
                seen_.push_back({event, target, Clock::now()});
            });
        ASSERT_NE(source_, nullptr);
        driver_.focus(otherWindow_);
    }

    void TearDown() override {
        if (driver_) {
            driver_.focus(PointerRoot);
        }
    }

    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return seen_.size();
    }
    Seen last() {
        const std::lock_guard lock(mutex_);
        return seen_.empty() ? Seen{} : seen_.back();
    }

    // Presses and releases a key and waits until it was seen; what comes once more would be seen before the next one.
    Seen tap(unsigned keyCode) {
        const std::size_t before = count();
        driver_.tap(keyCode);
        EXPECT_TRUE(waitUntil([&] { return count() > before; }));
        EXPECT_EQ(count(), before + 1);
        return last();
    }

    KeyDriver driver_;
    KeyDriver own_;
    XID otherWindow_ = None;
    XID ownWindow_ = None;
    XID deafWindow_ = None;
    std::mutex mutex_;
    std::vector<Seen> seen_;
    std::unique_ptr<RecordSource> source_;
};

TEST_F(RecordTest, TellsOneEventForOnePress) {
    for (int round = 1; round <= 20; ++round) {
        const Seen seen = tap(keys::kA);
        EXPECT_EQ(seen.event.keyCode, kVirtualA);
        EXPECT_EQ(seen.event.modifierFlags, 0U);
        EXPECT_EQ(seen.event.characters, "a");
        EXPECT_EQ(count(), static_cast<std::size_t>(round));
    }
}

TEST_F(RecordTest, TellsOwnWindowsFromOthers) {
    EXPECT_EQ(tap(keys::kA).target, KeyTarget::otherProgram);
    driver_.focus(ownWindow_);
    EXPECT_EQ(tap(keys::kA).target, KeyTarget::ownWindow);
    driver_.focus(deafWindow_);
    EXPECT_EQ(tap(keys::kA).target, KeyTarget::otherProgram);
    driver_.focus(None);
    EXPECT_EQ(tap(keys::kA).target, KeyTarget::otherProgram);
}

TEST_F(RecordTest, FollowsThePointerWhereTheFocusDoes) {
    driver_.focus(PointerRoot);
    XMoveWindow(own_.display(), ownWindow_, 300, 300);
    XSync(own_.display(), False);
    XTestFakeMotionEvent(driver_.display(), -1, 310, 310, CurrentTime);
    EXPECT_EQ(tap(keys::kA).target, KeyTarget::ownWindow);
    XTestFakeMotionEvent(driver_.display(), -1, 600, 600, CurrentTime);
    EXPECT_EQ(tap(keys::kA).target, KeyTarget::otherProgram);
}

TEST_F(RecordTest, TellsThePressAtOnceWhoeverTakesTheKey) {
    for (const XID window : {otherWindow_, deafWindow_, static_cast<XID>(None)}) {
        driver_.focus(window);
        for (int round = 0; round < 20; ++round) {
            const auto pressed = Clock::now();
            EXPECT_LT(tap(keys::kA).at - pressed, kLatest);
        }
    }
}

TEST_F(RecordTest, TellsRepeatsOfAHeldKeyAtOnce) {
    for (const XID window : {otherWindow_, static_cast<XID>(None)}) {
        driver_.focus(window);
        const std::size_t before = count();
        driver_.press(keys::kA);
        // The server repeats after 0.66 s, 25 times a second.
        EXPECT_TRUE(waitUntil([&] { return count() >= before + 8; }, milliseconds(1200)));
        driver_.release(keys::kA);
        XSync(driver_.display(), False);
        const std::lock_guard lock(mutex_);
        for (std::size_t index = before + 2; index < seen_.size(); ++index) {
            EXPECT_LT(seen_[index].at - seen_[index - 1].at, milliseconds(90)) << index;
        }
    }
}

TEST_F(RecordTest, TellsTheModifiers) {
    const unsigned modifiers[] = {keys::kLeftShift, keys::kLeftControl, keys::kLeftAlt, keys::kLeftSuper};
    const std::uint64_t bits[] = {modifier_bits::kShift, modifier_bits::kControl, modifier_bits::kOption,
                                  modifier_bits::kCommand};
    for (unsigned held = 0; held < 16; ++held) {
        std::uint64_t expected = 0;
        for (unsigned index = 0; index < 4; ++index) {
            if ((held >> index & 1U) != 0) {
                driver_.press(modifiers[index]);
                expected |= bits[index];
            }
        }
        EXPECT_EQ(tap(keys::kS).event.modifierFlags, expected) << held;
        for (const unsigned modifier : modifiers) {
            driver_.release(modifier);
        }
    }
    EXPECT_EQ(count(), 16U) << "modifiers alone are no events";
}

TEST_F(RecordTest, TellsTheFullChord) {
    for (const unsigned modifier : {keys::kLeftShift, keys::kLeftControl, keys::kLeftAlt, keys::kLeftSuper}) {
        driver_.press(modifier);
    }
    const Seen seen = tap(keys::kS);
    for (const unsigned modifier : {keys::kLeftShift, keys::kLeftControl, keys::kLeftAlt, keys::kLeftSuper}) {
        driver_.release(modifier);
    }
    EXPECT_EQ(seen.event.keyCode, kVirtualS);
    EXPECT_EQ(seen.event.modifierFlags, kAllFour);
    EXPECT_EQ(seen.event.characters, "\x13");
}

TEST_F(RecordTest, TellsCapsLock) {
    driver_.tap(keys::kCapsLock);
    const Seen seen = tap(keys::kS);
    driver_.tap(keys::kCapsLock);
    EXPECT_EQ(seen.event.modifierFlags, modifier_bits::kCapsLock);
    EXPECT_EQ(seen.event.characters, "S");
    EXPECT_EQ(tap(keys::kS).event.modifierFlags, 0U);
}

TEST_F(RecordTest, TellsKeysThatTypeNothing) {
    const Seen seen = tap(keys::kLeftArrow);
    EXPECT_EQ(seen.event.characters, std::nullopt);
    EXPECT_EQ(seen.event.modifierFlags, modifier_bits::kNumericPad | modifier_bits::kFunction);
}

TEST_F(RecordTest, SeesThroughAGrab) {
    XGrabKeyboard(driver_.display(), otherWindow_, False, GrabModeAsync, GrabModeAsync, CurrentTime);
    tap(keys::kA);
    XUngrabKeyboard(driver_.display(), CurrentTime);
    XGrabKey(driver_.display(), static_cast<int>(keys::kS), AnyModifier, DefaultRootWindow(driver_.display()), False,
             GrabModeAsync, GrabModeAsync);
    tap(keys::kS);
    XUngrabKey(driver_.display(), static_cast<int>(keys::kS), AnyModifier, DefaultRootWindow(driver_.display()));
    XSync(driver_.display(), False);
}

TEST_F(RecordTest, TellsEachOfAFastRow) {
    constexpr std::size_t kPresses = 500;
    for (std::size_t index = 0; index < kPresses; ++index) {
        driver_.tap(keys::kA);
    }
    ASSERT_TRUE(waitUntil([&] { return count() >= kPresses; }));
    tap(keys::kS);
    EXPECT_EQ(count(), kPresses + 1);
}

TEST_F(RecordTest, FollowsALayoutSwitch) {
    const auto setLayout = [](const std::string& layout) {
        return std::system(("setxkbmap " + layout + " >/dev/null 2>&1").c_str()) == 0;
    };
    if (!setLayout("fr")) {
        FAIL() << "setxkbmap is not installed";
    }
    const Seen french = tap(keys::kA);
    const Seen frenchW = tap(keys::kZ);
    ASSERT_TRUE(setLayout("us"));
    const Seen american = tap(keys::kA);
    // The position stays, what it types changes.
    EXPECT_EQ(french.event.keyCode, kVirtualA);
    EXPECT_EQ(french.event.characters, "q");
    EXPECT_EQ(frenchW.event.keyCode, 6);
    EXPECT_EQ(frenchW.event.characters, "w");
    EXPECT_EQ(american.event.characters, "a");
}

TEST_F(RecordTest, CostsNothingWhileNobodyTypes) {
    tap(keys::kA);
    const auto processTime = [] {
        timespec time{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    // Whether the key is still down is asked for a last time.
    std::this_thread::sleep_for(milliseconds(100));
    const double before = processTime();
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_LT(processTime() - before, 0.0005);
}

TEST_F(RecordTest, EndsAtOnceAndCanStartAgain) {
    for (int round = 0; round < 10; ++round) {
        source_.reset();
        const std::size_t before = count();
        driver_.tap(keys::kA);
        source_ =
            RecordSource::start("", windowNumbersOf(own_.display()), [this](const KeyEvent& event, KeyTarget target) {
                const std::lock_guard lock(mutex_);
                seen_.push_back({event, target, Clock::now()});
            });
        ASSERT_NE(source_, nullptr);
        EXPECT_EQ(count(), before);
        tap(keys::kA);
    }
}

TEST(RecordSourceTest, IsNotThereWithoutAServer) {
    EXPECT_EQ(RecordSource::start(":29999", {}, [](const KeyEvent&, KeyTarget) {}), nullptr);
}

} // namespace
} // namespace vantorel::gtk::test
