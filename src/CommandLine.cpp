#include "CommandLine.h"

#include "Base/StringLiterals.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace Velloro {

namespace {

constexpr int usageError = 2;

/// What QApplication takes from the arguments itself. A desktop that resumes a session passes such
/// an option, too.
const char *const toolkitOptions[]
    = {"display", "platform", "platformtheme", "session", "style", "stylesheet"};

/// The toolkit takes the name in the usage from an application object.
QString helpText(const QCommandLineParser &parser)
{
    char name[] = "velloro";
    char *arguments[] = {name, nullptr};
    int count = 1;
    const QCoreApplication application(count, arguments);
    return parser.helpText();
}

} // namespace

CommandLine CommandLine::read(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(
        u"Dictation into any application: hold the hotkey, speak, and release it.\n"
        "Started a second time, it opens the panel of the Velloro that is running."_s);
    const QCommandLineOption help({u"h"_s, u"help"_s}, u"Print this help and exit."_s);
    const QCommandLineOption version({u"v"_s, u"version"_s}, u"Print the version and exit."_s);
    const QCommandLineOption press(u"press"_s,
                                   u"Press the hotkey of the Velloro that is running, and exit."_s);
    const QCommandLineOption release(u"release"_s, u"Release it again."_s);
    const QCommandLineOption toggle(
        u"toggle"_s, u"Start a recording, or end the one that is going on, in either mode."_s);
    parser.addOptions({press, release, toggle, help, version});
    for (const char *name : toolkitOptions) {
        QCommandLineOption option(QString::fromLatin1(name));
        option.setValueName(u"value"_s);
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }

    QString fault;
    if (!parser.parse(arguments))
        fault = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        fault = u"Unexpected argument '%1'."_s.arg(parser.positionalArguments().first());
    else if (parser.isSet(press) + parser.isSet(release) + parser.isSet(toggle) > 1)
        fault = u"--press, --release and --toggle exclude each other."_s;
    if (!fault.isEmpty())
        return {Answer{usageError, u"velloro: %1\nTry 'velloro --help'.\n"_s.arg(fault)}, {}};
    if (parser.isSet(help))
        return {Answer{0, helpText(parser)}, {}};
    if (parser.isSet(version))
        return {Answer{0, QStringLiteral("Velloro " VELLORO_VERSION "\n")}, {}};
    if (parser.isSet(press))
        return {{}, HotkeyVerb::press};
    if (parser.isSet(release))
        return {{}, HotkeyVerb::release};
    if (parser.isSet(toggle))
        return {{}, HotkeyVerb::toggle};
    return {};
}

} // namespace Velloro
