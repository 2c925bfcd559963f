#include "OrvCore/ChildProcess.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

extern char** environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

namespace orv {
namespace {

std::vector<char*> pointers(std::vector<QByteArray>& texts) {
    std::vector<char*> result;
    for (QByteArray& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

class FileActions {
public:
    explicit FileActions(const ChildProcess::Request& request) {
        ::posix_spawn_file_actions_init(&m_actions);
        if (request.input >= 0) {
            ::posix_spawn_file_actions_adddup2(&m_actions, request.input, STDIN_FILENO);
        } else {
            ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        }
        ::posix_spawn_file_actions_adddup2(&m_actions, request.output, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&m_actions, request.errors, STDERR_FILENO);
        ::posix_spawn_file_actions_addchdir_np(&m_actions, QFile::encodeName(request.directory).constData());
#ifdef Q_OS_LINUX
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
#endif
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    Q_DISABLE_COPY_MOVE(FileActions)

    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions{};
};

class Attributes {
public:
    Attributes() {
        ::posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
#ifdef Q_OS_MACOS
        constexpr int systemFlags = POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
        constexpr int systemFlags = 0;
#endif
        constexpr int flags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | systemFlags;
        ::posix_spawnattr_setflags(&m_attributes, static_cast<short>(flags));
    }
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }
    Q_DISABLE_COPY_MOVE(Attributes)

    [[nodiscard]] const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

} // namespace

QString SpawnError::text() const {
    return QString::fromLocal8Bit(std::strerror(code));
}

std::expected<pid_t, SpawnError> ChildProcess::spawn(Request request) {
    pid_t pid = -1;
    const int error = ::posix_spawn(
        &pid, request.program.constData(), FileActions(request).get(), Attributes().get(),
        pointers(request.arguments).data(), pointers(request.variables).data());
    if (error != 0) {
        return std::unexpected(SpawnError{error});
    }
    return pid;
}

std::vector<QByteArray> ChildProcess::environment(
    const EnvironmentEntries& entries, const std::vector<QByteArray>& removed) {
    std::vector<QByteArray> merged;
    std::vector<QByteArray> hidden = removed;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        hidden.push_back(entry.key().toLocal8Bit());
        merged.push_back(hidden.back() + '=' + entry.value().toLocal8Bit());
    }
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        const std::string_view text(*variable);
        const std::string_view name = text.substr(0, text.find('='));
        const bool isHidden = std::ranges::any_of(
            hidden, [name](const QByteArray& other) { return name == std::string_view(other.constData()); });
        if (!isHidden) {
            merged.emplace_back(*variable);
        }
    }
    return merged;
}

bool ChildProcess::signalGroup(pid_t group, int signal) {
    return group > 1 && (::killpg(group, signal) == 0 || errno == EPERM);
}

bool ChildProcess::groupExists(pid_t group) {
    return signalGroup(group, 0);
}

} // namespace orv
