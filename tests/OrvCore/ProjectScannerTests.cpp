#include "OrvCore/FolderReader.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvCore/UniqueFd.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <gtest/gtest.h>

#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#ifdef Q_OS_LINUX
#include <sys/fsuid.h>
#include <sys/mount.h>
#endif

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

QList<ProjectNode> treeOf(const QString& root, const ProjectScanner& scanner = {}) {
    const auto tree = scanner.scanTree(root);
    EXPECT_TRUE(tree) << (tree ? QString() : tree.error().text()).toStdString();
    return tree.value_or(QList<ProjectNode>());
}

QList<Project> projectsOf(const QString& root, const ProjectScanner& scanner = {}) {
    const auto projects = scanner.scan(root);
    EXPECT_TRUE(projects) << (projects ? QString() : projects.error().text()).toStdString();
    return projects.value_or(QList<Project>());
}

/// One node a line, two blanks a level: "name: kind@folder kind@folder", or "name/" for a collection.
QString drawn(const QList<ProjectNode>& nodes, const QString& indent = {}) {
    QString text;
    for (const ProjectNode& node : nodes) {
        text += indent + node.name + (node.project ? u':' : u'/');
        for (const ServiceTarget& target : node.project ? node.project->targets : QList<ServiceTarget>()) {
            const QString folder = QDir(node.path).relativeFilePath(target.directory);
            text += u' ' + rawValue(target.kind) + u'@' + folder;
        }
        text += u'\n' + drawn(node.children, indent + u"  "_s);
    }
    return text;
}

void addAll(test::TemporaryTree& tree, const QByteArray& files) {
    for (const QByteArray& file : files.split(' ')) {
        const bool isPackage = file.endsWith("package.json");
        tree.add(QString::fromUtf8(file), isPackage ? R"({"scripts": {"dev": "x"}})" : "dev:");
    }
}

} // namespace

TEST(ProjectScanner, DrawsTheTreeOfProjects) {
    struct Case {
        const char* label;
        QByteArray files; ///< with blanks between them
        QString expected;
    };
    const std::vector<Case> cases{
        {"front end and back end in one folder", "shop/web/package.json shop/api/manage.py",
         u"shop: backend@api frontend@web\n"_s},
        {"the root gathers nothing", "web/package.json api/manage.py", u"api: backend@.\nweb: frontend@.\n"_s},
        {"the root is a project by its own stack, its own services first",
         "compose.yml web/package.json old/.git/ old/index.html",
         u"ROOT: docker@. frontend@web\n  old: frontend@.\n"_s},
        {"fallbacks at the project folder only",
         "a/index.html b/package.json b/public/index.html b/x/y/Makefile b/x/y/compose.yml",
         u"a: frontend@.\nb: frontend@. docker@x/y\n"_s},
        {"two levels below a project, no further", "a/Cargo.toml a/x/y/package.json a/x/y/z/package.json",
         u"a: app@. frontend@x/y\n"_s},
        {"repositories inside a project, a file or a folder",
         "a/Cargo.toml a/one/.git a/one/manage.py a/x/two/.git/HEAD a/x/two/web/package.json a/x/manage.py",
         u"a: app@. backend@x\n  one: backend@.\n  two: frontend@web\n"_s},
        {"a repository without anything to run", "a/Cargo.toml a/docs/.git a/docs/readme", u"a: app@.\n"_s},
        {"repositories make a collection", "work/a/.git work/a/package.json work/b/manage.py",
         u"work/\n  a: frontend@.\n  b: backend@.\n"_s},
        {"a repository two levels down does too", "work/a/manage.py work/x/b/.git work/x/b/package.json",
         u"work/\n  a: backend@.\n  x/\n    b: frontend@.\n"_s},
        {"a repository without a stack of its own gathers", "work/s/.git/ work/s/web/package.json work/s/api/manage.py",
         u"work/\n  s: backend@api frontend@web\n"_s},
        {"a repository without anything to run divides nothing",
         "shop/.git shop/web/package.json shop/api/manage.py shop/docs/.git/ shop/docs/readme",
         u"shop: backend@api frontend@web\n"_s},
        {"a repository on the third level divides",
         "clients/scratch/package.json clients/acme/web/store/.git clients/acme/web/store/package.json",
         u"clients/\n  acme/\n    web/\n      store: frontend@.\n  scratch: frontend@.\n"_s},
        {"so does one below a project",
         "work/app/package.json work/app/lib/x/.git work/app/lib/x/manage.py work/b/go.mod",
         u"work/\n  app: frontend@.\n    x: backend@.\n"_s},
        {"what is not gathered stands below",
         "mix/api/package.json mix/site/index.html mix/deep/a/b/manage.py mix/x/y/Makefile mix/x/z/Cargo.toml "
         "mix/x/z/public/index.html",
         u"mix: frontend@api app@x/z\n  deep: backend@a/b\n  site: frontend@.\n  y: app@.\n"_s},
        {"the root's Makefile does not swallow the rest", "Makefile a/b/c/d/package.json e/index.html",
         u"a/\n  b: frontend@c/d\ne: frontend@.\n"_s},
        {"the root's page is a project when nothing else is", "index.html css/x", u"ROOT: frontend@.\n"_s},
        {"static sites are projects of their own", "sites/a/index.html sites/b/index.html",
         u"sites/\n  a: frontend@.\n  b: frontend@.\n"_s},
        {"nothing deeper than four levels", "a/b/c/d/package.json e/f/g/h/i/package.json",
         u"a/\n  b: frontend@c/d\n"_s},
        {"gathering reaches two levels", "a/b/c/Cargo.toml a/b/c/d/package.json a/b/c/d/e/package.json",
         u"a: app@b/c\n"_s},
        {"skipped and hidden folders",
         "node_modules/p/manage.py .git/p/manage.py build/p/manage.py dist/p/manage.py .next/p/manage.py "
         ".dart_tool/p/manage.py venv/p/manage.py .venv/p/manage.py OrvLauncher/p/manage.py __pycache__/p/manage.py "
         "Pods/p/manage.py .gradle/p/manage.py .hidden/p/manage.py Build/manage.py Build/dist/manage.py",
         u"Build: backend@.\n"_s},
        {"natural order, the code point where that ties",
         "web10/Cargo.toml Web2/Cargo.toml web02/Cargo.toml web2/Cargo.toml Äb/Cargo.toml äa/Cargo.toml a/Cargo.toml "
         "web/Cargo.toml",
         u"a: app@.\nweb: app@.\nWeb2: app@.\nweb02: app@.\nweb2: app@.\nweb10: app@.\näa: app@.\nÄb: app@.\n"_s},
    };
    for (const Case& row : cases) {
        test::TemporaryTree tree;
        addAll(tree, row.files);
        const QString rootName = QFileInfo(tree.path()).fileName();
        EXPECT_EQ(drawn(treeOf(tree.path())).replace(rootName, u"ROOT"_s), row.expected) << row.label;
    }
}

