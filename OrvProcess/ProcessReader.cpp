#include "OrvProcess/ProcessReader.h"

#include "OrvCore/Async.h"
#include "OrvCore/Pipe.h"
#include "OrvProcess/ProcessManager.h"

#include <QPointer>

#include <system_error>

namespace orv {

ProcessReader::ProcessReader(SpawnedProcess process, DeliveryTurns& turns, QObject* parent)
    : QObject(parent),
      m_process(std::move(process)),
      m_turns(turns),
      m_queue({.keptLines = ProcessManager::maxLogLines}) {
    ORV_ASSERT_MAIN_THREAD();
}

std::expected<void, SpawnError> ProcessReader::begin() {
    ORV_ASSERT_MAIN_THREAD();
    auto pipe = Pipe::make();
    SpawnError error;
    if (pipe) {
        m_abandonRead = std::move(pipe->readEnd);
        m_abandonWrite = std::move(pipe->writeEnd);
        try {
            m_thread = std::thread([this] { run(); });
            return {};
        } catch (const std::system_error& refused) {
            error = {refused.code().value()};
        }
    } else {
        error = pipe.error();
    }
    ProcessSpawner::discard(std::exchange(m_process.pid, -1));
    m_process.output.reset();
    return std::unexpected(error);
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
    // Not by closing it: a process that is being started elsewhere may hold a copy.
    if (m_abandonWrite.isValid()) {
        (void)!::write(m_abandonWrite.get(), "", 1);
    }
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
    m_exitCode = ProcessSpawner::pump(m_process, control, *this);
    m_process.output.reset();
    m_queue.finish();
    m_ended = true;
    QMetaObject::invokeMethod(this, &ProcessReader::requestTurn, Qt::QueuedConnection);
}

std::span<char> ProcessReader::room(size_t size) {
    return m_queue.room(static_cast<qsizetype>(size));
}

void ProcessReader::filled(size_t size) {
    m_queue.append(static_cast<qsizetype>(size));
    if (!m_announced.exchange(true)) {
        QMetaObject::invokeMethod(this, &ProcessReader::requestTurn, Qt::QueuedConnection);
    }
}

void ProcessReader::requestTurn() {
    m_turns.request(this);
}

bool ProcessReader::deliver(std::chrono::microseconds time) {
    ORV_ASSERT_MAIN_THREAD();
    const bool ended = m_ended;
    m_announced = false;
    const LineQueue::Taken taken = m_queue.take({.time = time});
    const QPointer<ProcessReader> self(this);
    if (!taken.lines.isEmpty() || taken.dropped > 0) {
        Q_EMIT linesRead(taken);
    }
    if (!self) {
        return false;
    }
    if (!taken.more && ended && m_thread.joinable()) {
        m_thread.join();
        Q_EMIT exited(m_exitCode);
    }
    return taken.more;
}

} // namespace orv
