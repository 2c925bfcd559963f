#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/OverrideStore.h"

#include <QSet>

#include <atomic>
#include <expected>
#include <memory>

namespace orv {

/// Asks a running scan to end early.
class ScanCancellation {
public:
    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    [[nodiscard]] bool isCancelled() const { return m_cancelled.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> m_cancelled = false;
};

/// Why a scan says nothing about the projects on disk.
struct ScanError {
    enum class Kind {
        cancelled,
        unreadable, ///< the root is there and can't be listed
        exhausted,  ///< the system had no descriptors or no memory left for a folder, for longer than a moment
    };
    Kind kind = Kind::cancelled;
    QString path;
    QString reason; ///< the system's words

    bool operator==(const ScanError&) const = default;
    [[nodiscard]] QString text() const;
};
template <typename T>
using ScanResult = std::expected<T, ScanError>;

/// Finds the projects under a folder: a pure function of the disk, run off the main thread. It works on all
/// cores.
///
/// A folder in which a stack is found is a project. Its services are its own and those of sub-folders up to two levels
/// below, where a bare "index.html", Makefile or Procfile is none; a sub-folder with its own ".git" is a project of its
/// own below it. Nothing is looked at deeper than four levels below the scan's root.
///
/// A folder without a stack of its own is one project when services are found up to two levels below it and nothing
/// below it is a project with its own ".git" ("shop" with "web" and "api"); otherwise it is a collection of the
/// projects below it. What such a project gathers nothing from ("shop/site" with an "index.html") is looked at by
/// itself and stands below it. The scan's root never gathers: it is where people keep what has nothing else in common.
/// So it is only a project by a stack of its own, and by an "index.html", Makefile or Procfile only when nothing else
/// is there.
///
/// Paths in the result are canonical, however the root was spelled. Hidden folders, symbolic links to folders and
/// folders that can't be read are left out; a directory that is mounted at two places counts at the one of less depth,
/// then at the first. Nothing is below a root that is missing or no folder.
struct ProjectScanner {
    QSet<QString> skipNames = defaultSkips();       ///< folder names that are never entered
    std::shared_ptr<const OverrideStore> overrides; ///< applied to every target; may be absent

    [[nodiscard]] static QSet<QString> defaultSkips();

    /// Every project in tree order.
    [[nodiscard]] ScanResult<QList<Project>> scan(
        const QString& root, const ScanCancellation* cancellation = nullptr) const;
    /// The tree below `root`, whose own node is not part of it unless the root itself is a project.
    [[nodiscard]] ScanResult<QList<ProjectNode>> scanTree(
        const QString& root, const ScanCancellation* cancellation = nullptr) const;
    /// One folder looked up as a project, whether or not a scan would have come by; absent when nothing runs there, or
    /// only in projects below it. `scanRoot`, where it lies above, limits the depth as in a scan from there.
    [[nodiscard]] std::optional<Project> project(const QString& folder, const QString& scanRoot = {}) const;
};

} // namespace orv
