// Vantorel. MIT licence, see LICENSE.
// What an alert says and answers; alert_box.cpp builds its window.
#include "platform/linux/alert.h"

#include <algorithm>

#include "platform/linux/alert_box.h"
#include "platform/linux/application.h"
#include "platform/linux/main_thread.h"

namespace vantorel::gtk {
namespace {

// More than anyone reads in a box; laying out a megabyte would hold up the window for seconds.
constexpr long kMostCharacters = 10'000;
constexpr int kMostLines = 500;

} // namespace

std::string alertText(const std::string& text) {
    // A character has four bytes at most; what lies behind is not even looked at.
    const std::size_t looked = std::min(text.size(), static_cast<std::size_t>(kMostCharacters) * 4 + 4);
    const GText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(looked)));
    const char* end = valid.get();
    int lines = 1;
    for (long characters = 0; *end != '\0' && characters < kMostCharacters; ++characters) {
        if (*end == '\n' && ++lines > kMostLines)
            break;
        end = g_utf8_next_char(end);
    }
    std::string result(valid.get(), static_cast<std::size_t>(end - valid.get()));
    if (*end != '\0')
        result += "…";
    return result;
}

long escapeCode(const std::vector<std::string>& buttons) {
    const auto cancel = std::find(buttons.begin(), buttons.end(), "Cancel");
    if (cancel != buttons.end())
        return kAlertFirstButtonReturn + (cancel - buttons.begin());
    return buttons.size() == 1 ? kAlertFirstButtonReturn : kModalAborted;
}

void GtkAlert::setMessageText(const std::string& text) {
    assertMainThread();
    messageText_ = text;
}

void GtkAlert::setInformativeText(const std::string& text) {
    assertMainThread();
    informativeText_ = text;
}

void GtkAlert::setAlertStyle(AlertStyle style) {
    assertMainThread();
    style_ = style;
}

void GtkAlert::addButtonWithTitle(const std::string& title) {
    assertMainThread();
    buttons_.push_back(title);
}

void GtkAlert::setAccessoryView(std::shared_ptr<TextField> field) {
    assertMainThread();
    accessory_ = std::move(field);
}

long GtkAlert::runModal() {
    assertMainThread();
    ModalLoop loop(app_.modals());
    // An alert without any button gets one, as on the home platform.
    const std::vector<std::string> buttons = buttons_.empty() ? std::vector<std::string>{"OK"} : buttons_;
    const AlertContent content = {messageText_, informativeText_, style_,
                                  buttons,      accessory_.get(), escapeCode(buttons)};
    const AlertBox box(app_, content, [&loop](long code) { loop.end(code); });
    return loop.run(box.window());
}

std::shared_ptr<Alert> makeAlert(GtkApp& app) { return std::make_shared<GtkAlert>(app); }

} // namespace vantorel::gtk
