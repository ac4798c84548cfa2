#include "app/command_line.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <algorithm>
#include <array>
#include <optional>

namespace {
/** An option that Qt's application object or a platform of its own takes. */
struct QtOption {
    const char* name;
    bool hasValue;
};

constexpr std::array<QtOption, 25> kQtOptions = {{
    {"platform", true},
    {"platformpluginpath", true},
    {"platformtheme", true},
    {"plugin", true},
    {"qwindowgeometry", true},
    {"qwindowicon", true},
    {"qwindowtitle", true},
    {"geometry", true},
    {"icon", true},
    {"title", true},
    {"display", true},
    {"name", true},
    {"visual", true},
    {"fontengine", true},
    {"session", true},
    {"style", true},
    {"stylesheet", true},
    {"qmljsdebugger", true},
    {"reverse", false},
    {"widgetcount", false},
    {"nograb", false},
    {"dograb", false},
    {"sync", false},
    {"qdebug", false},
    {"qdevel", false},
}};

/** The arguments without those of Qt, which may begin with one hyphen or two. */
QStringList withoutQtOptions(const QStringList& arguments) {
    QStringList rest;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        const QString name =
            argument.mid(argument.startsWith(QLatin1String("--")) ? 2 : 1).section(u'=', 0, 0);
        const auto* const option =
            std::find_if(kQtOptions.begin(), kQtOptions.end(),
                         [&name](const QtOption& known) { return name == QLatin1String(known.name); });
        if (i == 0 || !argument.startsWith(u'-') || option == kQtOptions.end()) {
            rest.append(argument);
        } else if (option->hasValue && !argument.contains(u'=')) {
            ++i;
        }
    }
    return rest;
}

/** The program's own options. */
struct Options {
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")}};
    QCommandLineOption mail{QStringLiteral("mail"), {}, QStringLiteral("WAY")};
    QCommandLineOption settingsFolder{QStringLiteral("settings-folder"), {}, QStringLiteral("DIR")};
    QCommandLineOption doctor{QStringLiteral("doctor")};
    QCommandLineOption user{QStringLiteral("user"), {}, QStringLiteral("NAME")};
    QCommandLineOption passwordStdin{QStringLiteral("password-stdin")};
    QCommandLineOption json{QStringLiteral("json")};
    QCommandLineOption selfTest{QStringLiteral("self-test")};
};

Task taskOf(const QCommandLineParser& parser, const Options& options) {
    if (parser.isSet(options.help)) {
        return Task::TellUsage;
    }
    if (parser.isSet(options.version)) {
        return Task::TellVersion;
    }
    if (parser.isSet(options.selfTest)) {
        return Task::TestItself;
    }
    return parser.isSet(options.doctor) ? Task::Examine : Task::ShowWindows;
}

/** What is wrong with the value of an option; nothing for an option that is not set, or is set well. */
std::optional<QString> faultOfValue(const QCommandLineParser& parser, const QCommandLineOption& option) {
    const QString name = option.names().constLast();
    const QStringList values = parser.values(option);
    if (values.size() > 1) {
        return QStringLiteral("--%1 is given more than once.").arg(name);
    }
    // A value that looks like an option was forgotten.
    const bool missing =
        !values.isEmpty() && (values.first().isEmpty() || values.first().startsWith(QLatin1String("--")));
    return missing ? std::optional(QStringLiteral("Missing value after '--%1'.").arg(name)) : std::nullopt;
}

std::optional<MailMode> mailModeOf(const QString& value) {
    if (value == QLatin1String("standard")) {
        return MailMode::Standard;
    }
    return value.isEmpty() || value == QLatin1String("house") ? std::optional(MailMode::House) : std::nullopt;
}

/** What the options, each by itself all right, have against one another. */
std::optional<QString> faultOfAll(const QCommandLineParser& parser, const Options& options,
                                  bool inputIsTerminal) {
    for (const QCommandLineOption* option : {&options.user, &options.passwordStdin, &options.json}) {
        if (parser.isSet(*option) && !parser.isSet(options.doctor)) {
            return QStringLiteral("--%1 goes with --doctor only.").arg(option->names().constLast());
        }
    }
    for (const QCommandLineOption* option : {&options.doctor, &options.settingsFolder}) {
        if (parser.isSet(*option) && parser.isSet(options.selfTest)) {
            return QStringLiteral("--%1 does not go with --self-test.").arg(option->names().constLast());
        }
    }
    const bool passwordComes = parser.isSet(options.passwordStdin);
    if (passwordComes && !parser.isSet(options.user)) {
        return QStringLiteral("--password-stdin goes with --user only.");
    }
    if (parser.isSet(options.user) && !passwordComes && !inputIsTerminal) {
        return QStringLiteral("The password cannot be asked for without a terminal: use --password-stdin.");
    }
    if (!mailModeOf(parser.value(options.mail))) {
        return QStringLiteral("--mail is house or standard, not '%1'.").arg(parser.value(options.mail));
    }
    return std::nullopt;
}
} // namespace

std::variant<CommandLine, WrongUse> readCommandLine(const QStringList& arguments, bool inputIsTerminal) {
    if (arguments.size() <= 1) {
        return CommandLine();
    }
    const Options options;
    QCommandLineParser parser;
    parser.addOptions({options.help, options.version, options.mail, options.settingsFolder, options.doctor,
                       options.user, options.passwordStdin, options.json, options.selfTest});
    if (!parser.parse(withoutQtOptions(arguments))) {
        return WrongUse{parser.errorText()};
    }
    if (!parser.positionalArguments().isEmpty()) {
        return WrongUse{QStringLiteral("'%1' is no option.").arg(parser.positionalArguments().constFirst())};
    }
    for (const QCommandLineOption* option : {&options.mail, &options.settingsFolder, &options.user}) {
        if (const auto fault = faultOfValue(parser, *option)) {
            return WrongUse{*fault};
        }
    }
    if (const auto fault = faultOfAll(parser, options, inputIsTerminal)) {
        return WrongUse{*fault};
    }
    CommandLine line;
    line.task = taskOf(parser, options);
    line.settingsFolder = parser.value(options.settingsFolder);
    line.mail = *mailModeOf(parser.value(options.mail));
    line.user = parser.value(options.user);
    line.passwordFromInput = parser.isSet(options.passwordStdin);
    line.json = parser.isSet(options.json);
    return line;
}

QString usageText() {
    return QStringLiteral(
        "Usage: brindlewake [options]\n"
        "\n"
        "Starts the mail program with the settings, tolk.ini, of the folder that it is started in.\n"
        "\n"
        "  --settings-folder=DIR  change into this folder before anything else\n"
        "  --mail=WAY             how mail is read and written: house (as without this option) or standard\n"
        "  -h, --help             tell this, and end\n"
        "  -v, --version          tell the versions of the program, of Qt and of the library of TLS, and "
        "end\n"
        "\n"
        "For the administrator, without a window:\n"
        "\n"
        "  --doctor               examine settings, folders and servers, tell what members will meet, and "
        "end;\n"
        "                         the status is 0 when nothing stops members, 1 when something does\n"
        "  --user=NAME            with --doctor: log on as this member, and look through the mailbox\n"
        "  --password-stdin       with --user: the password is the first line of the standard input\n"
        "  --json                 with --doctor: tell it as one object of JSON\n"
        "  --self-test            use the program's windows once, out of sight, at servers of its own on "
        "this\n"
        "                         computer, tell each step, and end; the status is 1 when a step has "
        "failed\n"
        "\n"
        "Options of Qt's, such as -platform and -style, may be added. Wrong use ends with status 2.\n");
}
