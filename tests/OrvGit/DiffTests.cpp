#include "OrvGit/Patch.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const char* const header = "diff --git a/f b/f\nindex 1..2 100644\n--- a/f\n+++ b/f\n";

TEST(Diff, NumbersTheLinesOfBothSides) {
    const QList<FileDiff> files = parseDiff(
        QByteArray(header) +
        "@@ -3,3 +3,4 @@ int main()\n same\n-gone\n+came\r\n+--- a/x\n same\n\\ No newline at end of file\n"
        "@@ -20 +22,0 @@\n-last\n");
    ASSERT_EQ(files.size(), 1);
    ASSERT_EQ(files[0].hunks.size(), 2);
    const DiffHunk& hunk = files[0].hunks[0];
    EXPECT_EQ(hunk.heading, u"int main()"_s);
    QByteArray shown;
    for (const DiffLine& line : hunk.lines) {
        shown += QByteArray::number(line.oldNumber) + ' ' + QByteArray::number(line.newNumber) + ' ' +
                 files[0].text(line).toByteArray() + (line.endsWithoutLineFeed ? "$" : "") + '|';
    }
    EXPECT_EQ(shown, "3 3 same|4 0 gone|0 4 came\r|0 5 --- a/x|5 6 same$|");
    EXPECT_EQ(files[0].hunks[1].lines.front().oldNumber, 20);
    EXPECT_EQ(files[0].count(DiffLineKind::added), 2);
}

TEST(Diff, SaysWhatEachFileIs) {
    const struct {
        QByteArray text;
        QByteArray oldPath;
        QByteArray newPath;
        DiffChange change;
        DiffContent content;
    } cases[]{
        {"diff --git a/x y b/x y\nold mode 100644\nnew mode 100755\n", "x y", "x y", DiffChange::modified,
         DiffContent::text},
        {"diff --git a/x y b/x y\nindex 1..2 100644\n--- a/x y\t\n+++ \"b/x y\"\t\n@@ -1 +1 @@\n-a\n+b\n", "x y", "x y",
         DiffChange::modified, DiffContent::text},
        {"diff --git \"a/t\\tab\" \"b/t\\tab\"\nnew file mode 100644\nindex 0..1\n", "", "t\tab", DiffChange::added,
         DiffContent::text},
        {"diff --git a/one \"b/t\\two\"\nsimilarity index 100%\nrename from one\nrename to \"t\\two\"\n", "one",
         "t\two", DiffChange::renamed, DiffContent::text},
        {"diff --git a/p.png b/p.png\ndeleted file mode 100644\nindex 1..0\nBinary files a/p.png and /dev/null "
         "differ\n",
         "p.png", "", DiffChange::deleted, DiffContent::binary},
        {"diff --git a/l b/l\nindex 1..2 120000\n--- a/l\n+++ b/l\n@@ -1 +1 @@\n-a\n\\ No newline at end of file\n+b\n",
         "l", "l", DiffChange::modified, DiffContent::symlink},
        {"diff --git a/s b/s\nindex 1..2 160000\n--- a/s\n+++ b/s\n@@ -1 +1 @@\n-Subproject commit 1\n+Subproject "
         "commit 2\n",
         "s", "s", DiffChange::modified, DiffContent::submodule},
        {"diff --cc c\nindex 1,2..0\n--- a/c\n+++ b/c\n@@@ -1,1 -1,1 +1,3 @@@\n++<<<<\n +ours\n+ theirs\n", "c", "c",
         DiffChange::modified, DiffContent::conflict},
        {"* Unmerged path c\n", "c", "c", DiffChange::modified, DiffContent::conflict},
        {"diff --git a/s b/s\n--- a/s\n+++ b/s\n@@ -1 +1 @@\n-Subproject commit 1\n+Subproject commit 1-dirty\n", "s",
         "s", DiffChange::modified, DiffContent::submodule},
        {"diff --git a/k b/k\ndeleted file mode 100644\nindex 1..0\n--- a/k\n+++ /dev/null\n@@ -1 +0,0 @@\n-a\n"
         "diff --git a/k b/k\nnew file mode 120000\nindex 0..2\n--- /dev/null\n+++ b/k\n@@ -0,0 +1 @@\n+b\n",
         "k", "k", DiffChange::modified, DiffContent::otherKind},
    };
    for (const auto& each : cases) {
        const QList<FileDiff> files = parseDiff(each.text);
        ASSERT_EQ(files.size(), 1) << each.text.constData();
        EXPECT_EQ(files[0].oldPath, each.oldPath) << each.text.constData();
        EXPECT_EQ(files[0].newPath, each.newPath) << each.text.constData();
        EXPECT_EQ(files[0].change, each.change) << each.text.constData();
        EXPECT_EQ(files[0].content, each.content) << each.text.constData();
    }
    EXPECT_EQ(parseDiff(cases[7].text)[0].hunks[0].lines.size(), 3);
    EXPECT_EQ(parseDiff(cases[0].text + cases[1].text + cases[4].text).size(), 3);
}

/// The hunk's lines in the patch when the lines with these indices are chosen.
TEST(Patch, HoldsWhatIsChosenAndWhatIsThere) {
    const QByteArray change = QByteArray(header) + "@@ -1,3 +1,3 @@\n a\n-b\n-c\n+B\n+C\n";
    const QByteArray noFeed =
        QByteArray(header) + "@@ -1 +1,2 @@\n-a\n\\ No newline at end of file\n+x\n+b\n\\ No newline at end of file\n";
    constexpr auto forward = PatchDirection::forward;
    constexpr auto reverse = PatchDirection::reverse;
    const struct {
        const char* label;
        QByteArray diff;
        std::set<qsizetype> lines;
        PatchDirection direction;
        QByteArray hunk;
    } cases[]{
        {"an added line", change, {3}, forward, "@@ -1,3 +1,4 @@\n a\n b\n c\n+B\n"},
        {"a removed line", change, {2}, forward, "@@ -1,3 +1,2 @@\n a\n b\n-c\n"},
        {"an added line undone", change, {4}, reverse, "@@ -1,2 +1,3 @@\n a\n B\n+C\n"},
        {"a removed line undone", change, {1}, reverse, "@@ -1,4 +1,3 @@\n a\n-b\n B\n C\n"},
        {"behind a line that had no line feed",
         noFeed,
         {2},
         forward,
         "@@ -1,1 +1,2 @@\n-a\n\\ No newline at end of file\n+a\n+b\n\\ No newline at end of file\n"},
        {"a line without line feed before others",
         noFeed,
         {0},
         reverse,
         "@@ -1,3 +1,2 @@\n-a\n x\n b\n\\ No newline at end of file\n"},
        {"context only", change, {0}, forward, ""},
    };
    for (const auto& each : cases) {
        const FileDiff file = parseDiff(each.diff).front();
        const auto patch = makePatch(file, {{0, each.lines}}, each.direction);
        const QByteArray hunk = patch ? patch->sliced(patch->indexOf("@@")) : QByteArray();
        EXPECT_EQ(hunk, each.hunk) << each.label;
    }
}

} // namespace
} // namespace orv
