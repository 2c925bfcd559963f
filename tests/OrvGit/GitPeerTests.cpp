#include "OrvGit/GitPath.h"
#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <random>
#include <thread>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

/// Random histories and work trees, each from its seed.
class Dice {
public:
    explicit Dice(unsigned seed) : m_engine(seed) {}
    int below(int end) { return std::uniform_int_distribution(0, end - 1)(m_engine); }
    bool once(int in) { return below(in) == 0; }

private:
    std::mt19937 m_engine;
};

QByteArray randomText(Dice& dice, int lines) {
    static const QByteArray words[]{"alpha\n", "beta\n", "gamma\r\n", "\n", "{\n", "}\n", "-- x\n", "@@ -1 +1 @@\n"};
    QByteArray text;
    for (int i = 0; i < lines; ++i) {
        text += words[dice.below(8)];
    }
    return dice.once(4) ? text + "no line feed" : text;
}

/// Some lines removed, changed, added.
QByteArray edited(Dice& dice, const QByteArray& text) {
    QByteArray result;
    for (const QByteArray& line : text.split('\n')) {
        if (!dice.once(6)) {
            result += line + '\n';
        }
        if (dice.once(6)) {
            result += randomText(dice, 1 + dice.below(3));
        }
    }
    return dice.once(3) && !result.isEmpty() ? result.chopped(1) : result;
}

class GitPeers : public ::testing::Test {
protected:
    GitHome home;
    const GitService service;

    void write(const QString& repository, const QString& name, const QByteArray& text) {
        QFile file(repository + u'/' + name);
        QDir().mkpath(QFileInfo(file).path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QString makeRandomRepository(unsigned seed) {
        Dice dice(seed);
        const QString r = home.makeRepository(u"r%1"_s.arg(seed));
        const QStringList names{u"a"_s, u"b c"_s, u"é\tq\""_s, u"d/x"_s, u"d/y\nz"_s};
        const int commits = dice.below(5);
        for (int i = 0; i < commits; ++i) {
            for (const QString& name : names) {
                if (dice.once(2)) {
                    write(r, name, randomText(dice, 4 + dice.below(20)));
                }
            }
            git(r, {u"add"_s, u"-A"_s});
            git(r, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"S%1 | \t\"x\"\n\nbody"_s.arg(i)});
            if (dice.once(2)) {
                git(r, {u"branch"_s, u"-f"_s, u"b%1"_s.arg(dice.below(3))});
            }
        }
        if (commits > 1 && dice.once(2)) {
            git(r, {u"switch"_s, u"-qc"_s, u"side"_s, u"HEAD~1"_s});
            git(r, {u"branch"_s, u"-q"_s, u"--set-upstream-to=main"_s});
            write(r, names[0], randomText(dice, 5));
            git(r, {u"add"_s, u"-A"_s});
            git(r, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"Side"_s});
            if (dice.once(2)) {
                // With conflicts or without.
                git(r, {u"merge"_s, u"-q"_s, u"main"_s}, anyCode);
                return r;
            }
        }
        if (dice.once(10)) {
            const QString inner = home.makeRepository(u"inner%1"_s.arg(seed), {{u"f"_s, "x"}});
            git(r, {u"submodule"_s, u"--quiet"_s, u"add"_s, inner, u"module"_s});
            write(r + u"/module"_s, dice.once(2) ? u"f"_s : u"new"_s, "changed");
        }
        if (commits > 1 && dice.once(4)) {
            git(r, {u"checkout"_s, u"-q"_s, u"--detach"_s});
        }
        for (const QString& name : names) {
            switch (dice.below(7)) {
            case 0:
                QFile::remove(r + u'/' + name);
                break;
            case 1:
                QFile::rename(r + u'/' + name, r + u"/moved "_s + QString::number(dice.below(9)));
                break;
            case 2:
            case 3:
                write(r, name, edited(dice, readFile(r + u'/' + name)));
                break;
            default:
                break;
            }
            if (dice.once(3)) {
                git(r, {u"add"_s, u"-A"_s});
            }
        }
        return r;
    }

