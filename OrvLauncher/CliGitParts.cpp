#include "CliGit_p.h"
#include "OrvUI/GitIdentityForm.h"
#include "TextLayout.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>

// What is less than a commit: hunks, stashes; and whose it will be.

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// "1,3" as places from 0; none when it is something else.
std::optional<QList<qsizetype>> hunksOf(const QString& text) {
    QList<qsizetype> hunks;
    for (const QString& word : text.split(u',')) {
        bool isNumber = false;
        const int number = word.trimmed().toInt(&isNumber);
        if (!isNumber || number < 1) {
            return {};
        }
        hunks.append(number - 1);
    }
    return hunks;
}

GitOutcome<DiffRequest> requestFor(
    const GitService& service, const QString& repository, const QString& path, DiffSide side) {
    const auto status = service.status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    for (const FileChange& change : status->changes) {
        const bool isThere = side == DiffSide::staged ? change.isStaged() && !change.isConflicted()
                                                      : change.isUntracked() || change.worktree != '.';
        if (change.path != path || !isThere) {
            continue;
        }
        const char letter = side == DiffSide::staged ? change.index : change.worktree;
        return DiffRequest{
            .path = path,
            .originalPath = letter == 'R' || letter == 'C' ? change.originalPath : QString(),
            .side = change.isUntracked() ? DiffSide::untracked : side};
    }
    return std::unexpected(GitError::refused(
        side == DiffSide::staged ? u"nothing of “%1” is staged."_s.arg(printable(path))
                                 : u"nothing is changed in “%1”."_s.arg(printable(path))));
}

struct StashVerb {
    QStringView name;
    QString going;
    GitOutcome<void> (GitService::*run)(const QString&, const StashEntry&) const;
};

QFuture<int> listStashes(Invocation& call) {
    const auto work = [folder = folderMeant(call)](const GitService& service) -> GitOutcome<QList<StashEntry>> {
        const auto repository = repositoryAt(service, folder);
        return repository ? service.stashes(*repository) : std::unexpected(repository.error());
    };
    return runGit(call, u"Asking git…"_s, work, [&call](const QList<StashEntry>& entries) -> int {
        Stream& out = call.console.out;
        QJsonArray array;
        Table table({{u"ENTRY"_s, Style::yellow}, {u"DATE"_s, Style::dim}, {u"MESSAGE"_s}});
        for (const StashEntry& entry : entries) {
            array.append(QJsonObject{
                {u"entry"_s, entry.index},
                {u"id"_s, entry.id},
                {u"message"_s, entry.message},
                {u"date"_s, entry.date.toUTC().toString(Qt::ISODate)}});
            table.add(
                {QString::number(entry.index), entry.date.toLocalTime().toString(u"yyyy-MM-dd HH:mm"_s),
                 entry.message});
        }
        if (call.json) {
            printJson(out, array);
        } else if (entries.isEmpty()) {
            call.note(u"No stashes."_s);
        } else {
            out.write(table.text(out.width(), out.hasColor()));
        }
        return exitOk;
    });
}

QFuture<int> saveStash(Invocation& call) {
    const auto untracked = call.isSet(u"untracked"_s) ? GitService::Untracked::included : GitService::Untracked::kept;
    return changeAndShow(
        call, u"Stashing…"_s,
        [message = call.value(u"message"_s), untracked](const GitService& service, const QString& repository) {
            return service.stashSave(repository, message, untracked);
        });
}

QJsonValue orNull(const std::optional<QString>& text) {
    return text ? QJsonValue(*text) : QJsonValue();
}

/// Who commits, and where that is said.
struct Identities {
    GitIdentity effective;
    GitIdentity own; ///< of the repository
    GitIdentity global;
};

void print(Stream& out, const QString& title, const std::optional<QString>& value, bool isOwn) {
    out.writeLine(
        painted(padded(title, 6), Style::dim, out.hasColor()) + u' ' +
        (value ? printable(*value) + (isOwn ? u"  (this repository)"_s : QString()) : u"not set"_s));
}

} // namespace

QFuture<int> gitHunks(Invocation& call, LinesMethod method, DiffSide side) {
    const auto hunks = hunksOf(call.value(u"hunk"_s));
    if (!hunks || call.words.size() != 1) {
        return QtFuture::makeReadyFuture(call.usageError(
            hunks ? u"--hunk goes with the path of one file."_s
                  : u"--hunk takes numbers, such as 1 or 1,3; 'orvlauncher git diff' shows them."_s));
    }
    const auto plan = [folder = folderMeant(call), words = call.words, hunks = *hunks, method,
                       side](const GitService& service, const QString& repository) -> GitOutcome<PlannedChange> {
        const auto paths = pathsIn(repository, folder, words);
        if (!paths) {
            return std::unexpected(paths.error());
        }
        const auto request = requestFor(service, repository, paths->first(), side);
        if (!request) {
            return std::unexpected(request.error());
        }
        if (request->side == DiffSide::untracked && method == &GitService::discardLines) {
            return std::unexpected(
                GitError::refused(u"git does not know “%1”: discard it whole."_s.arg(printable(request->path))));
        }
        // Without the filters of the repository, as lines are chosen by everywhere.
        GitService looking = service;
        looking.runner.purpose = GitPurpose::background;
        const auto shown = looking.fileDiff(repository, *request);
        if (!shown) {
            return std::unexpected(shown.error());
        }
        if (!shown->canBeDivided()) {
            return std::unexpected(
                GitError::refused(u"“%1” has no hunks to choose from."_s.arg(printable(request->path))));
        }
        DiffSelection selection;
        for (const qsizetype hunk : hunks) {
            if (hunk >= shown->hunks.size()) {
                return std::unexpected(
                    GitError::refused(u"“%1” has no hunk %2; it has %3."_s.arg(printable(request->path))
                                          .arg(hunk + 1)
                                          .arg(shown->hunks.size())));
            }
            selection.merge(wholeHunk(*shown, hunk));
        }
        return PlannedChange{
            {request->path},
            [method, request = *request, shown = *shown, selection](const GitService& git, const QString& place) {
                return (git.*method)(place, request, shown, selection);
            }};
    };
    if (method == &GitService::discardLines) {
        return discardAndShow(call, plan);
    }
    return changeAndShow(call, u"Running git…"_s, [plan](const GitService& service, const QString& repository) {
        const auto planned = plan(service, repository);
        return planned ? planned->run(service, repository) : std::unexpected(planned.error());
    });
}

