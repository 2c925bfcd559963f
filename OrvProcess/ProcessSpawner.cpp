#include "OrvProcess/ProcessSpawner.h"

#include "OrvCore/LoginShell.h"
#include "OrvProcess/Pipe_p.h"

#include <QFile>
#include <QProcessEnvironment>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <spawn.h>

extern char** environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// This process's environment with `entries` over it, as "NAME=value" each.
std::vector<QByteArray> mergedEnvironment(const EnvironmentEntries& entries) {
    std::vector<QByteArray> merged;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        merged.push_back(entry.key().toLocal8Bit() + '=' + entry.value().toLocal8Bit());
    }
    const auto given = merged;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        const std::string_view text(*variable);
        const std::string_view assignment = text.substr(0, text.find('=') + 1);
        const bool isGiven = std::any_of(given.begin(), given.end(), [assignment](const QByteArray& entry) {
            return !assignment.empty() && std::string_view(entry.constData()).starts_with(assignment);
        });
        if (!isGiven) {
            merged.emplace_back(*variable);
        }
    }
    return merged;
}

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
    FileActions(const QString& directory, int writeEnd) {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&m_actions, writeEnd, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&m_actions, writeEnd, STDERR_FILENO);
        ::posix_spawn_file_actions_addchdir_np(&m_actions, QFile::encodeName(directory).constData());
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

std::expected<SpawnedProcess, SpawnError> ProcessSpawner::spawn(
    const QString& command, const QString& directory, const EnvironmentEntries& environment) {
    auto pipe = Pipe::make();
    if (!pipe) {
        return std::unexpected(pipe.error());
    }
    const QByteArray shell = QFile::encodeName(loginShell());
    std::vector<QByteArray> arguments{shell, "-lc", command.toUtf8()};
    std::vector<QByteArray> variables = mergedEnvironment(environment);
    pid_t pid = -1;
    const int error = ::posix_spawn(
        &pid, shell.constData(), FileActions(directory, pipe->writeEnd.get()).get(), Attributes().get(),
        pointers(arguments).data(), pointers(variables).data());
    if (error != 0) {
        return std::unexpected(SpawnError{error});
    }
    return SpawnedProcess{pid, std::move(pipe->readEnd)};
}

EnvironmentEntries ProcessSpawner::pipeEnvironment(const QProcessEnvironment& inherited) {
    EnvironmentEntries entries{{u"PYTHONUNBUFFERED"_s, u"1"_s}};
    // Tools that know one of these need not know the others: a "no" in any of them holds for all.
    const bool isRefused = std::ranges::any_of(
        std::array{u"FORCE_COLOR"_s, u"CLICOLOR"_s, u"CLICOLOR_FORCE"_s}, [&inherited](const QString& name) {
            const QString value = inherited.value(name);
            return value == "0"_L1 || value.compare("false"_L1, Qt::CaseInsensitive) == 0;
        });
    // no-color.org: an empty value does not count.
    if (inherited.value(u"NO_COLOR"_s).isEmpty() && !isRefused) {
        entries.insert(u"FORCE_COLOR"_s, u"1"_s);
        entries.insert(u"CLICOLOR_FORCE"_s, u"1"_s);
    }
    entries.removeIf([&inherited](const auto& entry) { return inherited.contains(entry.key()); });
    return entries;
}

bool ProcessSpawner::signalGroup(pid_t group, int signal) {
    return group > 1 && (::killpg(group, signal) == 0 || errno == EPERM);
}

bool ProcessSpawner::groupExists(pid_t group) {
    return signalGroup(group, 0);
}

} // namespace orv
