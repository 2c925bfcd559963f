#pragma once

class QWindow;

namespace orv {

class AppModel;

/// Questions for a file or folder, over a window: the desktop's own dialog where it has one for Qt, otherwise Qt's, in
/// the colours of the theme. What is chosen takes effect by itself.
namespace Dialogs {

/// For the folder of projects; while the welcome is shown, for the one that it asks for.
void chooseFolder(QWindow& over, AppModel& model);
/// For the file into which the shown log is written.
void saveLogs(QWindow& over, AppModel& model);

} // namespace Dialogs
} // namespace orv
