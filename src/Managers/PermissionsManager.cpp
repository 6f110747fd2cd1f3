#include "Managers/PermissionsManager.h"

#include <QCoreApplication>
#include <QPointer>

using namespace std::chrono_literals;

namespace Velloro {

PermissionsManager::PermissionsManager(Platform &platform, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
{
    m_accessibilityTimer.setInterval(1s);
    connect(&m_accessibilityTimer, &QTimer::timeout, this, &PermissionsManager::poll);
}

void PermissionsManager::check()
{
    Q_EMIT microphoneChecked(m_platform.captureAuthorization->authorizationStatus()
                             == AuthorizationStatus::authorized);
    Q_EMIT accessibilityChecked(m_platform.accessibility->isProcessTrusted());
}

void PermissionsManager::requestMicrophone()
{
    // The answer may come on another thread, and when this manager is gone.
    m_platform.captureAuthorization->requestAccess(
        [manager = QPointer<PermissionsManager>(this),
         context = QPointer<QCoreApplication>(qApp)](bool isGranted) {
            if (!context)
                return;
            QMetaObject::invokeMethod(
                context,
                [manager, isGranted] {
                    if (manager)
                        Q_EMIT manager->microphoneChecked(isGranted);
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
    Q_EMIT accessibilityChecked(true);
    m_accessibilityTimer.stop();
}

} // namespace Velloro
