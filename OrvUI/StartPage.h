#pragma once

#include <QString>

namespace orv {

class AppModel;

/// Opens a page by a word, when the application starts: for demonstrations and pictures.
///
/// "ai", "tasks", "settings" (at the agents), "flutter", "running", "pinned", "add-project", "widgets-how-to",
/// "project:shop", "project-ai:shop". Any other value does nothing and gives false; a project that there is not does
/// nothing. A project is opened once the projects are known.
bool openStartPage(AppModel& model, const QString& value);

} // namespace orv
