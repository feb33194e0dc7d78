// Vantorel. MIT licence, see LICENSE.
// What platform/appkit.h and platform/webkit.h promise of windows, views, menus and an empty web view.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/contract/world.h"

namespace vantorel::contract {
namespace {

using ::testing::ElementsAre;

constexpr unsigned kOrdinaryStyle = 15;

class ObjectsContract : public ContractTest {
protected:
    std::shared_ptr<Window> shownWindow(Size content) {
        auto window = platform().makeWindow({{100, 100}, content}, kOrdinaryStyle);
        window->setTitle("contract");
        window->makeKeyAndOrderFront();
        EXPECT_TRUE(runUntil([&] { return window->contentView()->bounds().size == content; }))
            << window->contentView()->bounds().size.width << " x " << window->contentView()->bounds().size.height;
        return window;
    }
};

TEST_F(ObjectsContract, WindowHasAContentViewOfTheSizeAskedFor) {
    const auto window = platform().makeWindow({{100, 100}, {640, 480}}, kOrdinaryStyle);
    ASSERT_NE(window->contentView(), nullptr);
    EXPECT_EQ(window->contentView()->bounds(), (Rect{{0, 0}, {640, 480}}));
}

TEST_F(ObjectsContract, FrameHoldsTheContent) {
    const auto window = shownWindow({640, 480});
    EXPECT_GE(window->frame().size.width, 640);
    EXPECT_GE(window->frame().size.height, 480);
    EXPECT_LT(window->frame().size.height, 480 + 100);
}

TEST_F(ObjectsContract, ViewsAsMade) {
    const auto view = platform().makeView({{10, 20}, {300, 40}});
    EXPECT_EQ(view->frame(), (Rect{{10, 20}, {300, 40}}));
    EXPECT_EQ(view->bounds(), (Rect{{0, 0}, {300, 40}}));
    EXPECT_EQ(view->layer(), nullptr);
    view->setWantsLayer(true);
    ASSERT_NE(view->layer(), nullptr);
    view->layer()->setBackgroundColor(CalibratedRgb{0.5, 0.5, 0.5, 1});
    view->setWantsLayer(false);
    EXPECT_EQ(view->layer(), nullptr);
}

TEST_F(ObjectsContract, SubviewsFollowByTheirMasks) {
    const auto window = shownWindow({640, 480});
    const auto strip = platform().makeView({{0, 450}, {640, 30}});
    strip->setAutoresizingMask(Autoresizing::widthSizable | Autoresizing::minYMargin);
    const auto label = platform().makeTextField({{10, 5}, {620, 20}});
    label->setAutoresizingMask(static_cast<unsigned>(Autoresizing::widthSizable));
    const auto body = platform().makeView({{0, 0}, {640, 450}});
    body->setAutoresizingMask(Autoresizing::widthSizable | Autoresizing::heightSizable);
    const auto fixed = platform().makeView({{5, 6}, {7, 8}});
    strip->addSubview(label);
    window->contentView()->addSubview(strip);
    window->contentView()->addSubview(body, OrderingMode::below, strip.get());
    window->contentView()->addSubview(fixed);
    for (const Size size : {Size{800, 600}, Size{420, 360}, Size{640, 480}}) {
        world_->resizeContent(*window, size);
        EXPECT_TRUE(runUntil([&] { return window->contentView()->bounds().size == size; }, 5))
            << window->contentView()->bounds().size.width << " x " << window->contentView()->bounds().size.height;
        EXPECT_EQ(strip->frame(), (Rect{{0, size.height - 30}, {size.width, 30}}));
        EXPECT_EQ(label->frame(), (Rect{{10, 5}, {size.width - 20, 20}}));
        EXPECT_EQ(body->frame(), (Rect{{0, 0}, {size.width, size.height - 30}}));
        EXPECT_EQ(fixed->frame(), (Rect{{5, 6}, {7, 8}}));
    }
}

TEST_F(ObjectsContract, TextFieldKeepsItsText) {
    const auto field = platform().makeTextField({{0, 0}, {300, 24}});
    EXPECT_EQ(field->stringValue(), "");
    for (const char* text : {"plain", "", "🔄 Starting server...", "<b>&amp;</b>"}) {
        field->setStringValue(text);
        EXPECT_EQ(field->stringValue(), text);
    }
}

TEST_F(ObjectsContract, LabelKeepsItsTextWhateverElseIsSet) {
    const auto label = platform().makeTextField({{0, 0}, {300, 20}});
    label->setStringValue("before");
    label->setEditable(false);
    EXPECT_EQ(label->stringValue(), "before");
    label->setBordered(false);
    label->setBackgroundColor(SystemColor::clear);
    label->setSystemFont(11);
    label->setStringValue("⚠️ after");
    label->setTextColor(SystemColor::orange);
    EXPECT_EQ(label->stringValue(), "⚠️ after");
}

TEST_F(ObjectsContract, MenusKeepTheirItems) {
    const auto menu = platform().makeMenu("Menu");
    const auto first = platform().makeMenuItem("First", "doFirst", "f");
    const auto separator = platform().makeSeparatorItem();
    const auto second = platform().makeMenuItem("Second", "", "");
    EXPECT_EQ(menu->itemAtIndex(0), nullptr);
    menu->addItem(first);
    menu->addItem(separator);
    menu->addItem(second);
    EXPECT_THAT(menu->itemArray(), ElementsAre(first, separator, second));
    EXPECT_EQ(menu->itemAtIndex(0), first);
    EXPECT_EQ(menu->itemAtIndex(2), second);
    EXPECT_EQ(menu->itemAtIndex(3), nullptr);
    EXPECT_EQ(first->action(), "doFirst");
    EXPECT_EQ(second->action(), "");
    EXPECT_EQ(separator->action(), "");
    EXPECT_EQ(second->submenu(), nullptr);
    const auto submenu = platform().makeMenu("Sub");
    second->setSubmenu(submenu);
    EXPECT_EQ(second->submenu(), submenu);
    first->setState(ControlState::on);
    first->setState(ControlState::off);
}

TEST_F(ObjectsContract, MainMenuIsTheOneSet) {
    ASSERT_NE(platform().application(), nullptr);
    const auto menu = platform().makeMenu("");
    platform().application()->setMainMenu(menu);
    EXPECT_EQ(platform().application()->mainMenu(), menu);
    platform().application()->setMainMenu(nullptr);
    EXPECT_EQ(platform().application()->mainMenu(), nullptr);
}

class WebViewContract : public ContractTest {
protected:
    struct Ending {
        int completions = 0;
        bool onMain = true;
        std::optional<PlatformError> error;
    };
    Ending evaluate(const std::string& script) {
        const auto ending = std::make_shared<Ending>();
        view_->evaluateJavaScript(script, [ending](const std::optional<PlatformError>& error) {
            ++ending->completions;
            ending->onMain = onMainThread();
            ending->error = error;
        });
        EXPECT_EQ(ending->completions, 0) << "inside the call";
        EXPECT_TRUE(runUntil([&] { return ending->completions > 0; }, 30));
        runFor(0.05);
        return *ending;
    }

