#include "OrvCore/OverrideStore.h"
#include "OrvCore/Settings.h"
#include "OrvCore/Tasks.h"
#include "OrvCore/UniqueFd.h"
#include "OrvCore/WidgetSnapshot.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <array>
#include <csignal>

#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace orv;
using namespace Qt::StringLiterals;
using orv::test::readFile;
using orv::test::TemporaryTree;

namespace {

/// A forked process that runs `body` and ends with its answer; a failed expectation in it answers 1.
pid_t startChild(const std::function<int()>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        const int answer = body();
        std::fflush(nullptr);
        ::_exit(answer != 0 ? answer : static_cast<int>(testing::Test::HasFailure()));
    }
    return child;
}

/// The exit code, or the signal as a negative number.
int finish(pid_t child) {
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// One of the stores, seen as a file: `change` makes the n-th change in a store that has just been opened and says how
/// that went, `holds` says whether the file has it.
struct Store {
    const char* name;
    QByteArray wrongTypes;
    StoreResult (*change)(const QString& path, int n);
    bool (*holds)(const QString& path, int n);
};

QString word(int n) {
    return u"change-%1"_s.arg(n);
}
Override numbered(int n) {
    return {.kind = {}, .command = word(n), .port = {}};
}

const std::array stores{
    Store{
        "settings.json", R"({"displayName":"S","scanRoot":"file:///w","showDockIcon":"yes","pinnedProjectIDs":[]})",
        [](const QString& path, int n) {
            return SettingsStore(path).change(
                [n](AppSettings& settings) { settings.pinnedProjectIDs.append(word(n)); });
        },
        [](const QString& path, int n) { return SettingsStore(path).settings().pinnedProjectIDs.contains(word(n)); }},
    Store{
        "overrides.json", R"({"/w|app":{"port":"80"}})",
        [](const QString& path, int n) { return OverrideStore(path).set(word(n), numbered(n)); },
        [](const QString& path, int n) { return OverrideStore(path).override(word(n)) == numbered(n); }},
    Store{
        "tasks.json", R"([{"title":"a task without the rest"}])",
        [](const QString& path, int n) {
            TaskStore store(path);
            store.add(word(n), {}, {}, {});
            return store.lastResult();
        },
        [](const QString& path, int n) {
            const auto tasks = TaskStore(path).tasks();
            return std::ranges::find(tasks, word(n), &ProjectTask::title) != tasks.end();
        }},
    Store{
        "widget-snapshot.json", R"({"running":{},"pinned":[],"tasks":[],"openTaskCount":0})",
        [](const QString& path, int n) {
            return SharedContainer::write(
                {.running = {}, .pinned = {}, .tasks = {}, .openTaskCount = n}, QFileInfo(path).path());
        },
        [](const QString& path, int n) {
            const auto snapshot = SharedContainer::read(QFileInfo(path).path());
            return snapshot && snapshot->openTaskCount == n;
        }},
};

/// Makes space for one more file scarce, and plenty again.
struct Disk {
    const char* label;
    std::function<bool(const QString& folder)> prepare; ///< false: not possible on this machine
    std::function<void(const QString& folder)> fill;
    std::function<void(const QString& folder)> free;
};

bool mountSmallDisk(const QString& folder) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("none", QFile::encodeName(folder), "tmpfs", 0, "size=256k") == 0;
}

void fillDisk(const QString& folder) {
    QFile filler(folder + u"/filler"_s);
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'x')) > 0) {
    }
}

void limitFileSize(rlim_t bytes) {
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

const std::array disks{
    Disk{
        "a small disk", mountSmallDisk, fillDisk,
        [](const QString& folder) { EXPECT_TRUE(QFile::remove(folder + u"/filler"_s)); }},
    Disk{
        "a limit of file size", [](const QString&) { return ::signal(SIGXFSZ, SIG_IGN) != SIG_ERR; },
        [](const QString&) { limitFileSize(8); }, [](const QString&) { limitFileSize(RLIM_INFINITY); }},
};

} // namespace