    /// Status by porcelain version 1, log and branches by plumbing: other formats than the ones that are parsed.
    void compare(unsigned seed) {
        const QString r = makeRandomRepository(seed);
        const auto status = service.status(r);
        ASSERT_TRUE(status) << seed << failure(status);
        QByteArray records;
        for (const FileChange& change : status->changes) {
            const auto letter = [](char state) { return state == '.' ? ' ' : state; };
            records += letter(change.index);
            records += letter(change.worktree);
            records += ' ' + GitPath::toBytes(change.path) + '\0';
            records += change.originalPath.isEmpty() ? QByteArray() : GitPath::toBytes(change.originalPath) + '\0';
        }
        // Which format lists conflicts where is git's affair.
        const auto sorted = [](const QByteArray& text) {
            QByteArrayList parts = text.split('\0');
            std::ranges::sort(parts);
            return parts;
        };
        const QByteArray plainStatus = git(r, {u"status"_s, u"--porcelain=v1"_s, u"-z"_s, u"--untracked-files=all"_s});
        EXPECT_EQ(sorted(records), sorted(plainStatus)) << seed;

        const bool isUnborn = !status->hasCommits;
        const QString head =
            gitText(r, {u"symbolic-ref"_s, u"-q"_s, u"--short"_s, u"HEAD"_s}, status->isDetached ? 1 : 0);
        EXPECT_EQ(status->branch.value_or(QString()), head) << seed;
        QString hashes;
        for (const CommitInfo& commit : value(service.log(r, 3))) {
            hashes += commit.id + u' ' + commit.subject + u'\n';
        }
        const QString plain =
            isUnborn ? QString()
                     : QString::fromUtf8(git(
                           r, {u"log"_s, u"-3"_s, u"--pretty=oneline"_s, u"--no-decorate"_s, u"--no-abbrev-commit"_s}));
        EXPECT_EQ(hashes, plain) << seed;
        QString refs;
        for (const QString& name : value(service.branches(r))) {
            refs += u"refs/heads/"_s + name + u'\n';
        }
        EXPECT_EQ(refs.toUtf8(), git(r, {u"for-each-ref"_s, u"--format=%(refname)"_s, u"refs/heads"_s})) << seed;
        if (status->upstream) {
            const QString counts =
                gitText(r, {u"rev-list"_s, u"--left-right"_s, u"--count"_s, u"HEAD...@{upstream}"_s});
            EXPECT_EQ(u"%1\t%2"_s.arg(status->ahead).arg(status->behind), counts) << seed;
        }
        conflicts += std::ranges::count_if(status->changes, &FileChange::isConflicted) > 0 ? 1 : 0;
    }

    std::atomic<int> conflicts = 0; ///< repositories that had one
};

TEST_F(GitPeers, AreToldWhatGitTells) {
    constexpr unsigned repositories = 200;
    constexpr unsigned threads = 4;
    std::vector<std::thread> pool;
    for (unsigned first = 0; first < threads; ++first) {
        pool.emplace_back([this, first] {
            for (unsigned seed = first; seed < repositories; seed += threads) {
                compare(seed);
            }
        });
    }
    std::ranges::for_each(pool, &std::thread::join);
    EXPECT_GT(conflicts, 5);
}

/// Lines of a file, as far as the lines chosen in its diff take it from one side to the other.
QByteArray expectedText(const FileDiff& diff, const DiffSelection& selection, const QByteArray& from, bool isReverse) {
    QByteArrayList lines;
    for (qsizetype begin = 0; begin < from.size();) {
        const qsizetype feed = from.indexOf('\n', begin);
        const qsizetype end = feed < 0 ? from.size() : feed + 1;
        lines.append(from.sliced(begin, end - begin));
        begin = end;
    }
    QByteArrayList result;
    qsizetype taken = 0;
    for (qsizetype hunk = 0; hunk < diff.hunks.size(); ++hunk) {
        const DiffHunk& each = diff.hunks[hunk];
        const auto chosen = selection.find(hunk);
        const int start = isReverse ? each.newStart - (each.newCount > 0) : each.oldStart - (each.oldCount > 0);
        result += lines.sliced(taken, start - taken);
        taken = start;
        for (qsizetype i = 0; i < each.lines.size(); ++i) {
            const DiffLine& line = each.lines[i];
            const bool isThere = line.kind != (isReverse ? DiffLineKind::removed : DiffLineKind::added);
            const bool isChanged =
                line.kind != DiffLineKind::context && chosen != selection.end() && chosen->second.contains(i);
            taken += isThere ? 1 : 0;
            if (isThere != isChanged) {
                result.append(diff.text(line).toByteArray() + (line.endsWithoutLineFeed ? "" : "\n"));
            }
        }
    }
    result += lines.sliced(taken);
    for (qsizetype i = 0; i + 1 < result.size(); ++i) {
        result[i] += result[i].endsWith('\n') ? "" : "\n";
    }
    return result.join();
}

