#pragma once

#include <utility>

namespace Velloro {

/// A value whose owner tells of every change by one of its signals.
template <typename Owner, typename T>
class Property
{
public:
    using Signal = void (Owner::*)();

    /// `owner` outlives the property.
    Property(Owner *owner, Signal changed, T value = {})
        : m_owner(owner)
        , m_changed(changed)
        , m_value(std::move(value))
    {
    }
    Property(const Property &) = delete;
    Property &operator=(const Property &) = delete;

    [[nodiscard]] const T &get() const { return m_value; }

    void set(const T &value)
    {
        if (replace(value))
            tell();
    }

protected:
    /// Whether the value has changed by that.
    [[nodiscard]] bool replace(const T &value)
    {
        if (m_value == value)
            return false;
        m_value = value;
        return true;
    }

    void tell() { (m_owner->*m_changed)(); }

private:
    Owner *m_owner;
    Signal m_changed;
    T m_value;
};

} // namespace Velloro
