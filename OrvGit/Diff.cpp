#include "OrvGit/Diff.h"

#include "OrvGit/GitPath.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <span>

namespace orv {
namespace {

bool take(QByteArrayView& text, QByteArrayView prefix) {
    if (!text.startsWith(prefix)) {
        return false;
    }
    text = text.sliced(prefix.size());
    return true;
}

/// The decimal number at the beginning, which is gone then; nothing when there is none, or one too large to count on
/// from.
std::optional<int> takeNumber(QByteArrayView& text) {
    constexpr int largest = 1'000'000'000;
    qint64 value = 0;
    qsizetype digits = 0;
    while (digits < text.size() && digits < 11 && text[digits] >= '0' && text[digits] <= '9') {
        value = value * 10 + (text[digits] - '0');
        ++digits;
    }
    if (digits == 0 || value > largest) {
        return std::nullopt;
    }
    text = text.sliced(digits);
    return static_cast<int>(value);
}

/// "12,3" or "12", which stands for one line.
bool takeRange(QByteArrayView& text, int& start, int& count) {
    const auto first = takeNumber(text);
    const auto second = !first ? std::nullopt : take(text, ",") ? takeNumber(text) : std::optional(1);
    start = first.value_or(0);
    count = second.value_or(0);
    return second.has_value();
}

/// Without "a/" or "b/"; empty for "/dev/null".
QByteArray name(QByteArrayView text) {
    // A name with a blank in it is followed by a tab, in quotes or not; one with a tab in it is in quotes.
    if (text.endsWith('\t')) {
        text.chop(1);
    }
    const QByteArray path = GitPath::unquoted(text);
    return path == "/dev/null" ? QByteArray() : path.startsWith("a/") || path.startsWith("b/") ? path.sliced(2) : path;
}

/// The end of a quoted text that `text` begins with, behind the closing quote; -1 when there is none.
qsizetype endOfQuotes(QByteArrayView text) {
    for (qsizetype i = 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            return i + 1;
        }
    }
    return -1;
}

/// "a/x b/x" of the first line: what a file is called that has neither hunks nor a rename. Without quotes, the blank in
/// the middle is the one that has the same name on either side.
std::optional<std::pair<QByteArray, QByteArray>> namePair(QByteArrayView text) {
    const qsizetype middle = text.startsWith('"') ? endOfQuotes(text)
                             : text.endsWith('"') ? text.indexOf(" \"")
                                                  : text.size() / 2;
    if (middle <= 0 || middle >= text.size() || text[middle] != ' ') {
        return std::nullopt;
    }
    return std::pair{name(text.first(middle)), name(text.sliced(middle + 1))};
}

class Parser {
public:
    explicit Parser(const QByteArray& bytes) : m_bytes(bytes) {}

    QList<FileDiff> parse() {
        while (m_next < m_bytes.size()) {
            const qsizetype begin = m_next;
            QByteArrayView line = takeLine();
            if (take(line, "diff --git ")) {
                if (const auto names = namePair(line)) {
                    add(names->first, names->second, DiffContent::text);
                } else {
                    add({}, {}, DiffContent::text);
                }
            } else if (take(line, "diff --cc ") || take(line, "diff --combined ")) {
                const QByteArray path = GitPath::unquoted(line);
                add(path, path, DiffContent::conflict);
            } else if (take(line, "* Unmerged path ")) {
                const QByteArray path = GitPath::unquoted(line);
                add(path, path, DiffContent::conflict);
            } else if (!m_files.isEmpty() && line.startsWith("@@")) {
                readHunk(line);
            } else if (!m_files.isEmpty() && m_files.back().hunks.isEmpty()) {
                readHeader(QByteArrayView(m_bytes).sliced(begin, line.size()));
            }
        }
        std::ranges::for_each(m_files, finish);
        joinKinds();
        return std::move(m_files);
    }

private:
    QByteArrayView takeLine() {
        const qsizetype begin = m_next;
        const qsizetype end = m_bytes.indexOf('\n', begin);
        m_next = end < 0 ? m_bytes.size() : end + 1;
        return QByteArrayView(m_bytes).sliced(begin, (end < 0 ? m_bytes.size() : end) - begin);
    }

    void add(const QByteArray& oldPath, const QByteArray& newPath, DiffContent content) {
        FileDiff file;
        file.oldPath = oldPath;
        file.newPath = newPath;
        file.content = content;
        file.bytes = m_bytes;
        m_files.append(std::move(file));
    }

    void readHeader(QByteArrayView line) {
        FileDiff& file = m_files.back();
        if (take(line, "old mode ")) {
            file.oldMode = line.toByteArray();
        } else if (take(line, "new mode ")) {
            file.newMode = line.toByteArray();
        } else if (take(line, "new file mode ")) {
            file.newMode = line.toByteArray();
            file.change = DiffChange::added;
        } else if (take(line, "deleted file mode ")) {
            file.oldMode = line.toByteArray();
            file.change = DiffChange::deleted;
        } else if (take(line, "rename from ") || take(line, "copy from ")) {
            file.oldPath = GitPath::unquoted(line);
        } else if (take(line, "rename to ")) {
            file.newPath = GitPath::unquoted(line);
            file.change = DiffChange::renamed;
        } else if (take(line, "copy to ")) {
            file.newPath = GitPath::unquoted(line);
            file.change = DiffChange::copied;
        } else if (take(line, "index ")) {
            if (const qsizetype blank = line.indexOf(' '); blank >= 0) {
                file.oldMode = line.sliced(blank + 1).toByteArray();
                file.newMode = file.oldMode;
            }
        } else if (take(line, "--- ")) {
            file.oldPath = name(line);
        } else if (take(line, "+++ ")) {
            file.newPath = name(line);
        } else if (line.startsWith("Binary files ") || line.startsWith("GIT binary patch")) {
            file.content = DiffContent::binary;
        }
    }

