#pragma once

namespace Velloro {

/// Stands in a listener for an event that does not matter: none may be left out.
template <typename... Arguments>
void ignoredEvent(Arguments...)
{
}

} // namespace Velloro
