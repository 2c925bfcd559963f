#include "OrvGit/CloneProgress.h"

#include "GitWords_p.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

struct Row {
    QLatin1StringView word;
    ClonePhase phase;
    double begin; ///< of its share of the whole
    double end;
};

constexpr std::array rows{
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Enumerating objects")), ClonePhase::counting, 0.0, 0.0},
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Counting objects")), ClonePhase::counting, 0.0, 0.03},
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Compressing objects")), ClonePhase::compressing, 0.03, 0.10},
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Receiving objects")), ClonePhase::receiving, 0.10, 0.75},
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Resolving deltas")), ClonePhase::resolving, 0.75, 0.90},
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Filtering content")), ClonePhase::filtering, 0.90, 0.95},
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Updating files")), ClonePhase::checkingOut, 0.95, 1.0},
    Row{QLatin1StringView(QT_TRANSLATE_NOOP("Git", "Checking out files")), ClonePhase::checkingOut, 0.95, 1.0},
};

const Row& rowOf(ClonePhase phase) {
    // The last of a phase: the first row is only git's other word for counting.
    return *std::ranges::find(rows.rbegin(), rows.rend(), phase, &Row::phase);
}

/// The number at the beginning, which is at most 100.
std::optional<int> percentage(QStringView text) {
    const qsizetype sign = text.indexOf(u'%');
    bool isNumber = false;
    const int value = sign > 0 && sign <= 3 ? text.first(sign).toInt(&isNumber) : 0;
    return isNumber && value >= 0 && value <= 100 ? std::optional(value) : std::nullopt;
}

} // namespace

double CloneProgress::fraction() const {
    const Row& row = rowOf(phase);
    return row.begin + (row.end - row.begin) * percent.value_or(0) / 100;
}

QString CloneProgress::title() const {
    return GitWords::tr(phase == ClonePhase::checkingOut ? "Checking out files" : rowOf(phase).word.data());
}

std::optional<CloneProgress> parseCloneProgress(const QString& line) {
    QStringView text = QStringView(line).trimmed();
    if (constexpr auto remote = "remote: "_L1; text.startsWith(remote)) {
        text = text.sliced(remote.size()).trimmed();
    }
    const qsizetype colon = text.indexOf(u':');
    const QStringView word = text.first(std::max(colon, qsizetype{0}));
    const auto row = std::ranges::find_if(rows, [word](const Row& each) { return word == each.word; });
    if (row == rows.end()) {
        return std::nullopt;
    }
    text = text.sliced(colon + 1).trimmed();
    CloneProgress progress{row->phase, percentage(text), {}};
    // "45% (450/1000), 1.20 MiB | 2.00 MiB/s": what stands after the first comma, but for the last word of a phase.
    if (const qsizetype comma = text.indexOf(u','); comma >= 0) {
        QStringView detail = text.sliced(comma + 1).trimmed();
        if (constexpr auto done = "done."_L1; detail.endsWith(done)) {
            detail = detail.chopped(done.size()).trimmed();
            detail = detail.endsWith(u',') ? detail.chopped(1) : detail;
        }
        progress.detail = detail.toString();
    }
    return progress;
}

} // namespace orv
