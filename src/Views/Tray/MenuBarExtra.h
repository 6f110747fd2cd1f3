#pragma once

#include "Core/State/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Platform/Platform.h"
#include "Views/Tray/MenuBarViewModel.h"
#include "Views/Windows/FramelessView.h"
#include "Views/Windows/ViewEngine.h"

#include <QElapsedTimer>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>
#include <memory>

namespace Velloro {

/// The program's permanent presence: an icon in the tray that follows the dictation state, and the
/// panel that it opens beside itself. Main thread only.
class MenuBarExtra : public QObject
{
    Q_OBJECT

public:
    /// All of these outlive it.
    MenuBarExtra(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                 ViewEngine &engine, QObject *parent = nullptr);
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
    void makeIcon();
    void updateIcon();
    void updateMenu();
    void activated(QSystemTrayIcon::ActivationReason reason);
    void makePanel();
    [[nodiscard]] QRect cornerOfScreen() const;
    void openPanelBeside(const QRect &anchor);
    void placePanel();
    /// Where the desktop places windows itself, those that can't be made larger are left as they
    /// are, and others may get half of the screen.
    void fixPanelSize();
    void closeWithoutFocus();

    AppState &m_appState;
    ViewEngine &m_engine;
    TrayHost &m_trayHost;
    ScreenFrames &m_screenFrames;
    MenuBarViewModel m_model;
    QMenu m_menu;
    /// Null until the desktop has a tray.
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
    std::unique_ptr<FramelessView> m_panel;
    /// Runs while an open panel is without the focus.
    QTimer m_focusLoss;
    /// Since that closed the panel: a click on the icon takes the focus away first.
    QElapsedTimer m_closedByFocus;
    /// What the panel was opened beside: its icon, or where the user clicked it, or a corner of the
    /// screen.
    QRect m_anchor;
};

} // namespace Velloro
