#pragma once

#include <QString>

#include <optional>

namespace orv {

/// What a clone is busy with, in the order in which it happens.
enum class ClonePhase { counting, compressing, receiving, resolving, filtering, checkingOut };

struct CloneProgress {
    ClonePhase phase = ClonePhase::counting;
    std::optional<int> percent; ///< 0 to 100; absent while git does not know how much there is
    QString detail;             ///< what follows the count ("1.20 MiB | 2.00 MiB/s"); may be empty

    bool operator==(const CloneProgress&) const = default;
    /// Of the whole clone, 0 to 1, a rough guess; it does not fall from one phase to the next.
    [[nodiscard]] double fraction() const;
    /// "Receiving objects".
    [[nodiscard]] QString title() const;
};

/// One line of `git clone --progress`; nothing for a line that is no progress.
[[nodiscard]] std::optional<CloneProgress> parseCloneProgress(const QString& line);

} // namespace orv
