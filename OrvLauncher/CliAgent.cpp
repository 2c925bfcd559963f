#include "AgentSession.h"
#include "CliSupport.h"
#include "OrvUI/AgentPrograms.h"
#include "OrvUI/AgentRows.h"
#include "OrvUI/OrphanedWork.h"
#include "TextLayout.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const QString goneText = u"that run is not there any more."_s;

QFuture<int> now(int exitCode) {
    return QtFuture::makeReadyFuture(int(exitCode));
}

/// The one run whose id is, or begins with, the word; the newest for "last".
std::expected<AgentRun*, int> runMeant(const Invocation& call, AgentRuns& runs, const QString& word) {
    const QString start = word.toLower().remove(u'{').remove(u'}');
    QList<AgentRun*> found = runs.runs();
    if (start == u"last"_s) {
        found = found.first(std::min<qsizetype>(found.size(), 1));
    } else {
        found.removeIf([&start](const AgentRun* run) {
            return !run->facts().id.toString(QUuid::WithoutBraces).startsWith(start);
        });
    }
    if (found.size() == 1 && !start.isEmpty()) {
        return found.first();
    }
    return std::unexpected(
        found.isEmpty() || start.isEmpty()
            ? call.failure(u"there is no run '%1'; 'orvlauncher agent list' lists them."_s.arg(printable(word)))
            : call.usageError(u"%1 runs begin with '%2'; give more of the id."_s.arg(found.size()).arg(word)));
}

/// Calls `handler` with the desk once what is stored is read; ends with what it gives.
template <typename Handler>
QFuture<int> withRuns(Invocation& call, Handler handler) {
    reportBrokenStores(call);
    auto* desk = new AgentDesk(call.context);
    auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    onFinished(desk->runs().reload(), desk, [&call, desk, promise, handler] {
        onFinished(handler(*desk), call.context, [promise](int exitCode) {
            promise->addResult(exitCode);
            promise->finish();
        });
    });
    return promise->future();
}

/// Likewise, with the run that the first word means.
template <typename Handler>
QFuture<int> withRun(Invocation& call, Handler handler) {
    return withRuns(call, [&call, handler](AgentDesk& desk) {
        const auto run = runMeant(call, desk.runs(), call.words.first());
        return run ? handler(desk, *run) : now(run.error());
    });
}

QString stateText(const AgentRun& run) {
    if (run.owner() == AgentRun::Owner::elsewhere) {
        return u"working"_s;
    }
    return rawValue(run.status().kind);
}

int print(const Invocation& call, const QList<AgentRun*>& runs) {
    Stream& out = call.console.out;
    if (call.json) {
        QJsonArray array;
        for (const AgentRun* run : runs) {
            array.append(run->record().toJson());
        }
        printJson(out, array);
        return exitOk;
    }
    if (runs.isEmpty()) {
        call.note(u"No runs."_s);
        return exitOk;
    }
    Table table(
        {{u"ID"_s, Style::dim},
         {u"STATE"_s, Style::green},
         {u"PROJECT"_s, Style::cyan},
         {u"AGENT"_s},
         {u"STARTED"_s, Style::dim},
         {u"COST"_s},
         {u"CHANGES"_s},
         {u"TASK"_s}});
    for (const AgentRun* run : runs) {
        const AgentRunRow row = AgentRunRow::of(*run);
        table.add(
            {shortID(*run), stateText(*run), row.projectName, row.agentName,
             row.startedAt.toLocalTime().toString(u"yyyy-MM-dd hh:mm"_s), row.cost, row.changes,
             row.task.simplified()});
    }
    out.write(table.text(out.width(), out.hasColor()));
    return exitOk;
}

QFuture<int> list(Invocation& call) {
    return withRuns(call, [&call](AgentDesk& desk) {
        QList<AgentRun*> runs = desk.runs().runs();
        if (call.words.isEmpty()) {
            return now(print(call, runs));
        }
        const QString word = call.words.first();
        const QString path = absolutePath(word);
        runs.removeIf([&](const AgentRun* run) {
            const AgentRun::Facts& facts = run->facts();
            return facts.projectID != word && facts.projectID != path &&
                   facts.projectName.compare(word, Qt::CaseInsensitive) != 0;
        });
        if (!runs.isEmpty()) {
            return now(print(call, runs));
        }
        // A project without runs is one thing, a name that is none another.
        return exitCodeOf(
            findProject(call, word, ProjectUse::folder), call.context, [&call](const FoundProject& project) -> int {
                return project ? print(call, {}) : refusal(call, project.error());
            });
    });
}

