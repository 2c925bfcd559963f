#include "OrvUI/FileFinder.h"

#include "OrvCore/ProjectScanner.h"
#include "OrvUI/FuzzyMatch.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QSet>

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace orv::FileFinder {
namespace {

/// Deeper trees are no project's.
constexpr int deepest = 24;

bool isShown(const QString& name, bool isFolder) {
    static const QSet<QString> skipped = ProjectScanner::defaultSkips();
    return isFolder ? !name.startsWith(u'.') && !skipped.contains(name) : name != ".DS_Store"_L1;
}

void collect(
    const QString& root, const QString& folder, int depth, qsizetype limit, const std::atomic<bool>& isCancelled,
    Listing& listing) {
    if (depth > deepest || isCancelled) {
        listing.isWhole = false;
        return;
    }
    const QList<Entry> all = entries(root + u'/' + folder);
    for (const Entry& entry : all) {
        if (entry.isFolder) {
            continue;
        }
        if (listing.files.size() >= limit) {
            listing.isWhole = false;
            return;
        }
        listing.files.append(folder + entry.name);
    }
    for (const Entry& entry : all) {
        if (entry.isFolder) {
            collect(root, folder + entry.name + u'/', depth + 1, limit, isCancelled, listing);
        }
    }
}

/// The part of a path in which the pattern was found.
struct Hit {
    qsizetype file = 0;
    qsizetype from = 0;
    int score = 0;
};

/// In the name alone it is worth more than across folders. `room` is there to be used again.
std::optional<Hit> hit(QStringView path, const FuzzyPattern& pattern, FuzzyText& room) {
    constexpr int nameBonus = 24;
    if (!pattern.mayBeIn(path)) {
        return {};
    }
    const qsizetype name = path.lastIndexOf(u'/') + 1;
    const qsizetype shown = std::max(path.size() - FuzzyPattern::longestText, qsizetype{0});
    for (const auto& [from, bonus] : {std::pair(name, nameBonus), std::pair(shown, 0)}) {
        room.assign(path.sliced(from));
        if (const auto score = pattern.score(room)) {
            return Hit{.from = from, .score = *score + bonus - static_cast<int>(path.size() / 16)};
        }
    }
    return {};
}

QList<int> lettersOf(QStringView path, const Hit& hit, const FuzzyPattern& pattern) {
    QList<int> letters;
    for (const FuzzyRun& run : pattern.hits(FuzzyText(path.sliced(hit.from)))) {
        for (int at = 0; at < run.length; ++at) {
            letters.append(static_cast<int>(hit.from) + run.start + at);
        }
    }
    return letters;
}

} // namespace

QList<Entry> entries(const QString& folder) {
    QList<Entry> found;
    QDirIterator each(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    while (each.hasNext() && found.size() < mostEntries) {
        each.next();
        const QFileInfo info = each.fileInfo();
        const bool isLink = info.isSymLink();
        const bool isFolder = !isLink && info.isDir();
        if (isShown(info.fileName(), isFolder)) {
            found.append({info.fileName(), isFolder, isLink});
        }
    }
    QCollator collator{QLocale(QLocale::English)};
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::ranges::sort(found, [&](const Entry& a, const Entry& b) {
        if (a.isFolder != b.isFolder) {
            return a.isFolder;
        }
        const int order = collator.compare(a.name, b.name);
        return order != 0 ? order < 0 : a.name < b.name;
    });
    return found;
}

Listing list(const QString& root, qsizetype limit, const std::shared_ptr<std::atomic<bool>>& isCancelled) {
    Listing listing;
    collect(root, {}, 0, limit, *isCancelled, listing);
    return listing;
}

QList<Match> find(const QStringList& files, const QString& text, qsizetype limit) {
    const FuzzyPattern pattern(text);
    if (pattern.isEmpty()) {
        return {};
    }
    QList<Hit> hits;
    FuzzyText room;
    for (qsizetype file = 0; file < files.size(); ++file) {
        if (auto found = hit(files[file], pattern, room)) {
            found->file = file;
            hits.append(*found);
        }
    }
    const qsizetype kept = std::min(limit, hits.size());
    const auto isBetter = [](const Hit& a, const Hit& b) {
        return std::tuple(-a.score, a.file) < std::tuple(-b.score, b.file);
    };
    std::partial_sort(hits.begin(), hits.begin() + kept, hits.end(), isBetter);
    QList<Match> found;
    for (const Hit& each : hits.first(kept)) {
        found.append({each.file, lettersOf(files[each.file], each, pattern)});
    }
    return found;
}

} // namespace orv::FileFinder
