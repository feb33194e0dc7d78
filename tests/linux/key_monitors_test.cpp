// Vantorel. MIT licence, see LICENSE.
// Key monitors over real GTK windows: inside and outside, on the main thread, once for each press.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtk/gtk.h>

#include <memory>
#include <vector>

#include "platform/linux/event_monitors.h"
#include "platform/linux/grants.h"
#include "platform/linux/key_controllers.h"
#include "platform/linux/key_session.h"
#include "platform/linux/object.h"
#include "platform/linux/record_source.h"
#include "tests/linux/key_driver.h"
#include "tests/linux/system_support.h"

namespace vantorel::gtk::test {
namespace {

constexpr std::uint16_t kVirtualA = 0;
constexpr std::uint16_t kVirtualS = 1;

// A top level window that closes with the test.
class TestWindow {
public:
    TestWindow() : window_(GTK_WINDOW(gtk_window_new())) {
        gtk_window_set_default_size(window_, 200, 100);
        gtk_window_set_child(window_, gtk_entry_new());
    }
    ~TestWindow() { gtk_window_destroy(window_); }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    GtkWindow* get() const { return window_; }
    GtkEditable* entry() const { return GTK_EDITABLE(gtk_window_get_child(window_)); }
    bool takeKeyboard() {
        gtk_window_present(window_);
        return runLoopUntil([this] { return gtk_window_is_active(window_) != 0; });
    }

private:
    GtkWindow* window_;
};

class KeyMonitorsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!driver_ || gdk_display_get_default() == nullptr) {
            FAIL() << "no X display; tools/with_display brings one";
        }
        // The developer's own desktop has nothing to say about the test's display.
        g_unsetenv("XDG_SESSION_TYPE");
        g_unsetenv("WAYLAND_DISPLAY");
    }

    KeyDriver driver_;
};

TEST_F(KeyMonitorsTest, TellsInsideFromOutside) {
    std::vector<KeyEvent> inside;
    std::vector<KeyEvent> outside;
    const auto monitors = makeEventMonitors();
    ASSERT_NE(monitors->addGlobalMonitorForKeyDown([&](const KeyEvent& event) { outside.push_back(event); }), nullptr);
    ASSERT_NE(monitors->addLocalMonitorForKeyDown([&](const KeyEvent& event) {
        inside.push_back(event);
        return &event;
    }),
              nullptr);

    TestWindow window;
    ASSERT_TRUE(window.takeKeyboard());
    driver_.tap(keys::kA);
    ASSERT_TRUE(runLoopUntil([&] { return inside.size() == 1; }));
    EXPECT_EQ(inside[0].keyCode, kVirtualA);
    // The press goes on into the window.
    EXPECT_TRUE(runLoopUntil([&] { return std::string(gtk_editable_get_text(window.entry())) == "a"; }));

    const XID other = driver_.makeWindow(KeyPressMask);
    driver_.focus(other);
    driver_.tap(keys::kS);
    ASSERT_TRUE(runLoopUntil([&] { return outside.size() == 1; }));
    EXPECT_EQ(outside[0].keyCode, kVirtualS);
    EXPECT_EQ(inside.size(), 1U);
    EXPECT_STREQ(gtk_editable_get_text(window.entry()), "a");
}

TEST_F(KeyMonitorsTest, CallsEveryHandlerOnTheMainThread) {
    const auto main = std::this_thread::get_id();
    int calls = 0;
    const auto monitors = makeEventMonitors();
    for (int index = 0; index < 3; ++index) {
        monitors->addGlobalMonitorForKeyDown([&](const KeyEvent&) {
            EXPECT_EQ(std::this_thread::get_id(), main);
            ++calls;
        });
    }
    const XID other = driver_.makeWindow(KeyPressMask);
    driver_.focus(other);
    driver_.tap(keys::kA);
    EXPECT_TRUE(runLoopUntil([&] { return calls == 3; }));
}

