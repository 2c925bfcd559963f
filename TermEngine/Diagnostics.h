#pragma once

#include <string_view>

namespace term {

inline constexpr std::string_view engineName = "TermEngine";

/// Takes messages that belong to no terminal: of lines and buffers that are used past their ends. Called on the thread
/// that does so.
using DiagnosticSink = void (*)(std::string_view message);

/// One for the process, from any thread; nothing, as at first: the messages are not made.
void setDiagnosticSink(DiagnosticSink sink);
void logDiagnostic(std::string_view message);

} // namespace term
