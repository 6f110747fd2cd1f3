#include "VelloroApp.h"

#include "Views/RecordingPillWindowController.h"

#include <QCoreApplication>

namespace Velloro {

VelloroApp::VelloroApp(Platform &platform, QObject *parent)
    : QObject(parent)
    , m_appDelegate(platform, [] { return std::make_unique<RecordingPillWindowController>(); })
    , m_menuBarExtra(m_appDelegate.appState())
{
    connect(&m_menuBarExtra, &MenuBarExtra::quitRequested, this, &VelloroApp::terminate);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_appDelegate,
            &AppDelegate::applicationWillTerminate);
}

void VelloroApp::launch()
{
    m_menuBarExtra.show();
    m_appDelegate.applicationDidFinishLaunching();
}

void VelloroApp::terminate()
{
    m_appDelegate.applicationShouldTerminate();
    QCoreApplication::quit();
}

void VelloroApp::activate()
{
    m_menuBarExtra.show();
}

} // namespace Velloro
