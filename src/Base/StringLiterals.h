#pragma once

#include <QString>

namespace Velloro {

/// `u"text"_s` is a QString and `"text"_L1` a Latin-1 view, neither of them made at run time.
using namespace Qt::StringLiterals;

} // namespace Velloro
