#pragma once

#include <string>

namespace orv::bench {

/// A made tree of folders to scan.
struct TreeShape {
    int projects = 0; ///< "team-N/project-N": real manifests, sources, a ".git" and a "node_modules"
    int folders = 0;  ///< of the whole tree; what the projects leave is made up of plain folders in "archive-N"
    int skippedPerProject = 0; ///< folders inside each project's "node_modules" and ".git"
};

/// Makes the tree below `root`, which must not exist; the same shape gives the same tree. False with a message on the
/// standard error when the disk refuses.
bool makeTree(const std::string& root, const TreeShape& shape);

} // namespace orv::bench
