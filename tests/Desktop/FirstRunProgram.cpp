// The program with another model repository, whose address is its one argument.

#include "Base/StringLiterals.h"
#include "Managers/HotkeyManager.h"
#include "Platform/Linux/DisplayServer.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/Linux/Process/TerminationSignals.h"
#include "VelloroApp.h"

#include <QApplication>

using namespace Velloro;

int main(int argc, char **argv)
{
    const DisplayServer server = chooseDisplayServer();
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"Velloro"_s);
    QApplication::setDesktopFileName(u"velloro"_s);

    Platform platform = makeLinuxPlatform(server);
    const std::unique_ptr<HotkeyManager> hotkeyManager = std::make_unique<HotkeyManager>(platform);
    VelloroApp velloro(platform, *hotkeyManager, QApplication::arguments().value(1));
    TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &velloro,
                     &VelloroApp::terminate);
    velloro.launch();
    return QApplication::exec();
}
