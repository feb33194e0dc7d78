// Vantorel. MIT licence, see LICENSE.
// Alerts: texts, answers, nesting, and their end with the application.
#include "platform/linux/alert.h"

#include <gtest/gtest.h>

#include "platform/linux/alert_box.h"
#include "platform/linux/window.h"
#include "tests/linux/gtk_world.h"

namespace vantorel::gtk {
namespace {

TEST(AlertText, IsKeptWhileItIsOfASizeToRead) {
    EXPECT_EQ(alertText(""), "");
    EXPECT_EQ(alertText("Vantor\nzwei 🙂"), "Vantor\nzwei 🙂");
    EXPECT_EQ(alertText(std::string(10'000, 'x')), std::string(10'000, 'x'));
}

TEST(AlertText, IsCutWithAMark) {
    EXPECT_EQ(alertText(std::string(1 << 20, 'x')), std::string(10'000, 'x') + "…");
    std::string emoji;
    for (int i = 0; i < 20'000; ++i)
        emoji += "🙂";
    EXPECT_EQ(alertText(emoji), emoji.substr(0, 40'000) + "…");
}

TEST(AlertText, OfManyLinesIsCutToo) {
    const std::string cut = alertText(std::string(5000, '\n'));
    EXPECT_LT(cut.size(), 600U);
    EXPECT_TRUE(cut.ends_with("…"));
}

TEST(AlertText, ReplacesWhatIsNoUtf8) {
    EXPECT_EQ(alertText("a\xffz"), "a\uFFFDz");
    EXPECT_EQ(alertText(std::string("a\0z", 3)), "a\uFFFDz");
}

TEST(EscapeCode, IsCancelsWhereverItStands) {
    EXPECT_EQ(escapeCode({"OK", "Cancel"}), kAlertFirstButtonReturn + 1);
    EXPECT_EQ(escapeCode({"Cancel", "OK"}), kAlertFirstButtonReturn);
}

TEST(EscapeCode, IsTheOnlyButtonsOrNone) {
    EXPECT_EQ(escapeCode({"OK"}), kAlertFirstButtonReturn);
    EXPECT_LT(escapeCode({"Yes", "No"}), kAlertFirstButtonReturn);
}

TEST(BoxCorner, IsTheMiddleOfTheParentButOnTheScreen) {
    const Rect screen{{0, 0}, {1280, 1024}};
    const x11::FrameExtents extents{5, 5, 29, 5};
    EXPECT_EQ(boxCorner({400, 300}, extents, {{190, 137}, {900, 774}}, screen), (Point{440, 374}));
    EXPECT_EQ(boxCorner({400, 300}, extents, {{-900, -900}, {900, 774}}, screen), (Point{5, 29}));
    EXPECT_EQ(boxCorner({400, 300}, extents, {{1200, 1000}, {900, 774}}, screen), (Point{875, 719}));
}

class AlertTest : public GtkWorld {
protected:
    std::shared_ptr<Alert> makeOkCancel() const {
        auto alert = makeAlert(*app);
        alert->setMessageText("Vantor");
        alert->setInformativeText("Really?");
        alert->addButtonWithTitle("OK");
        alert->addButtonWithTitle("Cancel");
        return alert;
    }
    /// Runs `action` once the box of the innermost alert is on the screen.
    void whenShown(std::function<void(GtkWidget*)> action) {
        struct Wait {
            GtkApp* app;
            std::function<void(GtkWidget*)> action;
        };
        g_timeout_add_full(
            G_PRIORITY_DEFAULT, 5,
            [](gpointer data) -> gboolean {
                auto* wait = static_cast<Wait*>(data);
                GtkWindow* top = wait->app->modals().topWindow();
                if (top == nullptr || gtk_widget_get_mapped(GTK_WIDGET(top)) == FALSE)
                    return G_SOURCE_CONTINUE;
                wait->action(GTK_WIDGET(top));
                return G_SOURCE_REMOVE;
            },
            new Wait{app.get(), std::move(action)}, [](gpointer data) { delete static_cast<Wait*>(data); });
    }
    static GtkWidget* button(GtkWidget* box, const std::string& label) {
        return findWidget(box, [&](GtkWidget* widget) {
            return GTK_IS_BUTTON(widget) && gtk_button_get_label(GTK_BUTTON(widget)) != nullptr &&
                   label == gtk_button_get_label(GTK_BUTTON(widget));
        });
    }
    static void press(GtkWidget* box, const std::string& label) {
        g_signal_emit_by_name(button(box, label), "clicked");
    }
};

TEST_F(AlertTest, AnswersWithTheCodeOfTheButton) {
    whenShown([](GtkWidget* box) { press(box, "OK"); });
    EXPECT_EQ(makeOkCancel()->runModal(), kAlertFirstButtonReturn);
    whenShown([](GtkWidget* box) { press(box, "Cancel"); });
    EXPECT_EQ(makeOkCancel()->runModal(), kAlertFirstButtonReturn + 1);
}

TEST_F(AlertTest, TheFirstButtonIsTheDefaultAndStandsLast) {
    whenShown([](GtkWidget* box) {
        GtkWidget* ok = button(box, "OK");
        EXPECT_EQ(gtk_window_get_default_widget(GTK_WINDOW(box)), ok);
        EXPECT_EQ(gtk_window_get_focus(GTK_WINDOW(box)), ok);
        EXPECT_EQ(gtk_widget_get_next_sibling(button(box, "Cancel")), ok);
        press(box, "OK");
    });
    makeOkCancel()->runModal();
}

TEST_F(AlertTest, ClosingTheBoxIsNoButton) {
    whenShown([](GtkWidget* box) { gtk_window_close(GTK_WINDOW(box)); });
    EXPECT_LT(makeOkCancel()->runModal(), kAlertFirstButtonReturn);
}

TEST_F(AlertTest, TheFieldIsOfTheSizeAskedAndKeepsWhatWasTyped) {
    const auto field = makeTextField({{0, 0}, {300, 24}});
    field->setStringValue("default");
    const auto alert = makeOkCancel();
    alert->setAccessoryView(field);
    whenShown([&](GtkWidget* box) {
        GtkWidget* control = coreOf(*field)->content();
        EXPECT_TRUE(waitUntil([&] { return gtk_widget_get_width(control) > 0; }));
        EXPECT_EQ(coreOf(*field)->bounds().size, (Size{300, 24}));
        EXPECT_EQ(gtk_widget_get_width(control), 300);
        EXPECT_EQ(gtk_widget_get_height(control), 24);
        GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(box));
        EXPECT_TRUE(focus != nullptr && gtk_widget_is_ancestor(focus, control));
        gtk_editable_set_text(GTK_EDITABLE(control), "typed ü");
        press(box, "OK");
    });
    EXPECT_EQ(alert->runModal(), kAlertFirstButtonReturn);
    EXPECT_EQ(field->stringValue(), "typed ü");
}

TEST_F(AlertTest, QuittingEndsAllOfThemBelowTheFirstCode) {
    std::vector<long> codes;
    whenShown([&](GtkWidget*) {
        whenShown([this](GtkWidget*) { app->terminate(); });
        codes.push_back(makeOkCancel()->runModal());
    });
    codes.push_back(makeOkCancel()->runModal());
    codes.push_back(makeOkCancel()->runModal());
    ASSERT_EQ(codes.size(), 3U);
    for (const long code : codes)
        EXPECT_LT(code, kAlertFirstButtonReturn);
    EXPECT_EQ(delegate->record.back(), "will terminate");
}

TEST_F(AlertTest, AnInnerAlertIsAnsweredFirst) {
    std::vector<std::string> order;
    whenShown([&](GtkWidget* outer) {
        whenShown([](GtkWidget* inner) { press(inner, "Cancel"); });
        EXPECT_EQ(makeOkCancel()->runModal(), kAlertFirstButtonReturn + 1);
        order.push_back("inner");
        press(outer, "OK");
    });
    EXPECT_EQ(makeOkCancel()->runModal(), kAlertFirstButtonReturn);
    order.push_back("outer");
    EXPECT_EQ(order, (std::vector<std::string>{"inner", "outer"}));
}

TEST_F(AlertTest, ActionsRestWhileOneIsUp) {
    whenShown([this](GtkWidget* box) {
        app->perform("reload");
        press(box, "OK");
    });
    makeOkCancel()->runModal();
    EXPECT_EQ(delegate->record, std::vector<std::string>{"launched"});
    app->perform("reload");
    EXPECT_EQ(delegate->record.back(), "perform reload");
}

TEST_F(AlertTest, AMegabyteOfTextIsShownAtOnceInABoundedBox) {
    const auto alert = makeOkCancel();
    std::string text;
    while (text.size() < 1 << 20)
        text += "word and line\n";
    alert->setInformativeText(text);
    const gint64 begin = g_get_monotonic_time();
    whenShown([&](GtkWidget* box) {
        EXPECT_LT(g_get_monotonic_time() - begin, 3'000'000);
        EXPECT_LT(gtk_widget_get_height(box), 700);
        press(box, "OK");
    });
    EXPECT_EQ(alert->runModal(), kAlertFirstButtonReturn);
}

TEST_F(AlertTest, WithoutButtonsThereIsOneToGoOn) {
    whenShown([](GtkWidget* box) { press(box, "OK"); });
    EXPECT_EQ(makeAlert(*app)->runModal(), kAlertFirstButtonReturn);
}

} // namespace
} // namespace vantorel::gtk
