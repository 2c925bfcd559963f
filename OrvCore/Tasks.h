#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/StoreFile.h"

#include <QUuid>

namespace orv {

/// A short to-do item of one project; done exactly when `doneAt` is present.
struct ProjectTask {
    QUuid id;
    QString projectID;
    QString projectName; ///< as it was when the task was added
    QString title;
    QString notes;
    QDateTime createdAt; ///< UTC
    std::optional<QDateTime> doneAt;

    bool operator==(const ProjectTask&) const = default;
    [[nodiscard]] bool isDone() const { return doneAt.has_value(); }
    /// Dates are numbers: seconds since 2001-01-01 00:00 UTC, with a fraction.
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<ProjectTask> fromJson(const QJsonObject& json);
};

/// "tasks.json": every task in the order in which they were added. Used by one thread.
class TaskStore {
public:
    explicit TaskStore(const QString& filePath = defaultPath());
    [[nodiscard]] static QString defaultPath();

    [[nodiscard]] QList<ProjectTask> tasks() const;
    [[nodiscard]] QList<ProjectTask> tasks(const QString& projectID) const;
    /// Done tasks, the most recently finished first, at most `limit`.
    [[nodiscard]] QList<ProjectTask> recentlyDone(int limit) const;
    [[nodiscard]] int openCount() const;

    /// The new task's id.
    QUuid add(const QString& title, const QString& notes, const QString& projectID, const QString& projectName);
    /// An unknown id changes nothing, here and below.
    StoreResult setDone(const QUuid& id, bool done, const QDateTime& at);
    StoreResult rename(const QUuid& id, const QString& title, const QString& notes);
    StoreResult remove(const QUuid& id);
    /// A task that was removed, where it stood: behind those that were added before it.
    StoreResult restore(const ProjectTask& task);

    /// The outcome of the last write: `add` answers with the id instead.
    [[nodiscard]] StoreResult lastResult() const;
    /// Writes what could not be written before, if anything.
    StoreResult flush();
    bool reload();
    [[nodiscard]] QString filePath() const;

private:
    StoreResult change(StoreFile<QList<ProjectTask>>::Change change);

    StoreFile<QList<ProjectTask>> m_file;
    StoreResult m_lastResult;
};

} // namespace orv
