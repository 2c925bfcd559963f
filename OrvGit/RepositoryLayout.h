#pragma once

#include "OrvGit/GitModels.h"

#include <optional>

namespace orv {

/// Where a repository keeps what, read from its files (gitrepository-layout(5)); git is not run.
struct RepositoryLayout {
    enum class Kind {
        repository,
        linked, ///< a work tree of another repository, or a submodule: ".git" is a file
        bare,   ///< the folder is the repository and has no work tree
    };
    Kind kind = Kind::repository;
    QString folder;
    QString gitDirectory;    ///< of this work tree: HEAD, the index, what was begun
    QString commonDirectory; ///< of the whole repository: refs, configuration

    bool operator==(const RepositoryLayout&) const = default;
    /// Nothing when the folder itself is no repository; its parents are not looked at.
    [[nodiscard]] static std::optional<RepositoryLayout> of(const QString& folder);
    /// Whether another repository keeps it, as one of its own parts. What is linked otherwise is a further work tree.
    [[nodiscard]] bool isSubmodule() const;
    /// Whether HEAD is at a commit and not on a branch.
    [[nodiscard]] bool isDetached() const;
    /// Of a further work tree: the folder of its repository, which is the first work tree where there is one.
    [[nodiscard]] QString mainFolder() const;
    /// What was begun and is not finished, without the conflicts.
    [[nodiscard]] OperationState operation() const;
};

/// Of several repositories those that are pulled and pushed together: without submodules at the commit that their
/// outer repository names, which have no branch. All of them when there is no other one.
[[nodiscard]] QStringList repositoriesOnBranches(const QStringList& repositories);

} // namespace orv
