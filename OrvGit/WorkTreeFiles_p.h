#pragma once

#include "OrvGit/GitError.h"

#include <QSet>

/// The files of a work tree as they lie on the disk, whatever git knows of them. Paths are relative to the repository.
namespace orv::WorkTreeFiles {

/// Whether anything but a folder lies there, be it a link that leads nowhere.
[[nodiscard]] bool isFile(const QString& repository, const QString& path);
/// Whether both are one file, as "a" and "A" are where case makes no difference.
[[nodiscard]] bool isSame(const QString& repository, const QString& path, const QString& other);
/// Type, whether it can be run, and a hash of the content or where a link leads: equal while nothing was done to it.
[[nodiscard]] QByteArray state(const QString& repository, const QString& path);

/// Refused when one of the paths is a folder with a repository of its own, which git leaves as it is.
[[nodiscard]] GitOutcome<void> requireNoRepository(const QString& repository, const QStringList& paths);
/// Refused when writing the paths would take away a file that is not in `going`: one where a folder has to be, or one
/// in a folder where a file has to be.
[[nodiscard]] GitOutcome<void> requireRoom(
    const QString& repository, const QStringList& paths, const QSet<QString>& going);

} // namespace orv::WorkTreeFiles
