#include "Platform/Linux/Accessibility/AtSpiAccessibility.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Accessibility/AtSpiElement.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QMap>
#include <unistd.h>

namespace Velloro {

namespace {

const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;

AccessibilityElementRef makeElement(const AtSpiReference &object)
{
    return std::make_shared<const AtSpiElement>(object);
}

} // namespace

AtSpiAccessibility::AtSpiAccessibility(std::shared_ptr<PasteCoordinator> pasting)
    : m_pasting(std::move(pasting))
    , m_bus(m_launcher)
    , m_applications(m_bus)
    , m_focus(m_bus, m_applications)
{
    m_pasting->join(*this);
}

AtSpiAccessibility::~AtSpiAccessibility()
{
    m_pasting->leave(*this);
}

bool AtSpiAccessibility::isProcessTrusted()
{
    m_launcher.waitForAnswers();
    return m_launcher.isEnabled() && m_bus.isConnected();
}

void AtSpiAccessibility::requestTrust()
{
    m_launcher.enable();
}

Accessibility::Result<AccessibilityElementRef> AtSpiAccessibility::focusedElement()
{
    if (!m_pasting->awaitStrokes())
        return tl::unexpected(AccessibilityError::cannotComplete);
    return m_focus.focused().map(makeElement);
}

Accessibility::Result<AccessibilityElementRef> AtSpiAccessibility::focusedElementOf(pid_t process)
{
    return m_focus.focusedOf(process).map(makeElement);
}

Accessibility::Result<AccessibilityRole>
AtSpiAccessibility::role(const AccessibilityElementRef &element)
{
    const Result<AtSpiReference> object = objectOf(element);
    if (!object)
        return tl::unexpected(object.error());
    const QDBusMessage number = m_applications.call(*object, accessibleInterface, u"GetRole"_s);
    const QDBusMessage states = m_applications.call(*object, accessibleInterface, u"GetState"_s);
    if (number.type() != QDBusMessage::ReplyMessage || states.type() != QDBusMessage::ReplyMessage)
        return tl::unexpected(AccessibilityError::cannotComplete);
    const std::optional<AccessibilityRole> role = AtSpiRole::accessibilityRole(
        number.arguments().value(0).toUInt(), AtSpiStates::of(states));
    if (!role)
        return tl::unexpected(AccessibilityError::noValue);
    // A page that is not spelt out says nothing about what is in it.
    if (*role == AccessibilityRole::webArea
        && m_applications.property(*object, accessibleInterface, u"ChildCount"_s) == 0)
        return tl::unexpected(AccessibilityError::noValue);
    if (*role == AccessibilityRole::textField && isSearchField(*object))
        return AccessibilityRole::searchField;
    return *role;
}

Accessibility::Result<QString> AtSpiAccessibility::text(const AccessibilityElementRef &element)
{
    return objectOf(element).and_then(
        [this](const AtSpiReference &object) { return textOf(object).content(); });
}

Accessibility::Result<TextRange>
AtSpiAccessibility::selection(const AccessibilityElementRef &element)
{
    return objectOf(element).and_then(
        [this](const AtSpiReference &object) { return textOf(object).selection(); });
}

Accessibility::Result<void> AtSpiAccessibility::setText(const AccessibilityElementRef &element,
                                                        const QString &text)
{
    return write(element, &AtSpiText::setContent, text);
}

Accessibility::Result<void> AtSpiAccessibility::setSelection(const AccessibilityElementRef &element,
                                                             const TextRange &range)
{
    return write(element, &AtSpiText::setSelection, range);
}

Accessibility::Result<void> AtSpiAccessibility::insert(const AccessibilityElementRef &element,
                                                       const QString &text)
{
    return write(element, &AtSpiText::replaceSelection, text);
}

template <typename Value>
Accessibility::Result<void>
AtSpiAccessibility::write(const AccessibilityElementRef &element,
                          Result<void> (AtSpiText::*edit)(const Value &), const Value &value)
{
    const Result<AtSpiReference> object = objectOf(element);
    if (!object)
        return tl::unexpected(object.error());
    AtSpiText &target = textOf(*object);
    const Result<void> result = (target.*edit)(value);
    m_written.reset();
    if (target.lastInsertion())
        m_written = Written{*object, *target.lastInsertion()};
    return result;
}

bool AtSpiAccessibility::showsLastText()
{
    return m_written && textOf(m_written->object).shows(m_written->insertion);
}

bool AtSpiAccessibility::isTerminalFocused()
{
    const Result<AtSpiReference> focused = m_focus.focused();
    if (!focused)
        return false;
    const QDBusMessage role = m_applications.call(*focused, accessibleInterface, u"GetRole"_s);
    return role.arguments().value(0).toUInt() == AtSpiRole::terminal;
}

Accessibility::Result<AtSpiReference>
AtSpiAccessibility::objectOf(const AccessibilityElementRef &element)
{
    const auto *known = dynamic_cast<const AtSpiElement *>(element.get());
    if (!known)
        return tl::unexpected(AccessibilityError::failure);
    if (m_applications.processOf(known->object.service) == getpid())
        return tl::unexpected(AccessibilityError::cannotComplete);
    return known->object;
}

/// A search field differs from others only by what pages and toolkits say of it besides.
bool AtSpiAccessibility::isSearchField(const AtSpiReference &object)
{
    const QDBusMessage reply = m_applications.call(object, accessibleInterface, u"GetAttributes"_s);
    if (reply.signature() != u"a{ss}")
        return false;
    const auto attributes = qdbus_cast<QMap<QString, QString>>(reply.arguments().value(0));
    return attributes.value(u"xml-roles"_s) == u"searchbox"
        || attributes.value(u"text-input-type"_s) == u"search";
}

AtSpiText &AtSpiAccessibility::textOf(const AtSpiReference &object)
{
    if (!m_text || m_text->turn() != m_applications.allowance().turn()
        || m_text->object() != object)
        m_text.emplace(m_applications, object);
    return *m_text;
}

} // namespace Velloro
