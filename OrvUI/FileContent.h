#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace orv {

/// A file as it is shown: its lines with their colours, or why there are none.
struct FileContent {
    QStringList lines;
    QList<QList<int>> spans; ///< by line: start, length and CodeToken of each coloured piece, as a flat list
    QString note;            ///< what is to be said instead of lines, or beside them; empty when nothing is
    QString facts;           ///< "1.1 KB · 24 lines"

    bool operator==(const FileContent&) const = default;

    static constexpr qint64 largest = 2 * 1024 * 1024;
    static constexpr qsizetype longestLine = 2000;

    /// Reads at most `largest`, of nothing but a regular file. Any thread.
    [[nodiscard]] static FileContent read(const QString& path);
};

} // namespace orv
