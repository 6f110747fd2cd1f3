#pragma once

#include <QString>
#include <algorithm>
#include <array>
#include <optional>

namespace Velloro {

/// One case of an enumeration and its texts.
template <typename E>
struct EnumCase
{
    E value;
    /// What is persisted.
    QStringView rawValue;
    /// What is shown, where that differs.
    QStringView displayName = {};
    /// A remark that is shown beside the name; empty where there is none.
    QStringView remark = {};
};

/// All cases of an enumeration in the order of their declaration. An enumeration that has texts
/// specialises it beside its declaration, and nothing else needs to know the texts.
template <typename E>
inline constexpr std::array<EnumCase<E>, 0> enumTable{};

template <typename E>
[[nodiscard]] constexpr const EnumCase<E> &enumCase(E value)
{
    static_assert(!enumTable<E>.empty());
    return *std::ranges::find(enumTable<E>, value, &EnumCase<E>::value);
}

/// The text that is persisted.
template <typename E>
[[nodiscard]] QString rawValue(E value)
{
    return enumCase(value).rawValue.toString();
}

/// The text that is shown.
template <typename E>
[[nodiscard]] QString displayName(E value)
{
    return enumCase(value).displayName.toString();
}

/// The case with exactly this raw value (case-sensitive), or nothing.
template <typename E>
[[nodiscard]] std::optional<E> fromRawValue(QStringView rawValue)
{
    const auto found = std::ranges::find(enumTable<E>, rawValue, &EnumCase<E>::rawValue);
    return found == enumTable<E>.end() ? std::nullopt : std::optional(found->value);
}

/// All cases in the order of their declaration.
template <typename E>
[[nodiscard]] constexpr auto allCases()
{
    std::array<E, enumTable<E>.size()> cases{};
    std::ranges::transform(enumTable<E>, cases.begin(), &EnumCase<E>::value);
    return cases;
}

} // namespace Velloro
