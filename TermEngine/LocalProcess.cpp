#include "TermEngine/LocalProcess.h"

#include "TermEngine/LocalProcessChildReaper.h"
#include "TermEngine/ProcessExitSource.h"
#include "TermEngine/TerminalEnvironment.h"

#include <cerrno>
#include <csignal>
#include <new>
#include <system_error>
#include <utility>

namespace term {

/// One child of a process, which may have several one after the other. Its pipeline keeps it as long as it has threads.
class LocalProcess::Session : public TerminalIOSink, public std::enable_shared_from_this<Session> {
public:
    Session(pid_t pid, std::weak_ptr<LocalProcess> owner, const LocalProcess& settings)
        : m_reaper(pid),
          m_exitSource(pid),
          m_owner(std::move(owner)),
          m_delegate(settings.m_delegate),
          m_queue(settings.m_configuration.queue),
          m_directDelivery(settings.m_configuration.directDelivery) {}

    [[nodiscard]] pid_t pid() const { return m_reaper.pid(); }
    void signal(int number) { m_reaper.signal(number); }
    std::optional<int> collect() { return m_reaper.wait(); }

    [[nodiscard]] static TerminalIOPipeline::Process watched(const std::shared_ptr<Session>& self) {
        return {
            .exitDescriptor = self->m_exitSource.descriptor(),
            .hasExited = [self] { return self->m_exitSource.hasFired(); },
            .exited = [self] { self->m_reaper.wait(); },
            .kill = [self] { self->signal(SIGKILL); }};
    }

    void received(std::span<const uint8_t> bytes, DeliveryToken token) override {
        auto deliver = [self = shared_from_this(), bytes, token = std::move(token)] {
            const auto owner = self->m_owner.lock();
            if (const auto delegate = self->m_delegate.lock(); owner && delegate) {
                delegate->dataReceived(bytes);
            }
        };
        if (m_directDelivery) {
            deliver();
        } else {
            m_queue->post(std::move(deliver));
        }
    }

    void reachedEOF() override { reportExit(); }

    void reportExit() {
        m_queue->post([self = shared_from_this(), status = collect()] {
            if (const auto owner = self->m_owner.lock()) {
                owner->childDidExit(*self, status);
            }
        });
    }

private:
    LocalProcessChildReaper m_reaper;
    const ProcessExitSource m_exitSource;
    const std::weak_ptr<LocalProcess> m_owner;
    const std::weak_ptr<LocalProcessDelegate> m_delegate;
    const std::shared_ptr<DeliveryQueue> m_queue;
    const bool m_directDelivery;
};

/// A child on its way to be watched.
struct LocalProcess::Launch {
    pid_t pid = 0;
    std::shared_ptr<Session> session{};

