#pragma once

#include "OrvCore/FolderReader.h"
#include "OrvCore/Models.h"

namespace orv {

/// One recognised technology of a folder.
struct DetectedStack {
    ServiceKind kind = ServiceKind::app;
    QString framework = {};                              ///< display name: "FastAPI", "Next.js"
    QString run = {};                                    ///< starts the service, relative to the folder
    std::optional<QString> install = std::nullopt;       ///< installs its dependencies
    std::optional<QString> installMarker = std::nullopt; ///< relative path whose existence means "already installed"

    bool operator==(const DetectedStack&) const = default;
};

enum class Fallbacks { allowed, refused };

/// Says what can be run in a folder from its marker files and a few manifests. Runs nothing, never fails, and is safe
/// on any thread; a manifest that is unreadable, malformed or larger than `manifestLimitBytes` counts as absent.
namespace StackDetector {
inline constexpr qint64 manifestLimitBytes = FolderReader::textLimitBytes;

/// The JavaScript workspace that a folder lies in, as seen from there.
struct EnclosingWorkspace {
    QString up;             ///< the way to its root: "../.."
    QString packageManager; ///< by the root's lock files: "npm", "pnpm", "yarn", "bun"

    bool operator==(const EnclosingWorkspace&) const = default;
};

/// Everything that was found in one folder.
struct Detection {
    QList<DetectedStack> stacks; ///< fallbacks included
    bool beginsWithFallback = false;

    [[nodiscard]] QList<DetectedStack> with(Fallbacks fallbacks) const {
        return beginsWithFallback && fallbacks == Fallbacks::refused ? stacks.sliced(1) : stacks;
    }
};

/// All stacks of the folder in the fixed order of the detectors; a compose file's last.
[[nodiscard]] QList<DetectedStack> detect(const QString& folder, Fallbacks fallbacks);
/// The same for a folder that is open, inside a workspace that is known.
[[nodiscard]] Detection detect(FolderReader& folder, const std::optional<EnclosingWorkspace>& workspace);

/// The nearest folder above `folder` that is the root of a JavaScript workspace: one with a "pnpm-workspace.yaml", or
/// with "workspaces" in its "package.json". Whether its patterns name this folder is not looked at, nor is "/".
[[nodiscard]] std::optional<QString> nodeWorkspaceRoot(const QString& folder);
/// The package manager of a folder that is such a root; absent for any other.
[[nodiscard]] std::optional<QString> workspacePackageManager(FolderReader& folder);
/// "..", "../.." and so on: the way up from a folder to one of its ancestors.
[[nodiscard]] QString relativeUp(const QString& folder, const QString& ancestor);
} // namespace StackDetector

} // namespace orv
