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
#include <thread>

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
WidgetSnapshot snapshot(int n) {
    return {.running = {}, .pinned = {}, .tasks = {}, .openTaskCount = n};
}

const std::array stores{
    Store{
        "settings.json", R"({"displayName":"S","scanRoot":"file:///w","showDockIcon":"yes","pinnedProjectIDs":[]})",
        [](const QString& path, int n) {
            return SettingsStore(path).change([n](AppSettings& settings) { settings.defaultBranch = word(n); });
        },
        [](const QString& path, int n) { return SettingsStore(path).settings().defaultBranch == word(n); }},
    Store{
        "overrides.json", R"({"/w|app":{"port":"80"}})",
        [](const QString& path, int n) { return OverrideStore(path).set(u"key"_s, numbered(n)); },
        [](const QString& path, int n) { return OverrideStore(path).override(u"key"_s) == numbered(n); }},
    Store{
        "tasks.json", R"([{"title":"a task without the rest"}])",
        [](const QString& path, int n) {
            TaskStore store(path);
            store.add(word(n), {}, {}, {});
            return store.lastResult();
        },
        [](const QString& path, int n) {
            const auto tasks = TaskStore(path).tasks();
            return !tasks.isEmpty() && tasks.last().title == word(n);
        }},
    Store{
        "widget-snapshot.json", R"({"running":{},"pinned":[],"tasks":[],"openTaskCount":0})",
        [](const QString& path, int n) { return SharedContainer::write(snapshot(n), QFileInfo(path).path()); },
        [](const QString& path, int n) { return SharedContainer::read(QFileInfo(path).path()) == snapshot(n); }},
};

/// What stands at a path, told apart from any copy of it.
std::pair<ino_t, qint64> identity(const QString& path) {
    struct stat info{};
    EXPECT_EQ(::lstat(QFile::encodeName(path), &info), 0) << path.toStdString();
    return {info.st_ino, info.st_size};
}

/// The lock of a store, as another process would hold it.
class HeldLock {
public:
    explicit HeldLock(const QString& path) : m_fd(::open(QFile::encodeName(path + u".lock"_s), O_RDONLY | O_CLOEXEC)) {
        EXPECT_EQ(::flock(m_fd.get(), LOCK_EX), 0);
    }
    void release() const { ::flock(m_fd.get(), LOCK_UN); }

private:
    UniqueFd m_fd;
};

/// False where this machine does not allow for it. Seen by the calling process and its children only.
bool mountSmallDisk(const QString& folder) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("none", QFile::encodeName(folder), "tmpfs", 0, "size=256k") == 0;
}

void fillDisk(const QString& filler) {
    QFile file(filler);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (file.write(QByteArray(4096, 'x')) > 0) {
    }
}

} // namespace

