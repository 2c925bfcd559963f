#include "TermEngine/Pty.h"

#include "TermEngine/WorkerThread_p.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#ifdef __APPLE__
#include <util.h>
#else
#include <pty.h>
#include <sys/syscall.h>
#endif

namespace term {
namespace {

constexpr int lastSignal = 31;
constexpr int exitStatusWithoutProgram = 127;

/// NUL-terminated strings behind a terminated array of pointers, as execve takes them.
class StringArray {
public:
    explicit StringArray(const std::vector<std::string>& strings) : m_strings(strings) {
        m_pointers.reserve(m_strings.size() + 1);
        for (std::string& string : m_strings) {
            m_pointers.push_back(string.data());
        }
        m_pointers.push_back(nullptr);
    }
    [[nodiscard]] char* const* get() const { return m_pointers.data(); }

private:
    std::vector<std::string> m_strings;
    std::vector<char*> m_pointers;
};

/// All that the child needs, made before there is one: after fork, memory may be locked by a thread that is gone.
struct Prepared {
    std::string executable;
    StringArray argv;
    StringArray envp;
    const char* directory;
    sigset_t noSignals{};
    struct sigaction defaultAction{};

    explicit Prepared(const PseudoTerminalHelpers::Command& command)
        : executable(command.executable),
          argv(command.args),
          envp(command.env),
          directory(command.currentDirectory ? command.currentDirectory->c_str() : nullptr) {
        sigemptyset(&noSignals);
        sigemptyset(&defaultAction.sa_mask);
        defaultAction.sa_handler = SIG_DFL;
    }
};

/// Nothing above the standard streams reaches the program; what is open until then, such as the pipe of the error,
/// stays.
void closeOthersOnExec() {
#ifdef SYS_close_range
    constexpr unsigned closeOnExec = 1U << 2U; // CLOSE_RANGE_CLOEXEC of linux/close_range.h
    if (::syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, closeOnExec) == 0) {
        return;
    }
#endif
    constexpr int usualLimit = 4096;
    for (int fd = STDERR_FILENO + 1; fd < usualLimit; ++fd) {
        ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
}

/// What is typed is UTF-8, so that the erase character of a line that the kernel edits takes all bytes of a character.
void eraseWholeCharacters() {
#ifdef IUTF8
    termios settings{};
    if (::tcgetattr(STDIN_FILENO, &settings) == 0) {
        settings.c_iflag |= IUTF8;
        ::tcsetattr(STDIN_FILENO, TCSANOW, &settings);
    }
#endif
}

/// Runs between fork and exec: only what signal-safety(7) allows.
[[noreturn]] void becomeProgram(const Prepared& prepared, int errorPipe) {
    for (int signal = 1; signal <= lastSignal; ++signal) {
        if (signal != SIGKILL && signal != SIGSTOP) {
            ::sigaction(signal, &prepared.defaultAction, nullptr);
        }
    }
    if (::sigprocmask(SIG_SETMASK, &prepared.noSignals, nullptr) != 0) {
        ::_exit(exitStatusWithoutProgram);
    }
    if (prepared.directory != nullptr && ::chdir(prepared.directory) != 0) {
        // It stays where it is.
    }
    eraseWholeCharacters();
    closeOthersOnExec();
    ::execve(prepared.executable.c_str(), prepared.argv.get(), prepared.envp.get());
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(errorPipe, &error, sizeof error);
    ::_exit(exitStatusWithoutProgram);
}

/// Ends when the program runs, which closes the pipe, or when errno has come.
int readExecError(int fd) {
    int error = 0;
    ssize_t size = 0;
    do {
        size = ::read(fd, &error, sizeof error);
    } while (size < 0 && errno == EINTR);
    return size == sizeof error ? error : 0;
}

} // namespace

std::string LocalProcessError::text() const {
    static constexpr std::array words{
        "No memory to start the program", "No descriptors to start the program", "Could not make a process",
        "Could not run the program", "No thread to read from the program"};
    return std::string(words[static_cast<size_t>(reason)]) + ": " + std::generic_category().message(code);
}

std::expected<Pipe, int> Pipe::make(Mode mode) {
    std::array<int, 2> ends{};
#ifdef __linux__
    if (::pipe2(ends.data(), O_CLOEXEC | (mode == Mode::nonBlocking ? O_NONBLOCK : 0)) != 0) {
        return std::unexpected(errno);
    }
#else
    if (::pipe(ends.data()) != 0) {
        return std::unexpected(errno);
    }
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, mode == Mode::nonBlocking ? O_NONBLOCK : 0);
    }
#endif
    return Pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
}

std::expected<PseudoTerminalHelpers::Child, LocalProcessError> PseudoTerminalHelpers::fork(
    const Command& andExec, const winsize& desiredWindowSize) try {
    using enum LocalProcessError::Reason;
    const Prepared prepared(andExec);
    auto errorPipe = Pipe::make(Pipe::Mode::blocking);
    if (!errorPipe) {
        return std::unexpected(LocalProcessError{pipe, errorPipe.error()});
    }
    // Where the host runs without standard streams, the pipe may have got one of their numbers.
    UniqueFd writeEnd(::fcntl(errorPipe->writeEnd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    errorPipe->writeEnd.reset();
    if (!writeEnd.isValid()) {
        return std::unexpected(LocalProcessError{pipe, errno});
    }
    winsize size = desiredWindowSize;
    int master = -1;
    pid_t pid = -1;
    int forkError = 0;
    {
        const SignalBlock block; // no handler of the host may run in the child
        pid = ::forkpty(&master, nullptr, nullptr, &size);
        forkError = errno;
        if (pid == 0) {
            becomeProgram(prepared, writeEnd.get());
        }
    }
    if (pid < 0) {
        return std::unexpected(LocalProcessError{LocalProcessError::Reason::fork, forkError});
    }
    ::fcntl(master, F_SETFD, FD_CLOEXEC);
    writeEnd.reset();
    return Child{pid, UniqueFd(master), readExecError(errorPipe->readEnd.get())};
} catch (const std::bad_alloc&) {
    return std::unexpected(LocalProcessError{LocalProcessError::Reason::allocation, ENOMEM});
}

int PseudoTerminalHelpers::setWinSize(int masterDescriptor, const winsize& size) {
    return ::ioctl(masterDescriptor, TIOCSWINSZ, &size);
}

std::string PseudoTerminalHelpers::controlBytes(int masterDescriptor) {
    termios settings{};
    std::string bytes;
    if (::tcgetattr(masterDescriptor, &settings) != 0) {
        return bytes;
    }
    for (const int index :
         {VINTR, VQUIT, VERASE, VKILL, VEOF, VEOL, VEOL2, VSTART, VSTOP, VSUSP, VREPRINT, VDISCARD, VWERASE, VLNEXT}) {
        if (settings.c_cc[index] != _POSIX_VDISABLE) {
            bytes.push_back(static_cast<char>(settings.c_cc[index]));
        }
    }
    return bytes;
}

PseudoTerminalHelpers::AvailableBytes PseudoTerminalHelpers::availableBytes(int descriptor) {
    AvailableBytes available;
    available.result = ::ioctl(descriptor, FIONREAD, &available.count);
    return available;
}

} // namespace term
