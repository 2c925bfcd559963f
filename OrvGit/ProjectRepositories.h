#pragma once

#include <QString>
#include <QStringList>

namespace orv {

struct GitRunner;

/// The top folder of the nearest work tree that the folder is or lies in; empty when there is none. git is not run.
[[nodiscard]] QString workTreeTop(const QString& folder);

/// The repositories that a project has to do with. Any thread.
///
/// Those in its folder are its own. The one that it lies in, as a package lies in a monorepo, is its own too when the
/// top of that is the scanned folder, lies in it or is the one just above it, is neither the user's home nor above
/// that, and does not ignore the project. One that is higher up was not made for projects: a home whose settings files
/// are under version control.
struct ProjectRepositories {
    QStringList own;   ///< the enclosing one first where it is one of them, then those inside, sorted
    QString enclosing; ///< the top that the folder lies below, its own or not; empty when there is none

    bool operator==(const ProjectRepositories&) const = default;
    /// Without a scanned folder no enclosing one is a project's own.
    [[nodiscard]] static ProjectRepositories of(
        const GitRunner& runner, const QString& projectRoot, const QString& scanRoot);
    /// Of many projects, in their order; git is asked once for all that lie in one repository. Ends early, and with
    /// fewer, when it is cancelled.
    [[nodiscard]] static QList<ProjectRepositories> ofEach(
        const GitRunner& runner, const QStringList& projectRoots, const QString& scanRoot);
    [[nodiscard]] bool ownsEnclosing() const { return !own.isEmpty() && own.first() == enclosing; }
};

/// The way from one folder down to the other; empty where that is the same one or does not lie below.
[[nodiscard]] QString wayBelow(const QString& folder, const QString& other);

} // namespace orv
