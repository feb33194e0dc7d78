// Vantorel. MIT licence, see LICENSE.
// Views of the fake: frames, layers, subviews in stacking order, and layout by autoresizing masks.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/appkit.h"
#include "tests/unit/fake/describe.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

/// What every view of the fake keeps, and what tests read.
class ViewState {
public:
    ViewState(Record& record, std::string name, Rect frame);
    virtual ~ViewState() = default;
    ViewState(const ViewState&) = delete;
    ViewState& operator=(const ViewState&) = delete;

    /// The state behind a view of the fake; ends the test program for any other view.
    static ViewState& of(View& view);

    const std::string& name() const { return name_; }
    Rect currentFrame() const { return frame_; }
    unsigned autoresizingMask() const { return mask_; }
    bool hasLayer() const { return layer_ != nullptr; }
    /// The layer's background colour, once it was set.
    const std::optional<Color>& layerColor() const { return layerColor_; }
    /// From the lowest to the topmost.
    const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
    /// Gives the view a new size; subviews follow by their masks.
    void resize(Size size);
    /// With false setWantsLayer has no effect: a view that gets no layer.
    void setCanHaveLayer(bool canHaveLayer) { canHaveLayer_ = canHaveLayer; }

protected:
    void setMask(unsigned mask);
    void setLayer(bool wantsLayer);
    Layer* currentLayer() { return layer_.get(); }
    void add(std::shared_ptr<View> view);
    void add(std::shared_ptr<View> view, OrderingMode mode, const View* sibling);
    Record& record() const { return record_; }

private:
    void follow(Size oldParent, Size newParent);

    Record& record_;
    std::string name_;
    Rect frame_;
    unsigned mask_ = 0;
    bool canHaveLayer_ = true;
    std::unique_ptr<Layer> layer_;
    std::optional<Color> layerColor_;
    std::vector<std::shared_ptr<View>> subviews_;
};

/// The functions of View for any interface that extends it.
template<typename Interface>
class FakeViewOf : public Interface, public ViewState {
public:
    using ViewState::ViewState;

    Rect bounds() const override { return {.origin = {}, .size = currentFrame().size}; }
    Rect frame() const override { return currentFrame(); }
    void setAutoresizingMask(unsigned mask) override { setMask(mask); }
    void setWantsLayer(bool wantsLayer) override { setLayer(wantsLayer); }
    Layer* layer() override { return currentLayer(); }
    void addSubview(std::shared_ptr<View> view) override { add(std::move(view)); }
    void addSubview(std::shared_ptr<View> view, OrderingMode mode, const View* sibling) override {
        add(std::move(view), mode, sibling);
    }
};

class FakeView final : public FakeViewOf<View> {
public:
    using FakeViewOf::FakeViewOf;
};

class FakeTextField final : public FakeViewOf<TextField> {
public:
    using FakeViewOf::FakeViewOf;

    void setEditable(bool editable) override;
    void setBordered(bool bordered) override;
    void setBackgroundColor(const Color& color) override;
    void setSystemFont(double points) override;
    void setStringValue(const std::string& text) override;
    std::string stringValue() const override { return text_; }
    void setTextColor(const Color& color) override;

    bool editable() const { return editable_; }
    bool bordered() const { return bordered_; }
    const std::optional<Color>& backgroundColor() const { return backgroundColor_; }
    double fontPoints() const { return fontPoints_; }
    /// Nothing while the colour is the platform's default.
    const std::optional<Color>& textColor() const { return textColor_; }
    /// What a user types: the text becomes `text`. Leaves no record.
    void type(const std::string& text) { text_ = text; }

private:
    bool editable_ = true;
    bool bordered_ = true;
    std::optional<Color> backgroundColor_;
    double fontPoints_ = 13;
    std::string text_;
    std::optional<Color> textColor_;
};

} // namespace vantorel::fake
