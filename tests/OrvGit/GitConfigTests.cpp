#include "tests/OrvGit/GitFixture.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

const QString file = u"ä b"_s;

QByteArray numbered(const QByteArray& third, const QByteArray& last) {
    QByteArray text = "1\n\n" + third + "\n\n";
    for (int i = 5; i < 30; ++i) {
        text += QByteArray::number(i) + '\n';
    }
    return text + last + '\n';
}

/// "path | @1,3 @27,4 | -a +b": what a diff says, but for the words between its lines.
QString shown(const FileDiff& diff) {
    QString text = QString::fromUtf8(diff.path()) + u" |"_s;
    for (const DiffHunk& hunk : diff.hunks) {
        text += u" @%1,%2"_s.arg(hunk.oldStart).arg(hunk.oldCount);
        for (const DiffLine& line : hunk.lines) {
            constexpr std::array marks{u" ", u" +", u" -"};
            text += QString::fromUtf16(marks[static_cast<size_t>(line.kind)]) + QString::fromUtf8(diff.text(line));
        }
    }
    return text;
}

/// Each thing that is read of a repository, as a text.
QMap<QString, QString> read(const GitService& service, const QString& r) {
    QMap<QString, QString> found;
    const RepoStatus status = value(service.status(r));
    found[u"branch"_s] = status.branch.value_or(u"none"_s) + u' ' + status.upstream.value_or(u"none"_s) +
                         u" +%1 -%2"_s.arg(status.ahead).arg(status.behind);
    for (const FileChange& change : status.changes) {
        found[u"status"_s] += QChar::fromLatin1(change.index) + QString(QChar::fromLatin1(change.worktree)) +
                              change.path + u'<' + change.originalPath + u'|';
    }
    for (const CommitInfo& commit : value(service.log(r, 9))) {
        found[u"log"_s] += commit.id + commit.subject + commit.author + commit.date.toString(Qt::ISODate) + u'|';
    }
    for (const HistoryEntry& entry : value(service.history(r, {.limit = 9, .from = {}, .path = file}))) {
        found[u"history"_s] += entry.commit.id + entry.email + entry.parents.join(u' ') + entry.refs.join(u' ') + u'|';
    }
    found[u"branches"_s] = value(service.branches(r)).join(u'|');
    for (const BranchInfo& branch : value(service.branchInfos(r))) {
        found[u"branch infos"_s] += branch.name + branch.upstream + branch.subject + QString::number(branch.ahead);
    }
    for (const StashEntry& stash : value(service.stashes(r))) {
        found[u"stashes"_s] += stash.id + stash.message;
    }
    found[u"message"_s] = value(service.headMessage(r));
    found[u"top"_s] = value(service.topFolder(r));
    found[u"diff"_s] = shown(value(service.fileDiff(r, {.path = file, .originalPath = {}})));
    found[u"staged"_s] =
        shown(value(service.fileDiff(r, {.path = u"to"_s, .originalPath = u"from"_s, .side = DiffSide::staged})));
    found[u"untracked"_s] =
        shown(value(service.fileDiff(r, {.path = u"new"_s, .originalPath = {}, .side = DiffSide::untracked})));
    for (const FileDiff& diff : value(service.commitDiff(r, u"HEAD"_s))) {
        found[u"commit"_s] += shown(diff) + u'|';
    }
    return found;
}

} // namespace

