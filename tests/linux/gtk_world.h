// Vantorel. MIT licence, see LICENSE.
// What the tests of windows need: a main loop that runs until a condition holds, and an application that has launched.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "platform/linux/application.h"

namespace vantorel::gtk {

/// Runs the main loop until `condition` holds; false when it does not within ten seconds.
inline bool waitUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    // Wakes the loop when nothing else happens.
    const SourceId tick(g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr));
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        g_main_context_iteration(nullptr, TRUE);
    }
    return true;
}

/// A delegate that keeps a record of what it was told.
class RecordingDelegate : public ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override { record.push_back("launched"); }
    bool applicationShouldTerminateAfterLastWindowClosed() override {
        record.push_back("last window closed");
        return endsWithLastWindow;
    }
    void applicationWillTerminate() override { record.push_back("will terminate"); }
    bool performAction(const Selector& action) override {
        record.push_back("perform " + action);
        if (onAction)
            onAction(action);
        return true;
    }

    std::vector<std::string> record;
    bool endsWithLastWindow = true;
    std::function<void(const Selector&)> onAction;
};

/// A launched application whose loop the test itself runs.
class GtkWorld : public testing::Test {
protected:
    void SetUp() override {
        if (gdk_display_get_default() == nullptr)
            FAIL() << "no display; tools/with_display brings one";
        app = std::make_unique<GtkApp>();
        app->setDelegate(delegate);
        ASSERT_TRUE(g_application_register(G_APPLICATION(app->application()), nullptr, nullptr));
        g_application_activate(G_APPLICATION(app->application()));
    }
    void TearDown() override {
        // As at the end of its own loop; without it the application would outlive its last reference.
        if (app)
            g_signal_emit_by_name(app->application(), "shutdown");
    }

    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::unique_ptr<GtkApp> app;
};

/// The first descendant of `widget` that `fits`, or null.
inline GtkWidget* findWidget(GtkWidget* widget, const std::function<bool(GtkWidget*)>& fits) {
    if (fits(widget))
        return widget;
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (GtkWidget* found = findWidget(child, fits))
            return found;
    }
    return nullptr;
}

} // namespace vantorel::gtk
