#pragma once

#include "Console.h"

#include <QCommandLineParser>
#include <QFuture>
#include <QList>
#include <QString>
#include <QStringList>

namespace orv {

/// What a script sees of a command's end.
enum ExitCode {
    exitOk = 0,
    exitFailed = 1,
    exitUsage = 2,
    exitInterrupted = 130, ///< given up before it was done, as a shell says of a command that SIGINT ended
};

struct Action;
struct Command;

/// One call of a command, from its words to its end. Lives on the main thread.
struct Invocation {
    Console& console;
    QObject* context; ///< dies when the command has ended; what the command makes hangs on it
    const Command& command;
    const Action& action;
    const QCommandLineParser& parser;
    QStringList words; ///< what stands after the command's name, options taken out
    bool json = false;

    [[nodiscard]] bool isSet(const QString& option) const { return parser.isSet(option); }
    [[nodiscard]] QString value(const QString& option) const { return parser.value(option); }

    /// Prints why the call makes no sense, and where to read on; gives the exit code.
    int usageError(const QString& message) const;
    /// Prints why it failed; gives the exit code.
    int failure(const QString& message) const;
    /// Prints something to know on the way.
    void note(const QString& message) const;
};

using Handler = QFuture<int> (*)(Invocation&);

struct CommandOption {
    QString name;
    QString valueName; ///< empty for a switch
    QString text;
};

/// One form of a command: "tasks add PROJECT TITLE".
struct Action {
    QString name; ///< empty where the command has this one form only
    QString arguments;
    int fewestWords = 0;
    int mostWords = 0;
    QString summary;
    QList<CommandOption> options;
    Handler handler = nullptr;
};

struct Example {
    QString line;
    QString effect;
};

struct Command {
    QString name;
    QString summary;
    QString description;
    QList<Action> actions; ///< the first one is meant where a call names none
    QList<Example> examples;
};

Command scanCommand();
Command detectCommand();
Command runCommand();
Command portsCommand();
Command overrideCommand();
Command settingsCommand();
Command tasksCommand();
Command toggleCommand();
Command gitCommand();
Command newCommand();
Command pinCommand();
Command devicesCommand();
Command suggestionsCommand();
Command notifyCommand();
Command agentCommand();
Command completionsCommand();

/// Every command, in the order in which help lists them.
[[nodiscard]] const QList<Command>& allCommands();

/// The command line without a window: gives the exit code of the process.
[[nodiscard]] int runCommandLine(int argc, char** argv);

} // namespace orv
