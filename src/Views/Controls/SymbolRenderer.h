#pragma once

#include <QBrush>
#include <QIcon>
#include <QImage>
#include <QStringList>

namespace Velloro {

/// Draws the program's symbols in any colour. Main thread only.
///
/// A symbol is one colour in two opacities: its base stands back, less so in monochrome. What is
/// marked on a filled shape is cut out of it (monochrome), or stands in full before the dimmed
/// shape (hierarchical).
namespace SymbolRenderer {

enum class Rendering { monochrome, hierarchical };

/// The names of all symbols, sorted.
[[nodiscard]] QStringList names();

/// The symbol in a square of `pixels` device pixels; transparent, with one logged line, when there
/// is no such symbol. The brush's coordinates are those of the square.
[[nodiscard]] QImage image(const QString &name, int pixels, const QBrush &brush,
                           Rendering rendering = Rendering::monochrome);

/// The symbol as an icon in one colour, at all the common sizes, hierarchical.
[[nodiscard]] QIcon icon(const QString &name, const QColor &color);

} // namespace SymbolRenderer
} // namespace Velloro
