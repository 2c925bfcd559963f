#include "OrvUI/EditorCommand.h"

#include "OrvCore/CommandBuilder.h"

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array ofTerminals{"vi"_L1,    "vim"_L1, "nvim"_L1, "nano"_L1,   "micro"_L1, "hx"_L1,
                                 "helix"_L1, "kak"_L1, "joe"_L1,  "mcedit"_L1, "ne"_L1};

QStringList words(const QString& line) {
    return line.split(u' ', Qt::SkipEmptyParts);
}

} // namespace

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
