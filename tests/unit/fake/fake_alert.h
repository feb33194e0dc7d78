// Vantorel. MIT licence, see LICENSE.
// Alerts of the fake, answered by the test's script.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "tests/unit/fake/fake_view.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakeAlert;

/// What a user does while an alert is up; the result is the code that runModal gives.
using AlertAnswer = std::function<long(FakeAlert&)>;

/// The user in front of the alerts: answers them in the order in which they are shown.
class AlertUser {
public:
    /// Answers the next alert that has no answer yet.
    void willAnswer(AlertAnswer answer) { answers_.push_back(std::move(answer)); }
    void willAnswer(long code);
    /// The answer for the alert that is shown now: "OK" when nothing was scripted.
    long answer(FakeAlert& alert);
    /// How many alerts are up at this moment.
    int depth() const { return depth_; }

private:
    std::deque<AlertAnswer> answers_;
    int depth_ = 0;
};

class FakeAlert final : public Alert {
public:
    FakeAlert(Record& record, std::string name, AlertUser& user)
        : record_(record),
          name_(std::move(name)),
          user_(user) {}

    void setMessageText(const std::string& text) override;
    void setInformativeText(const std::string& text) override;
    void setAlertStyle(AlertStyle style) override;
    void addButtonWithTitle(const std::string& title) override;
    void setAccessoryView(std::shared_ptr<TextField> field) override;
    long runModal() override;

    const std::string& messageText() const { return messageText_; }
    const std::string& informativeText() const { return informativeText_; }
    AlertStyle style() const { return style_; }
    bool styleWasSet() const { return styleWasSet_; }
    const std::vector<std::string>& buttons() const { return buttons_; }
    /// The accessory field, or null.
    FakeTextField* accessory() const { return accessory_.get(); }
    int runCount() const { return runCount_; }

private:
    Record& record_;
    std::string name_;
    AlertUser& user_;
    std::string messageText_;
    std::string informativeText_;
    AlertStyle style_ = AlertStyle::warning;
    bool styleWasSet_ = false;
    std::vector<std::string> buttons_;
    std::shared_ptr<FakeTextField> accessory_;
    int runCount_ = 0;
};

} // namespace vantorel::fake