TEST(Stores, SetAsideWhatCanNotBeReadAndGoOn) {
    using Path = const QString&;
    struct Case {
        const char* label;
        std::function<void(Path path, const Store& store)> prepare;
        qint64 keptBytes; ///< length of what is set aside; -1: the very bytes that stood there
    };
    const auto put = [](Path path, const QByteArray& content) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    const Case cases[] = {
        {"garbage", [&](Path path, const Store&) { put(path, "\xff\xfe{]"); }, -1},
        {"nothing in it", [&](Path path, const Store&) { put(path, {}); }, -1},
        {"truncated", [&](Path path, const Store&) { put(path, readFile(path).chopped(2)); }, -1},
        {"another type of value", [&](Path path, const Store&) { put(path, "\"text\""); }, -1},
        {"wrong types", [&](Path path, const Store& store) { put(path, store.wrongTypes); }, -1},
        {"a large file", [](Path path, const Store&) { QFile::resize(path, 100 << 20); }, 100 << 20},
        {"a folder",
         [](Path path, const Store&) {
             QFile::remove(path);
             QDir().mkpath(path + u"/within"_s);
         },
         0},
        {"a pipe",
         [](Path path, const Store&) {
             QFile::remove(path);
             ::mkfifo(QFile::encodeName(path), 0600);
         },
         0},
    };
    for (const Store& store : stores) {
        for (const Case& row : cases) {
            const TemporaryTree tree;
            const QString path = tree.path(QLatin1StringView(store.name));
            const auto label = testing::Message() << store.name << ", " << row.label;
            ASSERT_TRUE(store.change(path, 1)) << label;
            row.prepare(path, store);
            const bool isFolder = QFileInfo(path).isDir();
            const QByteArray stood = row.keptBytes < 0 ? readFile(path) : QByteArray();
            EXPECT_FALSE(store.holds(path, 1)) << label;
            const StoreResult changed = store.change(path, 2);
            EXPECT_TRUE(changed) << label << ": " << (changed ? QString() : changed.error().text()).toStdString();
            EXPECT_TRUE(store.holds(path, 2)) << label;
            const QFileInfo kept(path + u".corrupt"_s);
            EXPECT_EQ(kept.isDir(), isFolder) << label;
            if (row.keptBytes < 0) {
                EXPECT_EQ(readFile(kept.filePath()), stood) << label;
            } else if (!isFolder) {
                EXPECT_EQ(kept.size(), row.keptBytes) << label;
            }
            EXPECT_TRUE(store.change(path, 3)) << label;
            const QStringList left =
                QDir(tree.path()).entryList({u"*.corrupt*"_s, u"*.new"_s}, QDir::AllEntries | QDir::System);
            EXPECT_EQ(left.size(), 1) << label << ": " << left.join(u' ').toStdString();
        }
    }
}

TEST(Stores, EachUnreadableContentKeepsAFileOfItsOwn) {
    TemporaryTree tree;
    const Store& store = stores[1];
    const QString path = tree.path(u"overrides.json"_s);
    for (const char* garbage : {"one", "two", "one"}) {
        tree.add(u"overrides.json"_s, garbage);
        ASSERT_TRUE(store.change(path, 1));
    }
    EXPECT_EQ(readFile(path + u".corrupt"_s), "one");
    EXPECT_EQ(readFile(path + u".corrupt.2"_s), "two");
    EXPECT_FALSE(QFileInfo::exists(path + u".corrupt.3"_s));
}

