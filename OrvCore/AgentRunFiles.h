#pragma once

#include "OrvCore/AgentRunRecord.h"
#include "OrvCore/StoreFile.h"
#include "OrvCore/UniqueFd.h"

#include <functional>

namespace orv {

/// Where the runs of agents are kept: a folder each, with "run.json", what the agent printed and what it changed. Every
/// process on this folder sees the runs of all; the one that has started a run holds a lock in its folder until it is
/// over.
///
/// A value; its functions block, on any thread.
class AgentRunFiles {
public:
    explicit AgentRunFiles(QString folder = defaultFolder()) : m_folder(std::move(folder)) {}
    [[nodiscard]] static QString defaultFolder();

    [[nodiscard]] const QString& folder() const { return m_folder; }
    /// A file that becomes another one whenever a run is written, asked to stop or removed: for whoever watches.
    [[nodiscard]] QString marker() const { return m_folder + QStringLiteral("/changed"); }
    [[nodiscard]] QString runFolder(const QUuid& id) const;
    [[nodiscard]] QString outputFile(const QUuid& id) const { return runFolder(id) + QStringLiteral("/output"); }
    [[nodiscard]] QString diffFile(const QUuid& id) const { return runFolder(id) + QStringLiteral("/changes.diff"); }
    /// For what is only needed while the run goes on.
    [[nodiscard]] QString scratchFolder(const QUuid& id) const { return runFolder(id) + QStringLiteral("/scratch"); }

    /// Makes the run's folder and holds it for as long as the descriptor is open, also against this process.
    [[nodiscard]] std::expected<UniqueFd, StoreError> hold(const QUuid& id) const;
    [[nodiscard]] bool isHeld(const QUuid& id) const;

    [[nodiscard]] StoreResult write(const AgentRunRecord& record) const;
    /// Changes the record as it stands on disk. Nothing when there is none that can be read.
    std::optional<AgentRunRecord> change(const QUuid& id, const std::function<void(AgentRunRecord&)>& change) const;

    struct Stored {
        AgentRunRecord record;
        bool isHeld = false;
        bool isAskedToStop = false;

        bool operator==(const Stored&) const = default;
    };
    /// Newest first. What can't be read is left out, and left alone.
    [[nodiscard]] QList<Stored> read() const;
    /// Tells whoever holds the run.
    [[nodiscard]] StoreResult askToStop(const QUuid& id) const;

    struct Limits {
        int runs = 200;
        qint64 bytes = qint64{512} * 1024 * 1024; ///< of all that is kept
    };
    /// Removes the oldest runs until the rest is within the limits; none that goes on, and none whose work tree is
    /// still open.
    void prune(const Limits& limits) const;

private:
    [[nodiscard]] std::optional<AgentRunRecord> readOne(const QString& runFolder) const;
    void touchMarker() const;

    QString m_folder;
};

} // namespace orv
