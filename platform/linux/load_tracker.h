// Vantorel. MIT licence, see LICENSE.
// What becomes of each load: the engine's events in, exactly one outcome for each load out.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/platform_error.h"

namespace vantorel::gtk {

/// How a load ended.
struct LoadOutcome {
    enum class Kind { finished, failed, failedProvisionally };

    Kind kind = Kind::finished;
    /// Set unless the load finished.
    std::optional<PlatformError> error;
};

/// What the engine said about the end of a load.
enum class LoadFailure {
    /// It broke off.
    broken,
    /// The answer is nothing to show: no content, or a kind of content that the engine does not know.
    interrupted,
    /// It was stopped, mostly by another load.
    cancelled,
};

/// Follows the loads of one view. Knows no engine. Each function returns the outcome to report, if the event ended a
/// load. The engine reports loads that never started not at all, and the end of a load that was stopped after the next
/// one was asked for: hence the care.
class LoadTracker {
public:
    using Ended = std::optional<LoadOutcome>;

    /// The application asks for `address`. Ends the load under way.
    [[nodiscard]] Ended requested(const std::string& address);
    /// The engine starts to load `address`, by itself or because it was asked to.
    [[nodiscard]] Ended started(const std::string& address);
    /// The head of the page's own answer is there.
    void answered();
    /// The engine shows `address` in place of the page before.
    void committed(const std::string& address);
    [[nodiscard]] Ended failed(LoadFailure failure, const PlatformError& error);
    [[nodiscard]] Ended finished();
    /// The load under way ends with `error` by the backend's own decision: time-out, end of the page's process.
    [[nodiscard]] Ended aborted(const PlatformError& error);

    /// A load is under way and nothing of its answer has come.
    bool waitsForAnswer() const { return stage_ == Stage::requested || stage_ == Stage::started; }

    /// The engine shows the beginning of the page.
    bool arrives() const { return stage_ == Stage::committed; }

private:
    enum class Stage { idle, requested, started, answered, committed };

    [[nodiscard]] LoadOutcome end(bool provisionally, const PlatformError& error);

    Stage stage_ = Stage::idle;
    std::string address_;
    /// The engine may still report the end of the load before this one.
    bool expectsOldEnd_ = false;
    /// The engine shows an empty page in place of an address that it refuses to load.
    bool refused_ = false;
};

} // namespace vantorel::gtk
