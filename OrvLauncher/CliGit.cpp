#include "CliGit_p.h"
#include "OrvCore/Settings.h"
#include "OrvGit/RepositoryLayout.h"
#include "TextLayout.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using PathsMethod = GitOutcome<void> (GitService::*)(const QString&, const QStringList&) const;
using PathsOf = QStringList (FileChange::*)() const;

/// The paths of every change for which `isMeant`; conflicts only when they are named.
template <typename IsMeant>
GitOutcome<QStringList> pathsOfAll(
    const GitService& service, const QString& repository, PathsOf pathsOf, IsMeant isMeant) {
    const auto status = service.status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    QStringList paths;
    for (const FileChange& change : status->changes) {
        if (!change.isConflicted() && isMeant(change)) {
            paths += (change.*pathsOf)();
        }
    }
    paths.removeDuplicates();
    return paths;
}

/// With the other name of each that is staged as renamed: half of that is no change.
GitOutcome<QStringList> withRenames(
    const GitService& service, const QString& repository, GitOutcome<QStringList> paths) {
    const auto status = paths ? service.status(repository) : std::unexpected(paths.error());
    if (!status) {
        return std::unexpected(status.error());
    }
    for (const FileChange& change : status->changes) {
        const QStringList touched = change.touchedPaths();
        if (change.isStaged() && touched.size() > 1 &&
            std::ranges::any_of(touched, [&](const QString& path) { return paths->contains(path); })) {
            *paths += touched;
        }
    }
    paths->removeDuplicates();
    return paths;
}

template <typename IsMeant>
QFuture<int> changePaths(Invocation& call, PathsMethod method, PathsOf pathsOf, IsMeant isMeant) {
    const bool isAll = call.isSet(u"all"_s);
    if (isAll != call.words.isEmpty()) {
        return QtFuture::makeReadyFuture(
            call.usageError(isAll ? u"either name paths, or say --all."_s : u"name paths, or say --all."_s));
    }
    if (call.words.contains(QString())) {
        return QtFuture::makeReadyFuture(call.usageError(u"a path is empty."_s));
    }
    return changeAndShow(
        call, u"Running git…"_s,
        [folder = folderMeant(call), words = call.words, method, pathsOf, isAll,
         isMeant](const GitService& service, const QString& repository) {
            const auto paths = isAll ? pathsOfAll(service, repository, pathsOf, isMeant)
                                     : withRenames(service, repository, pathsIn(repository, folder, words));
            return paths ? (service.*method)(repository, *paths) : std::unexpected(paths.error());
        });
}

QFuture<int> stage(Invocation& call) {
    if (call.isSet(u"hunk"_s)) {
        return gitHunks(call, &GitService::stageLines, DiffSide::unstaged);
    }
    return changePaths(call, &GitService::stage, &FileChange::stagedPaths, [](const FileChange& change) {
        return change.isUntracked() || change.worktree != '.';
    });
}

QFuture<int> unstage(Invocation& call) {
    if (call.isSet(u"hunk"_s)) {
        return gitHunks(call, &GitService::unstageLines, DiffSide::staged);
    }
    return changePaths(call, &GitService::unstage, &FileChange::touchedPaths, [](const FileChange& change) {
        return change.isStaged();
    });
}

QFuture<int> commit(Invocation& call) {
    struct Committed {
        CommitInfo commit;
    };
    const auto work = [folder = folderMeant(call), summary = call.words.value(0),
                       description = call.value(u"description"_s),
                       isAmendment = call.isSet(u"amend"_s)](const GitService& service) -> GitOutcome<Committed> {
        const auto repository = repositoryAt(service, folder);
        if (!repository) {
            return std::unexpected(repository.error());
        }
        const auto done = isAmendment ? service.amend(*repository, summary, description)
                                      : service.commit(*repository, summary, description);
        if (!done) {
            return std::unexpected(done.error());
        }
        const auto log = service.log(*repository, 1);
        return log ? GitOutcome<Committed>(Committed{log->value(0)}) : std::unexpected(log.error());
    };
    return runGit(call, u"Committing…"_s, work, [&call](const Committed& made) -> int {
        if (call.json) {
            printJson(call.console.out, QJsonObject{{u"id"_s, made.commit.id}, {u"subject"_s, made.commit.subject}});
        } else {
            call.console.out.writeLine(u"%1 %2"_s.arg(made.commit.id.first(7), printable(made.commit.subject)));
        }
        return exitOk;
    });
}

