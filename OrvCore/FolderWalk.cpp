#include "OrvCore/FolderWalk_p.h"
#include "OrvCore/UniqueFd.h"

#include <QFile>
#include <QUtf8StringView>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <unordered_map>

#include <fcntl.h>
#include <sys/stat.h>

using namespace std::chrono_literals;

namespace orv {

namespace {

/// How long a walk waits in all for descriptors or memory that ran out.
constexpr auto patience = 2s;
constexpr auto patienceStep = 10ms;
/// A thread is not worth its making for less.
constexpr size_t foldersPerThread = 16;

struct Identity {
    dev_t device = 0;
    ino_t inode = 0;

    bool operator==(const Identity&) const = default;
};

struct IdentityHash {
    size_t operator()(const Identity& identity) const {
        return std::hash<quint64>()(quint64{identity.inode} * 31 + quint64{identity.device});
    }
};

/// Which place of a walk has a directory: of several the one that comes first when folders are counted by depth, then
/// in listing order. Safe on any thread.
class Places {
public:
    enum class Claim { first, repeated };

    /// What had the directory before and comes after `place` is added to `displaced`.
    Claim claim(const Identity& identity, size_t place) {
        const std::scoped_lock lock(m_mutex);
        const auto [known, isNew] = m_places.try_emplace(identity, place);
        if (!isNew && known->second < place) {
            return Claim::repeated;
        }
        if (known->second > place) {
            m_displaced.push_back(std::exchange(known->second, place));
        }
        return Claim::first;
    }
    [[nodiscard]] std::vector<size_t> takeDisplaced() { return std::exchange(m_displaced, {}); }

private:
    std::mutex m_mutex;
    std::unordered_map<Identity, size_t, IdentityHash> m_places;
    std::vector<size_t> m_displaced;
};

/// What all workers of a walk share.
struct Shared {
    const WalkRequest& request;
    const std::vector<std::string> skipNames; ///< sorted
    UniqueFd root;
    Places places;

    [[nodiscard]] bool isCancelled() const {
        return request.cancellation != nullptr && request.cancellation->isCancelled();
    }
};

class Worker {
public:
    enum class Outcome { read, unreadable, ranOut };

    explicit Worker(Shared& shared) : m_shared(shared) {
        m_files.setInterrupt([&shared] { return shared.isCancelled(); });
    }