TEST_F(KeyMonitorsTest, CallsNobodyAfterItsEnd) {
    int calls = 0;
    auto monitors = makeEventMonitors();
    monitors->addGlobalMonitorForKeyDown([&](const KeyEvent&) { ++calls; });
    const XID other = driver_.makeWindow(KeyPressMask);
    driver_.focus(other);
    driver_.tap(keys::kA);
    monitors.reset();
    EXPECT_FALSE(runLoopUntil([&] { return calls > 0; }, std::chrono::milliseconds(50)));
}

TEST_F(KeyMonitorsTest, IsTrustedWithARecord) {
    EXPECT_EQ(keyReach(), KeyReach::everyProgram);
    EXPECT_TRUE(makeAccessibility()->isProcessTrusted());
    EXPECT_TRUE(makeAccessibility()->isProcessTrustedWithOptions(true));
}

TEST_F(KeyMonitorsTest, IsNotTrustedInAWaylandSession) {
    g_setenv("XDG_SESSION_TYPE", "wayland", TRUE);
    EXPECT_EQ(keyReach(), KeyReach::xPrograms);
    EXPECT_FALSE(makeAccessibility()->isProcessTrusted());
    g_unsetenv("XDG_SESSION_TYPE");
    g_setenv("WAYLAND_DISPLAY", "wayland-0", TRUE);
    EXPECT_FALSE(makeAccessibility()->isProcessTrusted());
    g_unsetenv("WAYLAND_DISPLAY");
    EXPECT_TRUE(makeAccessibility()->isProcessTrusted());
}

class KeyControllersTest : public KeyMonitorsTest {
protected:
    void start() {
        controllers_ = KeyControllers::start([this](const KeyEvent& event) {
            seen_.push_back(event.keyCode);
            flags_.push_back(event.modifierFlags);
            return goesOn_;
        });
    }

    bool goesOn_ = true;
    std::vector<std::uint16_t> seen_;
    std::vector<std::uint64_t> flags_;
    std::unique_ptr<KeyControllers> controllers_;
};

TEST_F(KeyControllersTest, SeesEveryWindow) {
    TestWindow early;
    ASSERT_TRUE(early.takeKeyboard());
    start();
    driver_.tap(keys::kA);
    ASSERT_TRUE(runLoopUntil([&] { return seen_.size() == 1; }));

    TestWindow late;
    ASSERT_TRUE(late.takeKeyboard());
    driver_.tap(keys::kS);
    ASSERT_TRUE(runLoopUntil([&] { return seen_.size() == 2; }));
    EXPECT_EQ(seen_, (std::vector<std::uint16_t>{kVirtualA, kVirtualS}));
    EXPECT_TRUE(runLoopUntil([&] { return std::string(gtk_editable_get_text(late.entry())) == "s"; }));
}

TEST_F(KeyControllersTest, CountsAPressThatComesBackOnce) {
    TestWindow window;
    ASSERT_TRUE(window.takeKeyboard());
    start();
    // As the web view does with a key that its page leaves unused.
    int passes = 0;
    GtkEventController* returning = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(returning, GTK_PHASE_CAPTURE);
    const SignalConnection pressing = connect<gboolean(guint, guint, GdkModifierType)>(
        returning, "key-pressed", [&](guint, guint, GdkModifierType) -> gboolean {
            if (++passes % 2 == 0) {
                return FALSE;
            }
            GdkEvent* event = gtk_event_controller_get_current_event(returning);
            gdk_display_put_event(gdk_event_get_display(event), event);
            return TRUE;
        });
    gtk_widget_add_controller(GTK_WIDGET(window.entry()), returning);
    for (std::size_t press = 1; press <= 5; ++press) {
        driver_.tap(keys::kA);
        ASSERT_TRUE(runLoopUntil([&] { return passes == static_cast<int>(2 * press); }));
        EXPECT_EQ(seen_.size(), press);
    }
}

