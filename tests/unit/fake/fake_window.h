// Vantorel. MIT licence, see LICENSE.
// Windows of the fake, on a screen of a fixed size and with a title bar of a known height.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/appkit.h"
#include "tests/unit/fake/fake_view.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

/// The one screen of the fake.
inline constexpr Size kScreenSize{1440, 900};
/// What a title bar adds to the height of a window.
inline constexpr double kTitleBarHeight = 28;

class FakeWindow final : public Window {
public:
    FakeWindow(Record& record, std::string name, Rect contentRect, unsigned style);

    void setTitle(const std::string& title) override;
    void setMinSize(Size size) override;
    void setLevel(WindowLevel level) override;
    void setSharingType(WindowSharingType type) override;
    std::shared_ptr<View> contentView() override;
    void makeKeyAndOrderFront() override;
    void center() override;
    Rect frame() const override;

    const std::string& title() const { return title_; }
    unsigned style() const { return style_; }
    Size minSize() const { return minSize_; }
    WindowLevel level() const { return level_; }
    WindowSharingType sharingType() const { return sharingType_; }
    bool visible() const { return visible_; }
    bool closed() const { return closed_; }
    int miniaturizeCount() const { return miniaturizeCount_; }
    int zoomCount() const { return zoomCount_; }
    FakeView& content() { return *content_; }

    /// What a user does. They leave no record.
    void moveTo(Point frameOrigin) { frameOrigin_ = frameOrigin; }
    /// Resizes the content and lays it out; the frame's least size holds.
    void resizeContent(Size size);
    void miniaturize() { ++miniaturizeCount_; }
    void zoom() { ++zoomCount_; }
    /// Hides the window for good and tells `onClose`.
    void close();
    std::function<void()> onClose;
    /// Asked at every read of the content view, where set: false means that there is none.
    std::function<bool()> hasContentView;

private:
    Record& record_;
    std::string name_;
    unsigned style_;
    std::shared_ptr<FakeView> content_;
    Point frameOrigin_;
    std::string title_;
    Size minSize_;
    WindowLevel level_ = WindowLevel::normal;
    WindowSharingType sharingType_ = WindowSharingType::readOnly;
    bool visible_ = false;
    bool closed_ = false;
    int miniaturizeCount_ = 0;
    int zoomCount_ = 0;
};

} // namespace vantorel::fake
