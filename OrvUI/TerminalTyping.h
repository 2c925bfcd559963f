#pragma once

#include <QString>

namespace orv {

class AppModel;
class TerminalSession;

/// Opens a new one in the folder and goes to the page that shows it: that of its project, or of a folder that is in
/// none the one that is shown, or else that of a project below it or of any.
TerminalSession* openTerminal(AppModel& model, const QString& folder);

/// Gives a shell that was just started a line to carry out, once its line editor is there: as a paste, so that nothing
/// in the line is taken for keys. A shell that never asks for marked pastes gets it when it has been quiet for a
/// moment.
void typeWhenReady(TerminalSession* session, const QString& line);

} // namespace orv
