#pragma once

#include <QString>

namespace orv::bench {

/// Folders of installed Node projects with names as people give them: "atlas-billing-api-17".
void addNamedProjects(const QString& root, int count);

} // namespace orv::bench
