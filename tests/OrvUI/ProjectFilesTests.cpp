#include "OrvUI/ProjectFiles.h"
#include "tests/OrvGit/GitFixture.h"

#include <QAbstractItemModelTester>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

TEST(FileFinder, ListsWhatAScanWouldEnter) {
    TemporaryTree tree;
    for (const char* file :
         {"b/x10.ts", "b/x9.ts", "b/deep/er/y", "A.md", ".env", ".git/HEAD", ".hidden/z", "node_modules/m/i.js"}) {
        tree.add(QString::fromLatin1(file), "x");
    }
    QFile::link(tree.path(u"b"_s), tree.path(u"c"_s));
    const auto going = std::make_shared<std::atomic<bool>>(false);
    const FileFinder::Listing all = FileFinder::list(tree.path(), 100, going);
    EXPECT_EQ(all.files, (QStringList{u".env"_s, u"A.md"_s, u"c"_s, u"b/x9.ts"_s, u"b/x10.ts"_s, u"b/deep/er/y"_s}));
    EXPECT_TRUE(all.isWhole);
    const FileFinder::Listing some = FileFinder::list(tree.path(), 4, going);
    EXPECT_EQ(some.files, all.files.first(4));
    EXPECT_FALSE(some.isWhole);
    *going = true;
    EXPECT_FALSE(FileFinder::list(tree.path(), 100, going).isWhole);
}

TEST(FileFinder, PutsTheLikeliestFirst) {
    const QStringList files{
        u"api/app/main.py"_s, u"web/components/cart/CartTotal.tsx"_s, u"api/app/routers/cart.py"_s, u"docs/chart.md"_s,
        u"category/a/r/t"_s};
    struct Case {
        const char* text;
        const char* first;
        int count;
    };
    const Case cases[] = {
        {"cart", "api/app/routers/cart.py", 4},
        {"CT", "web/components/cart/CartTotal.tsx", 4},
        {"ctotal", "web/components/cart/CartTotal.tsx", 1},
        {"app main", "api/app/main.py", 1},
        {"total web", "web/components/cart/CartTotal.tsx", 1},
        {"routers/c", "api/app/routers/cart.py", 1},
        {"zz", "", 0},
    };
    for (const Case& it : cases) {
        const auto found = FileFinder::find(files, QString::fromLatin1(it.text), 10);
        EXPECT_EQ(found.size(), it.count) << it.text;
        EXPECT_EQ(found.isEmpty() ? QString() : files[found.first().file], QString::fromLatin1(it.first)) << it.text;
    }
    EXPECT_EQ(FileFinder::find(files, u"cart"_s, 2).size(), 2);
    EXPECT_EQ(FileFinder::find(files, u"ctotal"_s, 1).first().letters, (QList<int>{20, 24, 25, 26, 27, 28}))
        << "not the first c that comes";
    EXPECT_EQ(FileFinder::find({QString(300, u'x') + u"/cart"_s}, u"x/cart"_s, 1).first().letters.last(), 304)
        << "of a long path the end counts";
    EXPECT_TRUE(FileFinder::find(files, u" "_s, 10).isEmpty());
}

TEST(FileContent, SaysWhatItCantShow) {
    TemporaryTree tree;
    const QByteArray large(FileContent::largest + 1, 'x');
    tree.add(u"large"_s, large);
    tree.add(u"empty"_s, "");
    tree.add(u"binary"_s, QByteArray("a\0b", 3));
    tree.add(u"secret"_s, "x");
    tree.add(
        u"text.py"_s, "\xef\xbb\xbf"
                      "def f():\r\n\tpass");
    tree.add(u"long"_s, QByteArray(FileContent::longestLine + 5, 'y') + "\nz\n");
    QFile::setPermissions(tree.path(u"secret"_s), {});
    QFile::link(u"text.py"_s, tree.path(u"link"_s));
    QFile::link(tree.path(u"nowhere"_s), tree.path(u"broken"_s));
    ASSERT_EQ(mkfifo(QFile::encodeName(tree.path(u"pipe"_s)).constData(), 0600), 0);
    struct Case {
        const char* file;
        const char* note;
        const char* facts;
        int lines;
    };
    const Case cases[] = {
        {"large", "This file is 2.0 MB large. Files up to 2.0 MB are shown.", "2.0 MB", 0},
        {"empty", "This file is empty.", "0 bytes", 0},
        {"binary", "This is a binary file.", "3 bytes", 0},
        {"secret", geteuid() == 0 ? "" : "It can't be read: Permission denied.",
         geteuid() == 0 ? "1 byte · 1 line" : "1 byte", geteuid() == 0 ? 1 : 0},
        {"text.py", "", "18 bytes · 2 lines", 2},
        {"link", "A symbolic link to", "18 bytes · 2 lines", 2},
        {"broken", "A symbolic link to", "", 0},
        {"pipe", "This is no ordinary file.", "", 0},
        {"gone", "This file is gone.", "", 0},
        {"long", "", "2.0 KB · 2 lines", 2},
    };
    for (const Case& it : cases) {
        const FileContent content = FileContent::read(tree.path(QString::fromLatin1(it.file)));
        EXPECT_EQ(content.note.left(QString::fromUtf8(it.note).size()), QString::fromUtf8(it.note))
            << it.file << content.note.toStdString();
        EXPECT_EQ(content.note.isEmpty(), QString::fromUtf8(it.note).isEmpty()) << it.file;
        EXPECT_EQ(content.facts, QString::fromUtf8(it.facts)) << it.file;
        EXPECT_EQ(content.lines.size(), it.lines) << it.file;
        EXPECT_EQ(content.spans.size(), it.lines) << it.file;
    }
    const FileContent text = FileContent::read(tree.path(u"link"_s));
    EXPECT_EQ(text.lines.first(), u"def f():"_s);
    EXPECT_EQ(text.spans.first(), (QList<int>{0, 3, 0, 4, 1, 2})) << "in the colours of what the link leads to";
    EXPECT_EQ(FileContent::read(tree.path(u"long"_s)).lines.first().size(), FileContent::longestLine + 1);
}

