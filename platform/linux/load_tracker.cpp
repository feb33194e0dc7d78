// Vantorel. MIT licence, see LICENSE.
// What becomes of each load: the engine's events in, exactly one outcome for each load out.
#include "platform/linux/load_tracker.h"

#include "platform/linux/engine_error.h"

namespace vantorel::gtk {

namespace {

constexpr const char* kBlankPage = "about:blank";

} // namespace

LoadTracker::Ended LoadTracker::requested(const std::string& address) {
    Ended ended = aborted(cancelledError());
    stage_ = Stage::requested;
    address_ = address;
    expectsOldEnd_ = ended.has_value();
    return ended;
}

LoadTracker::Ended LoadTracker::started(const std::string& address) {
    Ended ended;
    if (stage_ != Stage::requested) {
        ended = aborted(cancelledError());
        address_ = address;
        expectsOldEnd_ = false;
    }
    stage_ = Stage::started;
    refused_ = false;
    return ended;
}

void LoadTracker::answered() {
    if (stage_ == Stage::started) {
        stage_ = Stage::answered;
    }
}

void LoadTracker::committed(const std::string& address) {
    if (stage_ == Stage::started || stage_ == Stage::answered) {
        stage_ = Stage::committed;
        refused_ = address == kBlankPage && address_ != kBlankPage;
    }
}

LoadTracker::Ended LoadTracker::failed(LoadFailure failure, const PlatformError& error) {
    if (stage_ == Stage::idle || stage_ == Stage::requested) {
        return std::nullopt;
    }
    if (failure == LoadFailure::cancelled && expectsOldEnd_) {
        expectsOldEnd_ = false;
        stage_ = Stage::requested;
        return std::nullopt;
    }
    const bool broken =
        stage_ == Stage::committed || (stage_ == Stage::answered && failure != LoadFailure::interrupted);
    return end(!broken, error);
}

LoadTracker::Ended LoadTracker::finished() {
    if (stage_ != Stage::committed) {
        return std::nullopt;
    }
    if (refused_) {
        return end(true, refusedError());
    }
    stage_ = Stage::idle;
    return LoadOutcome{LoadOutcome::Kind::finished, std::nullopt};
}

LoadTracker::Ended LoadTracker::aborted(const PlatformError& error) {
    if (stage_ == Stage::idle) {
        return std::nullopt;
    }
    return end(stage_ != Stage::committed && stage_ != Stage::answered, error);
}

LoadOutcome LoadTracker::end(bool provisionally, const PlatformError& error) {
    stage_ = Stage::idle;
    return {provisionally ? LoadOutcome::Kind::failedProvisionally : LoadOutcome::Kind::failed, error};
}

} // namespace vantorel::gtk