TEST_F(GitPeers, AreChangedByExactlyTheLinesThatAreChosen) {
    const QString r = home.makeRepository(u"lines"_s);
    enum Action { stage, unstage, discard };
    for (unsigned seed = 0; seed < 120; ++seed) {
        Dice dice(seed);
        const QString name = dice.once(2) ? u"a"_s : u"odd \"é\"\t\n"_s;
        const QByteArray base = randomText(dice, 5 + dice.below(30));
        const QByteArray changed = edited(dice, base);
        const auto action = static_cast<Action>(dice.below(3));
        git(r, {u"rm"_s, u"-rqf"_s, u"--ignore-unmatch"_s, u"."_s});
        write(r, name, base);
        git(r, {u"add"_s, u"-A"_s});
        git(r, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"x"_s});
        const bool isNew = dice.once(5);
        if (isNew) {
            git(r, {u"rm"_s, u"-q"_s, u"--cached"_s, u"--"_s, name});
            git(r, {u"commit"_s, u"-q"_s, u"-m"_s, u"x"_s});
        }
        write(r, name, changed);
        if (action == unstage) {
            git(r, {u"add"_s, u"-A"_s});
        }
        const DiffSide side = action == unstage ? DiffSide::staged : isNew ? DiffSide::untracked : DiffSide::unstaged;
        const DiffRequest request{name, {}, side};
        const auto diff = service.fileDiff(r, request);
        ASSERT_TRUE(diff) << failure(diff);
        DiffSelection selection;
        bool isAll = true;
        for (qsizetype hunk = 0; hunk < diff->hunks.size(); ++hunk) {
            const bool isWhole = dice.once(2);
            for (qsizetype i = 0; i < diff->hunks[hunk].lines.size(); ++i) {
                if (diff->hunks[hunk].lines[i].kind == DiffLineKind::context) {
                    continue;
                }
                if (isWhole || dice.once(2)) {
                    selection[hunk].insert(i);
                } else {
                    isAll = false;
                }
            }
        }
        if (selection.empty()) {
            continue;
        }
        const auto act = action == stage     ? &GitService::stageLines
                         : action == unstage ? &GitService::unstageLines
                                             : &GitService::discardLines;
        const auto done = (service.*act)(r, request, *diff, selection);
        ASSERT_TRUE(done) << seed << ' ' << failure(done);
        const QByteArray from = action != stage ? changed : isNew ? QByteArray() : base;
        const QByteArray expected = expectedText(*diff, selection, from, action != stage);
        if (action == discard) {
            EXPECT_EQ(readFile(r + u'/' + name), expected) << seed;
            EXPECT_EQ(QFile::exists(r + u'/' + name), !(isNew && isAll)) << seed;
        } else {
            const bool isGone = action == unstage && isNew && isAll;
            EXPECT_EQ(git(r, {u"show"_s, u":0:"_s + name}, isGone ? 128 : 0), expected) << seed;
            EXPECT_EQ(readFile(r + u'/' + name), changed) << seed;
        }
        EXPECT_FALSE((service.*act)(r, request, *diff, selection)) << seed;
    }
}

/// By hunk: what `git apply` makes of the same hunk cut out by hand.
TEST_F(GitPeers, TakeAHunkAsGitDoes) {
    QByteArray base;
    for (int i = 1; i <= 60; ++i) {
        base += QByteArray::number(i) + '\n';
    }
    QByteArray changed = base;
    changed.replace("\n10\n", "\nten\nand more\n").replace("\n30\n", "\n").replace("\n50\n", "\nfifty\n");
    for (qsizetype hunk = 0; hunk < 3; ++hunk) {
        const QString ours = home.makeRepository(u"ours%1"_s.arg(hunk), {{u"f"_s, base}});
        const QString theirs = home.makeRepository(u"theirs%1"_s.arg(hunk), {{u"f"_s, base}});
        write(ours, u"f"_s, changed);
        write(theirs, u"f"_s, changed);
        const DiffRequest request{u"f"_s, {}, DiffSide::unstaged};
        const auto diff = service.fileDiff(ours, request);
        ASSERT_EQ(diff->hunks.size(), 3);
        EXPECT_EQ(failure(service.stageLines(ours, request, *diff, wholeHunk(*diff, hunk))), "");
        QByteArray patch = git(theirs, {u"diff"_s});
        QByteArrayList parts;
        for (qsizetype at = patch.lastIndexOf("\n@@"); at >= 0; at = patch.lastIndexOf("\n@@")) {
            parts.prepend(patch.sliced(at + 1));
            patch.truncate(at + 1);
        }
        git(theirs, {u"apply"_s, u"--cached"_s}, 0, patch + parts[hunk]);
        EXPECT_EQ(git(ours, {u"diff"_s, u"--cached"_s}), git(theirs, {u"diff"_s, u"--cached"_s}));
        EXPECT_EQ(git(ours, {u"diff"_s}), git(theirs, {u"diff"_s}));
    }
}

} // namespace
} // namespace orv::test
