#pragma once

#include "Core/Domain/EnumTable.h"
#include "Core/State/Property.h"
#include "Platform/UserDefaults.h"

#include <set>
#include <type_traits>

namespace Velloro {

/// How a setting's value is kept in the defaults store: as it is.
template <typename T>
struct StoredForm
{
    using Type = T;
    [[nodiscard]] static const T &of(const T &value) { return value; }
    [[nodiscard]] static std::optional<T> read(const T &stored) { return stored; }
};

/// An enumeration is kept as its raw value.
template <typename E>
    requires std::is_enum_v<E>
struct StoredForm<E>
{
    using Type = QString;
    [[nodiscard]] static QString of(E value) { return rawValue(value); }
    [[nodiscard]] static std::optional<E> read(const QString &stored)
    {
        return fromRawValue<E>(stored);
    }
};

/// A set of them as a list; what is no raw value in it is left out.
template <typename E>
struct StoredForm<std::set<E>>
{
    using Type = QStringList;
    [[nodiscard]] static QStringList of(const std::set<E> &values)
    {
        QStringList stored;
        for (const E value : values)
            stored << rawValue(value);
        return stored;
    }
    [[nodiscard]] static std::optional<std::set<E>> read(const QStringList &stored)
    {
        std::set<E> values;
        for (const QString &text : stored) {
            if (const auto value = fromRawValue<E>(text))
                values.insert(*value);
        }
        return values;
    }
};

/// A property that is kept in the defaults store. Every assignment is stored before it returns and
/// before anybody is told of it, an unchanged value too.
template <typename Owner, typename T>
class Setting : public Property<Owner, T>
{
    using Base = Property<Owner, T>;
    using Form = StoredForm<T>;

public:
    /// Takes the stored value, and stores it again; where none is stored, or one of another type,
    /// `value` stays and is not stored. `owner` and `defaults` outlive the setting.
    Setting(Owner *owner, typename Base::Signal changed, UserDefaults &defaults, QStringView key,
            T value = {})
        : Base(owner, changed, std::move(value))
        , m_defaults(defaults)
        , m_key(key.toString())
    {
        const auto stored = defaults.get<typename Form::Type>(m_key);
        if (const auto known = stored ? Form::read(*stored) : std::nullopt)
            (void)replace(*known);
    }

    void set(const T &value)
    {
        if (replace(value))
            this->tell();
    }

private:
    [[nodiscard]] bool replace(const T &value)
    {
        const bool changed = Base::replace(value);
        m_defaults.setValue(m_key, Form::of(this->get()));
        return changed;
    }

    UserDefaults &m_defaults;
    QString m_key;
};

} // namespace Velloro
