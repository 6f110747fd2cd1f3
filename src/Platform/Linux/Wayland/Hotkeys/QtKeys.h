#pragma once

#include "Platform/KeyCombination.h"

#include <QList>
#include <xkbcommon/xkbcommon.h>

namespace Velloro {

class WaylandKeymap;

/// Key combinations by the toolkit's numbers, which name keys by what they give, not by their
/// place: modifiers and key in one integer.
namespace QtKeys {

/// The toolkit's number of a key that gives this keysym; 0 where it has none.
[[nodiscard]] int key(xkb_keysym_t keysym);

/// What the combination is in each of the layouts, without doublets; the first layout comes first.
[[nodiscard]] QList<int> combinations(KeyCombination combination, const WaylandKeymap &keymap);

} // namespace QtKeys
} // namespace Velloro
