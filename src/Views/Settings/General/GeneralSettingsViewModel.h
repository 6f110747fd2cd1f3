#pragma once

#include "Views/Shared/HotkeyRecorderViewModel.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the general pane: the hotkey and the texts of what is chosen from. The choices themselves
/// are properties of the application state. Main thread only.
class GeneralSettingsViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings' model")
    Q_PROPERTY(Velloro::HotkeyRecorderViewModel *hotkey READ hotkey CONSTANT)
    /// What the hotkey does not do on this desktop; empty where it does everything.
    Q_PROPERTY(QString hotkeyLimits READ hotkeyLimits NOTIFY hotkeyLimitsChanged)
    /// The texts of all modes and languages, in the order of their cases.
    Q_PROPERTY(QList<QString> recordingModes READ recordingModes CONSTANT)
    Q_PROPERTY(QList<QString> languages READ languages CONSTANT)

public:
    /// Both outlive the model.
    GeneralSettingsViewModel(HotkeyManager &hotkeyManager, KeyEventMonitor &keyEventMonitor,
                             QObject *parent = nullptr);

    [[nodiscard]] HotkeyRecorderViewModel *hotkey() { return &m_hotkey; }
    [[nodiscard]] QString hotkeyLimits() const;
    [[nodiscard]] static QStringList recordingModes();
    /// The languages' names with their hints.
    [[nodiscard]] static QStringList languages();

Q_SIGNALS:
    void hotkeyLimitsChanged();

private:
    HotkeyManager &m_hotkeyManager;
    HotkeyRecorderViewModel m_hotkey;
};

} // namespace Velloro
