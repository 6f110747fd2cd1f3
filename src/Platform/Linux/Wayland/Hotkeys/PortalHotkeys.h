#pragma once

#include "Platform/Linux/HeldKey.h"
#include "Platform/Linux/Wayland/Hotkeys/DesktopHotkeys.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QHash>
#include <QVariantMap>
#include <optional>

namespace Velloro {

class WaylandKeymap;

/// The hotkey as a global shortcut of the desktop portal, which asks the user for it.
///
/// A session whose end the portal tells is made anew, once, and so is that of a portal that was
/// started again. Once a dialog is declined nothing is asked for until another combination is.
class PortalHotkeys final : public DesktopHotkeys
{
    Q_OBJECT

public:
    /// The portal knows its callers by their connection; `bus` is used for nothing else.
    PortalHotkeys(std::shared_ptr<const WaylandKeymap> keymap, const QDBusConnection &bus);
    ~PortalHotkeys() override;

    void look(std::function<void(bool isOffered)> done) override;
    void bind(KeyCombination combination) override;
    void unbind() override;

    /// The combination as the portal takes it: "CTRL+ALT+space".
    [[nodiscard]] static QString trigger(KeyCombination combination, const WaylandKeymap &keymap);

private Q_SLOTS:
    void requestAnswered(const QDBusMessage &message);
    void sessionClosed(const QDBusMessage &message);
    void shortcutActivated(const QDBusMessage &message);
    void shortcutDeactivated(const QDBusMessage &message);
    void ownerChanged(const QString &name, const QString &before, const QString &now);

private:
    /// What the portal's answer to a request says: 0 for done, 1 where the user declined.
    using Answer = std::function<void(uint code, const QVariantMap &results)>;

    /// Has the portal know the program by its name, where it can.
    void introduce();
    void createSession();
    void bindShortcuts();
    /// Calls a method, the last argument of which are `options`, and hands over the answer to the
    /// request that it begins.
    void request(const QString &method, QVariantList arguments, QVariantMap options,
                 const Answer &answer);
    void answer(const QString &path, uint code, const QVariantMap &results);
    [[nodiscard]] bool isOurs(const QDBusMessage &message) const;
    void forgetSession();
    void endPress();

    std::shared_ptr<const WaylandKeymap> m_keymap;
    QDBusConnection m_bus;
    std::optional<KeyCombination> m_wanted;
    /// The object of the session; empty while there is none.
    QString m_session;
    /// Who waits for the answer to a request, by its object.
    QHash<QString, Answer> m_requests;
    int m_lastRequest = 0;
    /// The session was closed, and the one after it has yet to show that it serves.
    bool m_isSecondTry = false;
    HeldKey m_key;
};

} // namespace Velloro
