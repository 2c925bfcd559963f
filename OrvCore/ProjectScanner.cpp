#include "OrvCore/ProjectScanner.h"

#include "OrvCore/CommandBuilder.h"
#include "OrvCore/DesktopDevice.h"
#include "OrvCore/FolderWalk_p.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <thread>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// What belongs to one project folder.
struct Collected {
    QList<ServiceTarget> targets;
    std::vector<const WalkedFolder*> nested; ///< folders below it that are projects of their own
};

/// Makes the tree of projects from the folders of a walk. It only reads memory.
class TreeBuilder {
public:
    TreeBuilder(
        const ProjectScanner& scanner, const WalkedFolder& root, const QString& rootPath,
        const ScanCancellation* cancellation)
        : m_scanner(scanner), m_root(root), m_rootPath(rootPath), m_cancellation(cancellation) {}

    /// Absent when nothing runs in or below the folder. Without meaning once the scan is cancelled.
    [[nodiscard]] std::optional<ProjectNode> node(const WalkedFolder& folder) const {
        if (!folder.holdsProject || isCancelled()) {
            return std::nullopt;
        }
        const bool isAlone = std::ranges::none_of(folder.children, &WalkedFolder::holdsProject);
        if (folder.isProject() || (!folder.detection.stacks.isEmpty() && isAlone)) {
            Collected collected = collect(folder);
            ProjectNode made = projectNode(folder, std::move(collected.targets));
            for (const WalkedFolder* nested : collected.nested) {
                append(made.children, *nested);
            }
            return made;
        }
        if (folder.depth > 0 && !folder.holdsRepository) {
            if (Collected collected = collect(folder); !collected.targets.isEmpty()) {
                ProjectNode made = projectNode(folder, std::move(collected.targets));
                appendRest(made.children, folder, 0);
                return made;
            }
        }
        ProjectNode made{.path = path(folder), .name = name(folder), .project = {}, .children = {}};
        for (const WalkedFolder& child : folder.children) {
            append(made.children, child);
        }
        return made;
    }

private:
    void append(QList<ProjectNode>& nodes, const WalkedFolder& folder) const {
        if (auto found = node(folder)) {
            nodes.append(*std::move(found));
        }
    }

    [[nodiscard]] static bool mayDescend(const WalkedFolder& folder, int relativeDepth) {
        return relativeDepth <= deepestListedInProject && folder.depth <= deepestListed;
    }

    [[nodiscard]] Collected collect(const WalkedFolder& folder) const {
        Collected collected;
        collect(folder, 0, collected);
        return collected;
    }

    void collect(const WalkedFolder& folder, int relativeDepth, Collected& collected) const {
        collected.targets += targets(folder, relativeDepth == 0 ? Fallbacks::allowed : Fallbacks::refused);
        if (!mayDescend(folder, relativeDepth)) {
            return;
        }
        for (const WalkedFolder& child : folder.children) {
            if (child.hasRepository) {
                collected.nested.push_back(&child);
            } else {
                collect(child, relativeDepth + 1, collected);
            }
        }
    }

    /// Whether a project that collects from here on finds a service.
    [[nodiscard]] static bool contributes(const WalkedFolder& folder, int relativeDepth) {
        return !folder.detection.with(Fallbacks::refused).isEmpty() ||
               (mayDescend(folder, relativeDepth) &&
                std::ranges::any_of(folder.children, [relativeDepth](const WalkedFolder& child) {
                    return contributes(child, relativeDepth + 1);
                }));
    }

    /// What a project without a stack of its own gathers nothing from, each by itself.
    void appendRest(QList<ProjectNode>& nodes, const WalkedFolder& folder, int relativeDepth) const {
        for (const WalkedFolder& child : folder.children) {
            if (!contributes(child, relativeDepth + 1)) {
                append(nodes, child);
            } else if (child.detection.with(Fallbacks::refused).isEmpty()) {
                appendRest(nodes, child, relativeDepth + 1);
            }
        }
    }

    [[nodiscard]] QList<ServiceTarget> targets(const WalkedFolder& folder, Fallbacks fallbacks) const {
        QList<ServiceTarget> made;
        const QList<DetectedStack>& all = folder.detection.stacks;
        if (all.isEmpty()) {
            return made;
        }
        const QString directory = path(folder);
        for (const DetectedStack& stack : folder.detection.with(fallbacks)) {
            ServiceTarget target{
                .kind = stack.kind, .directory = directory, .framework = stack.framework, .command = {}, .port = {}};
            if (m_scanner.overrides) {
                target = m_scanner.overrides->finish(std::move(target), all);
            } else {
                target.command = CommandBuilder::command(all, stack.kind, directory, stack.framework, desktopDevice.id);
            }
            made.append(std::move(target));
        }
        return made;
    }

