#pragma once

#include <QByteArray>
#include <QString>

/// Paths as git knows them, which are bytes without an encoding.
///
/// A byte that is not part of valid UTF-8 becomes the lone surrogate U+DC00 + byte, so that every path survives the way
/// to a string and back; on a screen such a letter is a replacement character.
namespace orv::GitPath {

[[nodiscard]] QString fromBytes(QByteArrayView bytes);
[[nodiscard]] QByteArray toBytes(const QString& path);

/// A path as it stands in a patch, with or without quotes (git-config(1), core.quotePath). Bytes that no quoted path
/// holds are taken as they are.
[[nodiscard]] QByteArray unquoted(QByteArrayView text);
/// Always in quotes.
[[nodiscard]] QByteArray quoted(QByteArrayView path);

} // namespace orv::GitPath
