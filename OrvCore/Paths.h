#pragma once

#include <QString>

namespace orv::Paths {

/// Where the stores live. `ORV_SUPPORT_DIR` overrides it; otherwise "$XDG_DATA_HOME/OrvLauncher" on Linux and
/// "~/Library/Application Support/OrvLauncher" on macOS.
[[nodiscard]] QString supportDirectory();

/// The user's home folder from the account record, or from the platform where the record has none.
[[nodiscard]] QString realHome();

/// The path for people: "~" for their home folder.
[[nodiscard]] QString shortened(const QString& path);

/// "file:///..." of an absolute path, percent-encoded; and back. Anything but a local file URL gives an empty path. A
/// trailing slash is not kept.
[[nodiscard]] QString fileUrl(const QString& path);
[[nodiscard]] QString pathOfFileUrl(const QString& url);

} // namespace orv::Paths
