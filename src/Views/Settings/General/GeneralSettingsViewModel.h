#pragma once

#include "Core/State/AppState.h"
#include "Views/Shared/HotkeyRecorderViewModel.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the general pane: the choices that are enumerations. The switches are properties of the
/// application state itself. Main thread only.
class GeneralSettingsViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings' model")
    /// The `AppState`.
    Q_PROPERTY(QObject *appState READ appState CONSTANT)
    Q_PROPERTY(Velloro::HotkeyRecorderViewModel *hotkey READ hotkey CONSTANT)
    Q_PROPERTY(QStringList recordingModes READ recordingModes CONSTANT)
    Q_PROPERTY(int recordingModeIndex READ recordingModeIndex WRITE setRecordingModeIndex NOTIFY
                   recordingModeIndexChanged)
    Q_PROPERTY(QStringList languages READ languages CONSTANT)
    Q_PROPERTY(
        int languageIndex READ languageIndex WRITE setLanguageIndex NOTIFY languageIndexChanged)

public:
    /// All of these outlive the model.
    GeneralSettingsViewModel(AppState &appState, HotkeyManager &hotkeyManager,
                             KeyEventMonitor &keyEventMonitor, QObject *parent = nullptr);

    [[nodiscard]] QObject *appState() const { return &m_appState; }
    [[nodiscard]] HotkeyRecorderViewModel *hotkey() { return &m_hotkey; }
    [[nodiscard]] static QStringList recordingModes();
    [[nodiscard]] int recordingModeIndex() const;
    void setRecordingModeIndex(int index);
    /// The languages' names with their hints.
    [[nodiscard]] static QStringList languages();
    [[nodiscard]] int languageIndex() const;
    void setLanguageIndex(int index);

Q_SIGNALS:
    void recordingModeIndexChanged();
    void languageIndexChanged();

private:
    AppState &m_appState;
    HotkeyRecorderViewModel m_hotkey;
};

} // namespace Velloro
