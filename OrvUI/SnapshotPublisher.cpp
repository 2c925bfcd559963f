#include "OrvUI/SnapshotPublisher.h"

#include "OrvCore/Async.h"
#include "OrvUI/Pool_p.h"

namespace orv {

using namespace Qt::StringLiterals;

SnapshotPublisher::SnapshotPublisher(QString directory, QObject* parent)
    : QObject(parent), m_directory(std::move(directory)) {
    m_pool.setObjectName(u"orv-snapshot"_s);
    m_pool.setMaxThreadCount(1);
}

SnapshotPublisher::~SnapshotPublisher() {
    flush();
}

void SnapshotPublisher::publish(const WidgetSnapshot& snapshot) {
    ORV_ASSERT_MAIN_THREAD();
    m_next = snapshot;
    if (!m_isWriting) {
        writeNext();
    }
}

void SnapshotPublisher::flush() {
    ORV_ASSERT_MAIN_THREAD();
    m_pool.waitForDone();
    if (!m_next || m_next == m_current) {
        return;
    }
    m_current = std::exchange(m_next, {});
    if (SharedContainer::write(*m_current, m_directory)) {
        Q_EMIT written();
    }
}

void SnapshotPublisher::writeNext() {
    const std::optional<WidgetSnapshot> snapshot = std::exchange(m_next, {});
    if (!snapshot || snapshot == m_current) {
        return;
    }
    m_current = snapshot;
    m_isWriting = true;
    const auto write = [snapshot = *snapshot, directory = m_directory] {
        return SharedContainer::write(snapshot, directory).has_value();
    };
    onFinished(runIn(m_pool, write), this, [this](bool isWritten) {
        m_isWriting = false;
        if (isWritten) {
            Q_EMIT written();
        } else {
            m_current.reset(); // the next one is another try, even an equal one
        }
        writeNext();
    });
}

} // namespace orv
