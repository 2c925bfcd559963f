#pragma once

#include "OrvCore/ChildProcess.h"
#include "OrvCore/ExitWatch.h"
#include "OrvCore/UniqueFd.h"
#include "OrvGit/GitRunner.h"

#include <QDeadlineTimer>
#include <QTemporaryFile>

#include <array>

namespace orv {

/// One running git: the leader of a process group of its own. It is reaped when it has been followed to its end; one
/// that has not is ended with its group by the destructor.
class GitChild {
public:
    enum class Stream { output, errors };
    enum class Wanted { more, enough };
    /// Takes in what a stream has; the memory is valid during the call only.
    using Sink = std::function<Wanted(Stream stream, QByteArrayView bytes)>;
    enum class End { exited, timeout, cancelled, enough };

    [[nodiscard]] static std::expected<std::unique_ptr<GitChild>, SpawnError> start(
        ChildProcess::Request request, const QByteArray& input);
    ~GitChild();
    Q_DISABLE_COPY_MOVE(GitChild)

    /// Until it has exited and both its streams have ended. Any other end leaves no process of its group.
    [[nodiscard]] End follow(
        const QDeadlineTimer& deadline, const std::optional<GitCancellation>& cancellation, const Sink& sink);
    /// Once it has been followed.
    [[nodiscard]] int exitCode() const { return m_exitCode; }

private:
    GitChild() = default;
    void endGroup();
    [[nodiscard]] bool waitForExit(const QDeadlineTimer& deadline);
    [[nodiscard]] bool isZombie() const;
    [[nodiscard]] bool tryReap();
    /// False when the sink wants no more.
    [[nodiscard]] bool read(Stream stream, const Sink& sink);
    [[nodiscard]] UniqueFd& end(Stream stream) { return m_ends[static_cast<size_t>(stream)]; }

    pid_t m_pid = -1; ///< -1 once it is reaped
    int m_exitCode = -1;
    std::array<UniqueFd, 2> m_ends; ///< by Stream; closed when the stream has ended
    ExitWatch m_exit;
    bool m_isWatched = false;
    std::unique_ptr<QTemporaryFile> m_input;
};

} // namespace orv