TEST(Stores, ARunningProcessGoesOnFromTheLastRecordThatItSaw) {
    TemporaryTree tree;
    OverrideStore store(tree.path(u"overrides.json"_s));
    ASSERT_TRUE(store.set(u"a"_s, numbered(1)));
    tree.add(u"overrides.json"_s, "{\"a\":");
    EXPECT_FALSE(store.reload());
    ASSERT_TRUE(store.set(u"b"_s, numbered(2)));
    EXPECT_EQ(
        OverrideStore(store.filePath()).values(),
        OverrideStore::Values({{u"a"_s, numbered(1)}, {u"b"_s, numbered(2)}}));
    EXPECT_EQ(readFile(tree.path(u"overrides.json.corrupt"_s)), "{\"a\":");
}

TEST(Stores, WithoutRightsSayWhyAndLoseNothing) {
    constexpr uid_t nobody = 65534;
    struct Case {
        const char* label;
        mode_t file;
        mode_t folder;
        bool isWritten;
    };
    const Case cases[] = {
        {"a file that may not be read", 0000, 0700, true},
        {"a folder that may not be written", 0600, 0500, false},
        {"a folder that may not be entered", 0600, 0000, false},
    };
    for (const Store& store : stores) {
        for (const Case& row : cases) {
            const TemporaryTree tree;
            ::chmod(QFile::encodeName(tree.path()), 0755);
            const QString folder = tree.path(u"support"_s);
            const QString path = folder + u'/' + QLatin1StringView(store.name);
            ASSERT_TRUE(store.change(path, 1));
            const QByteArray before = readFile(path);
            const pid_t child = startChild([&] {
                ::chmod(QFile::encodeName(path), row.file);
                ::chmod(QFile::encodeName(folder), row.folder);
                if (::geteuid() == 0) {
                    EXPECT_EQ(::chown(QFile::encodeName(folder), nobody, nobody), 0);
                    EXPECT_EQ(::setuid(nobody), 0);
                }
                const StoreResult changed = store.change(path, 2);
                EXPECT_EQ(changed.has_value(), row.isWritten) << store.name << ", " << row.label;
                if (!changed) {
                    EXPECT_EQ(changed.error().kind, StoreError::Kind::unwritable)
                        << changed.error().text().toStdString();
                }
                EXPECT_EQ(store.holds(path, 2), row.isWritten) << store.name << ", " << row.label;
                return 0;
            });
            EXPECT_EQ(finish(child), 0);
            ::chmod(QFile::encodeName(folder), 0700);
            const QString kept = row.isWritten ? path + u".corrupt"_s : path;
            ::chmod(QFile::encodeName(kept), 0600);
            EXPECT_EQ(readFile(kept), before) << store.name << ", " << row.label;
        }
    }
}

TEST(Stores, OnAFullDiskKeepTheOldFileAndWriteBothChangesLater) {
    constexpr int refused = 77;
    for (const Disk& disk : disks) {
        const TemporaryTree tree;
        const QString folder = tree.path();
        const int answer = finish(startChild([&] {
            if (!disk.prepare(folder)) {
                return refused;
            }
            for (const Store& store : stores) {
                const QString path = folder + u'/' + QLatin1StringView(store.name);
                EXPECT_TRUE(store.change(path, 1)) << store.name;
                disk.fill(folder);
                const StoreResult changed = store.change(path, 2);
                EXPECT_TRUE(!changed && changed.error().kind == StoreError::Kind::full)
                    << disk.label << ", " << store.name;
                EXPECT_TRUE(store.holds(path, 1)) << disk.label << ", " << store.name;
                disk.free(folder);
            }
            OverrideStore store(folder + u"/overrides.json"_s);
            disk.fill(folder);
            EXPECT_FALSE(store.set(u"kept"_s, numbered(3)));
            EXPECT_EQ(store.override(u"kept"_s), numbered(3));
            disk.free(folder);
            EXPECT_TRUE(store.set(u"next"_s, numbered(4)));
            EXPECT_EQ(OverrideStore(store.filePath()).values(), store.values());
            EXPECT_EQ(store.values().size(), 3);
            return 0;
        }));
        if (answer == refused) {
            GTEST_SKIP() << disk.label << ": this machine does not allow for it";
        }
        EXPECT_EQ(answer, 0) << disk.label;
    }
}

