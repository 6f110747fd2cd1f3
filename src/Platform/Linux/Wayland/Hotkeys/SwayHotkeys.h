#pragma once

#include "Platform/Linux/HeldKey.h"
#include "Platform/Linux/Wayland/Hotkeys/DesktopHotkeys.h"
#include "Platform/Linux/Wayland/Sway/SwaySocket.h"

#include <optional>

namespace Velloro {

class WaylandKeymap;

/// The hotkey as two key bindings of sway, made over its socket: one for the press and one for the
/// release. They do nothing in sway; it tells of them as events.
///
/// They are bound by place, so the layout does not matter, and in sway's default mode. The user's
/// configuration stays as it is; what it binds itself is taken. A reload of it removes them, and
/// they are bound again. When another key goes down while the combination is held, sway tells of
/// no release: it is made up for with the next press.
class SwayHotkeys final : public DesktopHotkeys
{
    Q_OBJECT

public:
    /// The socket is the one of this path, or that of the environment.
    explicit SwayHotkeys(std::shared_ptr<const WaylandKeymap> keymap, QString socketPath = {});
    /// Gives the combination back, for which sway is waited for shortly.
    ~SwayHotkeys() override;

    void look(std::function<void(bool isOffered)> done) override;
    void bind(KeyCombination combination) override;
    void unbind() override;
    [[nodiscard]] std::shared_ptr<void> letShortcutsThrough() override;

private:
    void handleEvent(SwaySocket::Event event, const QJsonObject &content);
    void handleBinding(const QString &command);
    void handleReload();
    void handleKeymap();
    /// Binds what is wanted unless the user's configuration does.
    void bindUnlessTaken();
    void bindNow();
    [[nodiscard]] bool isTaken(const QString &config) const;
    void endPress();
    /// Has sway remove what is bound, if anything is.
    void sendUnbind(const SwaySocket::Reply &done = {});

    std::shared_ptr<const WaylandKeymap> m_keymap;
    QString m_socketPath;
    std::unique_ptr<SwaySocket> m_socket;
    /// Where the main file of the configuration is.
    QString m_configFolder;
    std::optional<KeyCombination> m_wanted;
    /// Counts what was wanted, so that an answer to something older is recognised.
    int m_wantedNumber = 0;
    /// What is bound, as sway writes it; empty for nothing.
    QByteArray m_bound;
    HeldKey m_key;
};

} // namespace Velloro
