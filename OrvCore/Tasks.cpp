#include "OrvCore/Tasks.h"

#include "OrvCore/JsonRecord_p.h"
#include "OrvCore/Paths.h"

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace orv {

template <json::RecordOf<ProjectTask> Self, typename Visitor>
void visitFields(Self& task, Visitor& visitor) {
    visitor.required("id"_L1, task.id);
    visitor.required("projectID"_L1, task.projectID);
    visitor.required("projectName"_L1, task.projectName);
    visitor.required("title"_L1, task.title);
    visitor.required("notes"_L1, task.notes);
    visitor.required("createdAt"_L1, task.createdAt);
    visitor.optional("doneAt"_L1, task.doneAt);
}

namespace {

using TaskList = QList<ProjectTask>;

QByteArray encodeTasks(const TaskList& tasks) {
    return QJsonDocument(json::Codec<TaskList>::encode(tasks).toArray()).toJson(QJsonDocument::Indented);
}

std::expected<TaskList, QString> decodeTasks(const QByteArray& bytes) {
    const auto document = json::parse(bytes);
    if (!document) {
        return std::unexpected(document.error());
    }
    if (!document->isArray()) {
        return std::unexpected(u"must be an array"_s);
    }
    Decoded<TaskList> tasks = json::Codec<TaskList>::decode(document->array());
    if (!tasks) {
        return std::unexpected(tasks.error().text());
    }
    return *std::move(tasks);
}

/// A change of the task of that id; nothing where there is none.
StoreFile<TaskList>::Change changeOf(const QUuid& id, std::function<void(ProjectTask&)> change) {
    return [id, change = std::move(change)](TaskList& tasks) {
        const auto task = std::ranges::find(tasks, id, &ProjectTask::id);
        if (task != tasks.end()) {
            change(*task);
        }
    };
}

} // namespace

QJsonObject ProjectTask::toJson() const {
    return json::encode(*this);
}
Decoded<ProjectTask> ProjectTask::fromJson(const QJsonObject& json) {
    return json::decode<ProjectTask>(json);
}

TaskStore::TaskStore(const QString& filePath)
    : m_file(filePath, {encodeTasks, decodeTasks, [] { return TaskList(); }}) {}

QString TaskStore::defaultPath() {
    return Paths::supportDirectory() + u"/tasks.json"_s;
}

QList<ProjectTask> TaskStore::tasks() const {
    return m_file.record();
}

QList<ProjectTask> TaskStore::tasks(const QString& projectID) const {
    TaskList found = m_file.record();
    found.removeIf([&projectID](const ProjectTask& task) { return task.projectID != projectID; });
    return found;
}

QList<ProjectTask> TaskStore::recentlyDone(int limit) const {
    TaskList done = m_file.record();
    done.removeIf([](const ProjectTask& task) { return !task.isDone(); });
    std::ranges::stable_sort(done, std::greater(), [](const ProjectTask& task) { return *task.doneAt; });
    return done.first(std::clamp<qsizetype>(limit, 0, done.size()));
}

int TaskStore::openCount() const {
    return m_file.read([](const TaskList& tasks) {
        return static_cast<int>(std::ranges::count_if(tasks, [](const ProjectTask& task) { return !task.isDone(); }));
    });
}

QUuid TaskStore::add(const QString& title, const QString& notes, const QString& projectID, const QString& projectName) {
    const ProjectTask task{
        .id = QUuid::createUuid(),
        .projectID = projectID,
        .projectName = projectName,
        .title = title,
        .notes = notes,
        .createdAt = QDateTime::currentDateTimeUtc(),
        .doneAt = {},
    };
    std::ignore = change([task](TaskList& tasks) { tasks.append(task); });
    return task.id;
}

StoreResult TaskStore::setDone(const QUuid& id, bool done, const QDateTime& at) {
    return change(changeOf(
        id, [done, at = at.toUTC()](ProjectTask& task) { task.doneAt = done ? std::optional(at) : std::nullopt; }));
}

StoreResult TaskStore::rename(const QUuid& id, const QString& title, const QString& notes) {
    return change(changeOf(id, [title, notes](ProjectTask& task) {
        task.title = title;
        task.notes = notes;
    }));
}

StoreResult TaskStore::remove(const QUuid& id) {
    return change([id](TaskList& tasks) { tasks.removeIf([&id](const ProjectTask& task) { return task.id == id; }); });
}

StoreResult TaskStore::restore(const ProjectTask& task) {
    return change([task](TaskList& tasks) {
        if (std::ranges::find(tasks, task.id, &ProjectTask::id) != tasks.end()) {
            return;
        }
        const auto next =
            std::ranges::find_if(tasks, [&task](const ProjectTask& other) { return other.createdAt > task.createdAt; });
        tasks.insert(next, task);
    });
}

StoreResult TaskStore::change(StoreFile<QList<ProjectTask>>::Change change) {
    m_lastResult = m_file.change(std::move(change));
    return m_lastResult;
}

StoreResult TaskStore::lastResult() const {
    return m_lastResult;
}
StoreResult TaskStore::flush() {
    return m_file.flush();
}
bool TaskStore::reload() {
    return m_file.reload();
}
QString TaskStore::filePath() const {
    return m_file.path();
}

} // namespace orv
