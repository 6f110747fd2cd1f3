#pragma once

#include "Core/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Platform/UserNotifications.h"
#include "Views/FramelessView.h"
#include "Views/MenuBarModel.h"
#include "Views/ViewEngine.h"

#include <QElapsedTimer>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <memory>

namespace Velloro {

/// The program's permanent presence: an icon in the tray that follows the dictation state, and the
/// panel that it opens beside itself. Main thread only.
class MenuBarExtra : public QObject
{
    Q_OBJECT

public:
    /// All of these outlive it.
    MenuBarExtra(AppState &appState, HotkeyManager &hotkeyManager, ViewEngine &engine,
                 UserNotifications &userNotifications, QObject *parent = nullptr);
    ~MenuBarExtra() override;

    /// Shows the icon; where the desktop has no tray yet, as soon as one comes. If none has come
    /// after some seconds, a notification says, once per user, how to open the panel.
    void show();
    /// Opens the panel, or brings it to the front.
    void openPanel();
    void closePanel();

    /// The panel's window; null until it is first opened.
    [[nodiscard]] QQuickWindow *panel() const { return m_panel.get(); }

    /// The symbol of a state.
    [[nodiscard]] static QString symbolName(TranscriptionState state);

Q_SIGNALS:
    /// The user chose "Settings...".
    void openSettingsRequested();
    /// The user chose "Quit".
    void quitRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void updateIcon();
    void activated(QSystemTrayIcon::ActivationReason reason);
    void makePanel();
    void placePanel();
    void tellOfMissingTray();

    AppState &m_appState;
    ViewEngine &m_engine;
    UserNotifications &m_userNotifications;
    MenuBarModel m_model;
    QMenu m_menu;
    QSystemTrayIcon m_trayIcon;
    std::unique_ptr<FramelessView> m_panel;
    /// Since the panel lost the focus: a click on the icon takes it away first.
    QElapsedTimer m_closedByFocus;
    /// Where the user clicked the icon; null when the panel was opened otherwise.
    std::optional<QPoint> m_clickPosition;
};

} // namespace Velloro
