#include "OrvCore/Async.h"
#include "OrvCore/StoreWatcher.h"
#include "OrvUI/AgentRuns_p.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

// What is on disk: runs that were, those of other processes, their output, and the work trees that they left.

namespace orv {
namespace {

/// Whoever held it is gone without a word.
void endAbandoned(const AgentRunFiles& files, AgentRunFiles::Stored& stored) {
    if (stored.isHeld || stored.record.state != AgentRunState::running) {
        return;
    }
    QDir(files.scratchFolder(stored.record.id)).removeRecursively();
    const QDateTime lastWord = QFileInfo(files.outputFile(stored.record.id)).lastModified().toUTC();
    const auto changed = files.change(stored.record.id, [&lastWord](AgentRunRecord& record) {
        record.state = AgentRunState::failed;
        record.reason = AgentRuns::tr("OrvLauncher ended while it ran.");
        record.endedAt = lastWord.isValid() ? lastWord : record.startedAt;
    });
    stored.record = changed.value_or(stored.record);
}

/// What the newest of these events need.
QList<AgentLine> newest(QList<AgentLine> lines, size_t limit) {
    size_t events = 0;
    qsizetype first = lines.size();
    while (first > 0 && events < limit) {
        events += static_cast<size_t>(lines[--first].events.size());
    }
    return lines.sliced(first);
}

struct Piece {
    QList<AgentLine> lines;
    qint64 end = 0;
};

Piece readPiece(const QString& path, qint64 from, AgentStream& stream, bool isLast, size_t limit) {
    constexpr qint64 pieceBytes = qint64{1024} * 1024;
    Piece piece{{}, from};
    QFile file(path);
    if (file.open(QIODevice::ReadOnly) && file.seek(from)) {
        for (QByteArray bytes = file.read(pieceBytes); !bytes.isEmpty(); bytes = file.read(pieceBytes)) {
            piece.end += bytes.size();
            piece.lines = newest(piece.lines + stream.append(bytes), limit);
        }
    }
    if (isLast) {
        piece.lines = newest(piece.lines + stream.finish(), limit);
    }
    return piece;
}

} // namespace

QFuture<void> AgentRuns::reload() {
    ORV_ASSERT_MAIN_THREAD();
    const Completion completion;
    const auto look = [files = m_options.files] {
        QList<AgentRunFiles::Stored> stored = files.read();
        for (AgentRunFiles::Stored& run : stored) {
            endAbandoned(files, run);
        }
        return stored;
    };
    onFinished(runIn(m_storePool, look), this, [this, completion](const QList<AgentRunFiles::Stored>& stored) {
        takeIn(stored);
        completion.finish();
    });
    return completion.future();
}

void AgentRuns::takeIn(const QList<AgentRunFiles::Stored>& stored) {
    bool isOtherList = false;
    QSet<QUuid> present;
    for (const auto& [record, isHeld, isAskedToStop] : stored) {
        present.insert(record.id);
        AgentRun* known = run(record.id);
        if (m_active.contains(record.id)) {
            if (isAskedToStop && known->isRunning() && !known->stopRequested()) {
                stop(known);
            }
            continue;
        }
        const bool goesOn = isHeld && record.state == AgentRunState::running;
        const AgentRun::Owner owner = goesOn ? AgentRun::Owner::elsewhere : AgentRun::Owner::here;
        if (known == nullptr) {
            add(new AgentRun(record, owner, m_options.runLimits, this));
            isOtherList = true;
        } else {
            known->takeIn(record, owner);
            if (m_readings.contains(record.id)) {
                readMore(known);
            }
        }
    }
    for (AgentRun* run : QList<AgentRun*>(m_runs)) {
        const QUuid id = run->facts().id;
        if (!present.contains(id) && m_stored.contains(id) && !m_active.contains(id)) {
            remove(run);
        }
    }
    m_stored = present;
    if (isOtherList) {
        Q_EMIT runsChanged();
    }
    updateRunningCount();
}

QFuture<void> AgentRuns::loadEvents(AgentRun* run) {
    ORV_ASSERT_MAIN_THREAD();
    const QUuid id = run->facts().id;
    if (const auto reading = m_readings.constFind(id); reading != m_readings.cend()) {
        return (*reading)->first.future();
    }
    if (m_active.contains(id) || run->pid() > 0) {
        return finishedFuture(); // it has them from its process
    }
    const auto reading = std::make_shared<Reading>(run->facts().agent);
    m_readings.insert(id, reading);
    if (run->isRunning()) {
        m_outputs.addPath(m_options.files.outputFile(id));
    }
    readMore(run);
    return reading->first.future();
}

void AgentRuns::readMore(AgentRun* run) {
    const QUuid id = run->facts().id;
    const std::shared_ptr<Reading> reading = m_readings.value(id);
    if (!reading || reading->isOver) {
        return;
    }
    if (reading->isBusy) {
        reading->isDue = true;
        return;
    }
    reading->isBusy = true;
    const bool isLast = !run->isRunning();
    const auto read = [reading, isLast, path = m_options.files.outputFile(id), limit = m_options.runLimits.events] {
        return readPiece(path, reading->position, reading->stream, isLast, limit);
    };
    onFinished(runIn(m_storePool, read), this, [this, id, reading, isLast](const Piece& piece) {
        reading->position = piece.end;
        reading->isBusy = false;
        reading->isOver = isLast;
        AgentRun* reader = this->run(id);
        if (reader == nullptr) {
            reading->last.finish();
            return;
        }
        reader->appendStored(piece.lines);
        if (isLast) {
            m_outputs.removePath(m_options.files.outputFile(id));
        } else if (!m_outputs.files().contains(m_options.files.outputFile(id))) {
            m_outputs.addPath(m_options.files.outputFile(id)); // it was not there at first
        }
        if (!std::exchange(reading->hasRead, true)) {
            reading->first.finish();
        }
        if (isLast) {
            reading->last.finish();
        } else if (std::exchange(reading->isDue, false)) {
            readMore(reader);
        }
    });
}

QFuture<void> AgentRuns::allEventsLoaded(AgentRun* run) {
    ORV_ASSERT_MAIN_THREAD();
    const QFuture<void> first = loadEvents(run);
    const std::shared_ptr<Reading> reading = m_readings.value(run->facts().id);
    return reading ? reading->last.future() : first;
}

QFuture<AgentRuns::DiffResult> AgentRuns::diff(const AgentRun* run) {
    ORV_ASSERT_MAIN_THREAD();
    const AgentChanges changes = run->changes().value_or(AgentChanges{});
    QString nothing = AgentRuns::tr("What this run changed is not known.");
    if (run->changes()) {
        nothing = changes.note.isEmpty() ? AgentRuns::tr("This run changed nothing.") : changes.note;
    } else if (run->isRunning()) {
        nothing = AgentRuns::tr("It is not over yet.");
    }
    return runIn(
        m_storePool, [files = m_options.files, id = run->facts().id, nothing, cut = changes.isDiffCut]() -> DiffResult {
            auto diff = AgentWork::storedDiff(files, id);
            if (!diff) {
                return std::unexpected(nothing);
            }
            diff->isCut = cut;
            return *std::move(diff);
        });
}

QFuture<AgentRuns::DiffResult> AgentRuns::worktreeDiff(const AgentRun* run) {
    ORV_ASSERT_MAIN_THREAD();
    return runIn(
        m_workPool,
        [files = m_options.files, id = run->facts().id, worktree = run->worktree(), runner = runner()]() -> DiffResult {
            if (!worktree || worktree->state != AgentWorktreeState::open) {
                return std::unexpected(AgentRuns::tr("This run has no work tree of its own."));
            }
            return AgentWork::worktreeDiff(files, id, *worktree, runner);
        });
}

bool AgentRuns::isWorktreeBusy(const AgentWorktree& worktree) const {
    return m_busyWorktrees.contains(worktree.folder) || std::ranges::any_of(m_runs, [&](const AgentRun* run) {
               return run->isRunning() && run->worktree() && run->worktree()->folder == worktree.folder;
           });
}

QFuture<AgentRuns::Outcome> AgentRuns::mergeBack(const AgentRun* run) {
    const QString message = run->facts().task.section(u'\n', 0, 0).simplified();
    return onWorktree(
        run, AgentWorktreeState::merged, [message](const TaskWorktrees& worktrees, const TaskWorktree& worktree) {
            return worktrees.mergeBack(worktree, message);
        });
}

QFuture<AgentRuns::Outcome> AgentRuns::discardWorktree(const AgentRun* run, TaskWorktrees::Discard discard) {
    return onWorktree(
        run, AgentWorktreeState::discarded,
        [discard](
            const TaskWorktrees& worktrees, const TaskWorktree& worktree) -> GitOutcome<TaskWorktrees::AfterMerge> {
            const auto done = worktrees.discard(worktree, discard);
            return done ? GitOutcome<TaskWorktrees::AfterMerge>(TaskWorktrees::AfterMerge::removed)
                        : std::unexpected(done.error());
        });
}

QFuture<AgentRuns::Outcome> AgentRuns::onWorktree(
    const AgentRun* run, AgentWorktreeState then,
    const std::function<GitOutcome<TaskWorktrees::AfterMerge>(const TaskWorktrees&, const TaskWorktree&)>& work) {
    ORV_ASSERT_MAIN_THREAD();
    const std::optional<AgentWorktree> worktree = run->worktree();
    if (!worktree || worktree->state != AgentWorktreeState::open) {
        return QtFuture::makeReadyFuture(
            Outcome(std::unexpected(AgentRuns::tr("This run has no work tree of its own, or no longer."))));
    }
    if (isWorktreeBusy(*worktree)) {
        return QtFuture::makeReadyFuture(
            Outcome(std::unexpected(AgentRuns::tr("Something still works in that work tree."))));
    }
    const QString folder = worktree->folder;
    m_busyWorktrees.insert(folder);
    auto promise = std::make_shared<QPromise<Outcome>>();
    promise->start();
    const auto perform = [work, target = AgentWork::taskWorktree(*worktree), runner = runner()] {
        return work(TaskWorktrees(runner), target);
    };
    const auto finish = [promise](const Outcome& outcome) {
        promise->addResult(outcome);
        promise->finish();
    };
    onFinished(
        runIn(m_workPool, perform), this,
        [this, folder, then, finish](const GitOutcome<TaskWorktrees::AfterMerge>& done) {
            m_busyWorktrees.remove(folder);
            if (!done) {
                finish(std::unexpected(done.error().text()));
                return;
            }
            const bool isKept = *done == TaskWorktrees::AfterMerge::kept;
            const QString text =
                isKept
                    ? AgentRuns::tr("The work tree %1 is still there: files in it are other than those of the project.")
                          .arg(folder)
                    : QString();
            if (isKept) {
                finish(text);
                return;
            }
            const Completion stored;
            setWorktreeState(folder, then, stored);
            onFinished(stored.future(), this, [finish, text] { finish(text); });
        });
    return promise->future();
}

void AgentRuns::setWorktreeState(const QString& folder, AgentWorktreeState state, const Completion& done) {
    QList<QUuid> ids;
    for (AgentRun* run : std::as_const(m_runs)) {
        if (run->worktree() && run->worktree()->folder == folder) {
            AgentWorktree worktree = *run->worktree();
            worktree.state = state;
            run->setWorktree(worktree, run->facts().projectRoot);
            ids.append(run->facts().id);
        }
    }
    const auto write = [files = m_options.files, ids, state] {
        for (const QUuid& id : ids) {
            files.change(id, [state](AgentRunRecord& record) {
                if (record.worktree) {
                    record.worktree->state = state;
                }
            });
        }
    };
    onFinished(runIn(m_storePool, write), this, [done] { done.finish(); });
}

} // namespace orv