QFuture<int> switchTo(Invocation& call) {
    return changeAndShow(
        call, u"Switching…"_s,
        [name = call.words.first(),
         isNew = call.isSet(u"create"_s)](const GitService& service, const QString& repository) {
            return isNew ? service.createBranch(repository, name) : service.switchBranch(repository, name);
        });
}

QFuture<int> continueOperation(Invocation& call) {
    return changeAndShow(call, u"Continuing…"_s, [](const GitService& service, const QString& repository) {
        return service.continueOperation(repository);
    });
}

QFuture<int> skipOperation(Invocation& call) {
    return changeAndShow(call, u"Skipping…"_s, [](const GitService& service, const QString& repository) {
        return service.skipOperation(repository);
    });
}

QFuture<int> abortOperation(Invocation& call) {
    return changeAndShow(call, u"Aborting…"_s, [](const GitService& service, const QString& repository) {
        return service.abortOperation(repository);
    });
}

enum class Which { all, onBranches };

/// Runs `action` on every repository of the project that the word means; the first failure ends it.
template <typename Remote>
QFuture<int> onRepositories(Invocation& call, const QString& going, const QString& gone, Which which, Remote action) {
    const auto run = [&call, going, gone, which, action](const QString& folder) {
        const auto work = [folder, which, action](const GitService& service) -> GitOutcome<QStringList> {
            auto repositories = repositoriesAt(service, folder);
            if (!repositories) {
                return repositories;
            }
            if (which == Which::onBranches) {
                repositories = repositoriesOnBranches(*repositories);
            }
            for (const QString& repository : std::as_const(*repositories)) {
                if (auto done = action(service, repository); !done) {
                    GitError error = done.error();
                    if (repositories->size() > 1) {
                        error = GitError::refused(shortPath(repository) + u": "_s + error.text());
                    }
                    return std::unexpected(error);
                }
            }
            return repositories;
        };
        return runGit(call, going, work, [&call, gone](const QStringList& repositories) -> int {
            if (call.json) {
                printJson(call.console.out, QJsonArray::fromStringList(repositories));
            }
            for (const QString& repository : repositories) {
                if (!call.json) {
                    call.console.out.writeLine(gone + u' ' + shortPath(repository));
                }
            }
            return exitOk;
        });
    };
    return withFolder(call, run);
}

QFuture<int> fetch(Invocation& call) {
    return onRepositories(
        call, u"Fetching…"_s, u"Fetched"_s, Which::all,
        [](const GitService& service, const QString& repository) { return service.fetch(repository); });
}

QFuture<int> push(Invocation& call) {
    return onRepositories(
        call, u"Pushing…"_s, u"Pushed"_s, Which::onBranches,
        [](const GitService& service, const QString& repository) { return service.push(repository); });
}

QFuture<int> pull(Invocation& call) {
    const QString word = call.isSet(u"strategy"_s) ? call.value(u"strategy"_s)
                                                   : rawValue(SettingsStore().settings().defaultPullStrategy);
    const auto preference = fromRawValue<PullPreference>(word);
    if (!preference) {
        return QtFuture::makeReadyFuture(call.usageError(u"the strategies are ffOnly, merge and rebase."_s));
    }
    const PullStrategy strategy = *preference == PullPreference::ffOnly  ? PullStrategy::ffOnly
                                  : *preference == PullPreference::merge ? PullStrategy::merge
                                                                         : PullStrategy::rebase;
    return onRepositories(
        call, u"Pulling…"_s, u"Pulled"_s, Which::onBranches,
        [strategy](const GitService& service, const QString& repository) {
            return service.pull(repository, strategy);
        });
}

} // namespace

