#include "OrvProcess/LimitedCommand.h"

#include "OrvCore/Async.h"
#include "OrvProcess/ProcessReader.h"

#include <csignal>

namespace orv {
namespace {

class LimitedCommand : public ProcessReader {
public:
    LimitedCommand(SpawnedProcess process, std::chrono::milliseconds limit, DeliveryTurns& turns, QObject* parent)
        : ProcessReader(std::move(process), turns, parent) {
        m_promise.start();
        setPortWanted(false);
        m_timer.setSingleShot(true);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            ProcessSpawner::signalGroup(pid(), SIGKILL);
            abandon();
        });
        connect(this, &ProcessReader::exited, this, [this] {
            m_timer.stop();
            m_hasExited = true;
            deleteLater();
            m_promise.finish();
        });
        m_timer.start(limit);
    }
    ~LimitedCommand() override {
        if (!m_hasExited) {
            ProcessSpawner::signalGroup(pid(), SIGKILL);
        }
    }
    Q_DISABLE_COPY_MOVE(LimitedCommand)

    [[nodiscard]] QFuture<void> future() const { return m_promise.future(); }

private:
    QPromise<void> m_promise;
    QTimer m_timer{this};
    bool m_hasExited = false;
};

} // namespace

QFuture<void> runLimited(
    const QString& command, const QString& directory, std::chrono::milliseconds limit, DeliveryTurns& turns,
    QObject* owner) {
    ORV_ASSERT_MAIN_THREAD();
    auto process = ProcessSpawner::spawn(command, directory, {});
    if (!process) {
        return finishedFuture();
    }
    auto* running = new LimitedCommand(std::move(*process), limit, turns, owner);
    if (!running->begin()) {
        delete running;
        return finishedFuture();
    }
    return running->future();
}

} // namespace orv