TEST(GitConfig, ChangesNothingOfWhatIsReadAndStaged) {
    GitHome home;
    const QByteArray plain = readFile(home.path(u"home/.gitconfig"_s));
    const QString r = home.makeRepository(u"r"_s, {{file, numbered("3", "30")}, {u"from"_s, numbered("a", "b")}});
    git(r, {u"branch"_s, u"topic"_s});
    git(r, {u"branch"_s, u"-q"_s, u"-u"_s, u"topic"_s});
    home.add(u"r/"_s + file, numbered("3", "thirty"));
    git(r, {u"commit"_s, u"-qam"_s, u"Zweiter é"_s});
    git(r, {u"mv"_s, u"from"_s, u"to"_s});
    git(r, {u"stash"_s, u"-q"_s});
    git(r, {u"stash"_s, u"apply"_s, u"-q"_s, u"--index"_s});
    const QByteArray changed = numbered("three \nmore", "last");
    home.add(u"r/"_s + file, changed);
    home.add(u"r/new"_s, "a\n\nb\n");
    home.add(u"attributes"_s, "* diff=foo\n");
    const struct {
        const char* label;
        QByteArray settings;
    } cases[]{
        {"columns", "[column]\n ui = always\n branch = always\n status = always\n"},
        {"colours", "[color]\n ui = always\n branch = always\n status = always\n diff = always\n"},
        {"signatures, dates, names",
         "[log]\n showSignature = true\n date = relative\n decorate = full\n abbrevCommit = true\n follow = true\n"
         "[core]\n abbrev = 40\n"},
        {"a format of commits", "[format]\n pretty = oneline\n[stash]\n showPatch = true\n"},
        {"an encoding", "[i18n]\n logOutputEncoding = ISO-8859-1\n"},
        {"another status",
         "[status]\n short = true\n branch = true\n showUntrackedFiles = no\n showStash = true\n aheadBehind = false\n"
         " relativePaths = false\n submoduleSummary = true\n"},
        {"paths as they are", "[core]\n quotePath = false\n"},
        {"no prefix", "[diff]\n noprefix = true\n relative = true\n"},
        {"other prefixes", "[diff]\n mnemonicPrefix = true\n srcPrefix = x/\n dstPrefix = y/\n"},
        {"a program for diffs", "[diff]\n external = /bin/false\n"},
        {"drivers of files", "[core]\n attributesFile = " + home.path(u"attributes"_s).toUtf8() +
                                 "\n[diff \"foo\"]\n command = /bin/false\n textconv = /bin/false\n"},
        {"other context", "[diff]\n context = 0\n interHunkContext = 30\n"},
        {"nothing before an empty line", "[diff]\n suppressBlankEmpty = true\n"},
        {"words and marks", "[diff]\n wordRegex = .\n colorMoved = zebra\n wsErrorHighlight = all\n submodule = log\n"},
        {"white space",
         "[core]\n whitespace = tab-in-indent\n[apply]\n whitespace = error-all\n ignoreWhitespace = change\n"},
        {"pagers", "[core]\n pager = false\n[pager]\n status = true\n branch = true\n log = true\n diff = true\n"},
    };
    const GitService service;
    const auto expected = read(service, r);
    ASSERT_EQ(expected[u"branches"_s], u"main|topic"_s);
    for (const auto& each : cases) {
        home.add(u"home/.gitconfig"_s, plain + each.settings);
        const auto found = read(service, r);
        for (auto part = expected.cbegin(); part != expected.cend(); ++part) {
            EXPECT_EQ(found[part.key()], part.value()) << each.label << ": " << part.key().toStdString();
        }
        const DiffRequest request{.path = file, .originalPath = {}};
        const FileDiff whole = value(service.fileDiff(r, request));
        ASSERT_EQ(whole.hunks.size(), 2) << each.label;
        EXPECT_EQ(failure(service.stageLines(r, request, whole, wholeHunk(whole, 1))), "") << each.label;
        const FileDiff rest = value(service.fileDiff(r, request));
        // "three " takes the place of "3"; the line after it stays.
        EXPECT_EQ(failure(service.stageLines(r, request, rest, {{0, {2, 3}}})), "") << each.label;
        EXPECT_EQ(
            git(r, {u"show"_s, u"--no-ext-diff"_s, u"--no-textconv"_s, u":"_s + file}), numbered("three ", "last"))
            << each.label;
        const DiffRequest staged{.path = file, .originalPath = {}, .side = DiffSide::staged};
        const FileDiff ready = value(service.fileDiff(r, staged));
        EXPECT_EQ(failure(service.unstageLines(r, staged, ready, wholeHunk(ready, 0))), "") << each.label;
        EXPECT_EQ(failure(service.unstage(r, {file})), "") << each.label;
        EXPECT_EQ(readFile(r + u'/' + file), changed) << each.label;
    }
}

} // namespace orv::test
