#include "CliSupport.h"

#include <QJsonObject>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// The words between which an argument leaves the choice: of "[save|pop] [ENTRY]" the first two.
QStringList choicesIn(const QString& arguments) {
    QStringList words;
    for (QString argument : arguments.split(u' ', Qt::SkipEmptyParts)) {
        if (argument.contains(u'|')) {
            words += argument.remove(u'[').remove(u']').split(u'|');
        }
    }
    return words;
}

/// What may stand after each command: its actions and options.
QStringList wordsAfter(const Command& command) {
    QStringList words;
    for (const Action& action : command.actions) {
        words.append(action.name);
        words.append(choicesIn(action.arguments));
        for (const CommandOption& option : action.options) {
            words.append(u"--"_s + option.name);
        }
    }
    words.append({u"--json"_s, u"--help"_s});
    words.removeAll(QString());
    words.removeDuplicates();
    return words;
}

QStringList names() {
    QStringList result;
    for (const Command& command : allCommands()) {
        result.append(command.name);
    }
    result.append(u"help"_s);
    return result;
}

QString bashScript() {
    QString cases;
    for (const Command& command : allCommands()) {
        cases += u"        %1) words='%2' ;;\n"_s.arg(command.name, wordsAfter(command).join(u' '));
    }
    return u"_orvlauncher() {\n"
           "    local words='%1 --help --version'\n"
           "    if [ \"$COMP_CWORD\" -gt 1 ]; then\n"
           "        case ${COMP_WORDS[1]} in\n%2"
           "        help) words='%1' ;;\n"
           "        *) words='' ;;\n"
           "        esac\n"
           "    fi\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
           "}\n"
           "complete -o default -F _orvlauncher orvlauncher\n"_s.arg(names().join(u' '), cases);
}

QString zshScript() {
    QString commands;
    QString cases;
    for (const Command& command : allCommands()) {
        commands += u"    '%1:%2'\n"_s.arg(command.name, command.summary);
        cases += u"        %1) compadd -- %2 ;;\n"_s.arg(command.name, wordsAfter(command).join(u' '));
    }
    return u"#compdef orvlauncher\n"
           "_orvlauncher() {\n"
           "    local -a commands=(\n%1    'help:explains a command'\n    )\n"
           "    if (( CURRENT == 2 )); then\n"
           "        _describe command commands\n"
           "        return\n"
           "    fi\n"
           "    case $words[2] in\n%2"
           "        help) _describe command commands; return ;;\n"
           "    esac\n"
           "    _files\n"
           "}\n"
           "compdef _orvlauncher orvlauncher\n"_s.arg(commands, cases);
}

QString fishScript() {
    QString script;
    for (const Command& command : allCommands()) {
        script +=
            u"complete -c orvlauncher -n __fish_use_subcommand -a %1 -d '%2'\n"_s.arg(command.name, command.summary);
        script += u"complete -c orvlauncher -n '__fish_seen_subcommand_from %1' -a '%2'\n"_s.arg(
            command.name, wordsAfter(command).join(u' '));
    }
    return script;
}

struct Shell {
    const char16_t* name;
    QString (*script)();
};
constexpr std::array shells{Shell{u"bash", bashScript}, Shell{u"zsh", zshScript}, Shell{u"fish", fishScript}};

QFuture<int> completions(Invocation& call) {
    for (const Shell& shell : shells) {
        if (call.words.first() != QStringView(shell.name)) {
            continue;
        }
        if (call.json) {
            printJson(call.console.out, QJsonObject{{u"shell"_s, call.words.first()}, {u"script"_s, shell.script()}});
        } else {
            call.console.out.write(shell.script());
        }
        return QtFuture::makeReadyFuture(int(exitOk));
    }
    return QtFuture::makeReadyFuture(call.usageError(u"the shells are bash, zsh and fish."_s));
}

} // namespace

Command completionsCommand() {
    return {
        u"completions"_s,
        u"prints what makes a shell complete the commands"_s,
        u"Prints a script for bash, zsh or fish, to be read by the shell when it starts."_s,
        {{{}, u"SHELL"_s, 1, 1, u"prints the script"_s, {}, completions}},
        {{u"source <(orvlauncher completions zsh)"_s, u"in ~/.zshrc, after compinit"_s},
         {u"orvlauncher completions fish > ~/.config/fish/completions/orvlauncher.fish"_s, u"for fish"_s}}};
}

} // namespace orv
