#include "Platform/Linux/AtSpiStates.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QList>

namespace Velloro {

AtSpiStates AtSpiStates::of(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"au")
        return {};
    const auto words = qdbus_cast<QList<uint>>(reply.arguments().value(0));
    return words.isEmpty() ? AtSpiStates() : AtSpiStates(words.first());
}

} // namespace Velloro
