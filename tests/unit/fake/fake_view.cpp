// Vantorel. MIT licence, see LICENSE.
// Views of the fake.
#include "tests/unit/fake/fake_view.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace vantorel::fake {

namespace {

class FakeLayer final : public Layer {
public:
    FakeLayer(Record& record, std::string name, std::optional<Color>& color)
        : record_(record),
          name_(std::move(name)),
          color_(color) {}

    void setBackgroundColor(const Color& color) override {
        record_.addOnMain(name_ + ".setBackgroundColor(" + shown(color) + ")");
        color_ = color;
    }

private:
    Record& record_;
    std::string name_;
    std::optional<Color>& color_;
};

bool has(unsigned mask, Autoresizing bit) { return (mask & static_cast<unsigned>(bit)) != 0; }

} // namespace

ViewState::ViewState(Record& record, std::string name, Rect frame)
    : record_(record),
      name_(std::move(name)),
      frame_(frame) {}

ViewState& ViewState::of(View& view) {
    if (auto* state = dynamic_cast<ViewState*>(&view))
        return *state;
    std::fputs("a view that is none of the fake's\n", stderr);
    std::abort();
}

void ViewState::resize(Size size) {
    const Size old = frame_.size;
    frame_.size = size;
    for (const auto& view : subviews_)
        of(*view).follow(old, size);
}

void ViewState::follow(Size oldParent, Size newParent) {
    const double widthChange = newParent.width - oldParent.width;
    const double heightChange = newParent.height - oldParent.height;
    Size size = frame_.size;
    if (has(mask_, Autoresizing::widthSizable))
        size.width += widthChange;
    const bool heightFollows = has(mask_, Autoresizing::heightSizable);
    const bool bottomFollows = has(mask_, Autoresizing::minYMargin);
    const double flexible = (heightFollows ? size.height : 0) + (bottomFollows ? frame_.origin.y : 0);
    // Two flexible parts share the change by their sizes.
    const auto share = [&](double part, bool alone) {
        if (alone)
            return heightChange;
        return flexible > 0 ? heightChange * part / flexible : heightChange / 2;
    };
    if (heightFollows)
        size.height += share(size.height, !bottomFollows);
    if (bottomFollows)
        frame_.origin.y += share(frame_.origin.y, !heightFollows);
    resize(size);
}

void ViewState::setMask(unsigned mask) {
    record_.addOnMain(name_ + ".setAutoresizingMask(" + std::to_string(mask) + ")");
    mask_ = mask;
}

void ViewState::setLayer(bool wantsLayer) {
    record_.addOnMain(name_ + ".setWantsLayer(" + shown(wantsLayer) + ")");
    if (!wantsLayer) {
        layer_.reset();
    } else if (!layer_ && canHaveLayer_) {
        layer_ = std::make_unique<FakeLayer>(record_, name_ + ".layer", layerColor_);
    }
}

void ViewState::add(std::shared_ptr<View> view) {
    record_.addOnMain(name_ + ".addSubview(" + of(*view).name() + ")");
    subviews_.push_back(std::move(view));
}

void ViewState::add(std::shared_ptr<View> view, OrderingMode mode, const View* sibling) {
    const auto found = std::find_if(subviews_.begin(), subviews_.end(),
                                    [sibling](const auto& subview) { return subview.get() == sibling; });
    const bool below = mode == OrderingMode::below;
    record_.addOnMain(name_ + ".addSubview(" + of(*view).name() + (below ? ", below, " : ", above, ") +
                      (found == subviews_.end() ? "all" : of(**found).name()) + ")");
    if (found == subviews_.end()) {
        subviews_.insert(below ? subviews_.begin() : subviews_.end(), std::move(view));
    } else {
        subviews_.insert(below ? found : found + 1, std::move(view));
    }
}

void FakeTextField::setEditable(bool editable) {
    record().addOnMain(name() + ".setEditable(" + shown(editable) + ")");
    editable_ = editable;
}

void FakeTextField::setBordered(bool bordered) {
    record().addOnMain(name() + ".setBordered(" + shown(bordered) + ")");
    bordered_ = bordered;
}

void FakeTextField::setBackgroundColor(const Color& color) {
    record().addOnMain(name() + ".setBackgroundColor(" + shown(color) + ")");
    backgroundColor_ = color;
}

void FakeTextField::setSystemFont(double points) {
    record().addOnMain(name() + ".setSystemFont(" + shown(points) + ")");
    fontPoints_ = points;
}

void FakeTextField::setStringValue(const std::string& text) {
    record().addOnMain(name() + ".setStringValue(" + quoted(text) + ")");
    text_ = text;
}

void FakeTextField::setTextColor(const Color& color) {
    record().addOnMain(name() + ".setTextColor(" + shown(color) + ")");
    textColor_ = color;
}

} // namespace vantorel::fake
