#pragma once

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <variant>

namespace Velloro {

/// A value of the defaults store.
using DefaultsValue
    = std::variant<bool, int64_t, QString, QStringList, QMap<QString, QString>, QByteArray>;

/// The per-user store of settings: typed values under text keys.
///
/// Main thread only. A read yields nothing when the key is absent or holds another type. A write
/// is on disk, complete and readable by the user alone, before it returns; where it can't be
/// written the value is kept in memory, one log line says so, and the next write tries again.
class UserDefaults
{
public:
    virtual ~UserDefaults() = default;

    /// The value stored under `key`, of whatever type.
    [[nodiscard]] virtual std::optional<DefaultsValue> value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const DefaultsValue &value) = 0;
    virtual void removeValue(const QString &key) = 0;
    /// Removes what the store has kept of its earlier contents beside the values, such as a file
    /// that could not be read. What can't be removed is logged.
    virtual void removeKeptCopies() = 0;

    /// The value stored under `key` when it is present and of type `T`.
    template <typename T>
    [[nodiscard]] std::optional<T> get(const QString &key) const
    {
        if (const auto stored = value(key)) {
            if (const T *typed = std::get_if<T>(&*stored))
                return *typed;
        }
        return std::nullopt;
    }
};

} // namespace Velloro
