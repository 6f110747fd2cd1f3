#include "Platform/Linux/Accessibility/AtSpiStates.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QList>

namespace Velloro {

AtSpiStates AtSpiStates::of(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"au")
        return {};
    const auto words = qdbus_cast<QList<uint>>(reply.arguments().value(0));
    return AtSpiStates(words.value(0) | static_cast<uint64_t>(words.value(1)) << 32U);
}

} // namespace Velloro
