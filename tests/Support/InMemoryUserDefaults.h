#pragma once

#include "Platform/UserDefaults.h"

namespace Velloro {

/// A store of settings that lasts as long as the test.
class InMemoryUserDefaults : public UserDefaults
{
public:
    QMap<QString, DefaultsValue> values;
    /// The keys that were written, in order.
    QStringList written;
    /// Whether something is kept of earlier contents.
    bool hasKeptCopies = false;

    [[nodiscard]] std::optional<DefaultsValue> value(const QString &key) const override
    {
        const auto found = values.constFind(key);
        return found == values.constEnd() ? std::nullopt : std::optional(*found);
    }
    void setValue(const QString &key, const DefaultsValue &value) override
    {
        values.insert(key, value);
        written << key;
    }
    void removeValue(const QString &key) override { values.remove(key); }
    void removeKeptCopies() override { hasKeptCopies = false; }
};

} // namespace Velloro