    /// "@@ -1,2 +3,4 @@ heading", with one more "@" for each further side of a combined diff.
    void readHunk(QByteArrayView line) {
        const auto marks = std::ranges::find_if(line, [](char letter) { return letter != '@'; }) - line.begin();
        const qsizetype sides = marks - 1;
        constexpr qsizetype mostSides = 64;
        line = line.sliced(marks);
        DiffHunk hunk;
        std::array<int, mostSides> left{}; // NOLINT
        if (sides > mostSides) {
            return;
        }
        for (qsizetype side = 0; side < sides; ++side) {
            int start = 0;
            int& count = left[static_cast<size_t>(side)];
            if (!take(line, " -") || !takeRange(line, start, count)) {
                return;
            }
            if (side == 0) {
                hunk.oldStart = start;
                hunk.oldCount = count;
            }
        }
        if (!take(line, " +") || !takeRange(line, hunk.newStart, hunk.newCount) || !take(line, " @")) {
            return;
        }
        while (take(line, "@")) {
        }
        (void)take(line, " ");
        hunk.heading = QString::fromUtf8(line);
        readLines(hunk, std::span(left).first(static_cast<size_t>(sides)));
        m_files.back().hunks.append(std::move(hunk));
    }

    void readLines(DiffHunk& hunk, std::span<int> oldLeft) {
        const auto sides = static_cast<qsizetype>(oldLeft.size());
        int newLeft = hunk.newCount;
        int oldNumber = hunk.oldStart;
        int newNumber = hunk.newStart;
        const auto isOpen = [](int left) { return left > 0; };
        while (m_next < m_bytes.size()) {
            const qsizetype begin = m_next;
            if (m_bytes[begin] == '\\') {
                (void)takeLine();
                if (!hunk.lines.isEmpty()) {
                    hunk.lines.back().endsWithoutLineFeed = true;
                }
                continue;
            }
            if (newLeft <= 0 && std::ranges::none_of(oldLeft, isOpen)) {
                return;
            }
            const QByteArrayView line = takeLine();
            const QByteArrayView marks = line.first(std::min(sides, line.size()));
            const auto isMark = [](char letter) { return letter == ' ' || letter == '+' || letter == '-'; };
            if (marks.size() < sides || !std::ranges::all_of(marks, isMark)) {
                m_next = begin;
                return;
            }
            const bool isRemoved = marks.contains('-');
            const bool isAdded = !isRemoved && marks.contains('+');
            const bool inOld = marks.front() == (isRemoved ? '-' : ' ');
            hunk.lines.append({
                .kind = isRemoved ? DiffLineKind::removed
                        : isAdded ? DiffLineKind::added
                                  : DiffLineKind::context,
                .oldNumber = inOld ? oldNumber++ : 0,
                .newNumber = isRemoved ? 0 : newNumber++,
                .begin = begin + sides,
                .length = line.size() - sides,
            });
            newLeft -= isRemoved ? 0 : 1;
            for (qsizetype side = 0; side < sides; ++side) {
                oldLeft[static_cast<size_t>(side)] -= marks[side] == (isRemoved ? '-' : ' ') ? 1 : 0;
            }
        }
    }

    /// A path that is of another kind now has two parts: it is deleted, and then added. They are one change.
    void joinKinds() {
        for (qsizetype i = 0; i + 1 < m_files.size(); ++i) {
            const FileDiff& old = m_files[i];
            const FileDiff& next = m_files[i + 1];
            if (old.change != DiffChange::deleted || next.change != DiffChange::added || old.oldPath != next.newPath) {
                continue;
            }
            FileDiff joined = old;
            joined.newPath = next.newPath;
            joined.newMode = next.newMode;
            joined.change = DiffChange::modified;
            joined.content = DiffContent::otherKind;
            joined.hunks += next.hunks;
            m_files[i] = std::move(joined);
            m_files.removeAt(i + 1);
        }
    }

    /// Of a submodule at the same commit, only the lines tell that it is none of the files.
    static bool namesCommits(const FileDiff& file) {
        const auto isCommit = [&file](const DiffLine& line) {
            return file.text(line).startsWith("Subproject commit ");
        };
        return file.oldMode.isEmpty() && file.newMode.isEmpty() && file.hunks.size() == 1 &&
               std::ranges::all_of(file.hunks.front().lines, isCommit);
    }

    static void finish(FileDiff& file) {
        if (file.change == DiffChange::added) {
            file.oldPath.clear();
        } else if (file.change == DiffChange::deleted) {
            file.newPath.clear();
        }
        if (file.content == DiffContent::text) {
            const QByteArray& mode = file.newMode.isEmpty() ? file.oldMode : file.newMode;
            file.content = mode == "160000" || namesCommits(file) ? DiffContent::submodule
                           : mode == "120000"                     ? DiffContent::symlink
                                                                  : DiffContent::text;
        }
    }

    const QByteArray m_bytes;
    qsizetype m_next = 0;
    QList<FileDiff> m_files;
};

} // namespace

int FileDiff::count(DiffLineKind kind) const {
    qsizetype found = 0;
    for (const DiffHunk& hunk : hunks) {
        found += std::ranges::count(hunk.lines, kind, &DiffLine::kind);
    }
    return static_cast<int>(found);
}

QList<FileDiff> parseDiff(const QByteArray& bytes) {
    return Parser(bytes).parse();
}

} // namespace orv
