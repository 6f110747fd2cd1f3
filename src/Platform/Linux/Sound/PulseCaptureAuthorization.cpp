#include "Platform/Linux/Sound/PulseCaptureAuthorization.h"

#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

// The status is asked for while the program starts, which must not wait.
constexpr auto statusPatience = 300ms;
// A request is asked for by a press; nobody waits for it, but its user expects something to happen.
constexpr auto requestPatience = 1s;

} // namespace

PulseCaptureAuthorization::PulseCaptureAuthorization(std::shared_ptr<PulseConnection> connection)
    : m_connection(std::move(connection))
{
}

PulseCaptureAuthorization::~PulseCaptureAuthorization()
{
    const PulseConnection::Lock lock(*m_connection);
    for (auto &request : m_requests) {
        if (!request.query->isAnswered())
            request.completion(false);
        request.query.reset();
    }
}

AuthorizationStatus PulseCaptureAuthorization::authorizationStatus()
{
    const PulseConnection::Lock lock(*m_connection);
    switch (PulseMicrophoneQuery::ask(*m_connection, statusPatience).outcome) {
    case PulseMicrophoneQuery::Outcome::found:
        return AuthorizationStatus::authorized;
    case PulseMicrophoneQuery::Outcome::refused:
        return AuthorizationStatus::denied;
    case PulseMicrophoneQuery::Outcome::none:
        return AuthorizationStatus::restricted;
    case PulseMicrophoneQuery::Outcome::unreachable:
        break;
    }
    return AuthorizationStatus::notDetermined;
}

void PulseCaptureAuthorization::requestAccess(std::function<void(bool granted)> completion)
{
    const PulseConnection::Lock lock(*m_connection);
    m_requests.remove_if([](const Request &request) { return request.query->isAnswered(); });
    auto &request = m_requests.emplace_back(Request{std::move(completion), nullptr});
    request.query = std::make_unique<PulseMicrophoneQuery>(
        *m_connection, requestPatience, [&request](const PulseMicrophoneQuery::Answer &answer) {
            request.completion(answer.outcome == PulseMicrophoneQuery::Outcome::found);
        });
}

} // namespace Velloro
