#include "OrvUI/EditorCommand.h"

#include "OrvCore/CommandBuilder.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <utility>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array ofTerminals{"vi"_L1,    "vim"_L1, "nvim"_L1, "nano"_L1,   "micro"_L1, "hx"_L1,
                                 "helix"_L1, "kak"_L1, "joe"_L1,  "mcedit"_L1, "ne"_L1};

/// As the shell parts a line (POSIX, Shell Command Language, 2.2 Quoting); nothing is expanded.
QStringList words(const QString& line) {
    QStringList all;
    QString word;
    bool isInWord = false;
    QChar quote;
    for (qsizetype at = 0; at < line.size(); ++at) {
        const QChar character = line[at];
        if (character == quote) {
            quote = QChar();
        } else if (quote.isNull() && (character == u'\'' || character == u'"')) {
            quote = character;
            isInWord = true;
        } else if (quote.isNull() && character.isSpace()) {
            if (std::exchange(isInWord, false)) {
                all.append(std::exchange(word, {}));
            }
        } else {
            const bool isEscape = character == u'\\' && quote != u'\'' && at + 1 < line.size() &&
                                  (quote.isNull() || u"$`\"\\"_s.contains(line[at + 1]));
            at += isEscape ? 1 : 0;
            word += line[at];
            isInWord = true;
        }
    }
    if (isInWord) {
        all.append(word);
    }
    return all;
}

} // namespace

QString EditorCommand::lineOf(const QString& setting) {
    const QString path = setting.trimmed();
    const QFileInfo file(path);
    return file.isAbsolute() && file.isFile() ? CommandBuilder::quote(path) : setting;
}

QString EditorCommand::of(const QString& line, const Place& place) {
    const std::array values{
        std::pair{u"{file}"_s, CommandBuilder::quote(place.file)},
        std::pair{u"{line}"_s, QString::number(std::max(1, place.line))},
        std::pair{u"{column}"_s, QString::number(std::max(1, place.column))}};
    QString command;
    bool hasFile = false;
    for (qsizetype at = 0; at < line.size();) {
        const auto named = std::ranges::find_if(
            values, [&](const auto& value) { return QStringView(line).sliced(at).startsWith(value.first); });
        if (named == values.end()) {
            command += line[at++];
        } else {
            hasFile = hasFile || named == values.begin();
            command += named->second;
            at += named->first.size();
        }
    }
    return hasFile ? command : command + u' ' + values[0].second;
}

QString EditorCommand::program(const QString& line) {
    const QStringList all = words(line);
    const auto first = std::ranges::find_if(all, [](const QString& word) { return !word.contains(u'='); });
    return first != all.end() ? *first : QString();
}

bool EditorCommand::needsTerminal(const QString& line) {
    const QString name = program(line).section(u'/', -1);
    const QStringList all = words(line);
    return std::ranges::find(ofTerminals, name) != ofTerminals.end() ||
           (name == u"emacs" && (all.contains(u"-nw"_s) || all.contains(u"--no-window-system"_s)));
}

} // namespace orv