TEST(Stores, SetAsideWhatCanNotBeReadAndGoOn) {
    using Path = const QString&;
    struct Case {
        const char* label;
        std::function<void(Path path, const Store& store)> spoil;
    };
    const auto put = [](Path path, const QByteArray& content) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    const Case cases[] = {
        {"garbage", [&](Path path, const Store&) { put(path, "\xff\xfe{]"); }},
        {"nothing in it", [&](Path path, const Store&) { put(path, {}); }},
        {"truncated", [&](Path path, const Store&) { put(path, readFile(path).chopped(2)); }},
        {"another type of value", [&](Path path, const Store&) { put(path, "\"text\""); }},
        {"wrong types", [&](Path path, const Store& store) { put(path, store.wrongTypes); }},
        {"a large file", [&](Path path, const Store&) { put(path, readFile(path) + QByteArray(100 << 20, ' ')); }},
        {"a folder", [](Path path, const Store&) { QFile::remove(path) && QDir().mkpath(path + u"/within"_s); }},
        {"a pipe", [](Path path, const Store&) { QFile::remove(path) && ::mkfifo(QFile::encodeName(path), 0600); }},
    };
    for (const Store& store : stores) {
        for (const Case& row : cases) {
            SCOPED_TRACE(testing::Message() << store.name << ", " << row.label);
            const TemporaryTree tree;
            const QString path = tree.path(u"not/yet/there/"_s + QLatin1StringView(store.name));
            EXPECT_FALSE(store.holds(path, 1));
            ASSERT_TRUE(store.change(path, 1));
            row.spoil(path, store);
            EXPECT_FALSE(store.holds(path, 1));
            const auto stood = identity(path);
            EXPECT_TRUE(store.change(path, 2));
            EXPECT_TRUE(store.holds(path, 2));
            EXPECT_EQ(identity(path + u".corrupt"_s), stood);
            EXPECT_TRUE(store.change(path, 3));
            const QDir folder(QFileInfo(path).path(), {}, {}, QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
            EXPECT_EQ(folder.count(), 3) << "the file, its lock, what was set aside: "
                                         << folder.entryList().join(u' ').toStdString();
        }
    }
}

TEST(Stores, ARunningProcessGoesOnFromTheLastRecordThatItSaw) {
    TemporaryTree tree;
    OverrideStore store(tree.path(u"overrides.json"_s));
    ASSERT_TRUE(store.set(u"0"_s, numbered(0)));
    const char* contents[] = {"{\"one", "{\"two", "{\"one"};
    for (int n = 1; n <= 3; ++n) {
        tree.add(u"overrides.json"_s, contents[n - 1]);
        EXPECT_FALSE(store.reload());
        ASSERT_TRUE(store.set(QString::number(n), numbered(n)));
        EXPECT_EQ(OverrideStore(store.filePath()).values().size(), n + 1);
    }
    EXPECT_EQ(readFile(store.filePath() + u".corrupt"_s), contents[0]);
    EXPECT_EQ(readFile(store.filePath() + u".corrupt.2"_s), contents[1]);
    EXPECT_FALSE(QFileInfo::exists(store.filePath() + u".corrupt.3"_s)) << "the third is kept already";
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
            SCOPED_TRACE(testing::Message() << store.name << ", " << row.label);
            const TemporaryTree tree;
            ::chmod(QFile::encodeName(tree.path()), 0755);
            const QString path = tree.path(u"support/"_s + QLatin1StringView(store.name));
            const QByteArray folder = QFile::encodeName(tree.path(u"support"_s));
            ASSERT_TRUE(store.change(path, 1));
            const auto before = identity(path);
            const pid_t child = startChild([&] {
                ::chmod(QFile::encodeName(path), row.file);
                ::chmod(folder, row.folder);
                if (::geteuid() == 0) {
                    EXPECT_EQ(::chown(folder, nobody, nobody), 0);
                    EXPECT_EQ(::setuid(nobody), 0);
                }
                const StoreResult changed = store.change(path, 2);
                EXPECT_EQ(changed.has_value(), row.isWritten);
                EXPECT_TRUE(changed || changed.error().kind == StoreError::Kind::unwritable);
                EXPECT_EQ(store.holds(path, 2), row.isWritten);
                return 0;
            });
            EXPECT_EQ(finish(child), 0);
            ::chmod(folder, 0700);
            EXPECT_EQ(identity(row.isWritten ? path + u".corrupt"_s : path), before);
        }
    }
}

TEST(Stores, OnAFullDiskSaySoAndKeepTheOldFile) {
    struct Case {
        const char* label;
        StoreError::Kind kind;
        std::function<bool(const TemporaryTree& tree)> prepare; ///< false where this machine does not allow for it
        std::function<void(const TemporaryTree& tree)> fill;
        std::function<void(const TemporaryTree& tree)> clear;
    };
    const auto limitFiles = [](rlim_t bytes) {
        const rlimit limit{bytes, RLIM_INFINITY};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    };
    const auto filler = [](const TemporaryTree& tree) { return tree.path(u"filler"_s); };
    // A limit on the size of files fails the same calls in the same places, and needs no rights.
    const Case cases[] = {
        {"a full disk", StoreError::Kind::full, [](const TemporaryTree& tree) { return mountSmallDisk(tree.path()); },
         [&](const TemporaryTree& tree) { fillDisk(filler(tree)); },
         [&](const TemporaryTree& tree) { QFile::remove(filler(tree)); }},
        {"a limit on files", StoreError::Kind::unwritable,
         [](const TemporaryTree&) { return ::signal(SIGXFSZ, SIG_IGN) != SIG_ERR; },
         [&](const TemporaryTree&) { limitFiles(10); }, [&](const TemporaryTree&) { limitFiles(RLIM_INFINITY); }},
    };
    constexpr int refused = 77;
    for (const Case& row : cases) {
        const TemporaryTree tree;
        const int answer = finish(startChild([&] {
            if (!row.prepare(tree)) {
                return refused;
            }
            for (const Store& store : stores) {
                SCOPED_TRACE(testing::Message() << row.label << ", " << store.name);
                const QString path = tree.path(QLatin1StringView(store.name));
                const auto expectFailure = [&] {
                    row.fill(tree);
                    const StoreResult changed = store.change(path, 2);
                    row.clear(tree);
                    EXPECT_TRUE(!changed && changed.error().kind == row.kind);
                    EXPECT_FALSE(QFileInfo::exists(path + u".new"_s));
                };
                expectFailure();
                EXPECT_FALSE(QFileInfo::exists(path)) << "the first write of all";
                EXPECT_TRUE(store.change(path, 1));
                expectFailure();
                EXPECT_TRUE(store.holds(path, 1));

                QFile spoiled(path);
                EXPECT_TRUE(spoiled.open(QIODevice::WriteOnly) && spoiled.write("{\"broken") > 0);
                spoiled.close();
                const auto stood = identity(path);
                expectFailure();
                EXPECT_EQ(identity(path), stood);
                EXPECT_TRUE(store.change(path, 3) && store.holds(path, 3));
                EXPECT_EQ(identity(path + u".corrupt"_s), stood);
                EXPECT_FALSE(QFileInfo::exists(path + u".corrupt.2"_s));
            }
            return 0;
        }));
        EXPECT_TRUE(answer == 0 || answer == refused) << row.label << ": " << answer;
    }
}

