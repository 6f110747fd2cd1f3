#pragma once

#include "Core/AppState.h"

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

namespace Velloro {

/// The program's permanent presence: an icon in the tray that follows the dictation state, and
/// its menu.
class MenuBarExtra : public QObject
{
    Q_OBJECT

public:
    explicit MenuBarExtra(AppState &appState, QObject *parent = nullptr);

    /// Shows the icon; where the desktop has no tray yet, as soon as one comes.
    void show();

Q_SIGNALS:
    /// The user chose "Quit".
    void quitRequested();

private:
    void updateIcon();

    AppState &m_appState;
    QMenu m_menu;
    QSystemTrayIcon m_trayIcon;
};

} // namespace Velloro