    std::shared_ptr<WebView> view_ =
        platform().makeWebView({{0, 0}, {400, 300}}, platform().makeWebViewConfiguration());
};

TEST_F(WebViewContract, FrameIsTheOneAskedFor) { EXPECT_EQ(view_->frame(), (Rect{{0, 0}, {400, 300}})); }

TEST_F(WebViewContract, ZoomIsKeptToTheLastBit) {
    EXPECT_EQ(view_->pageZoom(), 1.0);
    for (const double zoom : {1.1, 1.2000000000000002, 0.7000000000000001, 0.5, 21.0, 1.0}) {
        view_->setPageZoom(zoom);
        EXPECT_EQ(view_->pageZoom(), zoom);
    }
}

TEST_F(WebViewContract, ScriptsRunWhileNothingIsLoaded) {
    const Ending ending = evaluate("1 + 1");
    EXPECT_EQ(ending.completions, 1);
    EXPECT_TRUE(ending.onMain);
    EXPECT_EQ(ending.error, std::nullopt);
}

TEST_F(WebViewContract, ScriptThatThrowsEndsWithAnError) {
    const Ending ending = evaluate("throw new Error('boom')");
    EXPECT_EQ(ending.completions, 1);
    EXPECT_TRUE(ending.onMain);
    ASSERT_TRUE(ending.error.has_value());
    EXPECT_FALSE(ending.error->localizedDescription.empty());
    EXPECT_FALSE(ending.error->description.empty());
}

TEST_F(WebViewContract, ValueThatCannotLeaveThePageIsNoError) { EXPECT_EQ(evaluate("window").error, std::nullopt); }

TEST_F(WebViewContract, ReloadWithoutAPageDoesNothing) {
    view_->reload();
    EXPECT_EQ(evaluate("1").error, std::nullopt);
}

} // namespace
} // namespace vantorel::contract