    /// Nobody would read from it, nor hear of its end.
    void end() const {
        if (session) {
            session->signal(SIGKILL);
            session->collect();
        } else if (pid != 0) {
            LocalProcessChildReaper reaper(pid);
            reaper.signal(SIGKILL);
            reaper.wait();
        }
    }
};

std::shared_ptr<LocalProcess> LocalProcess::create(
    std::weak_ptr<LocalProcessDelegate> delegate, Configuration configuration) {
    if (!configuration.queue) {
        try {
            configuration.queue = SerialQueue::shared();
        } catch (const std::system_error&) {
            // startProcess tells of it.
        }
    }
    return std::shared_ptr<LocalProcess>(new LocalProcess(std::move(delegate), std::move(configuration)));
}

LocalProcess::LocalProcess(std::weak_ptr<LocalProcessDelegate> delegate, Configuration configuration)
    : m_delegate(std::move(delegate)), m_configuration(std::move(configuration)) {}

LocalProcess::~LocalProcess() {
    terminate();
    // The pipeline's end goes on for the child: it kills what is still there after a while, and collects it.
}

void LocalProcess::startProcess(const Program& program) {
    const std::scoped_lock startLock(m_startMutex);
    if (running()) {
        return;
    }
    if (!m_configuration.queue) {
        finishLaunchFailure({LocalProcessError::Reason::thread, EAGAIN});
        return;
    }
    Launch made;
    std::optional<LocalProcessError> error;
    try {
        error = launch(program, made);
    } catch (const std::bad_alloc&) {
        error = {LocalProcessError::Reason::allocation, ENOMEM};
    } catch (const std::system_error& failure) {
        const int code = failure.code().value();
        const bool isFull = code == EMFILE || code == ENFILE;
        error = {isFull ? LocalProcessError::Reason::pipe : LocalProcessError::Reason::thread, code};
    }
    if (error) {
        made.end();
        finishLaunchFailure(*error);
    }
}

/// `made` is what there is of the child, also when an exception leaves nobody to care for it.
std::optional<LocalProcessError> LocalProcess::launch(const Program& program, Launch& made) {
    const auto delegate = m_delegate.lock();
    const winsize size = delegate ? delegate->getWindowSize() : winsize{25, 80, 0, 0};
    PseudoTerminalHelpers::Command command{
        program.executable,
        {program.execName.value_or(program.executable)},
        program.environment ? *program.environment : getEnvironmentVariables("xterm-256color", TrueColor::yes),
        program.currentDirectory};
    command.args.insert(command.args.end(), program.args.begin(), program.args.end());
    auto child = PseudoTerminalHelpers::fork(command, size);
    if (!child) {
        return child.error();
    }
    made.pid = child->pid;
    const auto session = std::make_shared<Session>(child->pid, weak_from_this(), *this);
    made.session = session;
    if (child->execError != 0) {
        finishLaunchFailure({LocalProcessError::Reason::exec, child->execError});
        m_state.with([&](State& state) {
            state.phase = LocalProcessPhase::exited;
            state.session = session;
            state.pipeline.reset();
        });
        session->reportExit();
        return {};
    }
    // The exit report can't be early: it is for this session, which has to be known before.
    m_state.with([&](State& state) {
        state.pipeline =
            std::make_shared<TerminalIOPipeline>(std::move(child->masterFd), session, Session::watched(session));
        state.phase = LocalProcessPhase::running;
        state.session = session;
    });
    return {};
}

void LocalProcess::finishLaunchFailure(const LocalProcessError& error) {
    if (!m_configuration.onLaunchFailure) {
        return;
    }
    if (!m_configuration.queue) {
        m_configuration.onLaunchFailure(error);
    } else {
        m_configuration.queue->post([notify = m_configuration.onLaunchFailure, error] { notify(error); });
    }
}

void LocalProcess::childDidExit(const Session& session, std::optional<int> status) {
    auto ended = m_state.with([&](State& state) {
        std::shared_ptr<TerminalIOPipeline> pipeline;
        // Where a host has started another one meanwhile, as it may when it hears of a failed launch, that one stays.
        if (state.session.get() == &session) {
            state.phase = LocalProcessPhase::exited;
            pipeline = std::move(state.pipeline);
            state.lastCounters = pipeline ? pipeline->counters() : LocalProcessCounters{};
            state.endSignal = LocalProcessChildReaper::endSignal(status);
        }
        return pipeline;
    });
    ended.reset();
    if (const auto delegate = m_delegate.lock()) {
        delegate->processTerminated(*this, LocalProcessChildReaper::exitCode(status));
    }
}

std::shared_ptr<TerminalIOPipeline> LocalProcess::pipeline() const {
    return m_state.with([](const State& state) { return state.pipeline; });
}

TerminalIOPipeline::SendResult LocalProcess::send(
    std::span<const uint8_t> data, TerminalIOPipeline::SendOrigin origin) {
    const auto current = pipeline();
    return current ? current->send(data, origin) : TerminalIOPipeline::SendResult::closed;
}

void LocalProcess::terminate() {
    m_state.with([](State& state) {
        if (state.phase == LocalProcessPhase::running) {
            state.session->signal(SIGTERM);
        }
    });
}

void LocalProcess::updateWindowSize(const winsize& size) {
    if (const auto current = pipeline()) {
        current->setWinSize(size);
    }
}

bool LocalProcess::running() const {
    return phase() == LocalProcessPhase::running;
}

LocalProcessPhase LocalProcess::phase() const {
    return m_state.with([](const State& state) { return state.phase; });
}

pid_t LocalProcess::shellPid() const {
    return m_state.with([](const State& state) { return state.session ? state.session->pid() : 0; });
}

int LocalProcess::childfd() const {
    const auto current = pipeline();
    return current ? current->masterDescriptor() : -1;
}

std::optional<int> LocalProcess::endSignal() const {
    return m_state.with([](const State& state) { return state.endSignal; });
}

pid_t LocalProcess::foregroundProcessGroup() const {
    const auto current = pipeline();
    return current ? current->foregroundProcessGroup() : -1;
}

LocalProcessCounters LocalProcess::counters() const {
    return m_state.with(
        [](const State& state) { return state.pipeline ? state.pipeline->counters() : state.lastCounters; });
}

} // namespace term
