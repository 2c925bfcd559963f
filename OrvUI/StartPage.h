#pragma once

#include <QString>

namespace orv {

class AppModel;

/// Pages that are opened by a word when the application starts: for demonstrations and pictures.
namespace StartPage {

/// "ai", "tasks", "settings" (at the agents), "flutter", "running", "pinned", "add-project", "widgets-how-to",
/// "project:shop", "project-ai:shop". Any other value, and a project that there is not, does nothing. A
/// project is opened once the projects are known.
void open(AppModel& model, const QString& value);

} // namespace StartPage
} // namespace orv
