#include "AgentSession.h"

#include "CliSupport.h"
#include "OrvUI/AgentRows.h"
#include "TextLayout.h"
#include "WidgetUpdate.h"

#include <QJsonObject>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr qsizetype shortIDLength = 8;

/// There is no window to own a clipboard: macOS has a tool for it.
void copyByTool(const QString& text) {
    QProcess tool;
    tool.start(u"pbcopy"_s, {});
    tool.write(text.toUtf8());
    tool.closeWriteChannel();
    tool.waitForFinished();
}

QString safeText(const QString& text, bool hasColor) {
    QStringList lines;
    for (const QString& line : text.split(u'\n')) {
        lines.append(safeOutputLine(line, hasColor));
    }
    return lines.join(u'\n');
}

} // namespace

QString shortID(const AgentRun& run) {
    return run.facts().id.toString(QUuid::WithoutBraces).first(shortIDLength);
}

QString eventText(const AgentEvent& event, bool hasColor) {
    const AgentEventRow row = AgentEventRow::of(event);
    if (row.kind == u"tool"_s) {
        return painted(row.name, Style::cyan, hasColor) + u' ' + printable(row.text);
    }
    return safeText(row.text, hasColor);
}

QJsonObject eventJson(const AgentEvent& event) {
    const AgentEventRow row = AgentEventRow::of(event);
    QJsonObject json{{u"event"_s, row.kind}};
    if (row.kind == u"tool"_s) {
        json[u"name"_s] = row.name;
        json[u"detail"_s] = row.text;
    } else {
        json[u"text"_s] = row.text;
    }
    if (const auto* result = std::get_if<AgentResult>(&event)) {
        json[u"success"_s] = result->success;
        if (result->costUSD) {
            json[u"costUSD"_s] = *result->costUSD;
        }
    }
    return json;
}

QStringList outcomeLines(const AgentRun& run, bool hasColor) {
    const AgentRunRow row = AgentRunRow::of(run);
    struct Word {
        QString text;
        Style style = Style::plain;
    };
    const auto word = [&]() -> Word {
        switch (run.status().kind) {
        case AgentRunState::succeeded:
            return {u"Done"_s, Style::green};
        case AgentRunState::stopped:
            return {u"Stopped"_s, Style::yellow};
        case AgentRunState::failed:
            return {u"Failed: "_s + printable(row.reason.simplified()), Style::red};
        case AgentRunState::running:
            break;
        }
        return {u"Working"_s, Style::cyan};
    }();
    QStringList facts{painted(word.text, word.style, hasColor)};
    for (const QString& fact : {row.duration, row.cost, row.tokens}) {
        if (!fact.isEmpty()) {
            facts.append(fact);
        }
    }
    QStringList lines{facts.join(u" · "_s)};
    if (const auto& changes = run.changes()) {
        if (changes->fileCount == 0 && changes->note.isEmpty()) {
            lines.append(u"No file changed."_s);
        } else if (changes->fileCount > 0) {
            lines.append(u"%1, +%2 \u2212%3; 'orvlauncher agent diff %4' shows them."_s.arg(agentChangesText(*changes))
                             .arg(changes->added)
                             .arg(changes->removed)
                             .arg(shortID(run)));
        }
        if (changes->dirtyBefore > 0) {
            lines.append(
                u"Uncommitted files before it began: %1; they are not part of that."_s.arg(changes->dirtyBefore));
        }
        if (changes->isShared) {
            lines.append(u"Another run worked there at the same time."_s);
        }
        if (!changes->note.isEmpty()) {
            lines.append(printable(changes->note));
        }
    }
    if (row.isWorktreeOpen) {
        lines.append(
            u"It worked in %1, on the branch %2; 'orvlauncher agent merge %3' brings that into the project."_s.arg(
                shortPath(run.worktree()->folder), printable(row.branch), shortID(run)));
    }
    return lines;
}

AgentDesk::AgentDesk(QObject* parent) : QObject(parent) {
    AppModel::Options options;
    options.snapshotDirectory = m_snapshots.path();
    m_model = std::make_unique<AppModel>(std::move(options));
    m_model->setReloadWidgets(&WidgetUpdate::writeStores); // a to-do item may be done with a run
    m_model->setClipboard = copyByTool;
}

