#pragma once

#include "Core/State/AppState.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// What the user can do for a permission where the desktop has no settings page for it. Main
/// thread only.
class PermissionHelpViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings' model")
    /// Whether the help is wanted.
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString symbol READ symbol NOTIFY changed)
    Q_PROPERTY(QString explanation READ explanation NOTIFY changed)
    Q_PROPERTY(QStringList steps READ steps NOTIFY changed)
    /// The name of what `act` does.
    Q_PROPERTY(QString actionText READ actionText NOTIFY changed)
    Q_PROPERTY(bool isGranted READ isGranted NOTIFY changed)

public:
    /// `appState` outlives the model.
    explicit PermissionHelpViewModel(AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString symbol() const;
    [[nodiscard]] QString explanation() const;
    [[nodiscard]] QStringList steps() const;
    [[nodiscard]] QString actionText() const;
    [[nodiscard]] bool isGranted() const;

    /// Opens the desktop's page for the permission, or this help where there is none.
    Q_INVOKABLE void enableMicrophone() { openSettingsPage(SettingsPage::microphone); }
    Q_INVOKABLE void enableAccessibility() { openSettingsPage(SettingsPage::accessibility); }
    void openSettingsPage(SettingsPage page);
    /// Looks for the microphone again, or switches accessibility on.
    Q_INVOKABLE void act();
    Q_INVOKABLE void close();

Q_SIGNALS:
    void changed();

private:
    AppState &m_appState;
    SettingsPage m_page = SettingsPage::microphone;
    bool m_isOpen = false;
};

} // namespace Velloro
