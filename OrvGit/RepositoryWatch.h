#pragma once

#include "OrvCore/FileStamp.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

namespace orv {

/// Notices that HEAD, the index, a ref or what is in progress changed in one of a few repositories, whoever did it.
/// Changes of the work tree alone are not noticed. Lives on the main thread; costs nothing while nothing happens.
class RepositoryWatch : public QObject {
    Q_OBJECT
public:
    explicit RepositoryWatch(QObject* parent = nullptr);

    /// Folders that are no repositories are left out. Those that are watched already stay so.
    void setRepositories(const QStringList& folders);
    [[nodiscard]] QStringList repositories() const { return m_repositories.keys(); }

Q_SIGNALS:
    /// A burst of changes is told once.
    void changed(const QString& repository);

private:
    struct Watched {
        QStringList folders;             ///< that tell of changes
        QHash<QString, FileStamp> state; ///< by path
    };
    [[nodiscard]] static Watched look(const QString& repository);
    void follow();
    void compare();

    QHash<QString, Watched> m_repositories; ///< by folder
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
};

} // namespace orv
