#pragma once

#include "Core/State/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Platform/Platform.h"
#include "Views/Onboarding/ModelDownloadStepViewModel.h"
#include "Views/Shared/HotkeyRecorderViewModel.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the first-run flow: the step that is shown, and what the steps show and do. Main thread
/// only.
class OnboardingViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the onboarding window")
    Q_PROPERTY(Velloro::AppState *appState READ appState CONSTANT)
    Q_PROPERTY(Step currentStep READ currentStep NOTIFY currentStepChanged)
    /// Whether the current step lets the user continue.
    Q_PROPERTY(bool canProceed READ canProceed NOTIFY canProceedChanged)
    Q_PROPERTY(Velloro::ModelDownloadStepViewModel *download READ download CONSTANT)
    Q_PROPERTY(Velloro::HotkeyRecorderViewModel *hotkey READ hotkey CONSTANT)
    /// How a dictation is started, for the mode and the hotkey chosen.
    Q_PROPERTY(QString instruction READ instruction NOTIFY instructionChanged)
    /// What keeps a dictation from starting when the flow ends; empty when all is there.
    Q_PROPERTY(QString unfinished READ unfinished NOTIFY unfinishedChanged)
    /// Whether the desktop has a place for the program's icon.
    Q_PROPERTY(bool hasTray READ hasTray NOTIFY hasTrayChanged)
    /// Why a microphone that was asked for is not there; else empty.
    Q_PROPERTY(QString microphoneProblem READ microphoneProblem NOTIFY microphoneProblemChanged)

public:
    enum Step { Welcome, Permissions, ModelDownload, HotkeySetup, Showcase, Done };
    Q_ENUM(Step)

    /// All of these outlive the model.
    OnboardingViewModel(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                        ModelDownloadStepViewModel &download, QObject *parent = nullptr);

    [[nodiscard]] AppState *appState() const { return &m_appState; }
    [[nodiscard]] Step currentStep() const { return m_currentStep; }
    [[nodiscard]] bool canProceed() const;
    [[nodiscard]] ModelDownloadStepViewModel *download() const { return &m_download; }
    [[nodiscard]] HotkeyRecorderViewModel *hotkey() { return &m_hotkey; }
    [[nodiscard]] QString instruction() const;
    [[nodiscard]] QString unfinished() const;
    [[nodiscard]] bool hasTray() const { return m_trayHost.isPresent(); }
    [[nodiscard]] QString microphoneProblem() const;

    Q_INVOKABLE void back();
    /// The next step; from the last one, completes the flow.
    Q_INVOKABLE void proceed();
    /// Asks for the window to be closed.
    Q_INVOKABLE void close() { Q_EMIT dismissRequested(); }
    /// The permissions step is shown.
    Q_INVOKABLE void checkPermissions();
    Q_INVOKABLE void requestMicrophonePermission();
    Q_INVOKABLE void requestAccessibilityPermission();

Q_SIGNALS:
    void currentStepChanged();
    void canProceedChanged();
    void instructionChanged();
    void unfinishedChanged();
    void hasTrayChanged();
    void microphoneProblemChanged();
    void dismissRequested();

private:
    void setCurrentStep(int step);
    /// Whether a press of the hotkey finds a model to work with.
    [[nodiscard]] bool hasModel() const;

    AppState &m_appState;
    HotkeyManager &m_hotkeyManager;
    ModelDownloadStepViewModel &m_download;
    TrayHost &m_trayHost;
    HotkeyRecorderViewModel m_hotkey;
    Step m_currentStep = Welcome;
    bool m_hasAskedForMicrophone = false;
};

} // namespace Velloro
