#pragma once

#include "OrvCore/ProjectScanner.h"
#include "OrvCore/StackDetector.h"

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
    bool isRepeated = false;      ///< the same directory was met before in listing order
    std::pair<dev_t, ino_t> identity;
    std::shared_ptr<const Workspace> workspace; ///< the one that its sub-folders lie in
    StackDetector::Detection detection;
    std::vector<WalkedFolder> children; ///< in listing order; never resized once filled
};

/// The deepest folders, below the scan's root, whose sub-folders are looked at; and the same below a project folder.
inline constexpr int deepestListed = 3;
inline constexpr int deepestListedInProject = 1;

struct WalkRequest {
    QString root; ///< an existing folder, absolute
    int depth = 0;
    const QSet<QString>& skipNames;
    const ScanCancellation* cancellation = nullptr;
    int workers = 1;
};

/// Reads the folders below and including `request.root` that may matter to a scan, each once, on `workers` threads.
/// Null when the root can't be read or the walk was cancelled.
[[nodiscard]] std::unique_ptr<WalkedFolder> walkFolders(const WalkRequest& request);

} // namespace orv
