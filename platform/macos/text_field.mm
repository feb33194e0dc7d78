// Vantorel. MIT licence, see LICENSE.
// A line of text over NSTextField.
#import "platform/macos/text_field.h"

#import "platform/macos/view.h"

namespace vantorel::mac {

namespace {

class MacTextField : public ViewOf<TextField> {
public:
    explicit MacTextField(NSTextField* field) : ViewOf<TextField>(field), field_(field) {}

    void setEditable(bool editable) override { field_.editable = editable; }
    void setBordered(bool bordered) override { field_.bordered = bordered; }
    void setBackgroundColor(const Color& color) override { field_.backgroundColor = toNSColor(color); }
    void setSystemFont(double points) override { field_.font = [NSFont systemFontOfSize:points]; }
    void setStringValue(const std::string& text) override { field_.stringValue = toNSString(text); }
    std::string stringValue() const override { return toText(field_.stringValue); }
    void setTextColor(const Color& color) override { field_.textColor = toNSColor(color); }

private:
    NSTextField* field_;
};

}  // namespace

std::shared_ptr<TextField> makeTextField(Rect frame) {
    return std::make_shared<MacTextField>([[NSTextField alloc] initWithFrame:toNSRect(frame)]);
}

}  // namespace vantorel::mac
