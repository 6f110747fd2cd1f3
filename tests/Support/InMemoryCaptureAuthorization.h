#pragma once

#include "Platform/CaptureAuthorization.h"

#include <utility>
#include <vector>

namespace Velloro {

/// A permission that the test grants or refuses, at once or when it pleases.
class InMemoryCaptureAuthorization : public CaptureAuthorization
{
public:
    // Script.
    AuthorizationStatus status = AuthorizationStatus::authorized;
    /// Without it a request waits for `answer`.
    bool answersAtOnce = true;
    bool granted = true;

    // What was asked.
    int requests = 0;

    AuthorizationStatus authorizationStatus() override { return status; }

    void requestAccess(std::function<void(bool granted)> completion) override
    {
        ++requests;
        if (answersAtOnce)
            completion(granted);
        else
            m_waiting.push_back(std::move(completion));
    }

    /// Answers every request that waits, on the calling thread.
    void answer(bool grant)
    {
        for (const auto &completion : std::exchange(m_waiting, {}))
            completion(grant);
    }

private:
    std::vector<std::function<void(bool)>> m_waiting;
};

} // namespace Velloro