Command gitCommand() {
    const CommandOption all{u"all"_s, {}, u"every changed file; conflicts excepted"_s};
    const CommandOption hunk{u"hunk"_s, u"N[,N...]"_s, u"only these hunks of the one file, as diff numbers them"_s};
    const CommandOption staged{u"staged"_s, {}, u"what is staged, instead of what is not"_s};
    return {
        u"git"_s,
        u"shows and changes the repositories of projects"_s,
        u"PROJECT is a folder, an id, or a project's name; without one it is the current folder. A PATH counts from "
        u"the\n"
        "current folder, or from the one that --in names. What changes several repositories stops at the first that\n"
        "fails. Nothing ever waits for a password: what needs one that neither an agent nor a keyring has, fails."_s,
        {{u"status"_s, u"[PROJECT]"_s, 0, 1, u"branch, upstream and changed files of each repository"_s, {}, gitStatus},
         {u"log"_s,
          u"[PATH]"_s,
          0,
          1,
          u"the last commits"_s,
          {inOption,
           {u"limit"_s, u"N"_s, u"how many; 20 without it"_s},
           {u"skip"_s, u"N"_s, u"leave out the newest N"_s}},
          gitLog},
         {u"diff"_s,
          u"[PATH...]"_s,
          0,
          anyNumber,
          u"the changed lines"_s,
          {inOption, staged, {u"commit"_s, u"ID"_s, u"what a commit changed"_s}},
          gitDiff},
         {u"stage"_s,
          u"[PATH...]"_s,
          0,
          anyNumber,
          u"takes files into the next commit"_s,
          {inOption, all, hunk},
          stage},
         {u"unstage"_s, u"[PATH...]"_s, 0, anyNumber, u"takes them out again"_s, {inOption, all, hunk}, unstage},
         {u"discard"_s,
          u"PATH..."_s,
          1,
          anyNumber,
          u"puts files back to the last commit; deletes untracked ones"_s,
          {inOption, hunk, {u"force"_s, {}, u"also what could not be brought back"_s}},
          gitDiscard},
         {u"commit"_s,
          u"SUMMARY"_s,
          1,
          1,
          u"commits what is staged"_s,
          {inOption,
           {u"description"_s, u"TEXT"_s, u"what follows the summary"_s},
           {u"amend"_s, {}, u"replaces the last commit"_s}},
          commit},
         {u"branch"_s,
          u"[BRANCH]"_s,
          0,
          1,
          u"lists the branches; BRANCH is the one whose upstream is set, the current one without it"_s,
          {inOption,
           {u"delete"_s, u"NAME"_s, u"deletes one that is merged"_s},
           {u"force"_s, {}, u"deletes it even so"_s},
           {u"set-upstream"_s, u"NAME"_s, u"what the branch follows, such as origin/main"_s},
           {u"unset-upstream"_s, {}, u"it follows none"_s}},
          gitBranch},
         {u"switch"_s,
          u"NAME"_s,
          1,
          1,
          u"checks another branch out"_s,
          {inOption, {u"create"_s, {}, u"makes it first"_s}},
          switchTo},
         {u"stash"_s,
          u"[save|pop|apply|drop|list] [ENTRY]"_s,
          0,
          2,
          u"puts changes away, and back; ENTRY 0 is the newest. Saves without a word"_s,
          {inOption,
           {u"message"_s, u"TEXT"_s, u"what the new entry is called"_s},
           {u"untracked"_s, {}, u"saves files that git does not know, too"_s}},
          gitStash},
         {u"identity"_s,
          {},
          0,
          0,
          u"who commits; with --name and --email it is set"_s,
          {inOption,
           {u"global"_s, {}, u"of every repository, instead of this one"_s},
           {u"name"_s, u"NAME"_s, u"sets the name"_s},
           {u"email"_s, u"ADDRESS"_s, u"sets the e-mail address"_s}},
          gitIdentity},
         {u"continue"_s,
          {},
          0,
          0,
          u"goes on with a merge, rebase, cherry-pick or revert"_s,
          {inOption},
          continueOperation},
         {u"skip"_s, {}, 0, 0, u"goes on without the commit that it is at"_s, {inOption}, skipOperation},
         {u"abort"_s, {}, 0, 0, u"gives it up"_s, {inOption}, abortOperation},
         {u"fetch"_s, u"[PROJECT]"_s, 0, 1, u"gets what the remotes have"_s, {}, fetch},
         {u"pull"_s,
          u"[PROJECT]"_s,
          0,
          1,
          u"takes it into the branch"_s,
          {{u"strategy"_s, u"NAME"_s, u"ffOnly, merge or rebase; the setting defaultPullStrategy without it"_s}},
          pull},
         {u"push"_s, u"[PROJECT]"_s, 0, 1, u"sends the branch; publishes a new one to origin"_s, {}, push},
         {u"clone"_s,
          u"URL [NAME]"_s,
          1,
          2,
          u"makes a project of a remote repository"_s,
          {{u"into"_s, u"FOLDER"_s, u"where; the scanned folder without it"_s}},
          gitClone}},
        {{u"orvlauncher git status shop"_s, u"what is changed in the project shop"_s},
         {u"orvlauncher git stage --all && orvlauncher git commit \"Fix the cart\""_s, u"commits everything here"_s},
         {u"orvlauncher git stage cart.js --hunk 1,3 && orvlauncher git diff --staged"_s, u"a part of a file"_s},
         {u"orvlauncher git status --json | jq '[.[].changes[].path]'"_s, u"the changed files, for a script"_s},
         {u"orvlauncher git clone https://example.org/tools/ledger.git"_s, u"a new project, with its progress"_s}}};
}

} // namespace orv
