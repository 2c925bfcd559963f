#include "Cli.h"

#include "CliHelp.h"
#include "OrvCore/Async.h"
#include "TextLayout.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QStringList commandNames() {
    QStringList names;
    for (const Command& command : allCommands()) {
        names.append(command.name);
    }
    return names;
}

const Command* commandNamed(const QString& name) {
    const QList<Command>& commands = allCommands();
    const auto found = std::find_if(commands.begin(), commands.end(), [&](const Command& c) { return c.name == name; });
    return found == commands.end() ? nullptr : &*found;
}

int sayUsage(Console& console, const QString& message, const QString& readOn) {
    console.err.writeLine(painted(u"orvlauncher: "_s, Style::red, console.err.hasColor()) + message);
    console.err.writeLine(u"Try '%1'."_s.arg(readOn));
    return exitUsage;
}

int unknownCommand(Console& console, const QString& name) {
    return sayUsage(
        console, u"there is no command '%1'."_s.arg(printable(name)) + didYouMean(name, commandNames()),
        u"orvlauncher --help"_s);
}

/// The words that explain it.
QString readOn(const Command& command, const Action& action) {
    return u"orvlauncher help "_s + command.name + (action.name.isEmpty() ? QString() : u' ' + action.name);
}

int unknownAction(Console& console, const Command& command, const QString& name) {
    QStringList names;
    for (const Action& known : command.actions) {
        names.append(known.name);
    }
    return sayUsage(
        console, u"%1 has no '%2'."_s.arg(command.name, printable(name)) + didYouMean(name, names),
        u"orvlauncher help "_s + command.name);
}

/// The action that the words begin with, which goes from them; where they name none, the command's first.
const Action* takeAction(const Command& command, QStringList& words) {
    if (command.actions.size() == 1 || words.isEmpty() || words.first().startsWith(u'-')) {
        return &command.actions.first();
    }
    const auto found = std::find_if(command.actions.begin(), command.actions.end(), [&](const Action& action) {
        return action.name == words.first();
    });
    if (found == command.actions.end()) {
        return nullptr;
    }
    words.removeFirst();
    return &*found;
}

void addOptions(QCommandLineParser& parser, const Action& action) {
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    parser.addOption({u"json"_s, {}});
    parser.addOption({{u"h"_s, u"help"_s}, {}});
    for (const CommandOption& option : action.options) {
        parser.addOption({option.name, option.text, option.valueName});
    }
}

/// What is wrong with the words, in words; empty when nothing is.
QString complaint(const QCommandLineParser& parser, const Command& command, const Action& action, bool wasParsed) {
    if (!wasParsed) {
        const QStringList unknown = parser.unknownOptionNames();
        if (unknown.isEmpty()) {
            return parser.errorText();
        }
        QStringList known{u"json"_s, u"help"_s};
        for (const CommandOption& option : action.options) {
            known.append(option.name);
        }
        const QString meant = closest(unknown.first(), known);
        return u"there is no option '%1%2'."_s.arg(unknown.first().size() > 1 ? u"--"_s : u"-"_s, unknown.first()) +
               (meant.isEmpty() ? QString() : u" Did you mean '--%1'?"_s.arg(meant));
    }
    const QStringList words = parser.positionalArguments();
    if (words.size() < action.fewestWords) {
        return u"something is missing: %1"_s.arg(usage(command, action));
    }
    if (words.size() > action.mostWords) {
        return u"'%1' is one word too many: %2"_s.arg(printable(words[action.mostWords]), usage(command, action)) +
               (action.mostWords > 0 ? u"\nWhat has blanks in it needs quotes."_s : QString());
    }
    return {};
}

/// Starts the command; a future that is ready where it ended at once.
class CommandRun {
public:
    CommandRun(Console& console, const Command& command) : m_console(console), m_command(command) {}

