#pragma once

#include "Core/State/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Views/Tray/EnhancedModelRowViewModel.h"

#include <QList>
#include <QObject>
#include <QQmlListProperty>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// What the panel shows and does. Main thread only.
class MenuBarViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the menu bar extra")
    Q_PROPERTY(QString stateText READ stateText NOTIFY stateTextChanged)
    Q_PROPERTY(QString hotkeyText READ hotkeyText NOTIFY hotkeyTextChanged)
    /// Why the hotkey does not work, and what to do; else empty.
    Q_PROPERTY(QString hotkeyProblem READ hotkeyProblem NOTIFY hotkeyTextChanged)
    Q_PROPERTY(QString recordingModeText READ recordingModeText NOTIFY recordingModeTextChanged)
    /// One per preset.
    Q_PROPERTY(QQmlListProperty<Velloro::EnhancedModelRowViewModel> rows READ rowList CONSTANT)

public:
    /// All of these outlive the model.
    MenuBarViewModel(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                     QObject *parent = nullptr);

    [[nodiscard]] QString stateText() const;
    [[nodiscard]] QString hotkeyText() const;
    [[nodiscard]] QString hotkeyProblem() const;
    [[nodiscard]] QString recordingModeText() const;
    [[nodiscard]] const QList<EnhancedModelRowViewModel *> &rows() const { return m_rows; }

    /// Tells how to open the panel on a desktop without a tray: once per user, and again at the
    /// next start when the desktop did not accept the notification.
    void tellOfMissingTray();

    /// Asks for the settings window.
    Q_INVOKABLE void openSettings();
    /// Asks for the end of the program, 0.1 s from now.
    Q_INVOKABLE void quit();
    /// Asks for the panel to be closed.
    Q_INVOKABLE void close();

Q_SIGNALS:
    void stateTextChanged();
    void hotkeyTextChanged();
    void recordingModeTextChanged();
    void openSettingsRequested();
    void quitRequested();
    void closeRequested();

private:
    [[nodiscard]] QQmlListProperty<EnhancedModelRowViewModel> rowList() { return {this, &m_rows}; }

    Platform &m_platform;
    AppState &m_appState;
    HotkeyManager &m_hotkeyManager;
    QList<EnhancedModelRowViewModel *> m_rows;
};

} // namespace Velloro
