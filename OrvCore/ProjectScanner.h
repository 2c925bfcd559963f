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

/// Finds the projects under a folder: a pure function of the disk, run off the main thread. It reads each directory once
/// and works on all cores.
struct ProjectScanner {
    QSet<QString> skipNames = defaultSkips();    ///< folder names that are never entered
    std::shared_ptr<const OverrideStore> overrides; ///< applied to every target; may be absent

    [[nodiscard]] static QSet<QString> defaultSkips();

    /// Every project in tree order.
    [[nodiscard]] QList<Project> scan(const QString& root, const ScanCancellation* cancellation = nullptr) const;
    /// The tree below `root`, whose own node is not part of it unless the root itself is a project.
    [[nodiscard]] QList<ProjectNode> scanTree(const QString& root, const ScanCancellation* cancellation = nullptr) const;
    /// One folder looked up as a project, whether or not a scan would have come by; absent when nothing runs there.
    [[nodiscard]] std::optional<Project> project(const QString& folder) const;
};

} // namespace orv
