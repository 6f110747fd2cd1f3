#pragma once

#include "Managers/PermissionsManager.h"
#include "Views/PermissionHelpModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// The privacy pane. Main thread only.
class PrivacySettingsModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings window")
    Q_PROPERTY(bool hasMicrophonePermission READ hasMicrophonePermission
                   NOTIFY hasMicrophonePermissionChanged)
    Q_PROPERTY(bool hasAccessibilityPermission READ hasAccessibilityPermission
                   NOTIFY hasAccessibilityPermissionChanged)
    /// What the help window shows, where the desktop has no page of its own.
    Q_PROPERTY(Velloro::PermissionHelpModel *help READ help CONSTANT)

public:
    /// Both outlive the model.
    PrivacySettingsModel(Platform &platform, AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] bool hasMicrophonePermission() const;
    [[nodiscard]] bool hasAccessibilityPermission() const;
    [[nodiscard]] PermissionHelpModel *help() { return &m_help; }

    /// Leads to the settings page of the permission, or to the help window.
    Q_INVOKABLE void enableMicrophone();
    Q_INVOKABLE void enableAccessibility();
    Q_INVOKABLE void clearHistory();

Q_SIGNALS:
    void hasMicrophonePermissionChanged();
    void hasAccessibilityPermissionChanged();

private:
    AppState &m_appState;
    PermissionsManager m_permissionsManager;
    PermissionHelpModel m_help;
};

} // namespace Velloro