template <typename Enum, typename All>
std::expected<std::optional<Enum>, int> enumOption(const Invocation& call, const QString& option, const All& all) {
    if (!call.isSet(option)) {
        return std::optional<Enum>();
    }
    if (const auto value = fromRawValue<Enum>(call.value(option))) {
        return value;
    }
    QStringList names;
    for (const Enum each : all) {
        names.append(rawValue(each));
    }
    return std::unexpected(call.usageError(
        u"--%1 takes one of %2, not '%3'."_s.arg(option, names.join(u", "_s), printable(call.value(option)))));
}

QFuture<int> follow(Invocation& call, AgentDesk& desk, const std::expected<AgentRun*, QString>& started) {
    if (!started) {
        return now(call.failure(started.error()));
    }
    auto* session = new AgentSession(desk.runs(), call.console, call.json, &desk);
    return session->follow(*started, AgentSession::Ownership::own);
}

/// Starts it, unless that would be a run that only fails, and is stored.
QFuture<int> unlessMissing(
    const Invocation& call, AgentDesk& desk, AgentKind kind, const std::function<QFuture<int>()>& start) {
    AppModel& model = desk.model();
    auto* programs = new AgentPrograms(
        {.shell = {},
         .antigravityApp = model.agents().antigravityApp(),
         .customCommand = [&model] { return model.settings().settings().customAgentCommand; }},
        &desk);
    auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    const auto finish = [promise](int exitCode) {
        promise->addResult(exitCode);
        promise->finish();
    };
    onFinished(programs->look(), &desk, [&call, programs, kind, start, finish] {
        if (programs->isMissing(kind)) {
            finish(call.failure(AgentPrograms::missingText(kind)));
        } else {
            onFinished(start(), call.context, finish);
        }
    });
    return promise->future();
}

/// An agent of an application that was killed, in the same folder.
void sayWhatIsLeft(const Invocation& call, const OrphanedWork& left, const AgentRuns::Start& wish) {
    for (const ChildRecord& child : left.all()) {
        if (!child.kind && child.directory == wish.projectRoot) {
            call.note(u"An AI agent from an earlier run is still working in this folder; 'kill -- -%1' stops it."_s.arg(
                child.leader.pid));
        }
    }
}

QFuture<int> begin(Invocation& call, AgentDesk& desk, const AgentRuns::Start& wish, const Project& project) {
    AppModel& model = desk.model();
    AgentRun* started = model.startAgent(wish, project);
    if (const std::optional<QString>& error = model.agentError()) {
        return now(call.failure(*error));
    }
    if (started == nullptr) {
        // The desktop's agent was opened, which reports nothing back.
        call.note(model.statusText());
        return now(exitOk);
    }
    return follow(call, desk, started);
}

/// The to-do item of that project that the option names, if it does.
std::expected<std::optional<QUuid>, int> linkedTask(const Invocation& call, const QString& projectID) {
    if (!call.isSet(u"task"_s)) {
        return std::optional<QUuid>();
    }
    QList<ProjectTask> tasks = TaskStore().tasks();
    tasks.removeIf([&](const ProjectTask& task) { return task.projectID != projectID; });
    const auto task = taskMeant(call, tasks, call.value(u"task"_s));
    if (!task) {
        return std::unexpected(task.error());
    }
    return task->id;
}

QFuture<int> run(Invocation& call) {
    const auto agent = enumOption<AgentKind>(call, u"agent"_s, allAgentKinds);
    const auto autonomy = enumOption<AgentAutonomy>(call, u"autonomy"_s, allAgentAutonomies);
    if (!agent || !autonomy) {
        return now(!agent ? agent.error() : autonomy.error());
    }
    return withRuns(call, [&call, agent, autonomy](AgentDesk& desk) {
        auto promise = std::make_shared<QPromise<int>>();
        promise->start();
        const auto finish = [promise](int exitCode) {
            promise->addResult(exitCode);
            promise->finish();
        };
        const auto found = findProject(call, call.words[0], ProjectUse::folder);
        onFinished(found, &desk, [&call, &desk, agent, autonomy, finish](const FoundProject& project) {
            if (!project) {
                finish(refusal(call, project.error()));
                return;
            }
            const auto task = linkedTask(call, project->id);
            if (!task) {
                finish(task.error());
                return;
            }
            const AgentRuns::Start wish{
                .agent = agent->value_or(desk.model().settings().settings().defaultAgent),
                .task = call.words[1],
                .projectID = project->id,
                .projectName = project->name,
                .projectRoot = project->root,
                .linkedTask = *task,
                .autonomy = *autonomy,
                .ownWorktree = call.isSet(u"worktree"_s) ? std::optional(true) : std::nullopt};
            if (wish.autonomy && !agentInfo(wish.agent).hasAutonomy) {
                call.note(agentText(autonomyExplanation(wish.agent, *wish.autonomy)));
            }
            const auto start = [&call, &desk, wish, meant = *project] { return begin(call, desk, wish, meant); };
            onFinished(desk.model().orphans()->look(), &desk, [&call, &desk, wish, start, finish] {
                sayWhatIsLeft(call, *desk.model().orphans(), wish);
                onFinished(unlessMissing(call, desk, wish.agent, start), call.context, finish);
            });
        });
        return promise->future();
    });
}

