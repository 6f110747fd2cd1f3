#pragma once

#include "Platform/Platform.h"

#include <QObject>
#include <QTimer>

namespace Velloro {

/// The checks of the two permissions, their requests and their settings pages. The flags
/// themselves are the application state's, which owns the manager. Main thread only.
class PermissionsManager : public QObject
{
    Q_OBJECT

public:
    /// `platform` outlives the manager.
    explicit PermissionsManager(Platform &platform, QObject *parent = nullptr);

    /// Reports both permissions as the platform has them now, before it returns.
    void check();
    /// Asks for the microphone; the answer is reported when it comes.
    void requestMicrophone();
    /// Asks for accessibility and then looks once a second, without a limit, until it is granted.
    void requestAccessibility();
    /// Opens the desktop's settings; false when it has no such page.
    bool openSettingsPage(SettingsPage page);

Q_SIGNALS:
    void microphoneChecked(bool isGranted);
    void accessibilityChecked(bool isGranted);

private:
    void poll();

    Platform &m_platform;
    QTimer m_accessibilityTimer;
};

} // namespace Velloro
