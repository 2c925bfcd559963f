#include "OrvUI/TaskLists.h"

#include "OrvCore/Agents.h"
#include "OrvCore/Async.h"
#include "OrvUI/AgentRows.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/RelativeDate.h"
#include "OrvUI/Tile.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

TaskRow row(const ProjectTask& task, const QString& projectName, const QDateTime& now) {
    return {
        .key = task.id.toString(QUuid::WithoutBraces),
        .title = task.title,
        .notes = task.notes,
        .projectID = task.projectID,
        .projectName = projectName,
        .tileIndex = Tile::index(projectName),
        .tileLetter = Tile::letter(projectName),
        .isDone = task.isDone(),
        .agentName = {},
        .when = task.doneAt ? RelativeDate::moment(*task.doneAt, now) : RelativeDate::day(task.createdAt, now),
    };
}

} // namespace

const std::vector<RowRole<TaskRow>>& TaskRow::roles() {
    static const std::vector<RowRole<TaskRow>> table{
        memberRole<&TaskRow::key, TaskRow>("key"),
        memberRole<&TaskRow::title, TaskRow>("title"),
        memberRole<&TaskRow::notes, TaskRow>("notes"),
        memberRole<&TaskRow::projectID, TaskRow>("projectID"),
        memberRole<&TaskRow::projectName, TaskRow>("projectName"),
        memberRole<&TaskRow::tileIndex, TaskRow>("tileIndex"),
        memberRole<&TaskRow::tileLetter, TaskRow>("tileLetter"),
        memberRole<&TaskRow::isDone, TaskRow>("isDone"),
        memberRole<&TaskRow::agentName, TaskRow>("agentName"),
        memberRole<&TaskRow::when, TaskRow>("when"),
        memberRole<&TaskRow::groupCount, TaskRow>("groupCount"),
    };
    return table;
}

TaskLists::TaskLists(AppModel& model, QObject* parent)
    : QObject(parent), m_model(model), m_updateSoon(this, [this] { update(); }) {
    for (const auto signal :
         {&AppModel::tasksChanged, &AppModel::pinsChanged, &AppModel::projectsChanged,
          &AppModel::runningAgentCountChanged}) {
        connect(&model, signal, this, [this] { m_updateSoon(); });
    }
    update();
}

void TaskLists::setProjectID(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    if (projectID == m_projectID) {
        return;
    }
    m_projectID = projectID;
    update();
    Q_EMIT projectIDChanged();
}

void TaskLists::update() {
    const QDateTime now = QDateTime::currentDateTime();
    const QStringList& pins = m_model.settings().settings().pinnedProjectIDs;
    QList<TaskRow> open;
    QHash<QString, int> counts;
    QList<std::pair<QDateTime, TaskRow>> done;
    for (const ProjectTask& task : m_model.tasks()) {
        if (!m_projectID.isEmpty() && task.projectID != m_projectID) {
            continue;
        }
        const Project* project = m_model.project(task.projectID);
        TaskRow made = row(task, project != nullptr ? project->name : task.projectName, now);
        for (const AgentRun* run : m_model.agentRuns()) {
            if (run->isRunning() && run->facts().linkedTaskID == task.id) {
                made.agentName = agentText(agentInfo(run->facts().agent).displayName);
                break;
            }
        }
        if (task.doneAt) {
            done.append({*task.doneAt, std::move(made)});
        } else {
            ++counts[task.projectID];
            open.append(std::move(made));
        }
    }
    for (TaskRow& task : open) {
        task.groupCount = counts.value(task.projectID);
    }
    std::ranges::stable_sort(open, {}, [&pins](const TaskRow& task) {
        const qsizetype pin = pins.indexOf(task.projectID);
        return std::tuple(pin < 0 ? pins.size() : pin, task.projectName.toCaseFolded(), task.projectID);
    });
    std::ranges::stable_sort(done, std::greater(), [](const auto& entry) { return entry.first; });
    QList<TaskRow> doneRows;
    QList<TaskRow> recent;
    for (auto& [at, task] : done) {
        task.groupCount = static_cast<int>(done.size());
        if (recent.size() < recentLimit && at.daysTo(now) < recentDays) {
            recent.append(task);
        }
        doneRows.append(task);
    }
    for (TaskRow& task : recent) {
        task.groupCount = static_cast<int>(recent.size());
    }
    m_open.setRows(open);
    m_done.setRows(doneRows);
    m_recentlyDone.setRows(recent);
    Q_EMIT changed();
}

bool TaskLists::add(const QString& title, const QString& notes, const QString& projectID) {
    const Project* project = m_model.project(projectID);
    const QString shown = title.simplified();
    if (project == nullptr || shown.isEmpty()) {
        return false;
    }
    m_model.addTask(shown, notes.trimmed(), *project);
    return true;
}

void TaskLists::keepWords(const QString& place, const QString& title, const QString& projectID) {
    const Unadded unadded{title, projectID};
    if (unadded != m_unadded.value(place)) {
        m_unadded.insert(place, unadded);
        Q_EMIT wordsChanged(place);
    }
}

void TaskLists::setDone(const QString& key, bool isDone) {
    m_model.setTaskDone(QUuid::fromString(key), isDone);
}

void TaskLists::rename(const QString& key, const QString& title, const QString& notes) {
    if (const QString shown = title.simplified(); !shown.isEmpty()) {
        m_model.renameTask(QUuid::fromString(key), shown, notes.trimmed());
    }
}

void TaskLists::remove(const QString& key) {
    m_model.deleteTask(QUuid::fromString(key));
}

void TaskLists::refresh() {
    update();
}

} // namespace orv
