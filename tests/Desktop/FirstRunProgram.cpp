// The program with another model repository, whose address is its one argument.

#include "Core/SerialExecutor.h"
#include "Managers/HotkeyManager.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/Linux/TerminationSignals.h"
#include "VelloroApp.h"

#include <QApplication>
#include <QScopeGuard>
#include <chrono>

using namespace Velloro;

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Velloro"));
    QApplication::setDesktopFileName(QStringLiteral("velloro"));

    Platform platform = makeLinuxPlatform();
    const auto finishWork =
        qScopeGuard([] { SerialExecutor::finishAll(std::chrono::milliseconds(500)); });
    const std::unique_ptr<HotkeyManager> hotkeyManager = HotkeyManager::makeShared(platform);
    VelloroApp velloro(platform, QApplication::arguments().value(1));
    TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &velloro,
                     &VelloroApp::terminate);
    velloro.launch();
    return QApplication::exec();
}
