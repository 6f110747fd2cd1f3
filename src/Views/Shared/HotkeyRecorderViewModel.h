#pragma once

#include "Managers/HotkeyManager.h"
#include "Platform/KeyEventMonitor.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <memory>

namespace Velloro {

/// Behind a control with which the user replaces the hotkey: shows the current combination and,
/// while it records, takes the next key with the held modifiers. One per control. Main thread only.
class HotkeyRecorderViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the pane's model")
    /// While true the hotkey is paused.
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    /// The modifiers that are held while recording.
    Q_PROPERTY(QString tempDisplayString READ tempDisplayString NOTIFY tempDisplayStringChanged)
    /// The combination in force, or the one that was asked for and is unavailable.
    Q_PROPERTY(QString displayString READ displayString NOTIFY displayStringChanged)
    /// Why the combination does not work, or why the last key is none, and what to do; else empty.
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)

public:
    /// Both outlive the model.
    HotkeyRecorderViewModel(HotkeyManager &hotkeyManager, KeyEventMonitor &keyEventMonitor,
                            QObject *parent = nullptr);
    ~HotkeyRecorderViewModel() override;

    [[nodiscard]] bool isRecording() const { return m_monitor != nullptr; }
    [[nodiscard]] const QString &tempDisplayString() const { return m_tempDisplayString; }
    [[nodiscard]] QString displayString() const { return m_hotkeyManager.hotkeyDisplayString(); }
    [[nodiscard]] QString problem() const;

    /// The button was clicked: starts recording, or ends it without change.
    Q_INVOKABLE void toggle();
    /// Ends recording without change; harmless when it is not going on.
    Q_INVOKABLE void stop();

Q_SIGNALS:
    void isRecordingChanged();
    void tempDisplayStringChanged();
    void displayStringChanged();
    void problemChanged();

private:
    void start();
    bool handle(const KeyEvent &event);
    void accept(uint32_t keyCode, uint32_t modifiers);
    void setIsKeyRefused(bool refused);
    void setTempDisplayString(const QString &text);

    HotkeyManager &m_hotkeyManager;
    KeyEventMonitor &m_keyEventMonitor;
    std::unique_ptr<KeyEventMonitor::Monitor> m_monitor;
    QString m_tempDisplayString;
    /// The last key came with a modifier that no combination can have.
    bool m_isKeyRefused = false;
};

} // namespace Velloro
