#pragma once

#include "OrvCore/FileStamp.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QThreadPool>
#include <QTimer>

namespace orv {

/// Notices that HEAD, the index, a ref or what is in progress changed in one of a few repositories, whoever did it.
/// Changes of the work tree alone are not noticed. Lives on the main thread, and looks at files on another one; costs
/// nothing while nothing happens.
class RepositoryWatch : public QObject {
    Q_OBJECT
public:
    explicit RepositoryWatch(QObject* parent = nullptr);
    ~RepositoryWatch() override;

    /// Folders that are no repositories are left out. Those that are watched already stay so. What changes from this
    /// call on is told.
    void setRepositories(const QStringList& folders);
    /// Those that are watched; a new one is not at once.
    [[nodiscard]] QStringList repositories() const;
    /// Whether nothing is left to be looked at until something changes.
    [[nodiscard]] bool isIdle() const { return !m_isLooking && m_due.isEmpty(); }

Q_SIGNALS:
    /// A burst of changes is told once.
    void changed(const QString& repository);

private:
    struct Watched {
        QStringList folders;             ///< that tell of changes; where it would come back when it is no repository
        QHash<QString, FileStamp> state; ///< by path; empty before the first look, and of no repository
        qint64 sinceMs = 0;              ///< when it was asked for, in milliseconds since 1970
        [[nodiscard]] bool hasChangedSince(qint64 ms) const;
        /// Whether a folder of theirs is another one than the one of its name before.
        [[nodiscard]] bool isOtherThan(const Watched& before) const;
    };
    using Looks = QHash<QString, Watched>; ///< by folder of the repository
    [[nodiscard]] static Watched look(const QString& repository);
    void lookSoon();
    void lookAtDue();
    void takeIn(const Looks& looks);
    void follow();
    void watchAll(const QStringList& folders);

    Looks m_repositories;
    QHash<QString, QSet<QString>> m_repositoriesOf; ///< by watched folder
    QSet<QString> m_due;                            ///< repositories to be looked at
    QSet<QString> m_refused;                        ///< folders that the system does not watch for us
    bool m_isLooking = false;
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
    QThreadPool m_pool;
};

} // namespace orv
