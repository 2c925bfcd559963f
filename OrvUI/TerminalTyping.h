#pragma once

#include <QString>

namespace orv {

class TerminalSession;

/// Gives a shell that was just started a line to carry out, once its line editor is there: as a paste, so that nothing
/// in the line is taken for keys. A shell that never asks for marked pastes gets it when it has been quiet for a
/// moment.
void typeWhenReady(TerminalSession* session, const QString& line);

} // namespace orv
