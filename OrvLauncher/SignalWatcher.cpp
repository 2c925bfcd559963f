#include "SignalWatcher.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace orv {
namespace {

constexpr std::array stopSignals{SIGINT, SIGTERM, SIGHUP};
std::atomic<int> pipeToLoop = -1;
std::atomic<bool> asked = false;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

extern "C" void passToLoop(int) {
    const int saved = errno;
    asked.store(true);
    // A full pipe holds more than enough of them already.
    [[maybe_unused]] const ssize_t written = ::write(pipeToLoop.load(), "!", 1);
    errno = saved;
}

} // namespace

SignalWatcher::SignalWatcher(QObject* parent) : QObject(parent) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe(ends.data()) != 0) {
        return; // without a pipe the signals keep their usual effect
    }
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
    m_readEnd.reset(ends[0]);
    m_writeEnd.reset(ends[1]);
    pipeToLoop.store(ends[1]);

    auto* notifier = new QSocketNotifier(m_readEnd.get(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (::read(m_readEnd.get(), &byte, 1) == 1) {
            Q_EMIT stopAsked();
        }
    });
    for (const int number : stopSignals) {
        struct sigaction action{};
        ::sigaction(number, nullptr, &action);
        if (number == SIGHUP && action.sa_handler == SIG_IGN) {
            continue;
        }
        action = {};
        action.sa_handler = passToLoop;
        ::sigaction(number, &action, nullptr); // no SA_RESTART: a blocked write is to return
    }
}

SignalWatcher::~SignalWatcher() {
    if (!m_writeEnd.isValid()) {
        return;
    }
    for (const int number : stopSignals) {
        struct sigaction action{};
        ::sigaction(number, nullptr, &action);
        if (action.sa_handler == passToLoop) {
            ::signal(number, SIG_DFL);
        }
    }
    pipeToLoop.store(-1);
}

bool SignalWatcher::wasAskedToStop() {
    return asked.load();
}

} // namespace orv