QFuture<int> goOn(Invocation& call) {
    const auto autonomy = enumOption<AgentAutonomy>(call, u"autonomy"_s, allAgentAutonomies);
    if (!autonomy) {
        return now(autonomy.error());
    }
    return withRun(call, [&call, autonomy = *autonomy](AgentDesk& desk, AgentRun* parent) {
        const AgentRun::Facts& facts = parent->facts();
        if (parent->isRunning()) {
            return now(call.failure(u"that run goes on still."_s));
        }
        return unlessMissing(call, desk, facts.agent, [&call, &desk, parent = QPointer(parent), autonomy] {
            if (!parent) {
                return now(call.failure(goneText));
            }
            const AgentRun::Facts& of = parent->facts();
            return follow(call, desk, desk.runs().goOn(*parent, call.words[1], of.projectID, of.projectName, autonomy));
        });
    });
}

QFuture<int> retry(Invocation& call) {
    return withRun(call, [&call](AgentDesk& desk, AgentRun* run) {
        if (run->isRunning()) {
            return now(call.failure(u"that run goes on still."_s));
        }
        return unlessMissing(call, desk, run->facts().agent, [&call, &desk, run = QPointer(run)] {
            if (!run) {
                return now(call.failure(goneText));
            }
            const AgentRun::Facts& facts = run->facts();
            return follow(call, desk, desk.runs().retry(*run, facts.projectID, facts.projectName));
        });
    });
}

QFuture<int> stop(Invocation& call) {
    return withRun(call, [&call](AgentDesk& desk, AgentRun* run) {
        if (!run->isRunning()) {
            return now(call.failure(u"that run is over."_s));
        }
        auto promise = std::make_shared<QPromise<int>>();
        promise->start();
        onFinished(desk.runs().stop(run), &desk, [&call, run, promise] {
            if (call.json) {
                printJson(call.console.out, run->record().toJson());
            } else {
                call.console.out.writeLine(u"Stopped %1."_s.arg(shortID(*run)));
            }
            promise->addResult(int(exitOk));
            promise->finish();
        });
        return promise->future();
    });
}

void printRun(const Invocation& call, const AgentRun& run) {
    Stream& out = call.console.out;
    if (call.json) {
        QJsonArray events;
        for (const AgentEvent& event : run.events()) {
            events.append(eventJson(event));
        }
        QJsonObject json = run.record().toJson();
        json[u"events"_s] = events;
        printJson(out, json);
        return;
    }
    const AgentRunRow row = AgentRunRow::of(run);
    const bool hasColor = out.hasColor();
    out.writeLine(painted(printable(row.task.simplified()), Style::bold, hasColor));
    QStringList facts{
        u"%1 in %2"_s.arg(row.agentName, printable(row.projectName)), row.autonomyTitle,
        row.startedAt.toLocalTime().toString(u"yyyy-MM-dd hh:mm"_s), shortID(run)};
    facts.removeAll(QString());
    out.writeLine(painted(facts.join(u" · "_s), Style::dim, hasColor));
    for (const AgentEvent& event : run.events()) {
        out.writeLine(eventText(event, hasColor));
    }
    for (const QString& line : outcomeLines(run, hasColor)) {
        out.writeLine(line);
    }
}

QFuture<int> show(Invocation& call) {
    return withRun(call, [&call](AgentDesk& desk, AgentRun* run) {
        auto promise = std::make_shared<QPromise<int>>();
        promise->start();
        onFinished(desk.runs().loadEvents(run), &desk, [&call, &desk, run, promise] {
            if (call.isSet(u"follow"_s) && run->isRunning()) {
                auto* session = new AgentSession(desk.runs(), call.console, call.json, &desk);
                onFinished(session->follow(run, AgentSession::Ownership::other), call.context, [promise](int code) {
                    promise->addResult(code);
                    promise->finish();
                });
                return;
            }
            printRun(call, *run);
            promise->addResult(int(exitOk));
            promise->finish();
        });
        return promise->future();
    });
}

