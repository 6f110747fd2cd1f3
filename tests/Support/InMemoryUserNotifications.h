#pragma once

#include "Platform/UserNotifications.h"

#include <utility>
#include <vector>

namespace Velloro {

/// Notifications that are only remembered.
class InMemoryUserNotifications : public UserNotifications
{
public:
    /// Titles and texts, in the order of delivery.
    std::vector<std::pair<QString, QString>> delivered;

    void deliver(const QString &title, const QString &informativeText) override
    {
        delivered.emplace_back(title, informativeText);
    }
};

} // namespace Velloro