AgentSession::AgentSession(AgentRuns& runs, Console& console, bool json, QObject* parent)
    : QObject(parent), m_runs(runs), m_console(console), m_json(json) {
    connect(&m_signals, &SignalWatcher::stopAsked, this, &AgentSession::stopAsked);
    connect(&runs, &AgentRuns::failed, this, [this](const QUuid& id, const QString& reason) {
        if (id == m_id) {
            m_run = nullptr;
            m_console.err.writeLine(reason);
            event(u"end"_s, {{u"error"_s, reason}});
            end(1);
        }
    });
    connect(&runs, &AgentRuns::noted, this, &AgentSession::say);
}

QFuture<int> AgentSession::follow(AgentRun* run, Ownership ownership) {
    m_exit.start();
    m_run = run;
    m_id = run->facts().id;
    m_ownership = ownership;
    say(u"%1 works in %2 (run %3). %4"_s.arg(
        agentInfo(run->facts().agent).displayName.toString(), printable(run->facts().projectName), shortID(*run),
        ownership == Ownership::own ? u"Ctrl-C stops it."_s : u"Another process runs it; Ctrl-C leaves it alone."_s));
    event(u"started"_s, {{u"run"_s, run->record().toJson()}});
    printNewest(static_cast<qsizetype>(run->events().size()));
    connect(run, &AgentRun::eventsAppended, this, [this](qsizetype added) { printNewest(added); });
    connect(run, &AgentRun::changed, this, [this] {
        updateAttention();
        endWhenOver();
    });
    endWhenOver();
    return m_exit.future();
}

void AgentSession::printNewest(qsizetype added) {
    const auto& events = m_run->events();
    const auto kept = std::min<qsizetype>(added, static_cast<qsizetype>(events.size()));
    for (auto each = events.end() - kept; each != events.end(); ++each) {
        print(*each);
    }
    if (m_console.out.isClosed() && m_ownership == Ownership::own) {
        stopAsked(); // whoever read the output is gone
    }
}

void AgentSession::print(const AgentEvent& event) {
    if (m_json) {
        m_console.out.write(compactJson(eventJson(event)) + '\n');
    } else {
        m_console.out.writeLine(eventText(event, m_console.out.hasColor()));
    }
}

void AgentSession::updateAttention() {
    if (std::exchange(m_attention, m_run->attention()) == m_attention || m_attention == AgentRun::Attention::none) {
        return;
    }
    const QString text = AgentRunRow::of(*m_run).attention;
    say(painted(text + u'.', Style::yellow, m_console.err.hasColor()));
    event(u"attention"_s, {{u"text"_s, text}});
}

void AgentSession::stopAsked() {
    if (m_run == nullptr || m_ownership == Ownership::other) {
        end(m_ownership == Ownership::other ? 0 : 1);
        return;
    }
    if (std::exchange(m_isStopping, true)) {
        say(u"Killing it."_s);
        m_runs.kill();
        return;
    }
    say(u"Stopping… (once more kills at once)"_s);
    m_runs.stop(m_run);
}

void AgentSession::endWhenOver() {
    if (m_run->isRunning() || std::exchange(m_isOver, true)) {
        return;
    }
    const auto last = m_ownership == Ownership::own ? m_runs.settled(m_run) : m_runs.allEventsLoaded(m_run);
    onFinished(last, this, [this] {
        if (!m_json) {
            for (const QString& line : outcomeLines(*m_run, m_console.err.hasColor())) {
                say(line);
            }
        }
        event(u"end"_s, {{u"run"_s, m_run->record().toJson()}});
        end(m_run->status().kind == AgentRunState::succeeded ? 0 : 1);
    });
}

void AgentSession::end(int exitCode) {
    if (!std::exchange(m_hasEnded, true)) {
        m_exit.addResult(exitCode);
        m_exit.finish();
    }
}

void AgentSession::say(const QString& text) {
    if (!m_json) {
        m_console.err.writeLine(text);
    }
}

void AgentSession::event(const QString& name, QJsonObject fields) {
    if (m_json) {
        fields[u"event"_s] = name;
        m_console.out.write(compactJson(fields) + '\n');
    }
}

} // namespace orv
