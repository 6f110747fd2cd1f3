#include "AppDelegate.h"

#include "Base/Log.h"

#include <QGuiApplication>
#include <QTimer>
#include <QWindow>

using namespace std::chrono_literals;

namespace Velloro {

AppDelegate::AppDelegate(Platform &platform, DictationController::PillFactory makePill,
                         const QString &repositoryBaseUrl, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_makePill(std::move(makePill))
    , m_appState(platform, repositoryBaseUrl)
{
    m_platform.updater->start();
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    // A program of the tray only: it continues to run without any window.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    setupDictation();
    if (const auto refreshed = m_platform.loginItem->refresh(); !refreshed) {
        Log::line(u"Failed to set launch at login: "_qs + refreshed.error().localizedDescription);
    }
    QTimer::singleShot(500ms, this, &AppDelegate::bringOnboardingToFront);
}

void AppDelegate::setupDictation()
{
    if (m_dictationController)
        return;
    m_dictationController
        = std::make_unique<DictationController>(m_appState, m_platform, m_makePill);
    m_dictationController->hotkeyManager().registerHotkey();
    m_dictationController->updatePermissionStatus();
    m_appState.whisperManager().refreshModelStates();
    m_dictationController->updateAppStateFromWhisperManager();

    m_presetModelLoader = std::make_unique<PresetModelLoader>(m_appState, *m_dictationController);
    m_presetModelLoader->loadAtLaunch();
}

void AppDelegate::bringOnboardingToFront()
{
    if (m_appState.hasCompletedOnboarding())
        return;
    const QWindowList windows = QGuiApplication::topLevelWindows();
    const auto onboarding = std::find_if(windows.begin(), windows.end(), [](const QWindow *window) {
        return window->title() == QStringLiteral("Welcome to Velloro");
    });
    if (onboarding == windows.end())
        return;
    (*onboarding)->show();
    (*onboarding)->raise();
    (*onboarding)->requestActivate();
}

void AppDelegate::applicationShouldTerminate()
{
    cleanUp();
}

void AppDelegate::applicationWillTerminate()
{
    cleanUp();
}

void AppDelegate::cleanUp()
{
    if (m_dictationController) {
        m_dictationController->hotkeyManager().unregisterHotkey();
        m_appState.whisperManager().unloadModel();
    }
    m_presetModelLoader.reset();
    m_dictationController.reset();
    HotkeyManager::shared().cleanup();
}

} // namespace Velloro
