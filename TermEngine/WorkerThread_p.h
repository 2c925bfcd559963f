#pragma once

#include <csignal>
#include <thread>
#include <utility>

#include <pthread.h>

namespace term {

/// Blocks every signal while it lives. A thread or a child that is made meanwhile starts with all of them blocked.
class SignalBlock {
public:
    SignalBlock() {
        sigset_t all;
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalBlock() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

private:
    sigset_t m_before{};
};

/// A thread on which no signal handler of the host ever runs. `name` has at most 15 characters. Throws
/// std::system_error when the system gives no more threads.
template <typename Body>
std::thread startWorkerThread(const char* name, Body body) {
    const SignalBlock block;
    return std::thread([name, body = std::move(body)]() mutable {
#ifdef __APPLE__
        ::pthread_setname_np(name);
#else
        ::pthread_setname_np(::pthread_self(), name);
#endif
        body();
    });
}

} // namespace term
