#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/OverrideStore.h"

#include <QSet>

#include <atomic>
#include <memory>

namespace orv {

/// Asks a running scan to end early. A cancelled scan gives an empty result.
class ScanCancellation {
public:
    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    [[nodiscard]] bool isCancelled() const { return m_cancelled.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> m_cancelled = false;
};

/// Finds the projects under a folder: a pure function of the disk, run off the main thread. It reads each directory
/// once and works on all cores.
///
/// A folder in which a stack is found is a project. Its services are its own and those of sub-folders up to two levels
/// below, where a bare "index.html", Makefile or Procfile is none; a sub-folder with its own ".git" is a project of its
/// own below it. Nothing is looked at deeper than four levels below the scan's root.
///
/// A folder without a stack of its own is one project when services are found up to two levels below it and no folder
/// on the way holds ".git" ("shop" with "web" and "api"); otherwise it is a collection of the projects below it. The
/// scan's root is only ever a project by a stack of its own: it is where people keep what has nothing else in common.
///
/// Paths in the result are canonical, however the root was spelled. Hidden folders, symbolic links to folders and
/// folders that can't be read are left out; a directory that is mounted at two places counts at the first.
struct ProjectScanner {
    QSet<QString> skipNames = defaultSkips();       ///< folder names that are never entered
    std::shared_ptr<const OverrideStore> overrides; ///< applied to every target; may be absent

    [[nodiscard]] static QSet<QString> defaultSkips();

    /// Every project in tree order.
    [[nodiscard]] QList<Project> scan(const QString& root, const ScanCancellation* cancellation = nullptr) const;
    /// The tree below `root`, whose own node is not part of it unless the root itself is a project.
    [[nodiscard]] QList<ProjectNode> scanTree(
        const QString& root, const ScanCancellation* cancellation = nullptr) const;
    /// One folder looked up as a project, whether or not a scan would have come by; absent when nothing runs there, or
    /// only in projects below it. `scanRoot`, where it lies above, limits the depth as in a scan from there.
    [[nodiscard]] std::optional<Project> project(const QString& folder, const QString& scanRoot = {}) const;
};

} // namespace orv
