#pragma once

namespace orv {

/// Lets assistive tools hear the role that QML gives a control in its property `toldRole`. Qt before 6.5 overwrites
/// `Accessible.role` of a control with that of its C++ class once such a tool listens: a tab is a button then, and a
/// row of tabs nothing at all. A second call does nothing; main thread.
void tellRolesOfControls();

} // namespace orv
