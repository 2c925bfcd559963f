#include "OrvGit/GitRunner.h"

#include "GitWords_p.h"
#include "OrvCore/Pipe.h"
#include "OrvGit/GitChild_p.h"
#include "OrvGit/LocalFilters_p.h"

#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QStandardPaths>

#include <algorithm>
#include <atomic>

#include <poll.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr auto lockPatience = 2s;
constexpr auto lockLook = 10ms;
constexpr qsizetype longestLine = 1024 * 1024;
constexpr qsizetype tailLines = 20;

/// Names by which whoever started us may point git at another repository than the folder's, or have it write more to
/// its standard error than we expect (git-rev-parse(1), `--local-env-vars`; git(1), Environment Variables).
std::vector<QByteArray> hiddenVariables() {
    std::vector<QByteArray> names{
        "GIT_DIR",
        "GIT_WORK_TREE",
        "GIT_INDEX_FILE",
        "GIT_OBJECT_DIRECTORY",
        "GIT_COMMON_DIR",
        "GIT_PREFIX",
        "GIT_NAMESPACE",
        "GIT_GRAFT_FILE",
        "GIT_SHALLOW_FILE",
        "GIT_CONFIG",
        "GIT_CONFIG_PARAMETERS",
        "GIT_CONFIG_COUNT",
        "GIT_CURL_VERBOSE",
        "GIT_EXTERNAL_DIFF",
        "GIT_DIFF_OPTS",
        "GIT_PAGER_IN_USE",
        "GIT_ICASE_PATHSPECS",
        "GIT_GLOB_PATHSPECS",
        "GIT_NOGLOB_PATHSPECS",
        "GIT_ALTERNATE_OBJECT_DIRECTORIES",
        "GIT_QUARANTINE_PATH",
        "GIT_IMPLICIT_WORK_TREE",
        "GIT_INTERNAL_SUPER_PREFIX",
        "GIT_REPLACE_REF_BASE",
    };
    // "GIT_TRACE", "GIT_TRACE_CURL", "GIT_TRACE2_EVENT" and their like.
    for (const QString& name : QProcessEnvironment::systemEnvironment().keys()) {
        if (name.startsWith("GIT_TRACE"_L1)) {
            names.push_back(name.toLocal8Bit());
        }
    }
    return names;
}

EnvironmentEntries fixedEnvironment(GitPurpose purpose) {
    EnvironmentEntries entries{
        {u"GIT_TERMINAL_PROMPT"_s, u"0"_s}, // fails, instead of asking on a terminal that is not there
        {u"GIT_EDITOR"_s, u"true"_s},       // takes the text that is offered
        {u"LC_ALL"_s, u"C"_s},              // the texts that are looked for are English
        {u"GIT_LITERAL_PATHSPECS"_s, u"1"_s},
    };
    if (purpose == GitPurpose::background) {
        const QString ssh = qEnvironmentVariable("GIT_SSH_COMMAND", u"ssh"_s);
        entries.insert(u"GIT_OPTIONAL_LOCKS"_s, u"0"_s);
        entries.insert(u"GIT_ASKPASS"_s, u"false"_s);
        entries.insert(u"SSH_ASKPASS"_s, u"false"_s);
        entries.insert(u"GIT_SSH_COMMAND"_s, ssh + u" -o BatchMode=yes"_s);
        // A partial clone fetches what it lacks when it is looked at, by the program that its configuration names.
        entries.insert(u"GIT_NO_LAZY_FETCH"_s, u"1"_s);
        entries.insert(u"GIT_ALLOW_PROTOCOL"_s, QString(u""_s)); // the same, before git 2.44
    }
    return entries;
}

/// Takes the repository's own filters out of force (git-config(1), GIT_CONFIG_COUNT): an empty program is none.
void appendWithoutFilters(const QByteArrayList& settings, std::vector<QByteArray>& variables) {
    int count = 0;
    for (const QByteArray& setting : settings) {
        const QByteArray number = QByteArray::number(count++);
        variables.push_back("GIT_CONFIG_KEY_" + number + '=' + setting);
        variables.push_back("GIT_CONFIG_VALUE_" + number + '=' + (setting.endsWith(".required") ? "false" : ""));
    }
    variables.push_back("GIT_CONFIG_COUNT=" + QByteArray::number(count));
}