/// The tree as indented lines, with git's letters.
QString shown(ProjectFiles& files) {
    QStringList lines;
    for (const FileTreeRow& row : files.tree()->rows()) {
        lines.append(QString(row.depth, u' ') + row.name + (row.letter.isEmpty() ? QString() : u' ' + row.letter));
    }
    return lines.join(u", "_s);
}

TEST(ProjectFiles, ShowsTreeSearchAndFile) {
    GitHome home;
    const QString r = home.makeRepository(
        u"r"_s, {{u"src/a.py"_s, "x = 1\n"}, {u"src/deep/b.py"_s, "y\n"}, {u"README.md"_s, "# r\n"}});
    home.add(u"r/src/a.py"_s, "x = 2\ny = 3\n");
    ProjectFiles files;
    for (QAbstractItemModel* list : QList<QAbstractItemModel*>{files.tree(), files.matches(), files.lines()}) {
        new QAbstractItemModelTester(list, QAbstractItemModelTester::FailureReportingMode::Fatal, list);
        QObject::connect(list, &QAbstractItemModel::modelReset, list, [] { ADD_FAILURE() << "reset"; });
    }
    const auto becomes = [&](const QString& tree) {
        EXPECT_TRUE(waitFor([&] { return shown(files) == tree; })) << shown(files).toStdString();
    };
    files.setRoot(r, home.path());
    EXPECT_EQ(shown(files), QString()) << "nothing is read before somebody looks";
    files.refresh();
    becomes(u"src ·, README.md"_s);
    EXPECT_TRUE(waitFor([&] { return files.countText() == u"3 files"; }));

    files.select(u"src/a.py"_s);
    becomes(u"src,  deep,  a.py M, README.md"_s);
    EXPECT_TRUE(waitFor([&] { return files.lines()->rowCount() == 2; }));
    EXPECT_EQ(files.currentRow(), 2);
    EXPECT_EQ(files.parentRow(2), 0);
    EXPECT_EQ(files.parentRow(0), 0);
    EXPECT_EQ(files.rowBeginning(u"r"_s, 2), 3);
    EXPECT_EQ(files.rowBeginning(u"d"_s, 3), 1) << "from the top again";
    EXPECT_EQ(files.selectedFolder() + u'|' + files.selectedName(), u"src/|a.py"_s);
    EXPECT_EQ(files.textOf(1, 0), u"x = 2\ny = 3\n"_s);

    files.setFindText(u"b"_s);
    EXPECT_TRUE(waitFor([&] { return files.matches()->rowCount() == 1; }));
    EXPECT_EQ(files.matches()->rows().first().key, u"src/deep/b.py"_s);
    files.setFindText(u"readme"_s);
    files.takeMatch(0);
    EXPECT_TRUE(waitFor([&] { return files.selectedPath() == u"README.md"_s; })) << "asked for before it was found";
    EXPECT_EQ(files.findText(), QString());
    files.setFindText(u"readme"_s);
    files.takeMatch(0);
    files.setFindText(u"zzz"_s);
    files.setFindText(u"b"_s);
    EXPECT_TRUE(waitFor([&] { return files.matches()->rowCount() == 1; }));
    EXPECT_EQ(files.findText(), u"b"_s) << "who types on no longer means the first";
    files.select(u"src/a.py"_s);

    // What happens on the disk is seen at the next look.
    home.add(u"r/src/new.py"_s, "n");
    QFile::remove(r + u"/src/a.py"_s);
    files.refresh();
    becomes(u"src,  deep,  new.py ?, README.md"_s);
    EXPECT_TRUE(waitFor([&] { return files.note() == u"This file is gone."; }));
    EXPECT_EQ(files.lines()->rowCount(), 0);
    files.setExpanded(u"src"_s, false);
    EXPECT_EQ(shown(files), u"src ·, README.md"_s);
    files.setRoot(home.path(), home.path());
    EXPECT_EQ(shown(files) + files.selectedPath() + files.countText(), QString());

    // A part of a larger repository has the letters of its own files.
    home.add(u"r/src/deep/b.py"_s, "z\n");
    home.add(u"r/README.md"_s, "# changed\n");
    files.setRoot(r + u"/src"_s, home.path());
    files.refresh();
    becomes(u"deep ·, new.py ?"_s);
}

} // namespace
} // namespace orv::test
