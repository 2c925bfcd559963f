#include "OrvCore/ProjectScanner.h"

#include "OrvCore/CommandBuilder.h"
#include "OrvCore/FolderWalk_p.h"

#include <QDir>
#include <QFileInfo>

#include <thread>

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
    TreeBuilder(const ProjectScanner& scanner, const WalkedFolder& root, const QString& rootPath)
        : m_scanner(scanner), m_root(root), m_rootPath(rootPath) {}

    /// Absent when nothing runs in or below the folder.
    [[nodiscard]] std::optional<ProjectNode> node(const WalkedFolder& folder) const {
        if (folder.isRepeated) {
            return std::nullopt;
        }
        if (!folder.detection.stacks.isEmpty()) {
            Collected collected;
            collect(folder, 0, collected);
            ProjectNode made = projectNode(folder, std::move(collected.targets));
            for (const WalkedFolder* nested : collected.nested) {
                append(made.children, *nested);
            }
            return made;
        }
        if (folder.depth > deepestListed) {
            return std::nullopt;
        }
        if (folder.depth > 0 && mayGather(folder, 0)) {
            Collected collected;
            collect(folder, 0, collected);
            if (!collected.targets.isEmpty()) {
                return projectNode(folder, std::move(collected.targets));
            }
        }
        QList<ProjectNode> children;
        for (const WalkedFolder& child : folder.children) {
            append(children, child);
        }
        if (children.isEmpty()) {
            return std::nullopt;
        }
        return ProjectNode{.path = path(folder), .name = name(folder), .project = {}, .children = std::move(children)};
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

    void collect(const WalkedFolder& folder, int relativeDepth, Collected& collected) const {
        collected.targets += targets(folder, relativeDepth == 0 ? Fallbacks::allowed : Fallbacks::refused);
        if (!mayDescend(folder, relativeDepth)) {
            return;
        }
        for (const WalkedFolder& child : folder.children) {
            if (child.isRepeated) {
                continue;
            }
            if (child.hasRepository) {
                collected.nested.push_back(&child);
            } else {
                collect(child, relativeDepth + 1, collected);
            }
        }
    }

    /// Whether no folder that a project here would gather from holds ".git".
    [[nodiscard]] static bool mayGather(const WalkedFolder& folder, int relativeDepth) {
        return !mayDescend(folder, relativeDepth) ||
               std::ranges::all_of(folder.children, [&](const WalkedFolder& child) {
                   return child.isRepeated || (!child.hasRepository && mayGather(child, relativeDepth + 1));
               });
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
                target.command = CommandBuilder::command(all, stack.kind, directory, stack.framework, u"macos"_s);
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

    const ProjectScanner& m_scanner;
    const WalkedFolder& m_root;
    const QString& m_rootPath;
};

/// The one spelling of an existing folder; empty when there is none.
QString canonicalFolder(const QString& folder) {
    const QFileInfo info(folder);
    return !folder.isEmpty() && info.isDir() ? info.canonicalFilePath() : QString();
}

int coreCount() {
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

} // namespace

QSet<QString> ProjectScanner::defaultSkips() {
    return {u"node_modules"_s, u".git"_s,  u"build"_s,       u"dist"_s,        u".next"_s, u".dart_tool"_s,
            u"venv"_s,         u".venv"_s, u"OrvLauncher"_s, u"__pycache__"_s, u"Pods"_s,  u".gradle"_s};
}

QList<Project> ProjectScanner::scan(const QString& root, const ScanCancellation* cancellation) const {
    QList<Project> projects;
    for (const ProjectNode& node : scanTree(root, cancellation)) {
        projects += node.apps();
    }
    return projects;
}

QList<ProjectNode> ProjectScanner::scanTree(const QString& root, const ScanCancellation* cancellation) const {
    const QString path = canonicalFolder(root);
    if (path.isEmpty()) {
        return {};
    }
    const auto walked = walkFolders({path, 0, skipNames, cancellation, coreCount()});
    if (!walked) {
        return {};
    }
    auto node = TreeBuilder(*this, *walked, path).node(*walked);
    if (!node) {
        return {};
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
    const auto node = walked ? TreeBuilder(*this, *walked, path).node(*walked) : std::nullopt;
    return node ? node->project : std::nullopt;
}

} // namespace orv