TEST(ProjectScanner, GivesFinishedProjectsInTreeOrder) {
    test::TemporaryTree tree;
    addAll(
        tree, "ws/pnpm-workspace.yaml ws/pnpm-lock.yaml ws/pkg/site/package.json b/Makefile b/n/.git b/n/index.html");
    ProjectScanner scanner;
    const auto overrides = std::make_shared<OverrideStore>(tree.path(u"overrides.json"_s));
    ASSERT_TRUE(overrides->set(OverrideStore::key(tree.path(u"b"_s), ServiceKind::app), Override{{}, {}, 8123}));
    scanner.overrides = overrides;
    const QList<Project> projects = projectsOf(tree.path(), scanner);
    ASSERT_EQ(projects.size(), 3);
    EXPECT_EQ(projects[0].id, tree.path(u"b"_s));
    EXPECT_EQ(projects[0].targets.first().port, 8123);
    EXPECT_EQ(projects[1].name, u"n"_s);
    EXPECT_EQ(projects[2].targets.first().command, "cd '"_L1 + tree.path(u"ws/pkg/site"_s) + "' && pnpm run dev"_L1)
        << "the enclosing workspace's package manager";

    // One folder looked up alone is what the scan found, also for a workspace that begins above it.
    EXPECT_EQ(scanner.project(tree.path(u"ws"_s)), projects[2]);
    EXPECT_EQ(scanner.project(tree.path(u"ws/pkg/site"_s))->targets, projects[2].targets);
    EXPECT_EQ(projectsOf(tree.path(u"ws/pkg"_s)).first().targets, projects[2].targets);
    EXPECT_EQ(scanner.project(tree.path(u"nowhere"_s)), std::nullopt);
    EXPECT_EQ(scanner.project(tree.path(u"ws/pnpm-lock.yaml"_s)), std::nullopt);
}

TEST(ProjectScanner, LooksUpAProjectWithTheDepthOfItsScan) {
    test::TemporaryTree tree;
    addAll(tree, "a/b/.git a/b/c/Cargo.toml a/b/c/.git a/b/c/d/e/package.json a/b/c/d/manage.py");
    const QString folder = tree.path(u"a/b/c"_s);
    EXPECT_EQ(ProjectScanner().project(folder, tree.path()), projectsOf(tree.path()).first());
    EXPECT_EQ(ProjectScanner().project(folder)->targets.size(), 3);
    EXPECT_EQ(ProjectScanner().project(tree.path(u"a"_s)), std::nullopt) << "a collection is no project";
}

