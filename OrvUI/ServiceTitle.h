#pragma once

#include "OrvProcess/ProcessManager.h"

#include <QString>

namespace orv {

struct Project;

/// "Frontend"; of a project with several of the kind, also in which folder: "Frontend · site". A null project is one
/// that is not known any more.
[[nodiscard]] QString serviceTitle(const ServiceID& id, const Project* project);

} // namespace orv
