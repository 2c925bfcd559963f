#include "OrvUI/GitIdentityForm.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/Pool_p.h"

#include <algorithm>
#include <array>
#include <functional>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using PathsOf = QStringList (FileChange::*)() const;

/// A rename is both of its paths, as `pathsOf` has it.
QStringList touched(
    const RowModel<ChangeRow>& list, const QStringList& paths, PathsOf pathsOf = &FileChange::touchedPaths) {
    const QSet<QString> wanted(paths.begin(), paths.end());
    QStringList all = paths;
    for (const ChangeRow& row : list.rows()) {
        if (wanted.contains(row.key)) {
            all += (row.change.*pathsOf)();
        }
    }
    all.removeDuplicates();
    return all;
}

/// Stages or unstages what `isWanted` says of the status as it is then, also what is too much to be listed.
template <typename Wanted, typename Change>
GitOutcome<void> changeAll(
    const GitService& service, const QString& repository, const Wanted& isWanted, PathsOf pathsOf,
    const Change& change) {
    const auto status = service.status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    QStringList paths;
    for (const FileChange& each : status->changes) {
        // A conflict that is staged counts as resolved, which is not said by the way.
        if (!each.isConflicted() && std::invoke(isWanted, each)) {
            paths += (each.*pathsOf)();
        }
    }
    paths.removeDuplicates();
    return paths.isEmpty() ? GitOutcome<void>() : change(paths);
}

} // namespace

bool GitModel::isBusy() const {
    return m_overview.busy().contains(m_project.id);
}

void GitModel::cancelAction() {
    m_overview.cancelAction(m_project.id);
}

void GitModel::setError(const QString& text) {
    if (text != m_error) {
        m_error = text;
        Q_EMIT errorChanged();
    }
}

void GitModel::refuse(const QString& text) {
    setError(text);
    Q_EMIT failed(text);
}

void GitModel::act(const QString& name, const QString& text, const Work& work) {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_repository.isEmpty()) {
        run(name, text,
            [work, repository = m_repository](const GitService& service) { return work(service, repository); });
    }
}

void GitModel::actAndKeep(const QString& text, const QStringList& paths, const Work& work) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_repository.isEmpty()) {
        return;
    }
    const auto kept = std::make_shared<std::optional<DiscardedWork>>();
    const auto whyNot = std::make_shared<QString>();
    const auto keepFirst = [work, paths, kept, whyNot, repository = m_repository](const GitService& service) {
        auto found = DiscardedWork::keep(service, repository, paths);
        if (!found) {
            *whyNot = found.error().text();
            return GitOutcome<void>(std::unexpected(GitError::refused(*whyNot)));
        }
        if (auto done = work(service, repository); !done) {
            return done;
        }
        // What can't be looked at can't be brought back, but it is discarded.
        if (found->noteAfterwards(service)) {
            *kept = *std::move(found);
        }
        return GitOutcome<void>();
    };
    run(
        u"discard"_s, text, keepFirst,
        [this, kept, paths] {
            if (*kept) {
                const QString what = paths.size() == 1 ? u"“%1”"_s.arg(shownPath(paths.first().section(u'/', -1)))
                                                       : tr("%1 files").arg(paths.size());
                Q_EMIT discarded(tr("Discarded changes of %1.").arg(what), **kept);
            }
        },
        [this, whyNot, paths] {
            if (whyNot->isEmpty()) {
                return false;
            }
            Q_EMIT notKept(*whyNot, paths);
            return true;
        });
}

void GitModel::discardForGood(const QStringList& paths) {
    act(u"discard"_s, tr("Discarding…"),
        [paths](const GitService& service, const QString& repository) { return service.discard(repository, paths); });
}

void GitModel::run(
    const QString& name, const QString& text, const std::function<GitOutcome<void>(const GitService&)>& work,
    const std::function<void()>& then, const std::function<bool()>& otherwise) {
    const auto outcome = m_overview.act(m_project.id, work);
    if (!outcome) {
        refuse(QuickGit::busy(m_project.name).message);
        return;
    }
    setError({});
    m_busyText = text;
    m_busyWith = name;
    Q_EMIT busyChanged();
    onFinished(*outcome, this, [this, name, then, otherwise](const GitOutcome<void>& done) {
        m_busyText.clear();
        m_busyWith.clear();
        Q_EMIT busyChanged();
        if (m_selectedCommit.isEmpty() && !m_selectedPath.isEmpty()) {
            // What is being read may be of before.
            ++m_fileGeneration;
            m_isDiffOld = true;
        }
        refresh();
        if (name == u"identity") {
            m_overview.refreshIdentity();
        } else if (name == u"init") {
            // So that the new repository is watched.
            m_overview.refresh(m_project.id);
        }
        if (done) {
            if (then) {
                then();
            }
            Q_EMIT succeeded(name);
        } else if (otherwise && otherwise()) {
            return;
        } else if (done.error().kind == GitError::Kind::cancelled) {
            Q_EMIT failed(done.error().text());
        } else {
            refuse(done.error().text());
        }
    });
}

