#include "CliSupport.h"
#include "OrvCore/Tasks.h"
#include "TextLayout.h"
#include "WidgetUpdate.h"

#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr qsizetype shortIDLength = 8;

QString shortID(const ProjectTask& task) {
    return task.id.toString(QUuid::WithoutBraces).first(shortIDLength);
}

/// The tasks of the project that a word means. A project that is gone still has its tasks: nothing is scanned.
QList<ProjectTask> tasksOf(const QList<ProjectTask>& tasks, const QString& word) {
    const QString path = absolutePath(word);
    QList<ProjectTask> found;
    std::copy_if(tasks.begin(), tasks.end(), std::back_inserter(found), [&](const ProjectTask& task) {
        return task.projectID == word || task.projectID == path ||
               task.projectName.compare(word, Qt::CaseInsensitive) == 0;
    });
    return found;
}

int print(const Invocation& call, const QList<ProjectTask>& tasks) {
    Stream& out = call.console.out;
    if (call.json) {
        QJsonArray array;
        for (const ProjectTask& task : tasks) {
            array.append(task.toJson());
        }
        printJson(out, array);
        return exitOk;
    }
    if (tasks.isEmpty()) {
        call.note(u"No tasks."_s);
        return exitOk;
    }
    Table table(
        {{u"ID"_s, Style::dim},
         {u"DONE"_s, Style::green},
         {u"PROJECT"_s, Style::cyan},
         {u"TASK"_s},
         {u"NOTES"_s, Style::dim}});
    for (const ProjectTask& task : tasks) {
        table.add(
            {shortID(task), task.doneAt ? task.doneAt->toLocalTime().toString(u"yyyy-MM-dd"_s) : u"open"_s,
             task.projectName, task.title, task.notes.simplified()});
    }
    out.write(table.text(out.width(), out.hasColor()));
    return exitOk;
}

QFuture<int> list(Invocation& call) {
    reportBrokenStores(call);
    const QList<ProjectTask> all = TaskStore().tasks();
    const QList<ProjectTask> tasks = call.words.isEmpty() ? all : tasksOf(all, call.words.first());
    if (call.words.isEmpty() || !tasks.isEmpty()) {
        return QtFuture::makeReadyFuture(print(call, tasks));
    }
    // A project without tasks is one thing, a name that is none another.
    return exitCodeOf(
        findProject(call, call.words.first(), ProjectUse::folder), call.context,
        [&call](const FoundProject& project) -> int {
            return project ? print(call, {}) : refusal(call, project.error());
        });
}

int report(const Invocation& call, const TaskStore& store, const QUuid& id, const QString& done) {
    if (const StoreResult saved = store.lastResult(); !saved) {
        return call.failure(saved.error().text());
    }
    WidgetUpdate::writeStores();
    const QList<ProjectTask> tasks = store.tasks();
    const auto task =
        std::find_if(tasks.begin(), tasks.end(), [&](const ProjectTask& known) { return known.id == id; });
    if (task == tasks.end()) {
        return exitOk;
    }
    if (call.json) {
        printJson(call.console.out, task->toJson());
    } else {
        call.console.out.writeLine(u"%1 %2: %3"_s.arg(done, shortID(*task), printable(task->title)));
    }
    return exitOk;
}

QFuture<int> add(Invocation& call) {
    reportBrokenStores(call);
    const QString title = call.words[1].simplified();
    if (title.isEmpty()) {
        return QtFuture::makeReadyFuture(call.usageError(u"a task needs a title."_s));
    }
    return exitCodeOf(
        findProject(call, call.words[0], ProjectUse::folder), call.context,
        [&call, title](const FoundProject& project) -> int {
            if (!project) {
                return refusal(call, project.error());
            }
            TaskStore store;
            const QUuid id = store.add(title, call.value(u"notes"_s), project->id, project->name);
            return report(call, store, id, u"Added"_s);
        });
}

/// Finds the task, changes it, and says so.
template <typename Change>
QFuture<int> change(Invocation& call, const QString& done, const Change& change) {
    reportBrokenStores(call);
    TaskStore store;
    const auto task = taskMeant(call, store.tasks(), call.words.first());
    if (!task) {
        return QtFuture::makeReadyFuture(int(task.error()));
    }
    if (const StoreResult saved = change(store, *task); !saved) {
        return QtFuture::makeReadyFuture(call.failure(saved.error().text()));
    }
    return QtFuture::makeReadyFuture(report(call, store, task->id, done));
}

QFuture<int> done(Invocation& call) {
    return change(call, u"Done"_s, [](TaskStore& store, const ProjectTask& task) {
        return store.setDone(task.id, true, QDateTime::currentDateTimeUtc());
    });
}

QFuture<int> reopen(Invocation& call) {
    return change(call, u"Open again"_s, [](TaskStore& store, const ProjectTask& task) {
        return store.setDone(task.id, false, QDateTime::currentDateTimeUtc());
    });
}

QFuture<int> rename(Invocation& call) {
    const QString title = call.words[1].simplified();
    if (title.isEmpty()) {
        return QtFuture::makeReadyFuture(call.usageError(u"a task needs a title."_s));
    }
    return change(call, u"Renamed"_s, [&](TaskStore& store, const ProjectTask& task) {
        return store.rename(task.id, title, call.isSet(u"notes"_s) ? call.value(u"notes"_s) : task.notes);
    });
}

QFuture<int> remove(Invocation& call) {
    return change(call, {}, [&](TaskStore& store, const ProjectTask& task) {
        const StoreResult removed = store.remove(task.id);
        if (removed && call.json) {
            printJson(call.console.out, task.toJson());
        } else if (removed) {
            call.console.out.writeLine(u"Deleted %1: %2"_s.arg(shortID(task), printable(task.title)));
        }
        return removed;
    });
}

} // namespace

Command tasksCommand() {
    const CommandOption notes{u"notes"_s, u"NOTES"_s, u"free text beside the title"_s};
    return {
        u"tasks"_s,
        u"keeps a list of tasks for each project"_s,
        u"An ID may be shortened to as many of its first letters as tell it from the others. PROJECT is a folder, an "
        u"id,\n"
        "or a project's name."_s,
        {{u"list"_s, u"[PROJECT]"_s, 0, 1, u"lists all tasks, or a project's"_s, {}, list},
         {u"add"_s, u"PROJECT TITLE"_s, 2, 2, u"adds one"_s, {notes}, add},
         {u"done"_s, u"ID"_s, 1, 1, u"marks it done"_s, {}, done},
         {u"reopen"_s, u"ID"_s, 1, 1, u"marks it open again"_s, {}, reopen},
         {u"rename"_s, u"ID TITLE"_s, 2, 2, u"gives it another title"_s, {notes}, rename},
         {u"delete"_s, u"ID"_s, 1, 1, u"deletes it"_s, {}, remove}},
        {{u"orvlauncher tasks add shop \"Retry failed payments\""_s, u"adds a task to the project shop"_s},
         {u"orvlauncher tasks list . --json | jq 'map(select(.doneAt == null)) | length'"_s,
          u"how many are open here"_s},
         {u"orvlauncher tasks done 3f2a"_s, u"the task whose id begins with 3f2a is done"_s}}};
}

} // namespace orv