    /// `place` counts the folders of the walk by depth, then in listing order.
    Outcome visit(WalkedFolder& folder, size_t place) {
        const Outcome outcome = read(folder, place);
        folder.error = outcome == Outcome::unreadable ? errno : 0;
        m_files.close();
        if (outcome != Outcome::read) {
            folder.detection = {};
            folder.children.clear();
        }
        return outcome;
    }

private:
    Outcome read(WalkedFolder& folder, size_t place) {
        struct stat status{};
        const std::string path = folder.parent == nullptr ? "." : relativePath(folder);
        // By name, since a directory that is listed elsewhere is not opened at all.
        if (::fstatat(m_shared.root.get(), path.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return FolderReader::isRunningOut(errno) ? Outcome::ranOut : Outcome::unreadable;
        }
        folder.isRepeated = m_shared.places.claim({status.st_dev, status.st_ino}, place) == Places::Claim::repeated;
        if (folder.isRepeated) {
            return Outcome::read;
        }
        if (!m_files.openAt(m_shared.root.get(), path.c_str())) {
            errno = m_files.error();
            return m_files.ranOut() ? Outcome::ranOut : Outcome::unreadable;
        }
        folder.hasRepository = m_files.exists(".git");
        detect(folder);
        if (m_files.ranOut()) {
            return Outcome::ranOut;
        }
        int below = folder.hasRepository ? WalkedFolder::noProject : folder.belowProject;
        if (below == WalkedFolder::noProject && folder.isProject()) {
            below = 0;
        }
        if (folder.depth <= deepestListed && below <= deepestListedInProject) {
            addChildren(folder, below == WalkedFolder::noProject ? below : below + 1);
        }
        return Outcome::read;
    }

    static std::string relativePath(const WalkedFolder& folder) {
        return folder.parent->parent == nullptr ? folder.name : relativePath(*folder.parent) + '/' + folder.name;
    }

    void detect(WalkedFolder& folder) {
        std::optional<StackDetector::EnclosingWorkspace> enclosing;
        if (folder.workspace) {
            QString up = QStringLiteral("..");
            for (int level = folder.workspace->depth + 1; level < folder.depth; ++level) {
                up += QStringLiteral("/..");
            }
            enclosing = {up, folder.workspace->packageManager};
        }
        folder.subfoldersWorkspace = folder.workspace;
        auto manager = StackDetector::workspacePackageManager(m_files);
        folder.detection = StackDetector::detect(m_files, enclosing);
        if (manager) {
            folder.subfoldersWorkspace =
                std::make_shared<const WalkedFolder::Workspace>(folder.depth, *std::move(manager));
        }
    }

    /// Hidden and skipped folders are left out, and so is one whose name is no text: no command line could name it.
    void addChildren(WalkedFolder& folder, int belowProject) {
        m_names.clear();
        for (const FolderReader::Entry& entry : m_files.entries()) {
            const std::string_view name = m_files.name(entry);
            if (entry.type != FolderReader::Type::folder && entry.type != FolderReader::Type::unknown) {
                continue;
            }
            if (name.front() != '.' && !std::ranges::binary_search(m_shared.skipNames, name) &&
                m_files.isFolder(entry) &&
                QUtf8StringView(name.data(), static_cast<qsizetype>(name.size())).isValidUtf8()) {
                m_names.push_back(name);
            }
        }
        std::ranges::sort(m_names, naturalLess);
        folder.children.resize(m_names.size());
        for (size_t i = 0; i < m_names.size(); ++i) {
            WalkedFolder& child = folder.children[i];
            child.name = m_names[i];
            child.parent = &folder;
            child.depth = folder.depth + 1;
            child.belowProject = belowProject;
            child.workspace = folder.subfoldersWorkspace;
        }
    }

    Shared& m_shared;
    FolderReader m_files;
    std::vector<std::string_view> m_names; ///< into the reader's listing
};

/// Goes through the folders level by level, so that the nearer place of a directory is known before a deeper one is met
/// and no folder needs to stay open for those below it.
class Walk {
public:
    explicit Walk(Shared& shared) : m_shared(shared) {
        for (int i = 0; i < std::max(1, shared.request.workers); ++i) {
            m_workers.emplace_back(shared);
        }
    }

    std::expected<void, ScanError> run(WalkedFolder& root) {
        m_level = {&root};
        for (size_t passed = 0; !m_level.empty(); passed += m_level.size(), nextLevel()) {
            m_passed = passed;
            readLevel();
            if (const auto read = readAgain(); !read) {
                return read;
            }
            if (m_shared.isCancelled()) {
                return std::unexpected(ScanError{ScanError::Kind::cancelled, m_shared.request.root, {}});
            }
            for (const size_t place : m_shared.places.takeDisplaced()) {
                WalkedFolder& folder = *m_level[place - passed];
                folder.isRepeated = true;
                folder.detection = {};
                folder.children.clear();
            }
        }
        return {};
    }

private:
    void readLevel() {
        m_next = 0;
        std::vector<std::thread> threads;
        const size_t wanted = std::min(m_workers.size(), m_level.size() / foldersPerThread + 1);
        try {
            threads.reserve(wanted);
            while (threads.size() + 1 < wanted) {
                threads.emplace_back([this, &worker = m_workers[threads.size() + 1]] { readFolders(worker); });
            }
        } catch (const std::system_error&) {
            // No more threads to be had: those that there are read the rest.
        }
        readFolders(m_workers.front());
        std::ranges::for_each(threads, &std::thread::join);
    }

    void readFolders(Worker& worker) {
        for (size_t i = m_next++; i < m_level.size() && !m_shared.isCancelled(); i = m_next++) {
            if (worker.visit(*m_level[i], m_passed + i) == Worker::Outcome::ranOut) {
                const std::scoped_lock lock(m_mutex);
                m_again.push_back(i);
            }
        }
    }