TEST(Stores, AWriterKilledAtAnyInstantLeavesAWholeFileAndNoLock) {
    const TemporaryTree tree;
    const QString path = tree.path(u"overrides.json"_s);
    int written = 0;
    for (int round = 0; round < 60; ++round) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        const UniqueFd told(ends[0]);
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
        while (instant.nsecsElapsed() < qint64{round} * 150'000) {
        }
        ::kill(child, SIGKILL);
        EXPECT_EQ(finish(child), -SIGKILL);
        while (::read(told.get(), &written, sizeof written) > 0) {
        }
        const OverrideStore after(path);
        EXPECT_GE(after.override(u"k%1"_s.arg(written % 100)).value_or(Override{}).port.value_or(-1), written);
        EXPECT_GE(after.values().size(), std::min(++written, 100));
    }
    ASSERT_TRUE(OverrideStore(path).set(u"k0"_s, std::nullopt));
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
                std::ignore = store.remove({});
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
    const HeldLock lock(store.filePath());
    const StoreResult refused = store.set(u"b"_s, numbered(2));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, StoreError::Kind::locked);
    EXPECT_FALSE(store.reload()); // the change that is not written yet outlives a look at the file
    EXPECT_EQ(store.override(u"b"_s), numbered(2));
    lock.release();
    EXPECT_TRUE(store.flush());
    EXPECT_EQ(OverrideStore(store.filePath()).values().size(), 2);
    ASSERT_TRUE(store.set(u"c"_s, numbered(3)));
    EXPECT_EQ(OverrideStore(store.filePath()).values().size(), 3);
}

TEST(Stores, AnOldFailedChangeUndoesNoNewerOne) {
    const TemporaryTree tree;
    const QString path = tree.path(u"overrides.json"_s);
    OverrideStore store(path);
    ASSERT_TRUE(store.set(u"same"_s, numbered(1)));
    const HeldLock lock(path);
    EXPECT_FALSE(store.set(u"same"_s, numbered(2)));
    EXPECT_FALSE(store.set(u"other"_s, numbered(2)));
    lock.release();
    ASSERT_TRUE(OverrideStore(path).set(u"same"_s, numbered(3)));
    EXPECT_TRUE(store.reload());
    EXPECT_EQ(store.override(u"same"_s), numbered(3));
    EXPECT_EQ(store.override(u"other"_s), numbered(2));
    const StoreResult flushed = store.flush();
    EXPECT_TRUE(!flushed && flushed.error().kind == StoreError::Kind::overtaken);
    EXPECT_TRUE(store.flush()) << "it is told once";
    const auto expected = OverrideStore::Values{{u"same"_s, numbered(3)}, {u"other"_s, numbered(2)}};
    EXPECT_EQ(OverrideStore(path).values(), expected);

    // What was not tried before is newer than what another one wrote.
    ASSERT_TRUE(OverrideStore(path).set(u"same"_s, numbered(4)));
    ASSERT_TRUE(store.set(u"same"_s, numbered(5)));
    EXPECT_EQ(OverrideStore(path).override(u"same"_s), numbered(5));
}

TEST(Stores, ReadingDoesNotWaitForAWriter) {
    const TemporaryTree tree;
    OverrideStore store(tree.path(u"overrides.json"_s));
    ASSERT_TRUE(store.set(u"a"_s, numbered(1)));
    const HeldLock lock(store.filePath());
    std::thread writer([&] { EXPECT_TRUE(store.set(u"a"_s, numbered(2))); });
    // Only a reader that gets through while the writer waits ends this before the writer gives up.
    while (store.override(u"a"_s) != numbered(2)) {
        std::this_thread::yield();
    }
    lock.release();
    writer.join();
}
