#include "OrvGit/GitError.h"

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
        return detail.isEmpty() ? u"git failed (exit %1)."_s.arg(code) : detail;
    case Kind::conflicts:
        return u"Merge conflicts in: "_s + paths.join(", "_L1);
    case Kind::authFailed:
        return u"Authentication failed. "_s + detail;
    case Kind::notARepo:
        return u"This folder is not a git repository."_s;
    case Kind::timeout:
        return u"git took too long and was stopped."_s;
    case Kind::noUpstream:
        return u"This branch has no upstream branch yet."_s;
    case Kind::nothingToCommit:
        return u"There are no staged changes to commit."_s;
    case Kind::emptyMessage:
        return u"Enter a commit summary first."_s;
    case Kind::cannotFastForward:
        return u"Can't fast-forward: your branch and the remote have diverged."_s;
    case Kind::cancelled:
        return u"git was stopped."_s;
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
