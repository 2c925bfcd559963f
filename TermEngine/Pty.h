#pragma once

#include "TermEngine/UniqueFd.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

#include <sys/ioctl.h>
#include <sys/types.h>

namespace term {

/// Why a launch failed.
struct LocalProcessError {
    enum class Reason : uint8_t {
        allocation, ///< no memory for the arguments, or to read from it
        pipe,       ///< no descriptors left, also to read from it
        fork,       ///< no pseudo-terminal or no process
        exec,       ///< the program can't be run; its process has ended with status 127
        thread,     ///< no thread to read from it
    };
    Reason reason = Reason::fork;
    int code = 0; ///< errno

    /// "Could not run the program: No such file or directory"
    [[nodiscard]] std::string text() const;
    bool operator==(const LocalProcessError&) const = default;
};

/// What a pseudo-terminal takes of system calls.
struct PseudoTerminalHelpers {
    struct Command {
        std::string executable;                      ///< a path; PATH is not searched
        std::vector<std::string> args;               ///< with the program's name as the first
        std::vector<std::string> env;                ///< "NAME=value" each
        std::optional<std::string> currentDirectory; ///< where it can't be entered, the inherited one stays
    };
    struct Child {
        pid_t pid = -1;
        UniqueFd masterFd; ///< close-on-exec
        int execError = 0; ///< errno of execve when it failed; the child then ends, or has ended, with status 127
    };
    struct AvailableBytes {
        int result = 0;
        int count = 0;
    };

    /// Starts a child in a session of its own, on the slave side of a new pseudo-terminal of that size. Returns once
    /// the program runs or has failed to, so whoever asks next sees what came of it.
    [[nodiscard]] static std::expected<Child, LocalProcessError> fork(
        const Command& andExec, const winsize& desiredWindowSize);
    /// The result of ioctl TIOCSWINSZ.
    static int setWinSize(int masterDescriptor, const winsize& size);
    /// The characters that the line discipline acts upon, such as those for interrupt and erase; empty where they can't
    /// be asked for.
    [[nodiscard]] static std::string controlBytes(int masterDescriptor);
    /// The result of ioctl FIONREAD and what it counted.
    [[nodiscard]] static AvailableBytes availableBytes(int descriptor);
};

/// A pipe of which both ends are close-on-exec, and `writeEnd` and `readEnd` are non-blocking where wanted.
struct Pipe {
    UniqueFd readEnd;
    UniqueFd writeEnd;

    enum class Mode : uint8_t { blocking, nonBlocking };
    [[nodiscard]] static std::expected<Pipe, int> make(Mode mode);
};

} // namespace term
