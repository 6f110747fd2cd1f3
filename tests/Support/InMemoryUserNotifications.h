#pragma once

#include "Platform/UserNotifications.h"

#include <utility>
#include <vector>

namespace Velloro {

/// Notifications that are only remembered, and accepted at once unless they are refused.
class InMemoryUserNotifications : public UserNotifications
{
public:
    /// Titles and texts, in the order of delivery.
    std::vector<std::pair<QString, QString>> delivered;
    bool refuses = false;

    void deliver(const QString &title, const QString &informativeText,
                 std::function<void()> onTaken) override
    {
        delivered.emplace_back(title, informativeText);
        if (onTaken && !refuses)
            onTaken();
    }
};

} // namespace Velloro
