#include "Managers/PermissionsManager.h"

#include <QCoreApplication>
#include <QPointer>

using namespace std::chrono_literals;

namespace Velloro {

PermissionsManager::PermissionsManager(Platform &platform, AppState &appState, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_appState(appState)
{
    m_accessibilityTimer.setInterval(1s);
    connect(&m_accessibilityTimer, &QTimer::timeout, this, &PermissionsManager::poll);
}

void PermissionsManager::check()
{
    m_appState.setHasMicrophonePermission(m_platform.captureAuthorization->authorizationStatus()
                                          == AuthorizationStatus::authorized);
    m_appState.setHasAccessibilityPermission(m_platform.accessibility->isProcessTrusted());
}

void PermissionsManager::requestMicrophone()
{
    // The answer may come on another thread, and when this manager is gone.
    m_platform.captureAuthorization->requestAccess(
        [appState = QPointer<AppState>(&m_appState), context = QPointer<QCoreApplication>(qApp)](
            bool granted) {
            if (!context)
                return;
            QMetaObject::invokeMethod(
                context,
                [appState, granted] {
                    if (appState)
                        appState->setHasMicrophonePermission(granted);
                },
                Qt::QueuedConnection);
        });
}

void PermissionsManager::requestAccessibility()
{
    m_platform.accessibility->requestTrust();
    m_accessibilityTimer.start();
}

bool PermissionsManager::openSettingsPage(SettingsPage page)
{
    return m_platform.systemSettings->openPage(page);
}

void PermissionsManager::poll()
{
    if (!m_platform.accessibility->isProcessTrusted())
        return;
    m_appState.setHasAccessibilityPermission(true);
    m_accessibilityTimer.stop();
}

} // namespace Velloro
