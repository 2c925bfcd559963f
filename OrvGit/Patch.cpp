#include "OrvGit/Patch.h"

#include "OrvGit/GitPath.h"

#include <algorithm>

namespace orv {
namespace {

constexpr QByteArrayView noLineFeed("\n\\ No newline at end of file\n");

struct PatchLine {
    char mark = ' ';
    QByteArrayView text;
    bool endsWithoutLineFeed = false;
};

class PatchWriter {
public:
    PatchWriter(const FileDiff& diff, const DiffSelection& selection, PatchDirection direction)
        : m_diff(diff), m_selection(selection), m_isReverse(direction == PatchDirection::reverse) {}

    std::optional<QByteArray> write() {
        QByteArray body;
        for (qsizetype index = 0; index < m_diff.hunks.size(); ++index) {
            writeHunk(index, body);
        }
        return body.isEmpty() ? std::nullopt : std::optional(header() + body);
    }

private:
    [[nodiscard]] bool isChosen(qsizetype hunk, qsizetype line) const {
        const auto found = m_selection.find(hunk);
        return found != m_selection.end() && found->second.contains(line);
    }

    /// What the hunk's lines are in the patch; empty when none of its changes is chosen.
    std::vector<PatchLine> chosenLines(qsizetype index) {
        const DiffHunk& hunk = m_diff.hunks[index];
        const char absent = m_isReverse ? '-' : '+'; // on the side that is there
        std::vector<PatchLine> lines;
        bool hasChange = false;
        for (qsizetype i = 0; i < hunk.lines.size(); ++i) {
            const DiffLine& line = hunk.lines[i];
            PatchLine made{' ', m_diff.text(line), line.endsWithoutLineFeed};
            if (line.kind != DiffLineKind::context) {
                const char mark = line.kind == DiffLineKind::added ? '+' : '-';
                if (isChosen(index, i)) {
                    made.mark = mark;
                    hasChange = true;
                } else {
                    m_isWhole = false;
                    if (mark == absent) {
                        continue;
                    }
                }
            }
            lines.push_back(made);
        }
        if (hasChange) {
            mendLineFeeds(lines);
        } else {
            lines.clear();
        }
        return lines;
    }

    /// A line without a line feed can only be the last one of its side. Where a chosen line follows it, the patch gives
    /// it a line feed on the side that comes to be.
    void mendLineFeeds(std::vector<PatchLine>& lines) const {
        const char gone = m_isReverse ? '+' : '-'; // only on the side that is there
        const char made = m_isReverse ? '-' : '+';
        for (size_t i = 0; i < lines.size(); ++i) {
            const auto isOnNewSide = [gone](const PatchLine& line) { return line.mark != gone; };
            const bool isLast =
                std::none_of(lines.begin() + static_cast<std::ptrdiff_t>(i) + 1, lines.end(), isOnNewSide);
            if (!lines[i].endsWithoutLineFeed || isLast || lines[i].mark == gone) {
                continue;
            }
            if (lines[i].mark == made) {
                lines[i].endsWithoutLineFeed = false;
                continue;
            }
            const PatchLine replaced{made, lines[i].text, false};
            lines[i].mark = gone;
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(i) + 1, replaced);
        }
    }

    void writeHunk(qsizetype index, QByteArray& body) {
        const DiffHunk& hunk = m_diff.hunks[index];
        const std::vector<PatchLine> lines = chosenLines(index);
        if (lines.empty()) {
            return;
        }
        int oldCount = 0;
        int newCount = 0;
        for (const PatchLine& line : lines) {
            oldCount += line.mark == '+' ? 0 : 1;
            newCount += line.mark == '-' ? 0 : 1;
        }
        // The lines before the hunk, on the side that is there; on the other one the hunks before it make a difference.
        const int before =
            m_isReverse ? hunk.newStart - (hunk.newCount > 0 ? 1 : 0) : hunk.oldStart - (hunk.oldCount > 0 ? 1 : 0);
        const int oldBefore = m_isReverse ? before - m_grown : before;
        const int newBefore = m_isReverse ? before : before + m_grown;
        m_grown += newCount - oldCount;
        const auto range = [](int linesBefore, int count) {
            return QByteArray::number(std::max(linesBefore, 0) + (count > 0 ? 1 : 0)) + ',' + QByteArray::number(count);
        };
        body += "@@ -" + range(oldBefore, oldCount) + " +" + range(newBefore, newCount) + " @@\n";
        for (const PatchLine& line : lines) {
            body += line.mark;
            body += line.text;
            body += line.endsWithoutLineFeed ? noLineFeed : QByteArrayView("\n");
        }
    }

    /// A file comes to be when the side that is there lacks it, and goes when every line of it does.
    [[nodiscard]] QByteArray header() const {
        const bool isNew = m_diff.change == DiffChange::added && (!m_isReverse || m_isWhole);
        const bool isGone = m_diff.change == DiffChange::deleted && (m_isReverse || m_isWhole);
        const QByteArray oldName = GitPath::quoted("a/" + m_diff.path());
        const QByteArray newName = GitPath::quoted("b/" + m_diff.path());
        QByteArray text = "diff --git " + oldName + ' ' + newName + '\n';
        if (isNew) {
            text += "new file mode " + m_diff.newMode + '\n';
        } else if (isGone) {
            text += "deleted file mode " + m_diff.oldMode + '\n';
        }
        text += "--- " + (isNew ? QByteArray("/dev/null") : oldName) + '\n';
        return text + "+++ " + (isGone ? QByteArray("/dev/null") : newName) + '\n';
    }

    const FileDiff& m_diff;
    const DiffSelection& m_selection;
    const bool m_isReverse;
    bool m_isWhole = true; ///< every change is chosen
    int m_grown = 0;       ///< by how many lines the hunks so far make the new side longer
};

} // namespace

DiffSelection wholeHunk(const FileDiff& diff, qsizetype hunk) {
    std::set<qsizetype> lines;
    for (qsizetype i = 0; i < diff.hunks[hunk].lines.size(); ++i) {
        lines.insert(lines.end(), i);
    }
    return {{hunk, std::move(lines)}};
}

std::optional<QByteArray> makePatch(const FileDiff& diff, const DiffSelection& selection, PatchDirection direction) {
    return diff.canBeDivided() ? PatchWriter(diff, selection, direction).write() : std::nullopt;
}

} // namespace orv