QJsonObject toJson(const FileDiff& file) {
    static constexpr std::array names{u"modified", u"added", u"deleted", u"renamed", u"copied"};
    QJsonArray hunks;
    for (const DiffHunk& hunk : file.hunks) {
        QJsonArray lines;
        for (const DiffLine& line : hunk.lines) {
            static constexpr std::array marks{u' ', u'+', u'-'};
            lines.append(QChar(marks[static_cast<size_t>(line.kind)]) + QString::fromUtf8(file.text(line)));
        }
        hunks.append(QJsonObject{{u"oldStart"_s, hunk.oldStart}, {u"newStart"_s, hunk.newStart}, {u"lines"_s, lines}});
    }
    return {
        {u"path"_s, QString::fromUtf8(file.path())},
        {u"change"_s, QString::fromUtf16(names[static_cast<size_t>(file.change)])},
        {u"isBinary"_s, file.content == DiffContent::binary},
        {u"hunks"_s, hunks}};
}

Style styleOf(const QString& line) {
    if (line.startsWith(u"+++"_s) || line.startsWith(u"---"_s) || line.startsWith(u"diff "_s)) {
        return Style::bold;
    }
    return line.startsWith(u'+')      ? Style::green
           : line.startsWith(u'-')    ? Style::red
           : line.startsWith(u"@@"_s) ? Style::cyan
                                      : Style::plain;
}

/// As git prints it, so that a pipe to `git apply` gets what it needs.
void printDiff(Stream& out, const AgentWork::Diff& diff) {
    const QByteArray bytes = diff.files.isEmpty() ? QByteArray() : diff.files.constFirst().bytes;
    if (!out.isTerminal()) {
        out.write(bytes);
        return;
    }
    for (const QString& line : QString::fromUtf8(bytes).split(u'\n')) {
        out.writeLine(painted(printable(line), styleOf(line), out.hasColor()));
    }
}

QFuture<int> diff(Invocation& call) {
    return withRun(call, [&call](AgentDesk& desk, AgentRun* run) {
        const auto found = call.isSet(u"worktree"_s) ? desk.runs().worktreeDiff(run) : desk.runs().diff(run);
        return exitCodeOf(found, call.context, [&call](const AgentRuns::DiffResult& result) -> int {
            if (!result) {
                return call.failure(result.error());
            }
            if (call.json) {
                QJsonArray files;
                for (const FileDiff& file : result->files) {
                    files.append(toJson(file));
                }
                printJson(call.console.out, files);
            } else {
                printDiff(call.console.out, *result);
            }
            if (result->isCut) {
                call.note(u"The diff is longer than what is kept of it."_s);
            }
            return exitOk;
        });
    });
}

QFuture<int> tell(
    const Invocation& call, AgentRun* run, const QString& done, const QFuture<AgentRuns::Outcome>& outcome) {
    return exitCodeOf(outcome, call.context, [&call, run, done](const AgentRuns::Outcome& result) -> int {
        if (!result) {
            return call.failure(result.error());
        }
        if (!result->isEmpty()) {
            call.note(*result);
        }
        if (call.json) {
            printJson(call.console.out, run->record().toJson());
        } else {
            call.console.out.writeLine(done.arg(printable(run->worktree()->branch)));
        }
        return exitOk;
    });
}

QFuture<int> merge(Invocation& call) {
    return withRun(call, [&call](AgentDesk& desk, AgentRun* run) {
        return tell(call, run, u"Merged %1."_s, desk.runs().mergeBack(run));
    });
}

QFuture<int> discard(Invocation& call) {
    return withRun(call, [&call](AgentDesk& desk, AgentRun* run) {
        const auto how =
            call.isSet(u"force"_s) ? TaskWorktrees::Discard::always : TaskWorktrees::Discard::ifNothingIsLost;
        return tell(call, run, u"Threw %1 away."_s, desk.runs().discardWorktree(run, how));
    });
}

