#include "OrvGit/GitError.h"

#include "GitWords_p.h"
#include "OrvCore/PlainText.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// What git and its transports write when the other side does not let them in. The first that occurs counts.
constexpr std::array authFailures{
    "Authentication failed"_L1,   "Permission denied (publickey)"_L1, "could not read Username"_L1,
    "could not read Password"_L1, "Invalid username or password"_L1,  "Repository not found"_L1,
};

QStringView withoutBlanks(QStringView line) {
    const auto isBlank = [](QChar letter) { return letter == u' ' || letter == u'\t'; };
    while (!line.isEmpty() && isBlank(line.front())) {
        line = line.sliced(1);
    }
    while (!line.isEmpty() && isBlank(line.back())) {
        line.chop(1);
    }
    return line;
}

} // namespace

QString GitError::text() const {
    switch (kind) {
    case Kind::commandFailed:
        return detail.isEmpty() ? GitWords::tr("git failed (exit %1).").arg(code) : detail;
    case Kind::conflicts:
        return GitWords::tr("Merge conflicts in: %1").arg(paths.join(", "_L1));
    case Kind::authFailed:
        return GitWords::tr("Authentication failed. %1").arg(detail);
    case Kind::notARepo:
        return GitWords::tr("This folder is not a git repository.");
    case Kind::timeout:
        return GitWords::tr("git took too long and was stopped.");
    case Kind::noUpstream:
        return GitWords::tr("This branch has no upstream branch yet.");
    case Kind::nothingToCommit:
        return GitWords::tr("There are no staged changes to commit.");
    case Kind::emptyMessage:
        return GitWords::tr("Enter a commit summary first.");
    case Kind::cannotFastForward:
        return GitWords::tr("Can't fast-forward: your branch and the remote have diverged.");
    case Kind::cancelled:
        return GitWords::tr("git was stopped.");
    case Kind::startFailed:
    case Kind::refused:
        return detail;
    }
    Q_UNREACHABLE();
}

GitError GitError::classify(const QString& printed, int code) {
    const QString errors = withoutColours(printed);
    const QList<QStringView> lines = QStringView(errors).split(u'\n');
    for (const QLatin1StringView pattern : authFailures) {
        const auto line = std::ranges::find_if(lines, [pattern](QStringView each) { return each.contains(pattern); });
        if (line != lines.end()) {
            return {Kind::authFailed, 0, withoutBlanks(*line).toString(), {}};
        }
    }
    if (errors.contains("Not possible to fast-forward"_L1)) {
        return of(Kind::cannotFastForward);
    }
    if (errors.contains("not a git repository"_L1)) {
        return of(Kind::notARepo);
    }
    return {Kind::commandFailed, code, errors.trimmed(), {}};
}

QString lockedIndex(const QString& errors) {
    constexpr auto before = "Unable to create '"_L1;
    constexpr auto after = "index.lock': File exists"_L1;
    const qsizetype end = errors.indexOf(after);
    const qsizetype begin = end < 0 ? -1 : errors.lastIndexOf(before, end);
    if (begin < 0) {
        return {};
    }
    const qsizetype first = begin + before.size();
    return errors.sliced(first, end - first) + u"index.lock"_s;
}

} // namespace orv
