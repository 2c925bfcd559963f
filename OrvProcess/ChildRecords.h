#pragma once

#include "OrvCore/ChildProcess.h"
#include "OrvCore/ChildRecord.h"
#include "OrvCore/ExitWatch.h"
#include "OrvCore/StoreFile.h"

#include <QList>

#include <memory>

namespace orv {

/// Where it is written down what runs, a file for each process group. What an application that was killed has left
/// running is found here by the next one.
///
/// A value. Blocking; any thread.
class ChildRecords {
public:
    /// What is written of one child; the file goes with the object.
    class Note {
    public:
        explicit Note(QString path) : m_path(std::move(path)) {}
        ~Note();
        Q_DISABLE_COPY_MOVE(Note)

    private:
        QString m_path;
    };

    /// With an empty folder nothing is written or found.
    explicit ChildRecords(QString folder = {}) : m_folder(std::move(folder)) {}

    /// What is to be in the environment of a child, so that those of its group are known when it is gone itself.
    [[nodiscard]] static EnvironmentEntries environment(const QString& mark);
    [[nodiscard]] static QString newMark();

    /// Writes that a child of this process runs, whose record has all but what can be looked up of `pid`, which leads a
    /// session of its own and was not waited for yet.
    [[nodiscard]] std::expected<std::shared_ptr<Note>, StoreError> note(ChildRecord child, pid_t pid) const;
    /// What lives though who followed it does not, in no order. Removes what is written of those that have ended, of
    /// other starts of the system, and what can't be read.
    [[nodiscard]] QList<ChildRecord> orphans() const;
    /// Whether a process of the group lives. False once the number may be another's: the leader's is, when it did not
    /// start at that time; without a leader, those of the group have to bear the mark.
    [[nodiscard]] static bool isAlive(const ChildRecord& child);
    /// Becomes readable once one of the children may be gone; those that are gone already are taken out of the list.
    [[nodiscard]] static ExitWatch watch(QList<ChildRecord>& children);
    void remove(const ChildRecord& child) const;

    /// Names this process, told from any other that has its number before or after it or at another start of the
    /// system.
    [[nodiscard]] static QString ownName();
    /// Whether the process of that name lives; false for what is none.
    [[nodiscard]] static bool livesByName(const QString& name);

private:
    [[nodiscard]] QString path(const ProcessIdentity& leader) const;

    QString m_folder;
};

} // namespace orv
