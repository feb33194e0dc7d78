// Vantorel. MIT licence, see LICENSE.
// Windows of the fake.
#include "tests/unit/fake/fake_window.h"

#include <algorithm>
#include <utility>

namespace vantorel::fake {

namespace {

constexpr double kLargestSide = 32767;

Size showable(Size size) {
    return {std::clamp(size.width, 0.0, kLargestSide), std::clamp(size.height, 0.0, kLargestSide)};
}

} // namespace

FakeWindow::FakeWindow(Record& record, std::string name, Rect contentRect, unsigned style)
    : record_(record),
      name_(std::move(name)),
      style_(style),
      content_(
          std::make_shared<FakeView>(record, "contentView", Rect{.origin = {}, .size = showable(contentRect.size)})),
      frameOrigin_(contentRect.origin) {}

void FakeWindow::setTitle(const std::string& title) {
    record_.addOnMain(name_ + ".setTitle(" + quoted(title) + ")");
    title_ = title;
}

void FakeWindow::setMinSize(Size size) {
    record_.addOnMain(name_ + ".setMinSize(" + shown(size) + ")");
    minSize_ = size;
}

void FakeWindow::setLevel(WindowLevel level) {
    record_.addOnMain(name_ + ".setLevel(" + std::to_string(static_cast<int>(level)) + ")");
    level_ = level;
}

void FakeWindow::setSharingType(WindowSharingType type) {
    record_.addOnMain(name_ + ".setSharingType(" + std::to_string(static_cast<int>(type)) + ")");
    sharingType_ = type;
}

std::shared_ptr<View> FakeWindow::contentView() {
    record_.checkMainThread(name_ + ".contentView()");
    if (hasContentView && !hasContentView())
        return nullptr;
    return content_;
}

void FakeWindow::makeKeyAndOrderFront() {
    record_.addOnMain(name_ + ".makeKeyAndOrderFront()");
    visible_ = true;
}

void FakeWindow::center() {
    record_.addOnMain(name_ + ".center()");
    const Size size = frame().size;
    frameOrigin_ = {(kScreenSize.width - size.width) / 2, (kScreenSize.height - size.height) / 2};
}

Rect FakeWindow::frame() const {
    record_.checkMainThread(name_ + ".frame()");
    const Size content = content_->currentFrame().size;
    return {.origin = frameOrigin_, .size = {content.width, content.height + kTitleBarHeight}};
}

void FakeWindow::resizeContent(Size size) {
    content_->resize({std::max(size.width, minSize_.width), std::max(size.height, minSize_.height - kTitleBarHeight)});
}

void FakeWindow::close() {
    visible_ = false;
    closed_ = true;
    if (onClose)
        onClose();
}

} // namespace vantorel::fake
