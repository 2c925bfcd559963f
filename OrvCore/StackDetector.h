#pragma once

#include "OrvCore/Models.h"

namespace orv {

class FolderReader;

/// One recognised technology of a folder.
struct DetectedStack {
    ServiceKind kind = ServiceKind::app;
    QString framework;                    ///< display name: "FastAPI", "Next.js"
    QString run;                          ///< starts the service, relative to the folder
    std::optional<QString> install;       ///< installs its dependencies
    std::optional<QString> installMarker; ///< relative path whose existence means "already installed"

    bool operator==(const DetectedStack&) const = default;
};

enum class Fallbacks { allowed, refused };

/// Says what can be run in a folder from its marker files and a few manifests. Runs nothing, never fails, and is safe on
/// any thread; a manifest that is unreadable, malformed or larger than `manifestLimitBytes` counts as absent.
namespace StackDetector {
inline constexpr qint64 manifestLimitBytes = 4 * 1024 * 1024;

/// All stacks of the folder in the fixed order of the detectors; a compose file's last.
[[nodiscard]] QList<DetectedStack> detect(const QString& folder, Fallbacks fallbacks);
/// The same, with directory listings taken from `reader` where it has them already.
[[nodiscard]] QList<DetectedStack> detect(FolderReader& reader, const QString& folder, Fallbacks fallbacks);

/// The nearest folder above `folder` that is the root of a JavaScript workspace.
[[nodiscard]] std::optional<QString> nodeWorkspaceRoot(const QString& folder);
/// "..", "../.." and so on: the way up from a folder to one of its ancestors.
[[nodiscard]] QString relativeUp(const QString& folder, const QString& ancestor);
} // namespace StackDetector

} // namespace orv
