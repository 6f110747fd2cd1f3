#include "Base/Log.h"
#include "Base/SerialExecutor.h"
#include "Base/StringLiterals.h"
#include "CommandLine.h"
#include "Managers/HotkeyManager.h"
#include "Platform/Linux/DisplayServer.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/Linux/Process/HotkeyCommand.h"
#include "Platform/Linux/Process/SingleInstance.h"
#include "Platform/Linux/Process/TerminationSignals.h"
#include "VelloroApp.h"

#include <QApplication>
#include <QIcon>
#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace Velloro;

namespace {

int run(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const auto [answer, verb] = CommandLine::read(arguments);
    if (answer) {
        std::fputs(answer->text.toLocal8Bit().constData(), answer->status == 0 ? stdout : stderr);
        return answer->status;
    }
    if (verb) {
        if (HotkeyCommand::make(*verb).send(SingleInstance::socketPath()))
            return 0;
        std::fputs("velloro: Velloro is not running in this session.\n", stderr);
        return 1;
    }

    // The reader of the log may end; dictation continues.
    std::signal(SIGPIPE, SIG_IGN);

    const DisplayServer server = chooseDisplayServer();
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"Velloro"_s);
    QApplication::setDesktopFileName(u"velloro"_s);
    QApplication::setWindowIcon(QIcon(u":/velloro.svg"_s));

    SingleInstance instance;
    if (!instance.acquire())
        return 0;

    Platform platform = makeLinuxPlatform(server, &instance);
    HotkeyManager hotkeyManager(platform);
    VelloroApp velloro(platform, hotkeyManager);

    TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &velloro,
                     &VelloroApp::terminate);
    QObject::connect(&instance, &SingleInstance::activationRequested, &velloro,
                     &VelloroApp::activate);

    QObject::connect(&application, &QCoreApplication::aboutToQuit, &instance,
                     &SingleInstance::stopAnswering);

    velloro.launch();
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    const int status = run(argc, argv);
    if (SerialExecutor::hasAbandoned()) {
        Log::flush();
        _exit(status);
    }
    return status;
}
