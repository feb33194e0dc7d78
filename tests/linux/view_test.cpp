// Vantorel. MIT licence, see LICENSE.
// Views, labels and entries: autoresizing, stacking, texts.
#include "platform/linux/view.h"

#include <gtest/gtest.h>

#include "platform/linux/text_field.h"
#include "tests/linux/gtk_world.h"

namespace vantorel::gtk {
namespace {

constexpr Size kContent{900, 750};
constexpr unsigned kStripMask = Autoresizing::widthSizable | Autoresizing::minYMargin;
constexpr unsigned kPageMask = Autoresizing::widthSizable | Autoresizing::heightSizable;

TEST(Autoresized, AStripStaysAtTheTopAndFollowsTheWidth) {
    const Rect strip = autoresized({{0, 720}, {900, 30}}, kStripMask, kContent, {1200, 1000});
    EXPECT_EQ(strip, (Rect{{0, 970}, {1200, 30}}));
}

TEST(Autoresized, APageTakesTheRest) {
    const Rect page = autoresized({{0, 0}, {900, 720}}, kPageMask, kContent, {500, 400});
    EXPECT_EQ(page, (Rect{{0, 0}, {500, 370}}));
}

TEST(Autoresized, WithoutBitsNothingMoves) {
    const Rect frame{{10, 20}, {30, 40}};
    EXPECT_EQ(autoresized(frame, 0, kContent, {1, 1}), frame);
}

TEST(Autoresized, SizesDoNotFallBelowZero) {
    const Rect page = autoresized({{0, 0}, {900, 720}}, kPageMask, kContent, {0, 0});
    EXPECT_EQ(page.size, (Size{0, 0}));
}

TEST(Autoresized, HeightAndMarginShareTheChange) {
    const unsigned mask = Autoresizing::minYMargin | Autoresizing::heightSizable;
    const Rect frame = autoresized({{0, 100}, {10, 300}}, mask, {10, 400}, {10, 800});
    EXPECT_EQ(frame, (Rect{{0, 200}, {10, 600}}));
}

class ViewTest : public GtkWorld {};

TEST_F(ViewTest, FollowsItsParentDownToNothingAndBack) {
    ViewCore content({{0, 0}, kContent});
    const auto strip = makeView({{0, 720}, {900, 30}});
    strip->setAutoresizingMask(kStripMask);
    content.addSubview(strip, OrderingMode::above, nullptr);

    content.resizedTo({0, 0});
    EXPECT_EQ(strip->frame().size, (Size{0, 30}));
    content.resizedTo({901, 751});
    EXPECT_EQ(strip->frame(), (Rect{{0, 721}, {901, 30}}));
    EXPECT_EQ(strip->bounds(), (Rect{{0, 0}, {901, 30}}));
}

TEST_F(ViewTest, ChildrenOfChildrenFollowToo) {
    ViewCore content({{0, 0}, kContent});
    const auto strip = makeView({{0, 720}, {900, 30}});
    const auto label = makeTextField({{10, 5}, {880, 20}});
    label->setEditable(false);
    label->setAutoresizingMask(static_cast<unsigned>(Autoresizing::widthSizable));
    strip->addSubview(label);
    strip->setAutoresizingMask(kStripMask);
    content.addSubview(strip, OrderingMode::above, nullptr);
    content.resizedTo({1000, 600});
    EXPECT_EQ(label->frame(), (Rect{{10, 5}, {980, 20}}));
}

TEST_F(ViewTest, TheTopOfTheScreenIsTheTopOfTheFrame) {
    ViewCore content({{0, 0}, kContent});
    const auto strip = makeView({{0, 720}, {900, 30}});
    content.addSubview(strip, OrderingMode::above, nullptr);
    content.resizedTo(kContent);
    GtkAllocation allocation = {};
    gtk_widget_get_allocation(coreOf(*strip)->widget(), &allocation);
    EXPECT_EQ(allocation.y, 0);
    EXPECT_EQ(allocation.height, 30);
}

TEST_F(ViewTest, SubviewsAreStackedWhereTheyWereAsked) {
    ViewCore parent({{0, 0}, kContent});
    const auto first = makeView({});
    const auto second = makeView({});
    const auto lowest = makeView({});
    const auto between = makeView({});
    parent.addSubview(first, OrderingMode::above, nullptr);
    parent.addSubview(second, OrderingMode::above, nullptr);
    parent.addSubview(lowest, OrderingMode::below, nullptr);
    parent.addSubview(between, OrderingMode::below, second.get());

    std::vector<GtkWidget*> order;
    for (GtkWidget* child = gtk_widget_get_first_child(parent.widget()); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        order.push_back(child);
    }
    const auto widget = [](const std::shared_ptr<View>& view) { return coreOf(*view)->widget(); };
    EXPECT_EQ(order, (std::vector<GtkWidget*>{widget(lowest), widget(first), widget(between), widget(second)}));
}

TEST_F(ViewTest, AddingAViewAgainMovesIt) {
    ViewCore one({{0, 0}, kContent});
    ViewCore other({{0, 0}, kContent});
    const auto view = makeView({});
    one.addSubview(view, OrderingMode::above, nullptr);
    other.addSubview(view, OrderingMode::above, nullptr);
    EXPECT_EQ(gtk_widget_get_first_child(one.widget()), nullptr);
    EXPECT_EQ(gtk_widget_get_parent(coreOf(*view)->widget()), other.widget());
}

TEST_F(ViewTest, AParentThatGoesLeavesItsSubviewsAlone) {
    const auto view = makeView({{1, 2}, {3, 4}});
    {
        ViewCore parent({{0, 0}, kContent});
        parent.addSubview(view, OrderingMode::above, nullptr);
    }
    EXPECT_EQ(gtk_widget_get_parent(coreOf(*view)->widget()), nullptr);
    EXPECT_EQ(view->frame(), (Rect{{1, 2}, {3, 4}}));
}

TEST_F(ViewTest, ContentIsDrawnOnlyWhileItShouldBe) {
    int drawings = 0;
    GtkWidget* area = gtk_drawing_area_new();
    gtk_drawing_area_set_draw_func(
        GTK_DRAWING_AREA(area),
        [](GtkDrawingArea*, cairo_t*, int, int, gpointer count) { ++*static_cast<int*>(count); }, &drawings, nullptr);
    ViewCore view({{0, 0}, {300, 200}}, area);
    view.hideContent();
    GtkWidget* window = gtk_window_new();
    gtk_window_set_default_size(GTK_WINDOW(window), 300, 200);
    gtk_window_set_child(GTK_WINDOW(window), view.widget());
    gtk_window_present(GTK_WINDOW(window));

    const auto framesGoBy = [&] {
        int frames = 0;
        const guint callback = gtk_widget_add_tick_callback(
            area,
            [](GtkWidget* widget, GdkFrameClock*, gpointer count) -> gboolean {
                gtk_widget_queue_draw(widget);
                ++*static_cast<int*>(count);
                return G_SOURCE_CONTINUE;
            },
            &frames, nullptr);
        const bool done = waitUntil([&] { return frames >= 4; });
        gtk_widget_remove_tick_callback(area, callback);
        return done;
    };
    ASSERT_TRUE(framesGoBy());
    EXPECT_EQ(drawings, 0);
    EXPECT_EQ(gtk_widget_get_width(area), 300);

    view.showContentOnceChanged();
    EXPECT_FALSE(view.drawsContent());
    gtk_widget_queue_draw(area);
    EXPECT_TRUE(waitUntil([&] { return drawings > 0; }));
    EXPECT_TRUE(view.drawsContent());

    view.hideContent();
    drawings = 0;
    ASSERT_TRUE(framesGoBy());
    EXPECT_EQ(drawings, 0);
    gtk_window_set_child(GTK_WINDOW(window), nullptr);
    gtk_window_destroy(GTK_WINDOW(window));
}

TEST_F(ViewTest, ALayerIsThereWhileItIsWanted) {
    const auto view = makeView({});
    EXPECT_EQ(view->layer(), nullptr);
    view->setWantsLayer(true);
    ASSERT_NE(view->layer(), nullptr);
    view->layer()->setBackgroundColor(CalibratedRgb{0.95, 0.95, 0.95, 1});
    view->setWantsLayer(false);
    EXPECT_EQ(view->layer(), nullptr);
}

TEST_F(ViewTest, TextOnALightLayerIsDarkWhateverTheScheme) {
    const auto strip = makeView({});
    const auto label = makeTextField({});
    label->setEditable(false);
    strip->addSubview(label);
    GtkSettings* settings = gtk_settings_get_default();
    g_object_set(settings, "gtk-application-prefer-dark-theme", TRUE, nullptr);
    strip->setWantsLayer(true);
    strip->layer()->setBackgroundColor(CalibratedRgb{0.95, 0.95, 0.95, 1});
    GdkRGBA color = {};
    gtk_style_context_get_color(gtk_widget_get_style_context(coreOf(*label)->content()), &color);
    g_object_set(settings, "gtk-application-prefer-dark-theme", FALSE, nullptr);
    EXPECT_GT(contrast(color, rgbaOf(CalibratedRgb{0.95, 0.95, 0.95, 1})), 7);
}

TEST_F(ViewTest, ALabelNeverWidensItsParent) {
    const auto label = makeTextField({{0, 0}, {100, 20}});
    label->setEditable(false);
    label->setStringValue(std::string(5000, 'x'));
    int least = 0;
    gtk_widget_measure(coreOf(*label)->content(), GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
    EXPECT_LT(least, 60);
}

TEST_F(ViewTest, TextTooLargeForTheStripIsDrawnSmaller) {
    for (const double points : {11.0, 40.0, 100.0}) {
        ViewCore strip({{0, 0}, {900, 30}});
        const auto label = std::make_shared<GtkTextField>(Rect{{10, 5}, {880, 20}});
        label->setEditable(false);
        label->setSystemFont(points);
        label->setStringValue("g");
        strip.addSubview(label, OrderingMode::above, nullptr);
        strip.resizedTo({900, 30});
        graphene_rect_t drawn = {};
        ASSERT_TRUE(gtk_widget_compute_bounds(label->control(), strip.widget(), &drawn));
        EXPECT_GE(drawn.origin.x, 10);
        EXPECT_GE(drawn.origin.y, 0);
        EXPECT_LE(drawn.origin.y + drawn.size.height, 30);
        EXPECT_NEAR(drawn.origin.y + drawn.size.height / 2, 15, 0.6);
    }
}

TEST_F(ViewTest, AFieldThatMustBeWholeAsksForTheHeightOfItsText) {
    const auto heightOf = [](GtkTextField& each) {
        each.core().requireFrameSize();
        int least = 0;
        gtk_widget_measure(each.core().widget(), GTK_ORIENTATION_VERTICAL, -1, &least, nullptr, nullptr, nullptr);
        return least;
    };
    GtkTextField ordinary({{0, 0}, {300, 24}});
    EXPECT_EQ(heightOf(ordinary), 24);
    GtkTextField large({{0, 0}, {300, 24}});
    large.setSystemFont(40);
    EXPECT_GT(heightOf(large), 40);
}

TEST_F(ViewTest, TextsSurviveAndAreKeptWhenTheFieldBecomesALabel) {
    const auto field = makeTextField({});
    const std::string text = "🔄 Starting server… é";
    field->setStringValue(text);
    EXPECT_EQ(field->stringValue(), text);
    field->setEditable(false);
    EXPECT_EQ(field->stringValue(), text);
    field->setStringValue("");
    EXPECT_EQ(field->stringValue(), "");
}

TEST_F(ViewTest, DamagedUtf8IsShownAsFarAsItGoes) {
    const auto field = makeTextField({});
    field->setStringValue("a\xff\xfe z");
    EXPECT_EQ(field->stringValue(), "a\uFFFD\uFFFD z");
}

TEST_F(ViewTest, AnEntryHoldsAMegabyte) {
    const auto field = makeTextField({{0, 0}, {300, 24}});
    const std::string text(1 << 20, 'm');
    field->setStringValue(text);
    EXPECT_EQ(field->stringValue(), text);
    field->setStringValue("short");
    EXPECT_EQ(field->stringValue(), "short");
}

TEST_F(ViewTest, AnEntryIsEditedByCharactersNotBytes) {
    const auto field = makeTextField({});
    field->setStringValue("aé🙂z");
    auto* editable = GTK_EDITABLE(coreOf(*field)->content());
    gtk_editable_delete_text(editable, 1, 3);
    EXPECT_EQ(field->stringValue(), "az");
    int position = 1;
    gtk_editable_insert_text(editable, "ß€", -1, &position);
    EXPECT_EQ(field->stringValue(), "aß€z");
    EXPECT_EQ(position, 3);
}

TEST(Palette, ReadsWellOnTheStrip) {
    const GdkRGBA strip = rgbaOf(CalibratedRgb{0.95, 0.95, 0.95, 1});
    for (const SystemColor color : {SystemColor::orange, SystemColor::red, SystemColor::systemGreen}) {
        EXPECT_GE(contrast(rgbaOf(color), strip), 4.5);
    }
    EXPECT_EQ(rgbaOf(SystemColor::clear).alpha, 0);
}

} // namespace
} // namespace vantorel::gtk
