#pragma once

#include "OrvCore/ProjectScanner.h"
#include "OrvCore/StackDetector.h"

#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace orv {

/// A folder of a walk, with everything that was asked of it while it was open.
struct WalkedFolder {
    static constexpr int noProject = -1;

    /// A workspace root seen from any folder below it by the difference of their depths.
    struct Workspace {
        int depth = 0; ///< of the root; negative above the folder at which the walk began
        QString packageManager;
    };

    std::string name;
    const WalkedFolder* parent = nullptr;
    int depth = 0;                ///< below the scan's root
    int belowProject = noProject; ///< folders down from the project that it was reached through
    bool hasRepository = false;   ///< it contains ".git"
    bool isRepeated = false;      ///< the same directory was met at less depth, or before in listing order; not read
    bool holdsProject = false;    ///< something runs here or in a folder below
    bool holdsRepository = false; ///< a folder below has its own ".git", and something runs there
    std::shared_ptr<const Workspace> workspace;           ///< the one that it lies in
    std::shared_ptr<const Workspace> subfoldersWorkspace; ///< the one that its sub-folders lie in
    int error = 0;                                        ///< errno for which it could not be read
    StackDetector::Detection detection;
    std::vector<WalkedFolder> children; ///< in listing order; never resized once filled

    /// By a stack of its own. At the scan's root a bare "index.html", Makefile or Procfile is none.
    [[nodiscard]] bool isProject() const {
        return !detection.with(depth == 0 ? Fallbacks::refused : Fallbacks::allowed).isEmpty();
    }
};

/// The deepest folders, below the scan's root, whose sub-folders are looked at; and the same below a project folder.
inline constexpr int deepestListed = 3;
inline constexpr int deepestListedInProject = 1;

struct WalkRequest {
    QString root; ///< absolute
    int depth = 0;
    const QSet<QString>& skipNames;
    const ScanCancellation* cancellation = nullptr;
    int workers = 1;
};

/// Reads the folders below and including `request.root` that may matter to a scan, on up to `workers` threads. A folder
/// that can't be read is empty; but the walk fails when that is the root, when it was cancelled, and when descriptors
/// or memory ran out and did not come back within two seconds.
[[nodiscard]] std::expected<std::unique_ptr<WalkedFolder>, ScanError> walkFolders(const WalkRequest& request);

} // namespace orv
