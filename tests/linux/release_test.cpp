// Vantorel. MIT licence, see LICENSE.
// Nothing native outlives its handles: the window with all that is in it, the web view, alerts, requests for windows.
#include <gtest/gtest.h>
#include <webkit/webkit.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/alert.h"
#include "platform/linux/menu.h"
#include "platform/linux/text_field.h"
#include "platform/linux/timer.h"
#include "platform/linux/view.h"
#include "platform/linux/web_view.h"
#include "platform/linux/website_data.h"
#include "platform/linux/window.h"
#include "tests/linux/gtk_world.h"
#include "tests/linux/web_view_support.h"

namespace vantorel::gtk::test {
namespace {

/// Tells which objects have not been finalised yet. Their data goes with them at the very end; weak references would be
/// told of the disposal already, which a window that is closed meets with references left.
class Census {
public:
    void count(gpointer object) {
        static const char* const kKey = "census";
        if (g_object_get_data(G_OBJECT(object), kKey) != nullptr)
            return;
        const std::string type = G_OBJECT_TYPE_NAME(object);
        ++(*living_)[type];
        ++counted_;
        struct Mark {
            std::shared_ptr<std::map<std::string, int>> living;
            std::string type;
        };
        // One key for all: GLib keeps every key for ever.
        g_object_set_data_full(G_OBJECT(object), kKey, new Mark{living_, type}, [](gpointer data) {
            const std::unique_ptr<Mark> mark(static_cast<Mark*>(data));
            if (--(*mark->living)[mark->type] == 0)
                mark->living->erase(mark->type);
        });
    }
    /// The widget and everything inside of it.
    void countTree(GtkWidget* widget) {
        // GTK has one for all windows of a display, and keeps it.
        if (std::string(G_OBJECT_TYPE_NAME(widget)) == "GtkTooltipWindow")
            return;
        count(widget);
        for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
             child = gtk_widget_get_next_sibling(child))
            countTree(child);
    }

    /// How many objects of which type are still there.
    const std::map<std::string, int>& living() const { return *living_; }
    int counted() const { return counted_; }

private:
    std::shared_ptr<std::map<std::string, int>> living_ = std::make_shared<std::map<std::string, int>>();
    int counted_ = 0;
};

const std::map<std::string, int> kNobody;

class ReleaseTest : public GtkWorld {
protected:
    /// What the application builds at its launch, with a page that has been loaded.
    void build() {
        window_ = makeWindow(*app, {{100, 100}, {900, 750}}, 15);
        strip_ = makeView({{0, 720}, {900, 30}});
        label_ = makeTextField({{10, 5}, {880, 20}});
        strip_->addSubview(label_);
        window_->contentView()->addSubview(strip_);

        const auto configuration = std::make_shared<GtkWebViewConfiguration>();
        configuration->setWebsiteDataStore(store());
        configuration->preferences().setJavaScriptCanOpenWindowsAutomatically(true);
        configuration->userContentController().addScriptMessageHandler(recorder_, "consoleLog");
        page_ = std::make_shared<GtkWebView>(Rect{{0, 0}, {900, 720}}, configuration);
        page_->setNavigationDelegate(recorder_);
        page_->setUiDelegate(recorder_);
        window_->contentView()->addSubview(page_, OrderingMode::below, strip_.get());

        const auto menu = makeMenu("");
        const auto view = makeMenuItem(*app, "View", "", "");
        const auto entries = makeMenu("View");
        entries->addItem(makeMenuItem(*app, "Reload", "reload", "r"));
        view->setSubmenu(entries);
        menu->addItem(view);
        app->setMainMenu(menu);
        window_->makeKeyAndOrderFront();

        server_.page("/", "<title>page</title><p>text");
        UrlRequest request;
        request.address = server_.address();
        page_->load(request);
        ASSERT_TRUE(runUntil([this] { return !recorder_->calls.empty(); }));
        ASSERT_EQ(recorder_->calls.back(), "finished");
        recorder_->calls.clear();

        GtkWidget* window = GTK_WIDGET(std::dynamic_pointer_cast<NativeWindow>(window_)->gtkWindow());
        census_.countTree(window);
        census_.count(webkit_web_view_get_user_content_manager(page_->engineView()));
        census_.count(webkit_web_view_get_settings(page_->engineView()));
        census_.count(webkit_web_view_get_back_forward_list(page_->engineView()));
        for (const char* type : {"WebKitWebView", "WebKitUserContentManager", "GtkApplicationWindow", "GtkLabel"})
            EXPECT_GE(census_.living().count(type), 1U) << type << " is not part of the census";
    }
    void release() {
        page_.reset();
        label_.reset();
        strip_.reset();
        // Before the menu, which the window's bar shows: GTK 4.8 still tells a bar's entries of items that are gone.
        window_.reset();
        app->setMainMenu(nullptr);
    }
    void expectNobodyLeft() {
        EXPECT_TRUE(runUntil([this] { return census_.living().empty(); }))
            << testing::PrintToString(census_.living()) << " of " << census_.counted() << " objects";
    }
    /// One for all cases: the engine's network process goes with its last session.
    static std::shared_ptr<WebsiteDataStore> store() {
        static const TemporaryFolder folder;
        static const auto kept =
            std::make_shared<GtkWebsiteDataStore>(WebsiteDataPlace{folder.file("data"), folder.file("cache")});
        return kept;
    }
    /// Answers the innermost alert once it is on the screen; its whole box is counted before.
    void answerWhenShown() {
        g_timeout_add(
            2,
            [](gpointer data) -> gboolean {
                auto* self = static_cast<ReleaseTest*>(data);
                GtkWindow* top = self->app->modals().topWindow();
                if (top == nullptr || gtk_widget_get_mapped(GTK_WIDGET(top)) == FALSE)
                    return G_SOURCE_CONTINUE;
                self->census_.countTree(GTK_WIDGET(top));
                gtk_window_close(top);
                return G_SOURCE_REMOVE;
            },
            this);
    }

