// Vantorel. MIT licence, see LICENSE.
// HTTP requests of the fake, answered by the test.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakeUrlSession final : public UrlSession {
public:
    explicit FakeUrlSession(Record& record) : record_(record) {}

    std::shared_ptr<DataTask> dataTask(const UrlRequest& request,
                                       std::function<void(const UrlResult&)> completion) override;

    std::size_t taskCount() const { return exchanges_.size(); }
    const UrlRequest& request(std::size_t index) const { return exchanges_.at(index)->request; }
    bool resumed(std::size_t index) const { return exchanges_.at(index)->resumed; }
    bool answered(std::size_t index) const { return exchanges_.at(index)->answers > 0; }
    /// Ends the task on a thread of its own; a task that was not started, or was answered before, is a violation.
    void answer(std::size_t index, const UrlResult& result);
    /// As answer, on the calling thread.
    void answerDirectly(std::size_t index, const UrlResult& result);
    /// Lets the completions go, as the end of the platform does.
    void forget() { exchanges_.clear(); }

    /// Called when a task is started, where set; its index comes along.
    std::function<void(std::size_t)> onResume;

    static UrlResult status(int code) { return {.error = {}, .statusCode = code}; }
    static UrlResult failure(const std::string& text);

private:
    struct Exchange {
        UrlRequest request;
        std::function<void(const UrlResult&)> completion;
        bool resumed = false;
        int answers = 0;
    };
    class Task;

    Exchange& ready(std::size_t index);

    Record& record_;
    std::vector<std::shared_ptr<Exchange>> exchanges_;
};

} // namespace vantorel::fake
