#pragma once

#include "Core/AppState.h"

#include <QObject>
#include <QTimer>

namespace Velloro {

/// The checks of the two permissions, their requests and their settings pages. The flags
/// themselves are the application state's. Main thread only.
class PermissionsManager : public QObject
{
    Q_OBJECT

public:
    /// Both outlive the manager.
    PermissionsManager(Platform &platform, AppState &appState, QObject *parent = nullptr);

    /// Sets both flags to what the platform says now.
    void check();
    /// Asks for the microphone; the flag takes the answer when it comes.
    void requestMicrophone();
    /// Asks for accessibility and then looks once a second, without a limit, until it is granted.
    void requestAccessibility();
    /// Opens the desktop's settings; false when it has no such page.
    bool openSettingsPage(SettingsPage page);

private:
    void poll();

    Platform &m_platform;
    AppState &m_appState;
    QTimer m_accessibilityTimer;
};

} // namespace Velloro