/// So that git only sees which commit a submodule is at, and does not look at its files.
GitArguments withoutLookIntoSubmodules(GitArguments arguments) {
    qsizetype verb = 0;
    while (verb + 1 < arguments.size() && arguments[verb] == "-c") {
        verb += 2;
    }
    if (verb < arguments.size() && (arguments[verb] == "status" || arguments[verb] == "diff")) {
        arguments.insert(verb + 1, "--ignore-submodules=dirty");
    }
    return arguments;
}

GitOutcome<ChildProcess::Request> request(
    const GitRunner& runner, const GitArguments& arguments, const QString& folder) {
    EnvironmentEntries entries = fixedEnvironment(runner.purpose);
    entries.insert(runner.extraEnvironment);
    const QByteArray program = QFile::encodeName(GitRunner::executable());
    std::vector<QByteArray> words{program};
    std::vector<QByteArray> variables = ChildProcess::environment(entries, hiddenVariables());
    GitArguments wanted = arguments;
    if (runner.purpose == GitPurpose::background) {
        const auto filters = LocalFilters::of(folder, runner.cancellation);
        if (!filters) {
            return std::unexpected(filters.error());
        }
        appendWithoutFilters(filters->settings, variables);
        // With several threads, git trusts what an index says of where its entries are.
        words.insert(
            words.end(), {"-c", "core.fsmonitor=false", "-c", "core.hooksPath=/dev/null", "-c", "index.threads=1"});
        wanted = filters->areSubmodulesKnown ? arguments : withoutLookIntoSubmodules(arguments);
    }
    words.insert(words.end(), wanted.begin(), wanted.end());
    return ChildProcess::Request{
        .program = program,
        .arguments = std::move(words),
        .variables = std::move(variables),
        .directory = folder,
    };
}

GitError startError(const SpawnError& error, const QString& folder) {
    const QString reason =
        QFileInfo(folder).isDir() ? error.text() : GitWords::tr("the folder %1 is not there.").arg(folder);
    return {GitError::Kind::startFailed, error.code, GitWords::tr("Could not start git: %1").arg(reason), {}};
}

bool isCancelled(const GitRunner& runner) {
    return runner.cancellation && runner.cancellation->isCancelled();
}

/// Runs one git to its end.
GitOutcome<GitResult> runOnce(
    const GitRunner& runner, const GitArguments& arguments, const QString& folder, const QDeadlineTimer& deadline,
    const GitRunner::Options& options) {
    if (isCancelled(runner)) {
        return std::unexpected(GitError::of(GitError::Kind::cancelled));
    }
    const auto wanted = request(runner, arguments, folder);
    if (!wanted) {
        return std::unexpected(wanted.error());
    }
    auto child = GitChild::start(*wanted, options.input);
    if (!child) {
        return std::unexpected(startError(child.error(), folder));
    }
    GitResult result;
    const auto take = [&](GitChild::Stream stream, QByteArrayView bytes) {
        (stream == GitChild::Stream::output ? result.output : result.errors).append(bytes);
        return result.output.size() > options.outputLimitBytes ? GitChild::Wanted::enough : GitChild::Wanted::more;
    };
    switch ((*child)->follow(deadline, runner.cancellation, take)) {
    case GitChild::End::timeout:
        return std::unexpected(GitError::of(GitError::Kind::timeout));
    case GitChild::End::cancelled:
        return std::unexpected(GitError::of(GitError::Kind::cancelled));
    case GitChild::End::enough:
        result.output.truncate(options.outputLimitBytes);
        result.isCut = true;
        break;
    case GitChild::End::exited:
        result.code = (*child)->exitCode();
        break;
    }
    return result;
}

/// Waits a moment at least. False when it is still there after all.
bool waitUntilGone(const QString& lock, const QDeadlineTimer& deadline, const GitRunner& runner) {
    const QByteArray path = lock.toLocal8Bit();
    do {
        if (deadline.hasExpired() || isCancelled(runner)) {
            return false;
        }
        pollfd cancelled{runner.cancellation ? runner.cancellation->descriptor() : -1, POLLIN, 0};
        ::poll(&cancelled, 1, static_cast<int>(std::chrono::milliseconds(lockLook).count()));
    } while (::access(path.constData(), F_OK) == 0);
    return true;
}