void GitModel::initRepository() {
    ORV_ASSERT_MAIN_THREAD();
    const QString branch = defaultBranch ? defaultBranch() : u"main"_s;
    run(u"init"_s, tr("Starting a repository…"), [folder = m_project.root, branch](const GitService& service) {
        return service.initRepository(folder, branch);
    });
}

void GitModel::stage(const QStringList& paths) {
    const QStringList all = touched(m_unstaged, paths, &FileChange::stagedPaths);
    act(u"stage"_s, tr("Staging…"),
        [all](const GitService& service, const QString& repository) { return service.stage(repository, all); });
}

void GitModel::stageAll() {
    act(u"stage"_s, tr("Staging…"), [](const GitService& service, const QString& repository) {
        return changeAll(
            service, repository,
            [](const FileChange& each) { return each.isUntracked() || (each.worktree != '.' && each.worktree != ' '); },
            &FileChange::stagedPaths, [&](const QStringList& paths) { return service.stage(repository, paths); });
    });
}

void GitModel::unstage(const QStringList& paths) {
    const QStringList all = touched(m_staged, paths);
    act(u"unstage"_s, tr("Unstaging…"),
        [all](const GitService& service, const QString& repository) { return service.unstage(repository, all); });
}

void GitModel::unstageAll() {
    act(u"unstage"_s, tr("Unstaging…"), [](const GitService& service, const QString& repository) {
        return changeAll(
            service, repository, &FileChange::isStaged, &FileChange::touchedPaths,
            [&](const QStringList& paths) { return service.unstage(repository, paths); });
    });
}

void GitModel::discard(const QStringList& paths) {
    actAndKeep(tr("Discarding…"), paths, [paths](const GitService& service, const QString& repository) {
        return service.discard(repository, paths);
    });
}