    QFuture<int> start(QStringList words, QObject* context) {
        const QString name = words.isEmpty() ? QString() : words.first();
        const Action* action = takeAction(m_command, words);
        if (action == nullptr) {
            return QtFuture::makeReadyFuture(unknownAction(m_console, m_command, name));
        }
        const Action* named = action->name == name ? action : nullptr;
        addOptions(m_parser, *action);
        const bool wasParsed = m_parser.parse(QStringList{u"orvlauncher"_s} + words);
        if (wasParsed && m_parser.isSet(u"help"_s)) {
            m_console.out.write(help(m_command, named, m_console.out.hasColor()));
            return QtFuture::makeReadyFuture(int(exitOk));
        }
        if (const QString wrong = complaint(m_parser, m_command, *action, wasParsed); !wrong.isEmpty()) {
            return QtFuture::makeReadyFuture(sayUsage(m_console, wrong, readOn(m_command, *action)));
        }
        m_invocation = std::make_unique<Invocation>(Invocation{
            m_console, context, m_command, *action, m_parser, m_parser.positionalArguments(),
            m_parser.isSet(u"json"_s)});
        return action->handler(*m_invocation);
    }

private:
    Console& m_console;
    const Command& m_command;
    QCommandLineParser m_parser;
    std::unique_ptr<Invocation> m_invocation;
};

int runCommandNamed(QCoreApplication& application, Console& console, const QString& name, const QStringList& words) {
    const Command* command = commandNamed(name);
    if (command == nullptr) {
        return unknownCommand(console, name);
    }
    CommandRun run(console, *command);
    int exitCode = exitFailed;
    {
        QObject context;
        const QFuture<int> end = run.start(words, &context);
        if (!end.isFinished()) {
            onFinished(end, &application, [](int) { QCoreApplication::quit(); });
            QCoreApplication::exec();
        }
        if (end.resultCount() > 0) {
            exitCode = end.result();
        }
    }
    return exitCode;
}

/// "help git", "help git commit".
int explain(Console& console, QStringList words) {
    const QString name = words.takeFirst();
    const Command* command = commandNamed(name);
    if (command == nullptr) {
        return unknownCommand(console, name);
    }
    const Action* action = nullptr;
    if (!words.isEmpty()) {
        const auto found = std::ranges::find(command->actions, words.first(), &Action::name);
        if (found == command->actions.end()) {
            return unknownAction(console, *command, words.first());
        }
        action = &*found;
    }
    console.out.write(help(*command, action, console.out.hasColor()));
    return exitOk;
}

} // namespace

int Invocation::usageError(const QString& message) const {
    return sayUsage(console, message, readOn(command, action));
}

int Invocation::failure(const QString& message) const {
    console.err.writeLine(painted(u"orvlauncher: "_s, Style::red, console.err.hasColor()) + message);
    return exitFailed;
}

void Invocation::note(const QString& message) const {
    console.err.writeLine(message);
}

const QList<Command>& allCommands() {
    static const QList<Command> commands{
        scanCommand(),   detectCommand(),      runCommand(),      portsCommand(),      devicesCommand(), gitCommand(),
        newCommand(),    agentCommand(),       overrideCommand(), settingsCommand(),   tasksCommand(),   pinCommand(),
        notifyCommand(), suggestionsCommand(), toggleCommand(),   completionsCommand()};
    return commands;
}

int runCommandLine(int argc, char** argv) {
    ::signal(SIGPIPE, SIG_IGN); // a reader that went away is an error of write(2), not the end of this process
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"OrvLauncher"_s);

    Console console;
    QStringList words = QCoreApplication::arguments().sliced(1);
    const QString first = words.takeFirst();
    if (first == u"--version"_s || first == u"-v"_s) {
        console.out.writeLine(u"OrvLauncher " ORV_VERSION);
        return exitOk;
    }
    if (first == u"--help"_s || first == u"-h"_s || first == u"help"_s) {
        if (words.isEmpty()) {
            console.out.write(overview(console.out.hasColor()));
            return exitOk;
        }
        return explain(console, words);
    }
    if (first.startsWith(u'-')) {
        return sayUsage(
            console, u"there is no option '%1' before a command."_s.arg(printable(first)), u"orvlauncher --help"_s);
    }
    return runCommandNamed(application, console, first, words);
}

} // namespace orv
