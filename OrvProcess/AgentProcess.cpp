#include "OrvProcess/AgentProcess.h"

#include "OrvCore/AgentCommandBuilder.h"
#include "OrvCore/Async.h"
#include "OrvCore/Pipe.h"
#include "OrvProcess/ChildRecords.h"

#include <QLocale>
#include <QPointer>
#include <QTimer>

#include <csignal>
#include <system_error>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr qsizetype waitingLimitBytes = 8 * 1024 * 1024;
/// What one turn of the main thread takes, and when the next one comes where more is waiting.
constexpr qsizetype sliceLines = 512;
constexpr qsizetype sliceBytes = 1024 * 1024;
constexpr auto pace = 16ms;

qsizetype costBytes(const AgentLine& line) {
    constexpr qsizetype ofRecord = 128;
    qsizetype cost = ofRecord;
    for (const AgentEvent& event : line.events) {
        if (const auto* text = std::get_if<AgentText>(&event)) {
            cost += text->text.size();
        } else if (const auto* result = std::get_if<AgentResult>(&event)) {
            cost += result->summary.size();
        }
        cost += ofRecord;
    }
    return cost;
}

/// A line of text in the output of any agent.
QString cutNote(qsizetype limitBytes) {
    return u"[OrvLauncher keeps the first %1 of what an agent prints. What came after is not here.]"_s.arg(
        QLocale::c().formattedDataSize(limitBytes, 0));
}

EnvironmentEntries environment(const AgentProcess::Request& request) {
    EnvironmentEntries entries = ChildRecords::environment(request.mark);
    // A variable ends at the first zero character.
    entries.insert(AgentCommandBuilder::taskVariable, QString(request.task).remove(QChar(u'\0')));
    return entries;
}

} // namespace

std::expected<std::unique_ptr<AgentProcess>, SpawnError> AgentProcess::start(const Request& request) {
    ORV_ASSERT_MAIN_THREAD();
    auto pipe = Pipe::make();
    if (!pipe) {
        return std::unexpected(pipe.error());
    }
    auto process = ProcessSpawner::spawn(request.command, request.directory, environment(request));
    if (!process) {
        return std::unexpected(process.error());
    }
    std::unique_ptr<AgentProcess> agent(new AgentProcess(std::move(*process), request));
    agent->m_abandonRead = std::move(pipe->readEnd);
    agent->m_abandonWrite = std::move(pipe->writeEnd);
    try {
        agent->m_thread = std::thread([reader = agent.get()] { reader->run(); });
    } catch (const std::system_error& refused) {
        ProcessSpawner::discard(agent->pid());
        return std::unexpected(SpawnError{refused.code().value()});
    }
    return agent;
}

AgentProcess::AgentProcess(SpawnedProcess process, const Request& request)
    : m_process(std::move(process)), m_stream(request.kind), m_fileLimitBytes(request.outputFileLimitBytes) {
    if (!request.outputFile.isEmpty()) {
        m_file = std::make_unique<QFile>(request.outputFile);
        if (!m_file->open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            m_file.reset();
        }
    }
}

AgentProcess::~AgentProcess() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::scoped_lock lock(m_mutex);
        m_closed = true;
        if (!m_isReaped) {
            ProcessSpawner::signalGroup(pid(), SIGKILL);
        }
    }
    m_taken.notify_all();
    // Not by closing it: a process that is being started elsewhere may hold a copy.
    (void)!::write(m_abandonWrite.get(), "", 1);
    m_thread.join();
}

void AgentProcess::stop(std::chrono::milliseconds grace) {
    ORV_ASSERT_MAIN_THREAD();
    const std::scoped_lock lock(m_mutex);
    if (!m_isReaped && !m_stopping.exchange(true)) {
        ProcessSpawner::terminateGroup(pid(), grace);
    }
}

void AgentProcess::kill() {
    ORV_ASSERT_MAIN_THREAD();
    const std::scoped_lock lock(m_mutex);
    if (!m_isReaped) {
        m_stopping = true;
        ProcessSpawner::signalGroup(pid(), SIGKILL);
    }
}

void AgentProcess::run() {
    const ProcessSpawner::PumpControl control{
        .abandon = m_abandonRead.get(), .waitsForGroup = [this] { return m_stopping.load(); }, .endsWithChild = true};
    const int code = ProcessSpawner::pump(m_process, control, *this);
    {
        const std::scoped_lock lock(m_mutex);
        m_isReaped = true;
    }
    push(m_stream.finish(), code);
}

std::span<char> AgentProcess::room(size_t size) {
    m_room.resize(size);
    return m_room;
}

void AgentProcess::filled(size_t size) {
    const QByteArrayView bytes(m_room.data(), static_cast<qsizetype>(size));
    if (m_file) {
        keep(bytes);
    }
    push(m_stream.append(bytes));
}

void AgentProcess::keep(QByteArrayView bytes) {
    const qsizetype room = m_fileLimitBytes - m_fileBytes;
    const bool isTooMuch = bytes.size() > room;
    if (isTooMuch) {
        // Half a line of the stream format is no use.
        bytes = bytes.first(bytes.first(room).lastIndexOf('\n') + 1);
    }
    m_fileBytes += bytes.size();
    if (m_file->write(bytes.data(), bytes.size()) != bytes.size()) {
        m_file.reset(); // a full disk is no reason to disturb the agent
    } else if (isTooMuch) {
        m_file->write('\n' + cutNote(m_fileLimitBytes).toUtf8() + '\n');
        m_file.reset();
    }
}

void AgentProcess::push(QList<AgentLine> lines, std::optional<int> exitCode) {
    std::unique_lock lock(m_mutex);
    m_taken.wait(lock, [this] { return m_closed || m_waitingBytes < waitingLimitBytes; });
    for (AgentLine& line : lines) {
        m_waitingBytes += costBytes(line);
        m_lines.push_back(std::move(line));
    }
    m_exitCode = exitCode;
    if (!std::exchange(m_announced, true)) {
        QMetaObject::invokeMethod(this, &AgentProcess::deliver, Qt::QueuedConnection);
    }
}

void AgentProcess::deliver() {
    QList<AgentLine> taken;
    bool more = false;
    bool hasEnded = false;
    {
        const std::scoped_lock lock(m_mutex);
        for (qsizetype bytes = 0; !m_lines.empty() && taken.size() < sliceLines && bytes < sliceBytes;) {
            const qsizetype cost = costBytes(m_lines.front());
            bytes += cost;
            m_waitingBytes -= cost;
            taken.append(std::move(m_lines.front()));
            m_lines.pop_front();
        }
        more = !m_lines.empty();
        m_announced = more;
        hasEnded = m_exitCode.has_value();
    }
    m_taken.notify_all();
    const QPointer<AgentProcess> self(this);
    if (!taken.isEmpty() || !hasEnded) {
        Q_EMIT linesRead(taken);
    }
    if (!self) {
        return;
    }
    if (more) {
        // What is left of one that has ended is bounded.
        QTimer::singleShot(hasEnded ? 0ms : pace, this, &AgentProcess::deliver);
    } else if (hasEnded && m_thread.joinable()) {
        m_thread.join();
        Q_EMIT exited(*m_exitCode);
    }
}

} // namespace orv
