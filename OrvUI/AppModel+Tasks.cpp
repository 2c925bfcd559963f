#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"

#include <algorithm>

namespace orv {

QList<ProjectTask> AppModel::tasks(const Project& project) const {
    QList<ProjectTask> found;
    for (const ProjectTask& task : d->tasks) {
        if (task.projectID == project.id) {
            found.append(task);
        }
    }
    return found;
}

QUuid AppModel::addTask(const QString& title, const QString& notes, const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    const QUuid id = d->taskStore.add(title, notes, project.id, project.name);
    reloadTasks();
    reportFailure(d->taskStore.lastResult());
    return id;
}

void AppModel::renameTask(const QUuid& id, const QString& title, const QString& notes) {
    ORV_ASSERT_MAIN_THREAD();
    const StoreResult result = d->taskStore.rename(id, title, notes);
    reloadTasks();
    reportFailure(result);
}

void AppModel::setTaskDone(const QUuid& id, bool done) {
    ORV_ASSERT_MAIN_THREAD();
    const StoreResult result = d->taskStore.setDone(id, done, QDateTime::currentDateTimeUtc());
    reloadTasks();
    reportFailure(result);
}

void AppModel::deleteTask(const QUuid& id) {
    ORV_ASSERT_MAIN_THREAD();
    const auto known = std::ranges::find(d->tasks, id, &ProjectTask::id);
    const std::optional<ProjectTask> deleted = known == d->tasks.end() ? std::nullopt : std::optional(*known);
    const StoreResult result = d->taskStore.remove(id);
    reloadTasks();
    reportFailure(result);
    if (deleted) {
        d->undo.offer(tr("Deleted “%1”.").arg(deleted->title), [this, task = *deleted] {
            const StoreResult restored = d->taskStore.restore(task);
            reloadTasks();
            reportFailure(restored);
        });
    }
}

void AppModel::reloadTasks() {
    assign(this, d->tasks, d->taskStore.tasks(), &AppModel::tasksChanged);
    publishSnapshot();
}

} // namespace orv
