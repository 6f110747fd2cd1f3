#pragma once

#include "Views/Settings/Privacy/PermissionHelpViewModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// The privacy pane. Main thread only.
class PrivacySettingsViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings window")
    Q_PROPERTY(bool hasMicrophonePermission READ hasMicrophonePermission NOTIFY
                   hasMicrophonePermissionChanged)
    Q_PROPERTY(bool hasAccessibilityPermission READ hasAccessibilityPermission NOTIFY
                   hasAccessibilityPermissionChanged)
    /// What the help window shows, where the desktop has no page of its own.
    Q_PROPERTY(Velloro::PermissionHelpViewModel *help READ help CONSTANT)

public:
    /// `appState` outlives the model.
    explicit PrivacySettingsViewModel(AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] bool hasMicrophonePermission() const;
    [[nodiscard]] bool hasAccessibilityPermission() const;
    [[nodiscard]] PermissionHelpViewModel *help() { return &m_help; }

    /// Leads to the settings page of the permission, or to the help window.
    Q_INVOKABLE void enableMicrophone();
    Q_INVOKABLE void enableAccessibility();
    Q_INVOKABLE void clearHistory();

Q_SIGNALS:
    void hasMicrophonePermissionChanged();
    void hasAccessibilityPermissionChanged();

private:
    AppState &m_appState;
    PermissionHelpViewModel m_help;
};

} // namespace Velloro
