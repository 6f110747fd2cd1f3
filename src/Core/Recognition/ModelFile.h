#pragma once

#include <QString>

namespace Velloro {

/// What can be told about a model file without loading it.
namespace ModelFile {

/// Whether the file can be read and does not begin as a ggml speech model.
[[nodiscard]] bool isForeign(const QString &path);

/// Whether the file begins as a ggml speech model but does not have the shape of one, as after an
/// interrupted copy or download, or says things of itself that contradict each other. The library,
/// which refuses everything else by itself, does not notice this or ends the process over it. Reads
/// little more than the headers of the tensors.
[[nodiscard]] bool isDamaged(const QString &path);

} // namespace ModelFile
} // namespace Velloro
