#pragma once

#include <functional>

namespace Velloro {

/// Whether this program may record the microphone.
enum class AuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// The query and the request for microphone access. Called on the main thread; never waits for the
/// sound server without a bound.
class CaptureAuthorization
{
public:
    virtual ~CaptureAuthorization() = default;

    /// The answer as it stands now.
    [[nodiscard]] virtual AuthorizationStatus authorizationStatus() = 0;

    /// Asks for access; `completion` receives true when it was granted. It may be called on any
    /// thread, exactly once, also when the sound server never answers.
    virtual void requestAccess(std::function<void(bool granted)> completion) = 0;
};

} // namespace Velloro
