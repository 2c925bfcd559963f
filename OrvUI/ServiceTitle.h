#pragma once

#include "OrvProcess/ProcessManager.h"

#include <QString>

namespace orv {

struct Project;

/// "Frontend"; of a project with several of the kind, also in which folder: "Frontend · site". A null project is one
/// that is not known any more.
[[nodiscard]] QString serviceTitle(const ServiceID& id, const Project* project);
/// The same where there is little room: of several of the kind only the folder, "site".
[[nodiscard]] QString shortServiceTitle(const ServiceID& id, const Project* project);

} // namespace orv
