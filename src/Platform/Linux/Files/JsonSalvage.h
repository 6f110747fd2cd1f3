#pragma once

#include <QByteArray>
#include <QJsonObject>

namespace Velloro {

/// The members that are whole in the text of a JSON object that is not: it breaks off, has a comma,
/// a quotation mark or a bracket too few or too many, bytes that are no text, numbers beyond all
/// range. A member that can't be told for sure is left out; of two of a name, the later one counts.
/// Empty where the text does not begin as an object does.
[[nodiscard]] QJsonObject salvageJsonMembers(const QByteArray &text);

} // namespace Velloro