    [[nodiscard]] ProjectNode projectNode(const WalkedFolder& folder, QList<ServiceTarget> targets) const {
        const QString root = path(folder);
        const QString label = name(folder);
        return {
            .path = root,
            .name = label,
            .project = Project{.id = root, .name = label, .root = root, .targets = std::move(targets)},
            .children = {}};
    }

    [[nodiscard]] QString path(const WalkedFolder& folder) const {
        if (&folder == &m_root) {
            return m_rootPath;
        }
        const QString parent = path(*folder.parent);
        return (parent.endsWith(u'/') ? parent : parent + u'/') + name(folder);
    }

    [[nodiscard]] QString name(const WalkedFolder& folder) const {
        return &folder == &m_root ? QDir(m_rootPath).dirName() : QFile::decodeName(folder.name.c_str());
    }

    [[nodiscard]] bool isCancelled() const { return m_cancellation != nullptr && m_cancellation->isCancelled(); }

    const ProjectScanner& m_scanner;
    const WalkedFolder& m_root;
    const QString& m_rootPath;
    const ScanCancellation* m_cancellation;
};

/// The one spelling of an existing folder; empty when there is none, or when it can't be told.
QString canonicalFolder(const QString& folder) {
    const QFileInfo info(folder);
    return !folder.isEmpty() && info.isDir() ? info.canonicalFilePath() : QString();
}

/// What `canonicalFolder` gave nothing for is no folder, or lies behind one that may not be entered.
std::optional<ScanError> hiddenBehind(const QString& folder) {
    struct stat status{};
    if (folder.isEmpty() || ::stat(QFile::encodeName(folder).constData(), &status) == 0 || errno == ENOENT ||
        errno == ENOTDIR) {
        return std::nullopt;
    }
    return ScanError{ScanError::Kind::unreadable, folder, qt_error_string(errno)};
}

int coreCount() {
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

} // namespace

QSet<QString> ProjectScanner::defaultSkips() {
    return {u"node_modules"_s, u".git"_s,  u"build"_s,       u"dist"_s,        u".next"_s, u".dart_tool"_s,
            u"venv"_s,         u".venv"_s, u"OrvLauncher"_s, u"__pycache__"_s, u"Pods"_s,  u".gradle"_s};
}

QString ScanError::text() const {
    switch (kind) {
    case Kind::cancelled:
        return QCoreApplication::translate("ScanError", "The scan was cancelled.");
    case Kind::exhausted:
        return QCoreApplication::translate(
                   "ScanError", "Could not scan \"%1\": the system has no files or no memory to spare (%2).")
            .arg(path, reason);
    case Kind::unreadable:
        break;
    }
    return QCoreApplication::translate("ScanError", "Could not scan \"%1\": %2.").arg(path, reason);
}

ScanResult<QList<Project>> ProjectScanner::scan(const QString& root, const ScanCancellation* cancellation) const {
    const auto tree = scanTree(root, cancellation);
    if (!tree) {
        return std::unexpected(tree.error());
    }
    QList<Project> projects;
    for (const ProjectNode& node : *tree) {
        projects += node.apps();
    }
    return projects;
}

ScanResult<QList<ProjectNode>> ProjectScanner::scanTree(
    const QString& root, const ScanCancellation* cancellation) const {
    const QString path = canonicalFolder(root);
    if (path.isEmpty()) {
        if (auto error = hiddenBehind(root)) {
            return std::unexpected(*std::move(error));
        }
        return QList<ProjectNode>();
    }
    const auto walked = walkFolders({path, 0, skipNames, cancellation, coreCount()});
    if (!walked) {
        return std::unexpected(walked.error());
    }
    auto node = TreeBuilder(*this, **walked, path, cancellation).node(**walked);
    if (cancellation != nullptr && cancellation->isCancelled()) {
        return std::unexpected(ScanError{ScanError::Kind::cancelled, path, {}});
    }
    if (!node) {
        return QList<ProjectNode>();
    }
    return node->project ? QList{*std::move(node)} : node->children;
}

std::optional<Project> ProjectScanner::project(const QString& folder, const QString& scanRoot) const {
    const QString path = canonicalFolder(folder);
    if (path.isEmpty()) {
        return std::nullopt;
    }
    const QString root = canonicalFolder(scanRoot);
    const bool isBelow = !root.isEmpty() && path.startsWith(root.endsWith(u'/') ? root : root + u'/');
    const int depth = isBelow ? static_cast<int>(StackDetector::relativeUp(path, root).count(u".."_s)) : 1;

    const auto walked = walkFolders({path, std::min(depth, deepestListed + 1), skipNames, nullptr, 1});
    const auto node = walked ? TreeBuilder(*this, **walked, path, nullptr).node(**walked) : std::nullopt;
    return node ? node->project : std::nullopt;
}

} // namespace orv
