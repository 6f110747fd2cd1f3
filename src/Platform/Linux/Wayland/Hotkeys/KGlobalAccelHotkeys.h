#pragma once

#include "Platform/Linux/HeldKey.h"
#include "Platform/Linux/Wayland/Hotkeys/DesktopHotkeys.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <optional>

namespace Velloro {

class WaylandKeymap;

/// The hotkey as a global shortcut of KDE, which the user also sees in the system's settings.
///
/// KDE names keys by what they give, so the combination is asked for as each layout has it. It
/// repeats the press while the key is held, and ends the hold as soon as any other key goes down or
/// up, those that this program sends included.
class KGlobalAccelHotkeys final : public DesktopHotkeys
{
    Q_OBJECT

public:
    KGlobalAccelHotkeys(std::shared_ptr<const WaylandKeymap> keymap, const QDBusConnection &bus);
    /// Gives the combination back, for which KDE is waited for shortly.
    ~KGlobalAccelHotkeys() override;

    void look(std::function<void(bool isOffered)> done) override;
    void bind(KeyCombination combination) override;
    void unbind() override;
    [[nodiscard]] std::shared_ptr<void> letShortcutsThrough() override;

private Q_SLOTS:
    void shortcutPressed(const QDBusMessage &message);
    void shortcutReleased(const QDBusMessage &message);
    void ownerChanged(const QString &name, const QString &before, const QString &now);

private:
    void bindWanted();
    void block(bool isBlocked);
    void endPress();

    std::shared_ptr<const WaylandKeymap> m_keymap;
    QDBusConnection m_bus;
    std::optional<KeyCombination> m_wanted;
    /// Counts what was asked for, so that an answer to something older is recognised.
    int m_requestNumber = 0;
    HeldKey m_key;
};

} // namespace Velloro
