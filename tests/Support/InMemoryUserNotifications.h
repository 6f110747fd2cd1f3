#pragma once

#include "Platform/UserNotifications.h"

#include <QSet>
#include <utility>
#include <vector>

namespace Velloro {

/// Notifications that are only remembered.
class InMemoryUserNotifications : public UserNotifications
{
public:
    /// Titles and texts, in the order of delivery.
    std::vector<std::pair<QString, QString>> delivered;
    /// What has been delivered once, in this run or an earlier one.
    QSet<QString> seen;

    void deliver(const QString &title, const QString &informativeText) override
    {
        delivered.emplace_back(title, informativeText);
    }

    void deliverOnce(const QString &identifier, const QString &title,
                     const QString &informativeText) override
    {
        if (!seen.contains(identifier))
            deliver(title, informativeText);
        seen.insert(identifier);
    }
};

} // namespace Velloro