TEST(ProjectScanner, TakesTheRootHoweverItIsSpelled) {
    test::TemporaryTree tree;
    addAll(tree, "real/a/package.json");
    ASSERT_TRUE(QFile::link(tree.path(u"real"_s), tree.path(u"link"_s)));
    ASSERT_TRUE(QFile::link(tree.path(u"real/a"_s), tree.path(u"real/b"_s)));
    const QString expected = tree.path(u"real/a"_s);
    for (const QString& root : {u"real"_s, u"real/"_s, u"real//../real/."_s, u"link"_s, u"link/"_s}) {
        const auto projects = projectsOf(tree.path() + u'/' + root);
        ASSERT_EQ(projects.size(), 1) << root.toStdString() << ": a link to a folder inside is not followed";
        EXPECT_EQ(projects.first().id, expected) << root.toStdString();
    }
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(tree.path()));
    EXPECT_EQ(projectsOf(u"link"_s).size(), 1);
    ASSERT_TRUE(QDir::setCurrent(before));
    for (const QString& root : {QString(), tree.path(u"nowhere"_s), tree.path(u"real/a/package.json"_s)}) {
        EXPECT_TRUE(treeOf(root).isEmpty()) << root.toStdString();
    }
}

TEST(ProjectScanner, GivesTheSameWhicheverThreadComesFirst) {
    test::TemporaryTree tree;
    for (int i = 0; i < 60; ++i) {
        const QString files = u"c%1/p%2/.git/ c%1/p%2/web/package.json c%1/p%2/api/src/deep/manage.py"_s;
        addAll(tree, files.arg(i % 7).arg(i).toUtf8());
    }
    const auto first = treeOf(tree.path());
    EXPECT_EQ(first.size(), 7);
    const auto before = test::ProcessResources::now();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(treeOf(tree.path()), first);
    }
    EXPECT_EQ(test::ProcessResources::now(), before);
}

TEST(ProjectScanner, EndsEarlyWheneverItIsCancelled) {
    test::TemporaryTree tree;
    for (int i = 0; i < 300; ++i) {
        addAll(tree, u"c%1/p%2/web/package.json"_s.arg(i % 7).arg(i).toUtf8());
    }
    // Spread over the length of a whole scan, which differs between machines.
    QElapsedTimer whole;
    whole.start();
    EXPECT_EQ(treeOf(tree.path()).size(), 7);
    const qint64 length = whole.nsecsElapsed();
    int cancelled = 0;
    for (int part = 0; part < 10; ++part) {
        ScanCancellation cancellation;
        std::thread canceller([&] {
            std::this_thread::sleep_for(std::chrono::nanoseconds(length * part / 10));
            cancellation.cancel();
        });
        const auto ended = ProjectScanner().scanTree(tree.path(), &cancellation);
        canceller.join();
        // All or nothing, never a part.
        if (ended) {
            EXPECT_EQ(ended->size(), 7);
        } else {
            EXPECT_EQ(ended.error().kind, ScanError::Kind::cancelled);
            ++cancelled;
        }
    }
    EXPECT_GT(cancelled, 0);
    FolderReader reader;
    reader.setInterrupt([] { return true; });
    EXPECT_FALSE(reader.open(tree.path())) << "a long listing ends early";
    EXPECT_TRUE(reader.entries().empty());
}

#ifdef Q_OS_LINUX
TEST(ProjectScanner, SkipsAFolderThatCannotBeRead) {
    test::TemporaryTree tree;
    addAll(tree, "a/package.json b/package.json c/Makefile c/package.json");
    ASSERT_EQ(::chmod(QFile::encodeName(tree.path()).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(tree.path(u"a"_s)).constData(), 0000), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(tree.path(u"c/package.json"_s)).constData(), 0000), 0);
    // A superuser reads everything: as someone else, on this thread and those that it starts.
    const int user = ::setfsuid(65534);
    const auto restore = qScopeGuard([&] { ::setfsuid(static_cast<uid_t>(user)); });
    EXPECT_EQ(drawn(treeOf(tree.path())), u"b: frontend@.\nc: app@.\n"_s);
    const auto expectUnreadable = [](const QString& root) {
        const auto result = ProjectScanner().scan(root);
        ASSERT_FALSE(result) << root.toStdString();
        EXPECT_EQ(result.error().kind, ScanError::Kind::unreadable) << root.toStdString();
    };
    expectUnreadable(tree.path(u"a"_s));
    expectUnreadable(tree.path(u"a/within"_s));
}

