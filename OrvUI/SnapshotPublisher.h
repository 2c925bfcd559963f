#pragma once

#include "OrvCore/WidgetSnapshot.h"

#include <QObject>
#include <QThreadPool>

namespace orv {

/// Writes widget snapshots off the main thread, in order, one at a time: of those that come during a write only the
/// last is written, and one equal to what was written last is not. Lives on the main thread.
class SnapshotPublisher : public QObject {
    Q_OBJECT
public:
    explicit SnapshotPublisher(QString directory, QObject* parent = nullptr);
    ~SnapshotPublisher() override;

    void publish(const WidgetSnapshot& snapshot);
    /// Blocks until the last published snapshot is on disk.
    void flush();

Q_SIGNALS:
    /// Another content is on disk.
    void written();

private:
    void writeNext();

    const QString m_directory;
    QThreadPool m_pool;
    std::optional<WidgetSnapshot> m_next;    ///< waits for the write that is under way
    std::optional<WidgetSnapshot> m_current; ///< on disk, or on its way there
    bool m_isWriting = false;
};

} // namespace orv