void GitModel::actOnLines(Part part, const DiffSelection& selection) {
    struct Verb {
        QLatin1StringView name;
        const char* going;
        GitOutcome<void> (GitService::*run)(
            const QString&, const DiffRequest&, const FileDiff&, const DiffSelection&) const;
    };
    static constexpr std::array verbs{
        Verb{"stage"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Staging…"), &GitService::stageLines},
        Verb{"unstage"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Unstaging…"), &GitService::unstageLines},
        Verb{"discard"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Discarding…"), &GitService::discardLines}};
    const bool isStaged = m_shownRequest.side == DiffSide::staged;
    if (m_isDiffOld) {
        // What is shown may be true all the same: it is read again because something was done.
        m_wishedLines = [this, part, selection, path = m_shownRequest.path, isStaged, shown = m_diff.diff()] {
            const bool isSameSide = isStaged == (m_shownRequest.side == DiffSide::staged);
            if (isSameSide && m_shownRequest.path == path && m_diff.diff() == shown) {
                actOnLines(part, selection);
            }
        };
        return;
    }
    if (!canDivide() || selection.empty() || isStaged != (part == Part::unstage)) {
        refuse(tr("There is nothing here of which a part could be changed."));
        return;
    }
    const Verb verb = verbs[static_cast<size_t>(part)];
    const auto work = [verb, request = m_shownRequest, shown = m_diff.diff(),
                       selection](const GitService& service, const QString& repository) {
        return (service.*verb.run)(repository, request, shown, selection);
    };
    const QString text = tr(verb.going);
    if (part == Part::discard) {
        actAndKeep(text, {m_shownRequest.path}, work);
    } else {
        act(verb.name, text, work);
    }
}

void GitModel::stageHunk(int hunk) {
    actOnLines(Part::stage, m_diff.hunkLines(hunk));
}
void GitModel::unstageHunk(int hunk) {
    actOnLines(Part::unstage, m_diff.hunkLines(hunk));
}
void GitModel::discardHunk(int hunk) {
    actOnLines(Part::discard, m_diff.hunkLines(hunk));
}
void GitModel::stageLines() {
    actOnLines(Part::stage, m_diff.selection());
}
void GitModel::unstageLines() {
    actOnLines(Part::unstage, m_diff.selection());
}
void GitModel::discardLines() {
    actOnLines(Part::discard, m_diff.selection());
}

void GitModel::commit(const QString& summary, const QString& description) {
    // A hook may take so long that another project is looked at when the commit is made.
    const auto work = [=, &overview = m_overview](const GitService& service, const QString& repository) {
        auto done = service.commit(repository, summary, description);
        if (done) {
            const auto drop = [=, &overview] { overview.dropDraft(repository, {summary, description}); };
            QMetaObject::invokeMethod(&overview, drop, Qt::QueuedConnection);
        }
        return done;
    };
    act(u"commit"_s, tr("Committing…"), work);
}

void GitModel::amend(const QString& summary, const QString& description) {
    act(u"amend"_s, tr("Amending…"), [=](const GitService& service, const QString& repository) {
        return service.amend(repository, summary, description);
    });
}

void GitModel::continueOperation() {
    act(u"continue"_s, tr("Continuing…"),
        [](const GitService& service, const QString& repository) { return service.continueOperation(repository); });
}

void GitModel::skipOperation() {
    act(u"skip"_s, u"Skipping…"_s,
        [](const GitService& service, const QString& repository) { return service.skipOperation(repository); });
}

void GitModel::abortOperation() {
    act(u"abort"_s, tr("Aborting…"),
        [](const GitService& service, const QString& repository) { return service.abortOperation(repository); });
}

void GitModel::switchBranch(const QString& name) {
    act(u"switch"_s, tr("Switching to %1…").arg(name),
        [=](const GitService& service, const QString& repository) { return service.switchBranch(repository, name); });
}

void GitModel::switchToRemote(const QString& remoteBranch) {
    act(u"switch"_s, tr("Switching to %1…").arg(remoteBranch),
        [=](const GitService& service, const QString& repository) {
            return service.switchToRemote(repository, remoteBranch);
        });
}

void GitModel::createBranch(const QString& name) {
    act(u"create"_s, tr("Creating %1…").arg(name),
        [=](const GitService& service, const QString& repository) { return service.createBranch(repository, name); });
}

void GitModel::deleteBranch(const QString& name, bool evenIfUnmerged) {
    const auto deletion = evenIfUnmerged ? GitService::Deletion::always : GitService::Deletion::ifMerged;
    act(u"delete"_s, tr("Deleting %1…").arg(name), [=](const GitService& service, const QString& repository) {
        return service.deleteBranch(repository, name, deletion);
    });
}

void GitModel::setUpstream(const QString& branchName, const QString& upstreamName) {
    act(u"upstream"_s, tr("Setting the upstream…"), [=](const GitService& service, const QString& repository) {
        return service.setUpstream(repository, branchName, upstreamName);
    });
}

void GitModel::stashSave(const QString& message, bool withUntracked) {
    const auto untracked = withUntracked ? GitService::Untracked::included : GitService::Untracked::kept;
    act(u"stash"_s, tr("Stashing…"), [=](const GitService& service, const QString& repository) {
        return service.stashSave(repository, message, untracked);
    });
}

template <typename Method>
void GitModel::actOnStash(const QString& name, const QString& text, const QString& stash, Method method) {
    const auto& rows = m_stashes.rows();
    const auto row = std::ranges::find(rows, stash, &StashRow::key);
    if (row == rows.end()) {
        refuse(tr("This stash is gone."));
        return;
    }
    const StashEntry entry{.index = row->index, .id = row->key, .message = {}, .date = {}};
    act(name, text, [method, entry](const GitService& service, const QString& repository) {
        return (service.*method)(repository, entry);
    });
}

void GitModel::stashPop(const QString& stash) {
    actOnStash(u"stash-pop"_s, tr("Popping the stash…"), stash, &GitService::stashPop);
}
void GitModel::stashApply(const QString& stash) {
    actOnStash(u"stash-apply"_s, tr("Applying the stash…"), stash, &GitService::stashApply);
}
void GitModel::stashDrop(const QString& stash) {
    actOnStash(u"stash-drop"_s, tr("Dropping the stash…"), stash, &GitService::stashDrop);
}

void GitModel::fetch() {
    act(u"fetch"_s, tr("Fetching…"),
        [](const GitService& service, const QString& repository) { return service.fetch(repository); });
}

void GitModel::pull() {
    const PullStrategy strategy = pullStrategy ? pullStrategy() : PullStrategy::ffOnly;
    act(u"pull"_s, tr("Pulling…"), [strategy](const GitService& service, const QString& repository) {
        return service.pull(repository, strategy);
    });
}

void GitModel::push() {
    act(u"push"_s, tr("Pushing…"),
        [](const GitService& service, const QString& repository) { return service.push(repository); });
}

void GitModel::readIdentities() {
    ORV_ASSERT_MAIN_THREAD();
    const auto work = [reader = m_reader, repository = m_repository] {
        const GitIdentity everywhere = reader.identity(repository, GitScope::global).value_or(GitIdentity());
        const GitIdentity own = reader.identity(repository, GitScope::repo).value_or(GitIdentity());
        return QVariantMap{
            {u"globalName"_s, everywhere.name.value_or(QString())},
            {u"globalEmail"_s, everywhere.email.value_or(QString())},
            {u"ownName"_s, own.name.value_or(QString())},
            {u"ownEmail"_s, own.email.value_or(QString())}};
    };
    onFinished(runIn(m_overview.pool(), work), this, [this, at = m_generation](const QVariantMap& found) {
        if (at == m_generation) {
            m_identities = found;
            Q_EMIT identitiesChanged();
        }
    });
}

bool GitModel::isLikelyEmail(const QString& text) {
    return GitIdentityForm::isLikelyEmail(text);
}

void GitModel::setIdentity(const QString& name, const QString& email, bool everywhere) {
    const GitIdentity identity{name.trimmed(), email.trimmed()};
    if (identity.name->isEmpty() || identity.email->isEmpty()) {
        refuse(tr("Enter a name and an e-mail first."));
        return;
    }
    const GitScope scope = everywhere ? GitScope::global : GitScope::repo;
    act(u"identity"_s, tr("Saving…"), [=](const GitService& service, const QString& repository) {
        return service.setIdentity(identity, repository, scope);
    });
}

} // namespace orv
