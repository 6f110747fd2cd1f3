#include "Platform/Linux/Accessibility/AtSpiAccessibility.h"

#include "Platform/Linux/Accessibility/AtSpiElement.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QMap>
#include <unistd.h>

namespace Velloro {

namespace {

const QString accessibleInterface = QStringLiteral("org.a11y.atspi.Accessible");
const QString roleAttribute = QStringLiteral("AXRole");
const QString valueAttribute = QStringLiteral("AXValue");
const QString selectedTextAttribute = QStringLiteral("AXSelectedText");
const QString selectedTextRangeAttribute = QStringLiteral("AXSelectedTextRange");
const QString focusedElementAttribute = QStringLiteral("AXFocusedUIElement");

AccessibilityElementRef makeElement(AtSpiElement::Target target)
{
    return std::make_shared<const AtSpiElement>(std::move(target));
}

} // namespace

AtSpiAccessibility::AtSpiAccessibility()
    : m_focus(m_bus)
{
}

AtSpiAccessibility::~AtSpiAccessibility() = default;

bool AtSpiAccessibility::isProcessTrusted()
{
    return m_bus.isUsable();
}

void AtSpiAccessibility::requestTrust()
{
    m_bus.enable();
}

AccessibilityElementRef AtSpiAccessibility::systemWideElement()
{
    return makeElement(AtSpiElement::Desktop{});
}

AccessibilityElementRef AtSpiAccessibility::applicationElement(pid_t processIdentifier)
{
    return makeElement(processIdentifier);
}

Accessibility::Result<AccessibilityValue>
AtSpiAccessibility::copyAttributeValue(const AccessibilityElementRef &element,
                                       const QString &attribute)
{
    const auto *target = dynamic_cast<const AtSpiElement *>(element.get());
    if (!target)
        return tl::unexpected(AccessibilityError::failure);

    if (attribute == focusedElementAttribute) {
        Result<AtSpiReference> focused = tl::unexpected(AccessibilityError::attributeUnsupported);
        const bool isOfDesktop = std::holds_alternative<AtSpiElement::Desktop>(target->target);
        if (isOfDesktop && m_beforeAccess && !m_beforeAccess())
            return tl::unexpected(AccessibilityError::cannotComplete);
        if (isOfDesktop)
            focused = m_focus.focused();
        else if (const auto *process = std::get_if<pid_t>(&target->target))
            focused = m_focus.focusedOf(*process);
        return focused.map([](const AtSpiReference &object) {
            return AccessibilityValue(makeElement(object));
        });
    }

    const Result<AtSpiReference> object = objectOf(element);
    if (!object)
        return tl::unexpected(object.error());
    const auto asValue = [](const auto &value) { return AccessibilityValue(value); };
    if (attribute == roleAttribute)
        return role(*object);
    if (attribute == valueAttribute)
        return textOf(*object).content().map(asValue);
    if (attribute == selectedTextRangeAttribute)
        return textOf(*object).selection().map(asValue);
    return tl::unexpected(AccessibilityError::attributeUnsupported);
}

Accessibility::Result<void>
AtSpiAccessibility::setAttributeValue(const AccessibilityElementRef &element,
                                      const QString &attribute, const AccessibilityValue &value)
{
    const Result<AtSpiReference> object = objectOf(element);
    if (!object)
        return tl::unexpected(object.error());
    const auto *text = std::get_if<QString>(&value);
    const auto *range = std::get_if<TextRange>(&value);
    AtSpiText &target = textOf(*object);
    Result<void> result = tl::unexpected(AccessibilityError::attributeUnsupported);
    if (attribute == valueAttribute && text)
        result = target.setContent(*text);
    else if (attribute == selectedTextAttribute && text)
        result = target.replaceSelection(*text);
    else if (attribute == selectedTextRangeAttribute && range)
        result = target.setSelection(*range);
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
    const QDBusMessage role = m_bus.call(*focused, accessibleInterface, QStringLiteral("GetRole"));
    return role.arguments().value(0).toUInt() == AtSpiRole::terminal;
}

Accessibility::Result<AccessibilityValue> AtSpiAccessibility::role(const AtSpiReference &object)
{
    const QDBusMessage number = m_bus.call(object, accessibleInterface, QStringLiteral("GetRole"));
    const QDBusMessage states = m_bus.call(object, accessibleInterface, QStringLiteral("GetState"));
    if (number.type() != QDBusMessage::ReplyMessage || states.type() != QDBusMessage::ReplyMessage)
        return tl::unexpected(AccessibilityError::cannotComplete);
    QString name = AtSpiRole::attributeName(number.arguments().value(0).toUInt(),
                                            AtSpiStates::of(states));
    const bool isText = name == u"AXTextField" || name == u"AXTextArea";
    if (name.isEmpty() || (!isText && m_activeWindowTakesText && m_activeWindowTakesText()))
        return tl::unexpected(AccessibilityError::noValue);
    // A page that is not spelt out says nothing about what is in it.
    if (name == u"AXWebArea"
        && m_bus.property(object, accessibleInterface, QStringLiteral("ChildCount")) == 0)
        return tl::unexpected(AccessibilityError::noValue);
    if (name == u"AXTextField") {
        // A search field differs from others only by what pages and toolkits say of it besides.
        const QDBusMessage reply =
            m_bus.call(object, accessibleInterface, QStringLiteral("GetAttributes"));
        if (reply.signature() == u"a{ss}") {
            const auto attributes =
                qdbus_cast<QMap<QString, QString>>(reply.arguments().value(0));
            if (attributes.value(QStringLiteral("xml-roles")) == u"searchbox"
                || attributes.value(QStringLiteral("text-input-type")) == u"search")
                name = QStringLiteral("AXSearchField");
        }
    }
    return AccessibilityValue(name);
}

Accessibility::Result<AtSpiReference>
AtSpiAccessibility::objectOf(const AccessibilityElementRef &element)
{
    const auto *target = dynamic_cast<const AtSpiElement *>(element.get());
    const auto *object = target ? std::get_if<AtSpiReference>(&target->target) : nullptr;
    if (!object)
        return tl::unexpected(AccessibilityError::attributeUnsupported);
    if (m_bus.processOf(object->service) == getpid())
        return tl::unexpected(AccessibilityError::cannotComplete);
    return *object;
}

AtSpiText &AtSpiAccessibility::textOf(const AtSpiReference &object)
{
    if (!m_text || m_text->turn() != m_bus.turn() || m_text->object() != object)
        m_text.emplace(m_bus, object);
    return *m_text;
}

} // namespace Velloro
