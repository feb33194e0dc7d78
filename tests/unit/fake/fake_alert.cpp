// Vantorel. MIT licence, see LICENSE.
// Alerts of the fake.
#include "tests/unit/fake/fake_alert.h"

#include <utility>

namespace vantorel::fake {

void AlertUser::willAnswer(long code) {
    willAnswer([code](FakeAlert&) { return code; });
}

long AlertUser::answer(FakeAlert& alert) {
    if (answers_.empty())
        return kAlertFirstButtonReturn;
    const AlertAnswer answer = std::move(answers_.front());
    answers_.pop_front();
    ++depth_;
    const long code = answer(alert);
    --depth_;
    return code;
}

void FakeAlert::setMessageText(const std::string& text) {
    record_.addOnMain(name_ + ".setMessageText(" + quoted(text) + ")");
    messageText_ = text;
}

void FakeAlert::setInformativeText(const std::string& text) {
    record_.addOnMain(name_ + ".setInformativeText(" + quoted(text) + ")");
    informativeText_ = text;
}

void FakeAlert::setAlertStyle(AlertStyle style) {
    record_.addOnMain(name_ + ".setAlertStyle(" + std::to_string(static_cast<unsigned>(style)) + ")");
    style_ = style;
    styleWasSet_ = true;
}

void FakeAlert::addButtonWithTitle(const std::string& title) {
    record_.addOnMain(name_ + ".addButtonWithTitle(" + quoted(title) + ")");
    buttons_.push_back(title);
}

void FakeAlert::setAccessoryView(std::shared_ptr<TextField> field) {
    accessory_ = std::dynamic_pointer_cast<FakeTextField>(field);
    record_.addOnMain(name_ + ".setAccessoryView(" + (accessory_ ? accessory_->name() : "nil") + ")");
}

long FakeAlert::runModal() {
    record_.addOnMain(name_ + ".runModal()");
    ++runCount_;
    const long code = user_.answer(*this);
    record_.addOnMain(name_ + " answered " + std::to_string(code));
    return code;
}

} // namespace vantorel::fake
