// Vantorel. MIT licence, see LICENSE.
// The seam to AVFoundation: permission to use the microphone.
#pragma once

#include <functional>

namespace vantorel {

/// The state of a grant, as AVFoundation numbers it.
enum class AuthorizationStatus : int {
    notDetermined = 0,
    restricted = 1,
    denied = 2,
    authorized = 3,
};

class AudioCaptureAccess {
public:
    virtual ~AudioCaptureAccess() = default;

    /// Asks nobody. Authorized where the system has no such grant.
    virtual AuthorizationStatus authorizationStatus() = 0;
    /// Asks the user. `completion` comes once, on any thread, after the answer.
    virtual void requestAccess(std::function<void(bool granted)> completion) = 0;
};

} // namespace vantorel
