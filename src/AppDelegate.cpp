#include "AppDelegate.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"

#include <QGuiApplication>
#include <QTimer>
#include <QWindow>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

void logFailure(const LoginItem::Result &result)
{
    if (!result)
        Log::line(u"Failed to set launch at login: "_s + result.error().localizedDescription);
}

} // namespace

AppDelegate::AppDelegate(Platform &platform, HotkeyManager &hotkeyManager,
                         DictationController::PillFactory makePill,
                         const QString &repositoryBaseUrl, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_hotkeyManager(hotkeyManager)
    , m_makePill(std::move(makePill))
    , m_appState(platform, repositoryBaseUrl)
{
    connect(&m_appState, &AppState::launchAtLoginChanged, this, &AppDelegate::followLaunchAtLogin);
    m_platform.updater->start();
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    // A program of the tray only: it continues to run without any window.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    setupDictation();
    logFailure(m_platform.loginItem->refresh());
    QTimer::singleShot(500ms, this, &AppDelegate::bringOnboardingToFront);
}

void AppDelegate::setupDictation()
{
    if (m_dictationController)
        return;
    m_dictationController = std::make_unique<DictationController>(m_appState, m_platform,
                                                                  m_hotkeyManager, m_makePill);
    m_hotkeyManager.registerHotkey();
    m_dictationController->updatePermissionStatus();
    m_appState.whisperManager().refreshModelStates();
    m_dictationController->updateAppStateFromWhisperManager();

    m_presetModelLoader = std::make_unique<PresetModelLoader>(m_appState, *m_dictationController);
    m_presetModelLoader->loadAtLaunch();
}

void AppDelegate::followLaunchAtLogin()
{
    LoginItem &loginItem = *m_platform.loginItem;
    logFailure(m_appState.launchAtLogin() ? loginItem.registerItem() : loginItem.unregisterItem());
}

void AppDelegate::bringOnboardingToFront()
{
    if (m_appState.hasCompletedOnboarding())
        return;
    const QWindowList windows = QGuiApplication::topLevelWindows();
    const auto onboarding = std::find_if(windows.begin(), windows.end(), [](const QWindow *window) {
        return window->title() == u"Welcome to Velloro"_s;
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
        m_hotkeyManager.unregisterHotkey();
        m_appState.whisperManager().unloadModel();
    }
    m_presetModelLoader.reset();
    m_dictationController.reset();
    m_hotkeyManager.cleanup();
}

} // namespace Velloro