/// Splits one stream at line feeds and carriage returns.
class LineSplitter {
public:
    template <typename Handler>
    void add(QByteArrayView bytes, Handler onLine) {
        for (const char byte : bytes) {
            if (byte == '\n' || byte == '\r' || m_pending.size() >= longestLine) {
                finish(onLine);
            }
            if (byte != '\n' && byte != '\r') {
                m_pending += byte;
                m_isOpen = true;
            } else {
                m_isOpen = false;
            }
        }
    }
    template <typename Handler>
    void end(Handler onLine) {
        if (m_isOpen) {
            finish(onLine);
        }
    }

private:
    template <typename Handler>
    void finish(Handler onLine) {
        onLine(QString::fromUtf8(m_pending));
        m_pending.clear();
    }

    QByteArray m_pending;
    bool m_isOpen = false; ///< something stands after the last end of a line
};

QDeadlineTimer deadlineOf(GitRunner::Limit limit) {
    return limit == GitRunner::noLimit ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(limit);
}

} // namespace

struct GitCancellation::State {
    std::atomic<bool> isCancelled = false;
    std::expected<Pipe, SpawnError> pipe = Pipe::make();
};

GitCancellation::GitCancellation() : m_state(std::make_shared<State>()) {}

void GitCancellation::cancel() const {
    if (!m_state->isCancelled.exchange(true) && m_state->pipe) {
        (void)!::write(m_state->pipe->writeEnd.get(), "", 1);
    }
}

bool GitCancellation::isCancelled() const {
    return m_state->isCancelled.load();
}

int GitCancellation::descriptor() const {
    return m_state->pipe ? m_state->pipe->readEnd.get() : -1;
}

QString GitRunner::executable() {
    const QString usual = u"/usr/bin/git"_s;
    if (QFileInfo(usual).isExecutable()) {
        return usual;
    }
    const QString found = QStandardPaths::findExecutable(u"git"_s);
    return found.isEmpty() ? usual : found;
}

GitOutcome<GitResult> GitRunner::runRaw(
    const GitArguments& arguments, const QString& folder, Limit limit, const Options& options) const {
    const QDeadlineTimer deadline = deadlineOf(limit);
    auto result = runOnce(*this, arguments, folder, deadline, options);
    const QDeadlineTimer patience(lockPatience);
    while (result && result->code != 0) {
        const QString lock = lockedIndex(result->stderrText());
        if (lock.isEmpty() || !waitUntilGone(lock, patience, *this)) {
            break;
        }
        result = runOnce(*this, arguments, folder, deadline, options);
    }
    return result;
}

GitOutcome<QByteArray> GitRunner::run(
    const GitArguments& arguments, const QString& folder, Limit limit, const Options& options) const {
    auto result = runRaw(arguments, folder, limit, options);
    if (!result) {
        return std::unexpected(result.error());
    }
    if (result->code != 0) {
        return std::unexpected(result->error());
    }
    return std::move(result->output);
}

GitOutcome<qint32> GitRunner::stream(
    const GitArguments& arguments, const QString& folder, const std::function<void(const QString&)>& onLine) const {
    if (isCancelled(*this)) {
        return std::unexpected(GitError::of(GitError::Kind::cancelled));
    }
    const auto wanted = request(*this, arguments, folder);
    if (!wanted) {
        return std::unexpected(wanted.error());
    }
    auto child = GitChild::start(*wanted, {});
    if (!child) {
        return std::unexpected(startError(child.error(), folder));
    }
    std::array<LineSplitter, 2> splitters;
    const auto take = [&](GitChild::Stream stream, QByteArrayView bytes) {
        splitters[static_cast<size_t>(stream)].add(bytes, onLine);
        return GitChild::Wanted::more;
    };
    if ((*child)->follow(QDeadlineTimer(QDeadlineTimer::Forever), cancellation, take) == GitChild::End::cancelled) {
        return std::unexpected(GitError::of(GitError::Kind::cancelled));
    }
    for (LineSplitter& splitter : splitters) {
        splitter.end(onLine);
    }
    return (*child)->exitCode();
}

void LineTail::add(const QString& line) {
    m_lines.append(line);
    if (m_lines.size() > tailLines) {
        m_lines.removeFirst();
    }
}

} // namespace orv
