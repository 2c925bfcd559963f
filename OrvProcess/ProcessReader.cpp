#include "OrvProcess/ProcessReader.h"

#include "OrvCore/Async.h"
#include "OrvProcess/ProcessManager.h"

#include <QPointer>

#include <fcntl.h>

namespace orv {

ProcessReader::ProcessReader(SpawnedProcess process, QObject* parent)
    : QObject(parent), m_process(std::move(process)), m_queue({.keptLines = ProcessManager::maxLogLines}) {
    ORV_ASSERT_MAIN_THREAD();
    int ends[2];
    if (::pipe(ends) == 0) {
        m_abandonRead.reset(ends[0]);
        m_abandonWrite.reset(ends[1]);
        ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
        ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    }
    m_paceTimer.setSingleShot(true);
    m_paceTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_paceTimer, &QTimer::timeout, this, &ProcessReader::deliver);
    m_thread = std::thread([this] { run(); });
}

ProcessReader::~ProcessReader() {
    if (m_thread.joinable()) {
        abandon();
        m_thread.join();
    }
}

void ProcessReader::abandon() {
    ORV_ASSERT_MAIN_THREAD();
    m_queue.close();
    m_abandonWrite.reset();
}

void ProcessReader::setStopping() {
    ORV_ASSERT_MAIN_THREAD();
    m_stopping = true;
}

void ProcessReader::setPortWanted(bool wanted) {
    m_queue.setPortWanted(wanted);
}

void ProcessReader::run() {
    const ProcessSpawner::PumpControl control{
        .abandon = m_abandonRead.get(), .waitsForGroup = [this] { return m_stopping.load(); }};
    m_exitCode = ProcessSpawner::pump(m_process, control, [this](QByteArrayView bytes) {
        m_queue.append(bytes);
        announce();
    });
    m_process.output.reset();
    m_queue.finish();
    m_ended = true;
    QMetaObject::invokeMethod(this, &ProcessReader::deliver, Qt::QueuedConnection);
}

void ProcessReader::announce() {
    if (!m_announced.exchange(true)) {
        QMetaObject::invokeMethod(this, &ProcessReader::deliver, Qt::QueuedConnection);
    }
}

void ProcessReader::deliver() {
    const bool ended = m_ended;
    if (!ended && m_sinceDelivery.isValid()) {
        if (const std::chrono::milliseconds since(m_sinceDelivery.elapsed()); since < pace) {
            m_paceTimer.start(pace - since);
            return;
        }
    }
    m_announced = false;
    const LineQueue::Taken taken = m_queue.take(LineQueue::Slice{});
    m_sinceDelivery.start();
    const QPointer<ProcessReader> self(this);
    if (!taken.lines.isEmpty() || taken.dropped > 0) {
        Q_EMIT linesRead(taken);
    }
    if (!self) {
        return;
    }
    if (taken.more) {
        announce();
    } else if (ended && m_thread.joinable()) {
        m_thread.join();
        Q_EMIT exited(m_exitCode);
    }
}

} // namespace orv
