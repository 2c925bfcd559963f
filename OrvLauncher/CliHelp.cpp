#include "CliHelp.h"

#include "TextLayout.h"

#include <algorithm>
#include <numeric>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int indent = 2;

using Rows = QList<std::pair<QString, QString>>;

/// Two aligned columns, indented.
QString definitions(const Rows& rows, bool hasColor, int margin = indent) {
    int widest = 0;
    for (const auto& [left, right] : rows) {
        widest = std::max(widest, displayWidth(left));
    }
    QString result;
    for (const auto& [left, right] : rows) {
        result +=
            QString(margin, u' ') + painted(padded(left, widest), Style::bold, hasColor) + u"  "_s + right + u'\n';
    }
    return result;
}

QString heading(const QString& text, bool hasColor) {
    return u'\n' + painted(text, Style::dim, hasColor) + u'\n';
}

Rows optionsOf(const Action& action) {
    Rows rows;
    for (const CommandOption& option : action.options) {
        const QString value = option.valueName.isEmpty() ? QString() : u' ' + option.valueName;
        rows.append({u"--"_s + option.name + value, option.text});
    }
    return rows;
}

/// Each form with its options below it.
QString forms(const Command& command, bool hasColor) {
    QString text;
    int widest = 0;
    for (const Action& action : command.actions) {
        widest = std::max(widest, displayWidth(usage(command, action)));
    }
    for (const Action& action : command.actions) {
        text += definitions({{padded(usage(command, action), widest), action.summary}}, hasColor);
        text += definitions(optionsOf(action), hasColor, indent * 3);
    }
    return text;
}

/// The Damerau-Levenshtein distance (insert, drop, change, swap of neighbours).
int distance(const QString& a, const QString& b) {
    const auto columns = static_cast<size_t>(b.size() + 1);
    std::vector<int> beforeLast(columns);
    std::vector<int> last(columns);
    std::vector<int> current(columns);
    std::iota(last.begin(), last.end(), 0);
    for (qsizetype i = 1; i <= a.size(); ++i) {
        current[0] = static_cast<int>(i);
        for (qsizetype j = 1; j <= b.size(); ++j) {
            const auto column = static_cast<size_t>(j);
            const int change = a[i - 1] == b[j - 1] ? 0 : 1;
            current[column] = std::min({last[column] + 1, current[column - 1] + 1, last[column - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                current[column] = std::min(current[column], beforeLast[column - 2] + 1);
            }
        }
        beforeLast.swap(last);
        last.swap(current);
    }
    return last.back();
}

} // namespace

QString closest(const QString& word, const QStringList& candidates) {
    const QString lower = word.toLower();
    // A third of the letters may be wrong, and a beginning counts as near.
    int nearest = static_cast<int>(std::max<qsizetype>(1, word.size() / 3)) + 1;
    QString best;
    for (const QString& candidate : candidates) {
        const bool isBeginning = word.size() > 1 && candidate.startsWith(lower, Qt::CaseInsensitive);
        const int found = isBeginning ? 1 : distance(lower, candidate.toLower());
        if (found < nearest) {
            nearest = found;
            best = candidate;
        }
    }
    return best;
}

QString didYouMean(const QString& word, const QStringList& candidates) {
    const QString meant = closest(word, candidates);
    return meant.isEmpty() ? QString() : u" Did you mean '%1'?"_s.arg(meant);
}

QString overview(bool hasColor) {
    QString text = painted(u"OrvLauncher"_s, Style::bold, hasColor) +
                   u" finds the projects in a folder, and runs and watches their services.\n"_s;
    text += heading(u"Usage"_s, hasColor);
    text += definitions(
        {{u"orvlauncher"_s, u"opens the window, or raises the one that is open"_s},
         {u"orvlauncher COMMAND"_s, u"does one thing here, in the terminal"_s},
         {u"orvlauncher help COMMAND"_s, u"explains a command, with examples"_s}},
        hasColor);
    text += heading(u"Commands"_s, hasColor);
    QList<std::pair<QString, QString>> rows;
    for (const Command& command : allCommands()) {
        rows.append({command.name, command.summary});
    }
    text += definitions(rows, hasColor);
    text += heading(u"Try"_s, hasColor);
    text += definitions(
        {{u"orvlauncher scan ~/Projects"_s, u"lists what can be run there"_s},
         {u"orvlauncher run ."_s, u"runs the project in this folder until Ctrl-C"_s},
         {u"orvlauncher scan --json | jq -r '.[].name'"_s, u"every command speaks JSON too"_s}},
        hasColor);
    text += heading(u"Exit codes"_s, hasColor);
    text += definitions(
        {{u"0"_s, u"done"_s},
         {u"1"_s, u"failed"_s},
         {u"2"_s, u"the call makes no sense"_s},
         {u"130"_s, u"given up on Ctrl-C"_s}},
        hasColor);
    return text;
}

QString usage(const Command& command, const Action& action) {
    QStringList words{u"orvlauncher"_s, command.name, action.name, action.arguments};
    words.removeAll(QString());
    return words.join(u' ');
}

QString help(const Command& command, const Action* form, bool hasColor) {
    if (command.actions.size() == 1) {
        form = &command.actions.first();
    }
    const bool isOneOfSeveral = form != nullptr && command.actions.size() > 1;
    const QString name = u"orvlauncher "_s + command.name + (isOneOfSeveral ? u' ' + form->name : QString());
    QString text = painted(name, Style::bold, hasColor) + u": "_s + (isOneOfSeveral ? form->summary : command.summary) +
                   u'\n' + heading(u"Usage"_s, hasColor);
    text +=
        form != nullptr ? definitions({{usage(command, *form), form->summary}}, hasColor) : forms(command, hasColor);
    text += u'\n' + command.description.trimmed() + u'\n';
    Rows options = form != nullptr ? optionsOf(*form) : Rows();
    options.append({u"--json"_s, u"print JSON, for programs"_s});
    options.append({u"--help"_s, form != nullptr ? u"print this text"_s : u"print this text, or that of one form"_s});
    text += heading(form != nullptr ? u"Options"_s : u"Options of all"_s, hasColor) + definitions(options, hasColor);
    QString examples;
    for (const Example& example : command.examples) {
        if (!isOneOfSeveral || example.line.contains(name)) {
            examples += QString(indent, u' ') + painted(example.line, Style::bold, hasColor) + u'\n' +
                        QString(indent * 3, u' ') + example.effect + u'\n';
        }
    }
    return examples.isEmpty() ? text : text + heading(u"Examples"_s, hasColor) + examples;
}

} // namespace orv
