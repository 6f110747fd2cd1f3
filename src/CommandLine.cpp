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

std::optional<CommandLine::Answer> CommandLine::read(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(
        u"Dictation into any application: hold the hotkey, speak, and release it.\n"
        "Started a second time, it opens the panel of the Velloro that is running."_s);
    const QCommandLineOption help({u"h"_s, u"help"_s}, u"Print this help and exit."_s);
    const QCommandLineOption version({u"v"_s, u"version"_s}, u"Print the version and exit."_s);
    parser.addOptions({help, version});
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
    if (!fault.isEmpty()) {
        return Answer{usageError, u"velloro: %1\nTry 'velloro --help'.\n"_s.arg(fault)};
    }
    if (parser.isSet(help))
        return Answer{0, helpText(parser)};
    if (parser.isSet(version))
        return Answer{0, QStringLiteral("Velloro " VELLORO_VERSION "\n")};
    return std::nullopt;
}

} // namespace Velloro