TEST_F(KeyControllersTest, SeesAShortcutBeforeItsWindow) {
    TestWindow window;
    bool wasActivated = false;
    const auto action = [](GtkWidget*, GVariant*, gpointer data) -> gboolean {
        *static_cast<bool*>(data) = true;
        return TRUE;
    };
    start();
    GtkEventController* shortcuts = gtk_shortcut_controller_new();
    gtk_event_controller_set_propagation_phase(shortcuts, GTK_PHASE_CAPTURE);
    gtk_shortcut_controller_add_shortcut(GTK_SHORTCUT_CONTROLLER(shortcuts),
                                         gtk_shortcut_new(gtk_shortcut_trigger_parse_string("<Control>a"),
                                                          gtk_callback_action_new(action, &wasActivated, nullptr)));
    gtk_widget_add_controller(GTK_WIDGET(window.get()), shortcuts);
    ASSERT_TRUE(window.takeKeyboard());
    driver_.press(keys::kLeftControl);
    driver_.tap(keys::kA);
    driver_.release(keys::kLeftControl);
    EXPECT_TRUE(runLoopUntil([&] { return wasActivated; }));
    EXPECT_EQ(seen_, (std::vector<std::uint16_t>{kVirtualA}));
}

TEST_F(KeyControllersTest, TellsTheFullChord) {
    TestWindow window;
    ASSERT_TRUE(window.takeKeyboard());
    start();
    constexpr unsigned kModifiers[] = {keys::kLeftSuper, keys::kLeftShift, keys::kLeftControl, keys::kLeftAlt};
    for (const unsigned modifier : kModifiers) {
        driver_.press(modifier);
    }
    driver_.tap(keys::kS);
    for (const unsigned modifier : kModifiers) {
        driver_.release(modifier);
    }
    driver_.tap(keys::kA);
    ASSERT_TRUE(runLoopUntil([&] { return seen_.size() == 2; }));
    EXPECT_EQ(flags_, (std::vector<std::uint64_t>{0x1e0000, 0}));
}

TEST_F(KeyControllersTest, DropsAPressOnDemand) {
    TestWindow window;
    ASSERT_TRUE(window.takeKeyboard());
    start();
    goesOn_ = false;
    driver_.tap(keys::kA);
    ASSERT_TRUE(runLoopUntil([&] { return seen_.size() == 1; }));
    goesOn_ = true;
    driver_.tap(keys::kS);
    EXPECT_TRUE(runLoopUntil([&] { return std::string(gtk_editable_get_text(window.entry())) == "s"; }));
}

TEST_F(KeyControllersTest, LetsWindowsGo) {
    start();
    for (int round = 0; round < 3; ++round) {
        TestWindow window;
        ASSERT_TRUE(window.takeKeyboard());
    }
    TestWindow window;
    ASSERT_TRUE(window.takeKeyboard());
    controllers_.reset();
    driver_.tap(keys::kA);
    EXPECT_TRUE(runLoopUntil([&] { return std::string(gtk_editable_get_text(window.entry())) == "a"; }));
    EXPECT_TRUE(seen_.empty());
}

// A server without the extension.
TEST_F(KeyMonitorsTest, HasNoRecordWithoutTheExtension) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    GPid server = 0;
    const std::string number = std::to_string(ends[1]);
    const char* arguments[] = {"Xvfb",   "-displayfd", number.c_str(), "-extension",
                               "RECORD", "-nolisten",  "tcp",          nullptr};
    const int kept[] = {ends[1]};
    const bool started =
        g_spawn_async_with_pipes_and_fds(
            nullptr, const_cast<char**>(arguments), nullptr,
            static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL | G_SPAWN_DO_NOT_REAP_CHILD),
            nullptr, nullptr, -1, -1, -1, kept, kept, 1, &server, nullptr, nullptr, nullptr, nullptr) != 0;
    ::close(ends[1]);
    if (!started) {
        ::close(ends[0]);
        FAIL() << "Xvfb is not installed";
    }
    std::string display;
    char letter = 0;
    while (::read(ends[0], &letter, 1) == 1 && letter != '\n') {
        display += letter;
    }
    ::close(ends[0]);
    EXPECT_EQ(RecordSource::start(":" + display, {}, [](const KeyEvent&, KeyTarget) {}), nullptr);
    ::kill(server, SIGTERM);
    ::waitpid(server, nullptr, 0);
}

} // namespace
} // namespace vantorel::gtk::test