QFuture<int> gitStash(Invocation& call) {
    const QString word = call.words.value(0, u"save"_s);
    const bool isSaved = word == u"save";
    if ((isSaved || word == u"list") && call.words.size() > 1) {
        return QtFuture::makeReadyFuture(call.usageError(u"%1 takes no entry."_s.arg(word)));
    }
    if (!isSaved && (call.isSet(u"message"_s) || call.isSet(u"untracked"_s))) {
        return QtFuture::makeReadyFuture(call.usageError(u"--message and --untracked belong to save."_s));
    }
    if (isSaved || word == u"list") {
        return isSaved ? saveStash(call) : listStashes(call);
    }
    const std::array verbs{
        StashVerb{u"pop", u"Popping…"_s, &GitService::stashPop},
        StashVerb{u"apply", u"Applying…"_s, &GitService::stashApply},
        StashVerb{u"drop", u"Dropping…"_s, &GitService::stashDrop}};
    const auto verb = std::ranges::find(verbs, QStringView(word), &StashVerb::name);
    bool isNumber = false;
    const int wanted = call.words.value(1, u"0"_s).toInt(&isNumber);
    if (verb == verbs.end() || !isNumber) {
        return QtFuture::makeReadyFuture(call.usageError(
            verb == verbs.end()
                ? u"a stash is saved, popped, applied, dropped or listed, not '%1'."_s.arg(printable(word))
                : u"an entry is a number; 'orvlauncher git stash list' lists them."_s));
    }
    const auto change = [wanted,
                         run = verb->run](const GitService& service, const QString& repository) -> GitOutcome<void> {
        const auto entries = service.stashes(repository);
        if (!entries) {
            return std::unexpected(entries.error());
        }
        const auto entry = std::ranges::find(*entries, wanted, &StashEntry::index);
        return entry != entries->end()
                   ? (service.*run)(repository, *entry)
                   : std::unexpected(GitError::refused(
                         entries->isEmpty() ? u"There is no stash."_s : u"There is no stash %1."_s.arg(wanted)));
    };
    return changeAndShow(call, verb->going, change);
}

QFuture<int> gitIdentity(Invocation& call) {
    const auto option = [&call](const QString& name) {
        return call.isSet(name) ? std::optional(call.value(name).trimmed()) : std::nullopt;
    };
    const GitIdentity wanted{option(u"name"_s), option(u"email"_s)};
    if ((wanted.name && wanted.name->isEmpty()) || (wanted.email && wanted.email->isEmpty())) {
        return QtFuture::makeReadyFuture(call.usageError(u"--name and --email take a text."_s));
    }
    const bool isGlobal = call.isSet(u"global"_s);
    const auto work = [folder = folderMeant(call), wanted,
                       isGlobal](const GitService& service) -> GitOutcome<Identities> {
        // That of every repository needs none.
        const auto repository = isGlobal ? GitOutcome<QString>(folder) : repositoryAt(service, folder);
        if (!repository) {
            return std::unexpected(repository.error());
        }
        if (wanted.name || wanted.email) {
            const GitScope scope = isGlobal ? GitScope::global : GitScope::repo;
            if (const auto done = service.setIdentity(wanted, *repository, scope); !done) {
                return std::unexpected(done.error());
            }
        }
        Identities found;
        const auto global = service.identity(*repository, GitScope::global);
        if (!global) {
            return std::unexpected(global.error());
        }
        found.global = *global;
        found.effective = *global;
        if (!isGlobal) {
            found.own = service.identity(*repository, GitScope::repo).value_or(GitIdentity());
            found.effective = service.effectiveIdentity(*repository).value_or(GitIdentity());
        }
        return found;
    };
    const bool isDoubtful = wanted.email && !GitIdentityForm::isLikelyEmail(*wanted.email);
    return runGit(call, u"Asking git…"_s, work, [&call, isGlobal, isDoubtful](const Identities& found) -> int {
        Stream& out = call.console.out;
        if (isDoubtful) {
            call.note(u"This is no e-mail address: it has no @ between two parts. It is set all the same."_s);
        }
        if (call.json) {
            const auto toJson = [](const GitIdentity& identity) {
                return QJsonObject{{u"name"_s, orNull(identity.name)}, {u"email"_s, orNull(identity.email)}};
            };
            QJsonObject json = toJson(found.effective);
            json.insert(u"global"_s, toJson(found.global));
            json.insert(u"repository"_s, isGlobal ? QJsonValue() : QJsonValue(toJson(found.own)));
            printJson(out, json);
            return exitOk;
        }
        print(out, u"name"_s, found.effective.name, found.own.name.has_value());
        print(out, u"email"_s, found.effective.email, found.own.email.has_value());
        return exitOk;
    });
}

} // namespace orv
