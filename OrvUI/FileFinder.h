#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>

/// The files of a project, and which of them somebody may mean. Functions of values, for any thread.
namespace orv::FileFinder {

struct Entry {
    QString name;
    bool isFolder = false;
    bool isLink = false; ///< which is not followed, so it is never a folder

    bool operator==(const Entry&) const = default;
};

/// What is in a folder: folders first, each by name as people sort. Folders that a scan skips, and hidden ones, are
/// left out. No more than `mostEntries`.
[[nodiscard]] QList<Entry> entries(const QString& folder);
inline constexpr qsizetype mostEntries = 5000;

struct Listing {
    QStringList files; ///< relative to the root, those of a folder before those below it
    bool isWhole = true;
};
/// The files of the tree, at most `limit`; ends early when `isCancelled` becomes true.
[[nodiscard]] Listing list(const QString& root, qsizetype limit, const std::shared_ptr<std::atomic<bool>>& isCancelled);
inline constexpr qsizetype mostFiles = 50'000;

struct Match {
    qsizetype file = 0; ///< its place in the list
    QList<int> letters; ///< which of the path's were meant
    bool operator==(const Match&) const = default;
};
/// Those in whose path the words of the text are found (FuzzyPattern), in the name rather than across folders; of a
/// very long path only the end is searched. At most `limit`, the likeliest first.
[[nodiscard]] QList<Match> find(const QStringList& files, const QString& text, qsizetype limit);

} // namespace orv::FileFinder
