#pragma once

#include "TermEngine/Terminal.h"

#include <string>

namespace term {

/// The screen as text, a line for a row.
[[nodiscard]] std::string dumpText(const Terminal& terminal);
/// With its attributes, as SGR sequences.
[[nodiscard]] std::string dumpAnsi(const Terminal& terminal);
/// Title, cursor, modes and rows; and the runs of cells whose attributes are not the default ones, with their links.
/// Rows and columns count from 0.
[[nodiscard]] std::string dumpJson(const Terminal& terminal);

} // namespace term