    /// What descriptors or memory were missing for, one by one.
    std::expected<void, ScanError> readAgain() {
        for (const size_t i : std::exchange(m_again, {})) {
            while (!m_shared.isCancelled() &&
                   m_workers.front().visit(*m_level[i], m_passed + i) == Worker::Outcome::ranOut) {
                if (m_waited >= patience) {
                    return std::unexpected(
                        ScanError{ScanError::Kind::exhausted, m_shared.request.root, qt_error_string(EMFILE)});
                }
                std::this_thread::sleep_for(patienceStep);
                m_waited += patienceStep;
            }
        }
        return {};
    }

    void nextLevel() {
        std::vector<WalkedFolder*> next;
        for (WalkedFolder* folder : m_level) {
            for (WalkedFolder& child : folder->children) {
                next.push_back(&child);
            }
        }
        m_level = std::move(next);
    }

    Shared& m_shared;
    std::deque<Worker> m_workers;
    std::vector<WalkedFolder*> m_level; ///< the folders of one depth, in listing order
    size_t m_passed = 0;                ///< folders of less depth
    std::atomic<size_t> m_next = 0;
    std::mutex m_mutex;
    std::vector<size_t> m_again; ///< into `m_level`; under `m_mutex`
    std::chrono::milliseconds m_waited = 0ms;
};

void summarise(WalkedFolder& folder) {
    folder.holdsProject = !folder.detection.stacks.isEmpty();
    for (WalkedFolder& child : folder.children) {
        summarise(child);
        folder.holdsProject = folder.holdsProject || child.holdsProject;
        folder.holdsRepository =
            folder.holdsRepository || child.holdsRepository || (child.hasRepository && child.holdsProject);
    }
}

/// Waits for a descriptor when there is none; invalid with errno.
UniqueFd openRoot(const QString& path) {
    UniqueFd root;
    for (auto waited = 0ms;; waited += patienceStep) {
        root.reset(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (root.isValid() || waited >= patience || !(FolderReader::isRunningOut(errno) || errno == EINTR)) {
            return root;
        }
        std::this_thread::sleep_for(patienceStep);
    }
}

std::shared_ptr<const WalkedFolder::Workspace> workspaceAbove(const WalkRequest& request) {
    const auto root = StackDetector::nodeWorkspaceRoot(request.root);
    FolderReader files;
    if (!root || !files.open(*root)) {
        return nullptr;
    }
    const auto manager = StackDetector::workspacePackageManager(files);
    const auto levels = StackDetector::relativeUp(request.root, *root).count(QStringLiteral(".."));
    return std::make_shared<const WalkedFolder::Workspace>(
        request.depth - static_cast<int>(levels), manager.value_or(QStringLiteral("npm")));
}

std::vector<std::string> sortedBytes(const QSet<QString>& names) {
    std::vector<std::string> sorted;
    for (const QString& name : names) {
        sorted.push_back(QFile::encodeName(name).toStdString());
    }
    std::ranges::sort(sorted);
    return sorted;
}

} // namespace

std::expected<std::unique_ptr<WalkedFolder>, ScanError> walkFolders(const WalkRequest& request) {
    Shared shared{request, sortedBytes(request.skipNames), openRoot(request.root), {}};
    if (!shared.root.isValid()) {
        const auto kind = FolderReader::isRunningOut(errno) ? ScanError::Kind::exhausted : ScanError::Kind::unreadable;
        return std::unexpected(ScanError{kind, request.root, qt_error_string(errno)});
    }
    auto root = std::make_unique<WalkedFolder>();
    root->depth = request.depth;
    root->workspace = workspaceAbove(request);
    if (const auto walked = Walk(shared).run(*root); !walked) {
        return std::unexpected(walked.error());
    }
    if (root->error != 0) {
        return std::unexpected(ScanError{ScanError::Kind::unreadable, request.root, qt_error_string(root->error)});
    }
    summarise(*root);
    return root;
}

} // namespace orv
