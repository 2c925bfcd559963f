#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>

namespace orv {

/// Why a git operation did not do what it was asked for. `text()` is shown to the user as it is.
struct GitError {
    enum class Kind {
        commandFailed, ///< code, detail: what git wrote to its standard error
        conflicts,     ///< paths
        authFailed,    ///< detail: the line that says so
        notARepo,
        timeout,
        noUpstream,
        nothingToCommit,
        emptyMessage,
        cannotFastForward,
        startFailed, ///< detail: why git could not be started
        cancelled,
        refused, ///< detail: why nothing was run, as a sentence
    };
    Kind kind = Kind::commandFailed;
    int code = 0;
    QString detail;
    QStringList paths;

    bool operator==(const GitError&) const = default;
    [[nodiscard]] QString text() const;

    [[nodiscard]] static GitError of(Kind kind) { return {kind, 0, {}, {}}; }
    [[nodiscard]] static GitError refused(const QString& sentence) { return {Kind::refused, 0, sentence, {}}; }
    [[nodiscard]] static GitError conflicts(const QStringList& paths) { return {Kind::conflicts, 0, {}, paths}; }
    /// What a command means that exited with `code` and wrote `printed`, which is in English; colours are left out.
    [[nodiscard]] static GitError classify(const QString& printed, int code);
};

template <typename T>
using GitOutcome = std::expected<T, GitError>;

/// The path of the lock on an index that kept a command from running; empty when that is not what `errors` say.
[[nodiscard]] QString lockedIndex(const QString& errors);

} // namespace orv
