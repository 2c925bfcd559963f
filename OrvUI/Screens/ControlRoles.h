#pragma once

namespace orv {

/// Lets assistive tools hear what QML says of a control or a sheet, and Qt does not. A second call does nothing; main
/// thread.
///
/// `toldRole`, the role of a control: Qt before 6.5 overwrites `Accessible.role` with that of its C++ class once such a
/// tool listens: a tab is a button then, and a row of tabs nothing at all. `toldModal` of a focus scope: as long as it
/// is there, nothing else takes the keyboard, for which Accessible has no word.
void tellRolesOfControls();

} // namespace orv
