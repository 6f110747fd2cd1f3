#include "VelloroApp.h"

#include "Views/Pill/RecordingPillWindowController.h"

#include <QCoreApplication>

namespace Velloro {

VelloroApp::VelloroApp(Platform &platform, HotkeyManager &hotkeyManager,
                       const QString &repositoryBaseUrl, QObject *parent)
    : QObject(parent)
    , m_viewEngine(*platform.appearance)
    , m_appDelegate(
          platform, hotkeyManager,
          [this, &platform] {
              return std::make_unique<RecordingPillWindowController>(m_viewEngine, platform);
          },
          repositoryBaseUrl)
    , m_menuBarExtra(platform, m_appDelegate.appState(), hotkeyManager, m_viewEngine)
    , m_settingsWindow(platform, m_appDelegate.appState(), hotkeyManager, m_viewEngine)
    , m_onboardingWindow(platform, m_appDelegate.appState(), hotkeyManager, m_viewEngine)
{
    connect(&m_menuBarExtra, &MenuBarExtra::quitRequested, this, &VelloroApp::terminate);
    connect(&m_menuBarExtra, &MenuBarExtra::openSettingsRequested, &m_settingsWindow,
            &SettingsWindowController::open);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_appDelegate,
            &AppDelegate::applicationWillTerminate);
}

void VelloroApp::launch()
{
    m_menuBarExtra.show();
    m_appDelegate.applicationDidFinishLaunching();
    if (!m_appDelegate.appState().hasCompletedOnboarding())
        m_onboardingWindow.open();
}

void VelloroApp::terminate()
{
    m_appDelegate.applicationShouldTerminate();
    QCoreApplication::quit();
}

void VelloroApp::activate()
{
    // A welcome that was closed halfway is opened again.
    if (m_appDelegate.appState().hasCompletedOnboarding())
        m_menuBarExtra.openPanel();
    else
        m_onboardingWindow.open();
}

} // namespace Velloro
