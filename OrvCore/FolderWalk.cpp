#include "OrvCore/FolderWalk_p.h"
#include "OrvCore/UniqueFd.h"

#include <QFile>
#include <QUtf8StringView>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <thread>

#include <sys/stat.h>

namespace orv {

namespace {

/// A folder to read, reached through its open parent, which closes with the last of its sub-folders.
struct Task {
    WalkedFolder* folder = nullptr;
    std::shared_ptr<const UniqueFd> parent; ///< null for the root
};

/// Where workers that have more than enough leave tasks for those that have none.
class SharedTasks {
public:
    explicit SharedTasks(int workers) : m_workers(workers) {}

    [[nodiscard]] bool isWanted() const { return m_waiting.load(std::memory_order_relaxed) > 0; }

    /// Gives away the older half, which lies nearer to the root and so stands for more work.
    void give(std::deque<Task>& own) {
        const auto half = own.begin() + static_cast<std::ptrdiff_t>(own.size() / 2);
        {
            const std::scoped_lock lock(m_mutex);
            std::move(own.begin(), half, std::back_inserter(m_tasks));
        }
        own.erase(own.begin(), half);
        m_changed.notify_all();
    }

    /// Waits for a task; false when all workers wait, so that none can come, or when the walk was ended.
    bool take(Task& task) {
        std::unique_lock lock(m_mutex);
        m_waiting.fetch_add(1, std::memory_order_relaxed);
        if (m_tasks.empty() && m_waiting.load(std::memory_order_relaxed) == m_workers) {
            m_ended = true;
            m_changed.notify_all();
        }
        m_changed.wait(lock, [&] { return m_ended || !m_tasks.empty(); });
        if (m_ended) {
            return false;
        }
        m_waiting.fetch_sub(1, std::memory_order_relaxed);
        task = std::move(m_tasks.back());
        m_tasks.pop_back();
        return true;
    }

    void end() {
        {
            const std::scoped_lock lock(m_mutex);
            m_ended = true;
        }
        m_changed.notify_all();
    }

private:
    const int m_workers;
    std::atomic<int> m_waiting = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Task> m_tasks;
    bool m_ended = false;
};

class Worker {
public:
    Worker(const WalkRequest& request, const std::vector<std::string>& skipNames, SharedTasks& shared)
        : m_request(request), m_skipNames(skipNames), m_shared(shared) {
        m_files.setInterrupt([this] { return isCancelled(); });
    }

    void run() {
        Task task;
        while (!isCancelled() && (takeOwn(task) || m_shared.take(task))) {
            visit(task);
            task.parent.reset();
            if (m_own.size() > 1 && m_shared.isWanted()) {
                m_shared.give(m_own);
            }
        }
        m_shared.end();
    }

    void add(Task task) { m_own.push_back(std::move(task)); }

private:
    [[nodiscard]] bool isCancelled() const {
        return m_request.cancellation != nullptr && m_request.cancellation->isCancelled();
    }

    bool takeOwn(Task& task) {
        if (m_own.empty()) {
            return false;
        }
        task = std::move(m_own.back());
        m_own.pop_back();
        return true;
    }

    void visit(const Task& task) {
        WalkedFolder& folder = *task.folder;
        const bool isOpen =
            task.parent ? m_files.openAt(task.parent->get(), folder.name.c_str()) : m_files.open(m_request.root);
        struct stat status{};
        if (!isOpen || ::fstat(m_files.descriptor(), &status) != 0) {
            return;
        }
        folder.identity = {status.st_dev, status.st_ino};
        folder.hasRepository = m_files.exists(".git");
        detect(folder);

        if (folder.hasRepository) {
            folder.belowProject = WalkedFolder::noProject;
        }
        if (folder.belowProject == WalkedFolder::noProject && !folder.detection.stacks.isEmpty()) {
            folder.belowProject = 0;
        }
        if (folder.depth <= deepestListed && folder.belowProject <= deepestListedInProject) {
            addChildren(folder);
        }
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
        auto manager = StackDetector::workspacePackageManager(m_files);
        folder.detection = StackDetector::detect(m_files, enclosing);
        if (manager) {
            folder.workspace = std::make_shared<const WalkedFolder::Workspace>(folder.depth, *std::move(manager));
        }
    }

    /// Hidden and skipped folders are left out, and so is one whose name is no text: no command line could name it.
    void addChildren(WalkedFolder& folder) {
        m_names.clear();
        for (const FolderReader::Entry& entry : m_files.entries()) {
            const std::string_view name = m_files.name(entry);
            if (entry.type != FolderReader::Type::folder && entry.type != FolderReader::Type::unknown) {
                continue;
            }
            if (name.front() != '.' && !std::ranges::binary_search(m_skipNames, name) && m_files.isFolder(entry) &&
                QUtf8StringView(name.data(), static_cast<qsizetype>(name.size())).isValidUtf8()) {
                m_names.push_back(name);
            }
        }
        if (m_names.empty()) {
            return;
        }
        std::ranges::sort(m_names, naturalLess);
        const int below =
            folder.belowProject == WalkedFolder::noProject ? WalkedFolder::noProject : folder.belowProject + 1;
        folder.children.resize(m_names.size());
        for (size_t i = 0; i < m_names.size(); ++i) {
            WalkedFolder& child = folder.children[i];
            child.name = m_names[i];
            child.parent = &folder;
            child.depth = folder.depth + 1;
            child.belowProject = below;
            child.workspace = folder.workspace;
        }
        const auto parent = std::make_shared<const UniqueFd>(m_files.takeDescriptor());
        for (WalkedFolder& child : folder.children) {
            m_own.push_back({&child, parent});
        }
    }

    const WalkRequest& m_request;
    const std::vector<std::string>& m_skipNames;
    SharedTasks& m_shared;
    FolderReader m_files;
    std::deque<Task> m_own;
    std::vector<std::string_view> m_names; ///< into the reader's listing
};

/// The same directory under two paths (a bind mount) counts where it comes first.
void markRepeated(WalkedFolder& folder, std::set<std::pair<dev_t, ino_t>>& met) {
    folder.isRepeated = folder.identity.second != 0 && !met.insert(folder.identity).second;
    if (!folder.isRepeated) {
        for (WalkedFolder& child : folder.children) {
            markRepeated(child, met);
        }
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

std::unique_ptr<WalkedFolder> walkFolders(const WalkRequest& request) {
    auto root = std::make_unique<WalkedFolder>();
    root->depth = request.depth;
    root->workspace = workspaceAbove(request);

    const std::vector<std::string> skipNames = sortedBytes(request.skipNames);
    SharedTasks shared(request.workers);
    std::deque<Worker> workers;
    for (int i = 0; i < request.workers; ++i) {
        workers.emplace_back(request, skipNames, shared);
    }
    workers.front().add({root.get(), nullptr});
    {
        std::vector<std::thread> threads;
        for (size_t i = 1; i < workers.size(); ++i) {
            threads.emplace_back([&worker = workers[i]] { worker.run(); });
        }
        workers.front().run();
        std::ranges::for_each(threads, &std::thread::join);
    }
    if (request.cancellation != nullptr && request.cancellation->isCancelled()) {
        return nullptr;
    }
    std::set<std::pair<dev_t, ino_t>> met;
    markRepeated(*root, met);
    return root;
}

} // namespace orv
