// Vantorel. MIT licence, see LICENSE.
// The fake platform.
#include "tests/unit/fake/fake_platform.h"

#include <utility>

#include "platform/portable/address_text.h"
#include "platform/portable/rect_text.h"
#include "tests/unit/fake/describe.h"

namespace vantorel::fake {

namespace {

constexpr std::int32_t kFirstProcessIdentifier = 4242;

} // namespace

FakePlatform::~FakePlatform() {
    // Handlers of a child may hold the controller, which holds the child: the end of the platform breaks the circle.
    for (const auto& process : processes)
        process->forgetHandlers();
    for (const auto& pipe : pipes)
        pipe->forgetHandler();
    for (const auto& view : webViews)
        view->forgetCompletions();
    microphone.forget();
    http.forget();
    loop.clear();
}

std::string FakePlatform::nameFor(const std::string& kind) { return kind + std::to_string(++made_[kind]); }

std::shared_ptr<Window> FakePlatform::makeWindow(Rect contentRect, unsigned style) {
    const std::string name = nameFor("window");
    recorder.addOnMain("makeWindow(" + shown(contentRect) + ", " + std::to_string(style) + ") -> " + name);
    auto window = std::make_shared<FakeWindow>(recorder, name, contentRect, style);
    window->onClose = [this] { app.lastWindowClosed(); };
    if (onMakeWindow)
        onMakeWindow(*window);
    windows.push_back(window);
    app.keyWindow = window;
    return window;
}

std::shared_ptr<View> FakePlatform::makeView(Rect frame) {
    const std::string name = nameFor("view");
    recorder.addOnMain("makeView(" + shown(frame) + ") -> " + name);
    views.push_back(std::make_shared<FakeView>(recorder, name, frame));
    if (onMakeView)
        onMakeView(*views.back());
    return views.back();
}

std::shared_ptr<TextField> FakePlatform::makeTextField(Rect frame) {
    const std::string name = nameFor("textField");
    recorder.addOnMain("makeTextField(" + shown(frame) + ") -> " + name);
    textFields.push_back(std::make_shared<FakeTextField>(recorder, name, frame));
    return textFields.back();
}

std::shared_ptr<Alert> FakePlatform::makeAlert() {
    const std::string name = nameFor("alert");
    recorder.addOnMain("makeAlert() -> " + name);
    alerts.push_back(std::make_shared<FakeAlert>(recorder, name, user));
    return alerts.back();
}

std::shared_ptr<Menu> FakePlatform::makeMenu(const std::string& title) {
    const std::string name = nameFor("menu");
    recorder.addOnMain("makeMenu(" + quoted(title) + ") -> " + name);
    return std::make_shared<FakeMenu>(recorder, name, title);
}

std::shared_ptr<MenuItem> FakePlatform::makeMenuItem(const std::string& title, const Selector& action,
                                                     const std::string& keyEquivalent) {
    const std::string name = nameFor("item");
    recorder.addOnMain("makeMenuItem(" + quoted(title) + ", " + quoted(action) + ", " + quoted(keyEquivalent) +
                       ") -> " + name);
    return std::make_shared<FakeMenuItem>(recorder, name, FakeMenuItem::Kind::entry, title, action, keyEquivalent);
}

std::shared_ptr<MenuItem> FakePlatform::makeSeparatorItem() {
    const std::string name = nameFor("item");
    recorder.addOnMain("makeSeparatorItem() -> " + name);
    return std::make_shared<FakeMenuItem>(recorder, name, FakeMenuItem::Kind::separator, "", "", "");
}

std::string FakePlatform::stringFromRect(Rect rect) { return rectText(rect); }

Rect FakePlatform::rectFromString(const std::string& text) { return rectFromText(text); }

std::shared_ptr<WebViewConfiguration> FakePlatform::makeWebViewConfiguration() {
    const std::string name = nameFor("configuration");
    recorder.addOnMain("makeWebViewConfiguration() -> " + name);
    return std::make_shared<FakeWebViewConfiguration>(recorder, name);
}

std::shared_ptr<WebView> FakePlatform::makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) {
    const std::string name = nameFor("webView");
    auto made = std::dynamic_pointer_cast<FakeWebViewConfiguration>(std::move(configuration));
    recorder.addOnMain("makeWebView(" + shown(frame) + ", " + made->name() + ") -> " + name);
    webViews.push_back(std::make_shared<FakeWebView>(recorder, name, frame, std::move(made)));
    if (onMakeWebView)
        onMakeWebView(*webViews.back());
    return webViews.back();
}

std::shared_ptr<Process> FakePlatform::makeProcess() {
    const std::string name = nameFor("process");
    recorder.addOnMain("makeProcess() -> " + name);
    const auto identifier = kFirstProcessIdentifier + static_cast<std::int32_t>(processes.size());
    processes.push_back(std::make_shared<FakeProcess>(recorder, name, files, identifier));
    if (onMakeProcess)
        onMakeProcess(*processes.back());
    return processes.back();
}

std::shared_ptr<Pipe> FakePlatform::makePipe() {
    const std::string name = nameFor("pipe");
    recorder.addOnMain("makePipe() -> " + name);
    pipes.push_back(std::make_shared<FakePipe>(recorder, name));
    return pipes.back();
}

bool FakePlatform::isAddress(const std::string& text) { return !refusesAddresses && isLoadableAddress(text); }

std::shared_ptr<Timer> FakePlatform::scheduleRepeatingTimer(double seconds, std::function<void()> block) {
    const std::string name = nameFor("timer");
    recorder.addOnMain("scheduleRepeatingTimer(" + shown(seconds) + ") -> " + name);
    return loop.scheduleTimer(seconds, std::move(block), name);
}

} // namespace vantorel::fake