QFuture<int> installed(Invocation& call) {
    auto* desk = new AgentDesk(call.context);
    AgentCatalog& catalog = desk->model().agents();
    auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    auto* progress = new Progress(call.console.err, u"Asking the agents…"_s, desk);
    onFinished(catalog.refresh(), desk, [&call, &catalog, desk, progress, promise] {
        delete progress;
        const AgentKind preferred = desk->model().settings().settings().defaultAgent;
        QJsonArray array;
        Table table({{u"AGENT"_s, Style::bold}, {u"NAME"_s}, {u"STATUS"_s, Style::green}, {u"INSTALL"_s, Style::dim}});
        for (const AgentKind kind : allAgentKinds) {
            const AgentRow row = AgentRow::of(kind, catalog, preferred);
            table.add({row.key, row.name, row.status, row.isInstalled ? QString() : row.installHint});
            array.append(QJsonObject{
                {u"agent"_s, row.key},
                {u"name"_s, row.name},
                {u"installed"_s, row.isInstalled},
                {u"version"_s, row.version.isEmpty() ? QJsonValue() : QJsonValue(row.version)},
                {u"isDefault"_s, row.isDefault},
                {u"installHint"_s, row.installHint}});
        }
        Stream& out = call.console.out;
        if (call.json) {
            printJson(out, array);
        } else {
            out.write(table.text(out.width(), out.hasColor()));
        }
        promise->addResult(int(exitOk));
        promise->finish();
    });
    return promise->future();
}

} // namespace

Command agentCommand() {
    return {
        u"agent"_s,
        u"hands tasks to coding agents and shows what they did"_s,
        u"RUN is the id of a run, shortened to as many of its first letters as tell it from the others, or 'last'. "
        u"Runs "
        u"are\n"
        "stored: the window shows those that were started here, and the other way round. A run belongs to the process "
        "that\n"
        "started it and ends with it; every other one can follow it, ask for its stop, and continue it afterwards. "
        "With\n"
        "--worktree an agent gets a git work tree and a branch of its own; nothing of that is in the project until it "
        "is\n"
        "merged, and nothing is thrown away unasked. The exit code of a run is 1 when it failed or was stopped."_s,
        {{u"list"_s, u"[PROJECT]"_s, 0, 1, u"lists the runs, newest first"_s, {}, list},
         {u"run"_s,
          u"PROJECT TASK"_s,
          2,
          2,
          u"hands a task to an agent and shows its work until it ends"_s,
          {{u"agent"_s, u"AGENT"_s, u"claude, codex, gemini, antigravity or custom; else that of the settings"_s},
           {u"autonomy"_s, u"LEVEL"_s, u"plan, edit or full; else that of the settings. Means nothing to custom"_s},
           {u"worktree"_s, {}, u"in a git work tree of its own"_s},
           {u"task"_s, u"ID"_s, u"the to-do item that is done when the agent has succeeded"_s}},
          run},
         {u"continue"_s,
          u"RUN MESSAGE"_s,
          2,
          2,
          u"goes on where a run has ended"_s,
          {{u"autonomy"_s, u"LEVEL"_s, u"plan, edit or full; else that of the run"_s}},
          goOn},
         {u"retry"_s, u"RUN"_s, 1, 1, u"does the same once more"_s, {}, retry},
         {u"stop"_s, u"RUN"_s, 1, 1, u"stops it, whoever started it"_s, {}, stop},
         {u"show"_s,
          u"RUN"_s,
          1,
          1,
          u"prints what the agent said and did"_s,
          {{u"follow"_s, {}, u"goes on until the run ends"_s}},
          show},
         {u"diff"_s,
          u"RUN"_s,
          1,
          1,
          u"prints what was changed during the run"_s,
          {{u"worktree"_s, {}, u"everything in its own work tree, as it is now"_s}},
          diff},
         {u"merge"_s, u"RUN"_s, 1, 1, u"brings its own work tree into the project"_s, {}, merge},
         {u"discard"_s,
          u"RUN"_s,
          1,
          1,
          u"throws its own work tree away"_s,
          {{u"force"_s, {}, u"also when work is lost with it"_s}},
          discard},
         {u"installed"_s, {}, 0, 0, u"lists the agents of this machine"_s, {}, installed}},
        {{u"orvlauncher agent run shop \"Show the discount as a line of its own\""_s,
          u"with the agent of the settings, until it is done"_s},
         {u"orvlauncher agent run . \"Upgrade Django\" --agent codex --worktree"_s, u"apart from your own work"_s},
         {u"orvlauncher agent continue last \"Add a test, too\""_s, u"in the same conversation"_s},
         {u"orvlauncher agent diff last | git apply -R"_s, u"takes its changes back"_s},
         {u"orvlauncher agent list --json | jq 'map(.costUSD // 0) | add'"_s, u"what all runs have cost"_s}}};
}

} // namespace orv
