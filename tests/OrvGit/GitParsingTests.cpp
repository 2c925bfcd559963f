#include "OrvGit/GitParsing.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/GitService.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr auto hashes = "N... 100644 100644 100644 1234567890123456789012345678901234567890 "
                        "1234567890123456789012345678901234567890 ";

/// Each with the NUL that ends it.
QByteArray records(const QByteArrayList& all) {
    return all.join('\0') + '\0';
}

QByteArray ordinary(const char* letters, const QByteArray& path) {
    return QByteArray("1 ") + letters + ' ' + hashes + path + '\0';
}

TEST(GitStatus, ReadsEveryRecord) {
    const RepoStatus read = GitParsing::status(
        records(
            {"# branch.oid 0123", "# branch.head fix/a", "# branch.upstream origin/fix", "# branch.ab +3 -12",
             "# stash 2"}) +
        ordinary(".M", "a b.txt") + ordinary("A.", "line\nfeed") + "2 R. " + hashes + "R100 new name" + '\0' + "1 old" +
        '\0' + "u UU N... 100644 100644 100644 100644 a b c both sides" + '\0' + "? odd \xff\xc3\xa9" + '\0' +
        "1 M. too few" + '\0' + "! ignored" + '\0' + "? last");
    const RepoStatus expected{
        .branch = u"fix/a"_s,
        .upstream = u"origin/fix"_s,
        .ahead = 3,
        .behind = 12,
        .changes =
            {{u"a b.txt"_s, '.', 'M', {}},
             {u"line\nfeed"_s, 'A', '.', {}},
             {u"new name"_s, 'R', '.', u"1 old"_s},
             {u"both sides"_s, 'U', 'U', {}},
             {u"odd "_s + QChar(0xDCFF) + u"é"_s, '?', '?', {}},
             {u"last"_s, '?', '?', {}}},
        .hasCommits = true,
    };
    EXPECT_EQ(read, expected);
}

/// git-status(1), Short Format: every pair of letters that a record can have.
TEST(GitStatus, KnowsWhatEveryPairOfLettersMeans) {
    for (const char* letters :
         {".M", ".T", ".D", ".A", "M.", "MM", "MT", "MD", "T.", "TM", "TT", "TD", "A.", "AM", "AT", "AD", "D.",
          "DD", "AU", "UD", "UA", "DU", "AA", "UU", "R.", "RM", "RT", "RD", "C.", "CM", "CT", "CD", ".R", ".C"}) {
        const QByteArrayView unmerged[]{"DD", "AU", "UD", "UA", "DU", "AA", "UU"};
        const bool isConflict = std::ranges::find(unmerged, QByteArrayView(letters)) != std::end(unmerged);
        const bool isMoved = QByteArrayView(letters).contains('R') || QByteArrayView(letters).contains('C');
        const QByteArray record = isConflict ? QByteArray("u ") + letters + " N... 1 2 3 4 a b c x"
                                  : isMoved  ? QByteArray("2 ") + letters + ' ' + hashes + "R75 x" + '\0' + "old" + '\0'
                                             : ordinary(letters, "x");
        const RepoStatus status = GitParsing::status(record);
        ASSERT_EQ(status.changes.size(), 1) << letters;
        const FileChange& change = status.changes.front();
        EXPECT_EQ((QByteArray{1, change.index} + change.worktree), letters);
        EXPECT_EQ(change.isConflicted(), isConflict) << letters;
        EXPECT_EQ(change.isStaged(), letters[0] != '.') << letters;
        EXPECT_EQ(change.originalPath, isMoved ? u"old"_s : QString()) << letters;
        EXPECT_FALSE(change.isUntracked());
    }
}

TEST(GitLog, KeepsWhatHasFourFields) {
    const QList<CommitInfo> commits = GitParsing::log("id1\x1ftab\t\"quotes\" | bar\x1f"
                                                      "Ada\x1f"
                                                      "1700000000\n"
                                                      "id2\x1f\x1f\x1f"
                                                      "0\n"
                                                      "three\x1f"
                                                      "fields\x1fonly\n"
                                                      "id3\x1fone\x1ftoo\x1fmany\x1f"
                                                      "5\n"
                                                      "id4\x1fno\x1f"
                                                      "date\x1fx\n");
    const QList<CommitInfo> expected{
        {u"id1"_s, u"tab\t\"quotes\" | bar"_s, u"Ada"_s, QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC)},
        {u"id2"_s, {}, {}, QDateTime::fromSecsSinceEpoch(0, Qt::UTC)}};
    EXPECT_EQ(commits, expected);
}

