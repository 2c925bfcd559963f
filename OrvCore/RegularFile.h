#pragma once

#include "OrvCore/UniqueFd.h"

#include <QByteArray>
#include <QString>

#include <optional>

#include <fcntl.h>

/// Reads files that others have put there. What is no regular file, such as a named pipe or a device, is neither waited
/// for nor read. Any thread.
namespace orv::RegularFile {

/// Open for reading; invalid, with `errno`, when that can't be. A relative path is one below `parent`; `size` may be
/// null; `flags` are further ones of open(2).
[[nodiscard]] UniqueFd open(int parent, const char* path, qint64* size, int flags = 0);
[[nodiscard]] inline UniqueFd open(const char* path, qint64* size = nullptr, int flags = 0) {
    return open(AT_FDCWD, path, size, flags);
}
/// The bytes from where the file stands, `limit` of them at the most; absent on an error.
[[nodiscard]] std::optional<QByteArray> readUpTo(int file, qint64 limit);
/// The first bytes of a file.
[[nodiscard]] std::optional<QByteArray> prefix(const QString& path, qint64 bytes);
/// All of a file; absent when it is larger.
[[nodiscard]] std::optional<QByteArray> read(const QString& path, qint64 limitBytes);

} // namespace orv::RegularFile
