#pragma once

#include <QString>

namespace orv {

/// What the user opens files with: a line for the shell in which "{file}", "{line}" and "{column}" stand for them.
namespace EditorCommand {

/// A place in a file; line and column count from 1, and 0 is nowhere in particular.
struct Place {
    QString file;
    int line = 0;
    int column = 0;
};

/// What is set as a line for the shell: one that is nothing but the path of a program, spaces and all, comes quoted.
[[nodiscard]] QString lineOf(const QString& setting);
/// With the file quoted for the shell; behind all the rest where the line has no place for it. Where no line is known,
/// the first one.
[[nodiscard]] QString of(const QString& line, const Place& place);
/// Its first word that is no assignment, without its quotes: what has to be installed.
[[nodiscard]] QString program(const QString& line);
/// Whether that is an editor that lives in a terminal.
[[nodiscard]] bool needsTerminal(const QString& line);

} // namespace EditorCommand
} // namespace orv