TEST(GitErrors, SayWhatTheUserReads) {
    const struct {
        QString errors;
        int code;
        QString text;
    } cases[]{
        {u" \n"_s, 128, u"git failed (exit 128)."_s},
        {u"fatal: no such thing\n\n"_s, 1, u"fatal: no such thing"_s},
        {u"fatal: not a git repository (or any parent)\n"_s, 128, u"This folder is not a git repository."_s},
        {u"hint: x\nfatal: Not possible to fast-forward, aborting.\n"_s, 128,
         u"Can't fast-forward: your branch and the remote have diverged."_s},
        // The order of the patterns decides, not that of the lines.
        {u"fatal: could not read Username for 'x'\n\tremote: Authentication failed \nx"_s, 128,
         u"Authentication failed. remote: Authentication failed"_s},
        {u"ERROR: Repository not found.\nfatal: not a git repository"_s, 128,
         u"Authentication failed. ERROR: Repository not found."_s},
        {u"authentication failed"_s, 1, u"authentication failed"_s},
        {u"\x1b[33mhint: x\x1b[m\n\x1b[1;31mfatal: no\x1b[m\n"_s, 1, u"hint: x\nfatal: no"_s},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(GitError::classify(each.errors, each.code).text(), each.text);
    }
    EXPECT_EQ(GitError::conflicts({u"a"_s, u"b c"_s}).text(), u"Merge conflicts in: a, b c"_s);
    EXPECT_EQ(
        lockedIndex(u"fatal: Unable to create '/a 'b'/.git/index.lock': File exists.\n\nAnother"_s),
        u"/a 'b'/.git/index.lock"_s);
    EXPECT_EQ(lockedIndex(u"fatal: Unable to create '/a/HEAD.lock': File exists."_s), QString());
}

TEST(GitPath, ComesBackFromAStringAsItWas) {
    for (const QByteArray& bytes :
         {QByteArray("plain/é 𝄞"), QByteArray("\xff"), QByteArray("a\xc3"), QByteArray("\xef\xbf\xbd\xff"),
          QByteArray("\xed\xb2\x80x"),
          QByteArray("\xf0\x9d\x84"
                     "é\x80\xf5\xfe"),
          QByteArray("\xc0\xaf\xe2\x82\xac\"\\\n\x01")}) {
        EXPECT_EQ(GitPath::toBytes(GitPath::fromBytes(bytes)), bytes);
        EXPECT_EQ(GitPath::unquoted(GitPath::quoted(bytes)), bytes);
    }
    EXPECT_EQ(GitPath::unquoted("\"t\\ta\\\"b\\303\\251\\\\\""), QByteArray("t\ta\"b\xc3\xa9\\"));
}

TEST(CloneProgress, IsPhaseAndPercent) {
    const struct {
        QString line;
        std::optional<CloneProgress> expected;
    } cases[]{
        {u"Cloning into 'x'..."_s, {}},
        {u"remote: Enumerating objects: 5, done.        "_s, CloneProgress{ClonePhase::counting, {}, {}}},
        {u"remote: Counting objects:  33% (1/3)"_s, CloneProgress{ClonePhase::counting, 33, {}}},
        {u"remote: Compressing objects: 100% (2/2), done."_s, CloneProgress{ClonePhase::compressing, 100, {}}},
        {u"Receiving objects:  45% (450/1000), 1.20 MiB | 2.00 MiB/s"_s,
         CloneProgress{ClonePhase::receiving, 45, u"1.20 MiB | 2.00 MiB/s"_s}},
        {u"Receiving objects: 100% (3/3), 1.20 MiB | 2.00 MiB/s, done."_s,
         CloneProgress{ClonePhase::receiving, 100, u"1.20 MiB | 2.00 MiB/s"_s}},
        {u"Resolving deltas:   0% (0/7)"_s, CloneProgress{ClonePhase::resolving, 0, {}}},
        {u"Updating files: 7% (1/14)"_s, CloneProgress{ClonePhase::checkingOut, 7, {}}},
        {u"remote: Total 3 (delta 0), reused 0"_s, {}},
        {u"Receiving objects: 1000% (3/3)"_s, CloneProgress{ClonePhase::receiving, {}, {}}},
    };
    double last = 0;
    for (const auto& each : cases) {
        const auto progress = parseCloneProgress(each.line);
        EXPECT_EQ(progress, each.expected) << qPrintable(each.line);
        if (progress && progress->percent) {
            EXPECT_GE(progress->fraction(), last) << qPrintable(each.line);
            last = progress->fraction();
        }
    }
}

TEST(GitNames, OfFoldersComeFromTheUrl) {
    const struct {
        QString url;
        QString name;
    } cases[]{
        {u"https://host/a/tool.git"_s, u"tool"_s},
        {u"https://host/a/tool/"_s, u"tool"_s},
        {u"git@host:me/tool.git"_s, u"tool"_s},
        {u"host:tool"_s, u"tool"_s},
        {u"/srv/tool/.git"_s, u"tool"_s},
        {u"https://host"_s, {}},
        {u"https://host/.."_s, {}},
        {u" file:///x/a b.git "_s, u"a b"_s},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(folderNameOfUrl(each.url), each.name) << qPrintable(each.url);
    }
}

} // namespace
} // namespace orv
