// Vantorel. MIT licence, see LICENSE.
// HTTP requests of the fake.
#include "tests/unit/fake/fake_url_session.h"

#include <utility>

#include "tests/unit/fake/describe.h"

namespace vantorel::fake {

class FakeUrlSession::Task final : public DataTask {
public:
    Task(FakeUrlSession& session, std::size_t index, std::shared_ptr<Exchange> exchange)
        : session_(session),
          index_(index),
          exchange_(std::move(exchange)) {}

    void resume() override {
        session_.record_.addOnMain("task" + std::to_string(index_ + 1) + ".resume()");
        exchange_->resumed = true;
        if (session_.onResume)
            session_.onResume(index_);
    }

private:
    FakeUrlSession& session_;
    std::size_t index_;
    std::shared_ptr<Exchange> exchange_;
};

std::shared_ptr<DataTask> FakeUrlSession::dataTask(const UrlRequest& request,
                                                   std::function<void(const UrlResult&)> completion) {
    const std::size_t index = exchanges_.size();
    record_.addOnMain("urlSession.dataTask(" + quoted(request.address) + ", cache " +
                      std::to_string(static_cast<unsigned>(request.cachePolicy)) + ", " +
                      shown(request.timeoutSeconds) + " s) -> task" + std::to_string(index + 1));
    exchanges_.push_back(std::make_shared<Exchange>(
        Exchange{.request = request, .completion = std::move(completion), .resumed = false, .answers = 0}));
    return std::make_shared<Task>(*this, index, exchanges_.back());
}

FakeUrlSession::Exchange& FakeUrlSession::ready(std::size_t index) {
    Exchange& exchange = *exchanges_.at(index);
    if (!exchange.resumed)
        record_.addViolation("answer to a task that was not started");
    if (exchange.answers > 0)
        record_.addViolation("second answer to a task");
    ++exchange.answers;
    return exchange;
}

void FakeUrlSession::answer(std::size_t index, const UrlResult& result) {
    const Exchange& exchange = ready(index);
    onBackgroundThread([&exchange, &result] { exchange.completion(result); });
}

void FakeUrlSession::answerDirectly(std::size_t index, const UrlResult& result) { ready(index).completion(result); }

UrlResult FakeUrlSession::failure(const std::string& text) { return {.error = makeError(text), .statusCode = {}}; }

} // namespace vantorel::fake