TEST(Stores, AWriterKilledAtAnyInstantLeavesAWholeFileAndNoLock) {
    const TemporaryTree tree;
    const QString path = tree.path(u"overrides.json"_s);
    int written = 0;
    for (int round = 0; round < 60; ++round) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        UniqueFd told(ends[0]);
        UniqueFd tell(ends[1]);
        const pid_t child = startChild([&] {
            OverrideStore store(path);
            const QString large(4000, u'x');
            for (int n = written;; ++n) {
                const Override value{.kind = {}, .command = large, .port = n};
                if (!store.set(u"k%1"_s.arg(n % 100), value) || ::write(tell.get(), &n, sizeof n) != sizeof n) {
                    return 1;
                }
            }
        });
        tell.reset();
        ASSERT_EQ(::read(told.get(), &written, sizeof written), qsizetype{sizeof written});
        // Spread over the length of one change, which differs between machines.
        QElapsedTimer instant;
        instant.start();
        while (instant.nsecsElapsed() < round * 150'000) {
        }
        ::kill(child, SIGKILL);
        EXPECT_EQ(finish(child), -SIGKILL);
        while (::read(told.get(), &written, sizeof written) > 0) {
        }
        OverrideStore after(path);
        EXPECT_GE(after.override(u"k%1"_s.arg(written % 100)).value_or(Override{}).port.value_or(-1), written);
        // The last change may have been written and not told of.
        const auto size = static_cast<int>(after.values().size());
        EXPECT_TRUE(size == std::min(written + 1, 100) || size == std::min(written + 2, 100))
            << size << " after change " << written;
        ASSERT_TRUE(after.set(u"k%1"_s.arg(written % 100), Override{.kind = {}, .command = {}, .port = written}));
        ++written;
    }
    EXPECT_EQ(QDir(tree.path()).entryList(QDir::Files), QStringList({u"overrides.json"_s, u"overrides.json.lock"_s}));
}

TEST(Stores, TwoProcessesLoseNothingOfEachOther) {
    const TemporaryTree tree;
    const QString path = tree.path(u"tasks.json"_s);
    TaskStore watching(path);
    std::array<pid_t, 2> writers{};
    for (pid_t& writer : writers) {
        writer = startChild([&] {
            TaskStore store(path);
            for (int n = 0; n < 200; ++n) {
                store.add(word(n), {}, {}, {});
            }
            // What met a held lock goes out with a later change, also with one that changes nothing.
            for (int tries = 0; !store.lastResult() && tries < 10; ++tries) {
                static_cast<void>(store.remove({}));
            }
            return store.lastResult() ? 0 : 1;
        });
    }
    for (const pid_t writer : writers) {
        EXPECT_EQ(finish(writer), 0);
    }
    EXPECT_TRUE(watching.reload());
    EXPECT_EQ(watching.tasks().size(), 400);
}

TEST(Stores, AHeldLockIsWaitedForAndThenReported) {
    const TemporaryTree tree;
    OverrideStore store(tree.path(u"overrides.json"_s));
    ASSERT_TRUE(store.set(u"a"_s, numbered(1)));
    const QByteArray lock = QFile::encodeName(store.filePath() + u".lock"_s);
    UniqueFd held(::open(lock, O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
    const StoreResult refused = store.set(u"b"_s, numbered(2));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, StoreError::Kind::locked);
    EXPECT_FALSE(store.reload()); // the change that is not written yet outlives a look at the file
    EXPECT_EQ(store.override(u"b"_s), numbered(2));
    held.reset();
    ASSERT_TRUE(store.set(u"c"_s, numbered(3)));
    EXPECT_EQ(OverrideStore(store.filePath()).values().size(), 3);
}
