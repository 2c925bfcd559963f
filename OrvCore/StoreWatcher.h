#pragma once

#include "OrvCore/FileStamp.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

namespace orv {

/// Notices that another process, or this one, wrote, replaced or removed one of a few files. Lives on the main thread.
///
/// Costs nothing while nothing happens: it watches the files and their folders, and makes a folder that is missing.
/// While a folder can't be had, its nearest existing parent is watched.
class StoreWatcher : public QObject {
    Q_OBJECT
public:
    explicit StoreWatcher(const QStringList& filePaths, QObject* parent = nullptr);

Q_SIGNALS:
    /// What stands at the path is another file or has another content; a burst of writes is told once.
    void changed(const QString& filePath);

private:
    [[nodiscard]] QStringList wantedPaths() const;
    void watch();
    void compare();

    QHash<QString, FileStamp> m_stamps; ///< by file path
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
};

} // namespace orv
