#pragma once

#include "Platform/Linux/Wayland/Clipboard/DataOffer.h"
#include "Platform/Linux/Wayland/Clipboard/DataSource.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <QList>
#include <QObject>
#include <memory>

namespace Velloro {

/// The selections of a compositor that lets a program have them without the keyboard's focus, by
/// whichever of the two protocols it speaks.
class DataControl : public QObject
{
    Q_OBJECT

public:
    enum class Selection { clipboard, primary };
    Q_ENUM(Selection)

    /// Null where the compositor lets nobody. The connection outlives this.
    [[nodiscard]] static std::unique_ptr<DataControl> make(WaylandConnection &connection);
    /// Whether `make` would make one.
    [[nodiscard]] static bool isOffered(const WaylandConnection &connection);

    /// What is there, this program's own sources included; null where nothing is, or the compositor
    /// has no such selection.
    [[nodiscard]] virtual std::shared_ptr<DataOffer> offer(Selection selection) const = 0;
    /// Puts something there. Null when the compositor has no such selection.
    [[nodiscard]] virtual std::unique_ptr<DataSource>
    put(Selection selection, const QList<QByteArray> &mimeTypes, DataSource::Owner owner) = 0;

Q_SIGNALS:
    /// Something else is there, this program's own sources included.
    void changed(Velloro::DataControl::Selection selection);
};

} // namespace Velloro