    RawServer server_;
    Census census_;
    std::shared_ptr<Recorder> recorder_ = std::make_shared<Recorder>();
    std::shared_ptr<Window> window_;
    std::shared_ptr<View> strip_;
    std::shared_ptr<TextField> label_;
    std::shared_ptr<GtkWebView> page_;
};

TEST_F(ReleaseTest, TheCensusSeesWhatIsHeld) {
    auto held = Object<GtkWidget>::share(gtk_label_new("held"));
    GtkWidget* const window = gtk_window_new();
    gtk_window_set_child(GTK_WINDOW(window), held.get());
    census_.countTree(window);
    gtk_window_destroy(GTK_WINDOW(window));
    EXPECT_TRUE(runUntil([this] { return census_.living().count("GtkWindow") == 0; }));
    EXPECT_EQ(census_.living(), (std::map<std::string, int>{{"GtkLabel", 1}}));
    held.reset();
    EXPECT_EQ(census_.living(), kNobody);
}

TEST_F(ReleaseTest, TheApplicationsObjectsGoWithTheirHandles) {
    build();
    const auto token = std::make_shared<int>();
    auto timer = scheduleRepeatingTimer(0.01, [token] { ++*token; });
    ASSERT_TRUE(runUntil([&] { return *token > 2; }));
    timer->invalidate();
    timer.reset();
    EXPECT_EQ(token.use_count(), 1) << "the timer's block is gone";
    EXPECT_GT(census_.counted(), 20);
    release();
    expectNobodyLeft();
}

TEST_F(ReleaseTest, AHundredAlertsLeaveNothing) {
    window_ = makeWindow(*app, {{100, 100}, {500, 400}}, 15);
    window_->makeKeyAndOrderFront();
    for (int number = 0; number < 100; ++number) {
        const auto alert = makeAlert(*app);
        alert->setMessageText("Alert " + std::to_string(number));
        alert->setInformativeText(std::string(number % 2 == 0 ? 20 : 2000, 'x'));
        alert->addButtonWithTitle("OK");
        alert->addButtonWithTitle("Cancel");
        if (number % 3 == 0)
            alert->setAccessoryView(makeTextField({{0, 0}, {300, 24}}));
        answerWhenShown();
        EXPECT_LT(alert->runModal(), kAlertFirstButtonReturn);
    }
    EXPECT_GT(census_.counted(), 1000);
    expectNobodyLeft();
}

TEST_F(ReleaseTest, TwentyFourRequestsForWindowsLeaveNothing) {
    build();
    const guint windows = g_list_model_get_n_items(gtk_window_get_toplevels());
    page_->evaluateJavaScript("for (let i = 0; i < 24; i++) window.open('/popup' + i);",
                              [](const std::optional<PlatformError>&) {});
    EXPECT_TRUE(runUntil([this] { return recorder_->calls.size() >= 24; }));
    EXPECT_EQ(g_list_model_get_n_items(gtk_window_get_toplevels()), windows);
    release();
    expectNobodyLeft();
}

TEST_F(ReleaseTest, ALoadUnderWayKeepsNothing) {
    build();
    server_.on("/never", [](const Connection& connection) { connection.holdOpen(); });
    UrlRequest request;
    request.address = server_.address("/never");
    page_->load(request);
    EXPECT_TRUE(runUntil([this] { return server_.count("/never") == 1; }));
    page_->evaluateJavaScript("new Promise(() => {})", [](const std::optional<PlatformError>&) {});
    release();
    expectNobodyLeft();
}

} // namespace
} // namespace vantorel::gtk::test