TEST(ProjectScanner, WaitsForDescriptorsAndLosesNoProjectWithoutAWord) {
    test::TemporaryTree tree;
    for (int i = 0; i < 80; ++i) {
        addAll(tree, u"p%1/package.json"_s.arg(i).toUtf8());
    }
    const auto whole = treeOf(tree.path());
    ASSERT_EQ(whole.size(), 80);
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    const auto restore = qScopeGuard([&] { ::setrlimit(RLIMIT_NOFILE, &usual); });
    // The root, a folder and its manifest are what one worker needs.
    struct Case {
        const char* label;
        rlim_t spare;
        bool succeeds;
    };
    for (const Case& row :
         {Case{"none", 0, false}, Case{"the root", 1, false}, Case{"no manifest", 2, false},
          Case{"one worker's", 3, true}, Case{"nearly two workers'", 4, true}}) {
        const UniqueFd lowest(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        rlimit tight = usual;
        tight.rlim_cur = static_cast<rlim_t>(lowest.get()) + 1 + row.spare;
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
        const auto result = ProjectScanner().scanTree(tree.path());
        ::setrlimit(RLIMIT_NOFILE, &usual);
        ASSERT_EQ(result.has_value(), row.succeeds) << row.label;
        EXPECT_TRUE(result ? *result == whole : result.error().kind == ScanError::Kind::exhausted) << row.label;
    }
}

TEST(ProjectScanner, WorksWithTheThreadsThatItGets) {
    test::TemporaryTree tree;
    for (int i = 0; i < 80; ++i) {
        addAll(tree, u"p%1/package.json"_s.arg(i).toUtf8());
    }
    const auto whole = treeOf(tree.path());
    const pid_t child = ::fork();
    if (child == 0) {
        // No more processes for this user, threads included. The limit does not hold for a superuser.
        const rlimit none{0, 0};
        ::chmod(QFile::encodeName(tree.path()).constData(), 0755);
        const bool isSet = (::geteuid() != 0 || ::setuid(65534) == 0) && ::setrlimit(RLIMIT_NPROC, &none) == 0;
        const auto result = ProjectScanner().scanTree(tree.path());
        ::_exit(isSet && result && *result == whole ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(ProjectScanner, VisitsADirectoryThatIsMountedTwiceOnce) {
    struct Case {
        const char* label;
        QByteArray files;
        std::vector<std::pair<QString, QString>> mounts; ///< from, to
        QString expected;
    };
    const Case cases[] = {
        {"the first of one level", "a/x/package.json b/x/", {{u"a/x"_s, u"b/x"_s}}, u"a: frontend@x\n"_s},
        {"the nearer one", "a/x/y/package.json a/x/.git b/", {{u"a/x/y"_s, u"b"_s}}, u"b: frontend@.\n"_s},
        {"a loop", "a/x/package.json c/", {{u"."_s, u"c"_s}}, u"a: frontend@x\n"_s},
    };
    for (const Case& row : cases) {
        test::TemporaryTree tree;
        addAll(tree, row.files);
        const auto path = [&tree](const QString& relative) { return QFile::encodeName(tree.path(relative)); };
        const auto unmount = qScopeGuard([&] {
            for (const auto& [from, to] : row.mounts) {
                ::umount2(path(to).constData(), MNT_DETACH);
            }
        });
        for (const auto& [from, to] : row.mounts) {
            if (::mount(path(from).constData(), path(to).constData(), nullptr, MS_BIND, nullptr) != 0) {
                GTEST_SKIP() << "this user may not mount";
            }
        }
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(drawn(treeOf(tree.path())), row.expected) << row.label;
        }
    }
}
#endif

TEST(FolderReader, AnswersFromItsListing) {
    test::TemporaryTree tree;
    addAll(tree, "file folder/inner b.go a.go dir.go/");
    ASSERT_TRUE(QFile::link(tree.path(u"folder"_s), tree.path(u"toFolder"_s)));
    ASSERT_TRUE(QFile::link(tree.path(u"gone"_s), tree.path(u"dangling"_s)));
    FolderReader reader;
    ASSERT_TRUE(reader.open(tree.path()));
    struct Case {
        const char* name;
        bool exists, hasFile;
    };
    for (const Case& row :
         {Case{"file", true, true}, Case{"folder", true, false}, Case{"folder/inner", true, true},
          Case{"toFolder/inner", true, true}, Case{"toFolder", true, false}, Case{"dangling", false, false},
          Case{"fil", false, false}, Case{"folder/none", false, false}, Case{"file/x", false, false},
          Case{"", false, false}, Case{".", false, false}}) {
        EXPECT_EQ(reader.exists(row.name), row.exists) << row.name;
        EXPECT_EQ(reader.hasFile(row.name), row.hasFile) << row.name;
    }
    EXPECT_EQ(reader.namesEndingIn(".go"), (std::vector<std::string>{"a.go", "b.go", "dir.go"}));
    EXPECT_EQ(reader.text("file"), QByteArray("dev:"));
    EXPECT_FALSE(reader.openAt(reader.descriptor(), "toFolder")) << "a link to a folder is not followed";
    EXPECT_FALSE(reader.exists("file")) << "nothing of the last folder is left";
}
