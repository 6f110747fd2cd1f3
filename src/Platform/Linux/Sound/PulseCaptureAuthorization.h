#pragma once

#include "Platform/CaptureAuthorization.h"
#include "Platform/Linux/Sound/PulseMicrophoneQuery.h"

#include <list>
#include <memory>

namespace Velloro {

/// Recording is authorised when the sound server lets us in and has a microphone. The server is
/// asked anew each time, and for a bounded time.
class PulseCaptureAuthorization final : public CaptureAuthorization
{
public:
    explicit PulseCaptureAuthorization(std::shared_ptr<PulseConnection> connection);
    /// Answers the requests that are still open with false.
    ~PulseCaptureAuthorization() override;

    /// `authorized`; `denied` when the server refuses us; `restricted` without a microphone;
    /// `notDetermined` while there is no server that answers. Waits for 0.3 s at most.
    [[nodiscard]] AuthorizationStatus authorizationStatus() override;

    /// Answers within a second, on the sound server's thread or within the call.
    void requestAccess(std::function<void(bool granted)> completion) override;

private:
    struct Request
    {
        std::function<void(bool granted)> completion;
        std::unique_ptr<PulseMicrophoneQuery> query;
    };

    const std::shared_ptr<PulseConnection> m_connection;
    std::list<Request> m_requests;
};

} // namespace Velloro
