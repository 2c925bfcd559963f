#include "OrvUI/FileFinder.h"

#include "OrvCore/ProjectScanner.h"

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

bool beginsWord(const QString& path, qsizetype at) {
    if (at == 0) {
        return true;
    }
    const QChar before = path[at - 1];
    return !before.isLetterOrNumber() || (path[at].isUpper() && before.isLower());
}

bool isSame(QChar a, QChar b) {
    return a == b || a.toCaseFolded() == b.toCaseFolded();
}

enum class Places { all, wordBegins };

/// The tightest place that ends as early as can be, from `from` on.
std::optional<Match> matchFrom(const QString& path, QStringView text, qsizetype from, Places places) {
    const auto isHit = [&](qsizetype at, QChar wanted) {
        return isSame(path[at], wanted) && (places == Places::all || beginsWord(path, at));
    };
    qsizetype wanted = 0;
    qsizetype at = from;
    for (; at < path.size() && wanted < text.size(); ++at) {
        wanted += isHit(at, text[wanted]) ? 1 : 0;
    }
    if (wanted < text.size()) {
        return {};
    }
    Match match;
    for (qsizetype left = text.size(); left > 0;) {
        --at;
        if (isHit(at, text[left - 1])) {
            match.letters.prepend(static_cast<int>(at));
            --left;
        }
    }
    int last = -2;
    for (const int letter : std::as_const(match.letters)) {
        match.score += beginsWord(path, letter) ? 8 : 1;
        match.score += letter == last + 1 ? 6 : 0;
        last = letter;
    }
    match.score -= match.letters.last() - match.letters.first() + 1 - static_cast<int>(text.size());
    return match;
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

std::optional<Match> match(const QString& path, const QString& text) {
    QString wanted = text;
    wanted.remove(u' ');
    if (wanted.isEmpty()) {
        return {};
    }
    // In the name alone it is worth more than across folders.
    constexpr int nameBonus = 24;
    const qsizetype name = path.lastIndexOf(u'/') + 1;
    auto found = matchFrom(path, wanted, name, Places::wordBegins);
    if (!found) {
        found = matchFrom(path, wanted, name, Places::all);
    }
    if (found) {
        found->score += nameBonus;
    } else {
        found = matchFrom(path, wanted, 0, Places::all);
    }
    if (found) {
        found->score -= static_cast<int>(path.size() / 16);
    }
    return found;
}

QList<Match> find(const QStringList& files, const QString& text, qsizetype limit) {
    QList<Match> found;
    for (qsizetype file = 0; file < files.size(); ++file) {
        if (auto hit = match(files[file], text)) {
            hit->file = file;
            found.append(*std::move(hit));
        }
    }
    const qsizetype kept = std::min(limit, found.size());
    const auto isBetter = [](const Match& a, const Match& b) {
        return std::tuple(-a.score, a.file) < std::tuple(-b.score, b.file);
    };
    std::partial_sort(found.begin(), found.begin() + kept, found.end(), isBetter);
    found.resize(kept);
    return found;
}

} // namespace orv::FileFinder
