#include "OrvTerminal/TerminalSession.h"

#include "OrvCore/Async.h"
#include "OrvCore/LoginShell.h"
#include "OrvTerminal/MainThreadQueue.h"
#include "TermEngine/Diagnostics.h"
#include "TermEngine/TerminalEnvironment.h"
#include "TermEngine/TextRange.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#ifdef Q_OS_MACOS
#include <libproc.h>
#endif
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

std::span<const uint8_t> bytesOf(QByteArrayView text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), static_cast<size_t>(text.size())};
}

constexpr std::chrono::milliseconds programCheckDelay{150};
/// A shell may take longer to start what it has echoed, on a busy machine: it is looked again, ever later, up to this.
constexpr std::chrono::milliseconds lastProgramCheck{9600};
/// The shell may not have begun at the first.
constexpr int looksAtALine = 2;

#ifdef Q_OS_LINUX
/// What a desktop session gives its programs and no profile can set again.
constexpr std::array sessionVariables{
    "PATH",
    "SHELL",
    "LANGUAGE",
    "TZ",
    "XAUTHORITY",
    "WAYLAND_DISPLAY",
    "SSH_AUTH_SOCK",
    "SSH_AGENT_PID",
    "GPG_AGENT_INFO",
    "XDG_RUNTIME_DIR",
    "XDG_SESSION_ID",
    "XDG_SESSION_TYPE",
    "XDG_DATA_DIRS",
    "XDG_CONFIG_DIRS",
    "XDG_SEAT",
    "XDG_CURRENT_DESKTOP",
    "DESKTOP_SESSION",
    "DBUS_SESSION_BUS_ADDRESS"};

/// The engine's own choice is enough on macOS, where every system has the locale that it names and a profile or launchd
/// sets the rest. Elsewhere the user's own locale counts, as the only one that is sure to be there.
std::optional<std::vector<std::string>> environment() {
    std::vector<std::string> variables = term::getEnvironmentVariables({}, term::TrueColor::yes);
    const auto isUsers = [](const QByteArray& entry) {
        return entry.startsWith("LANG=") || entry.startsWith("LC_") ||
               std::ranges::any_of(sessionVariables, [&](const char* name) {
                   return entry.startsWith(name) && entry.at(static_cast<qsizetype>(qstrlen(name))) == '=';
               });
    };
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const QByteArray text = QByteArray::fromRawData(*entry, static_cast<qsizetype>(qstrlen(*entry)));
        if (!isUsers(text)) {
            continue;
        }
        const std::string name = text.first(text.indexOf('=') + 1).toStdString();
        std::erase_if(variables, [&](const std::string& variable) { return variable.starts_with(name); });
        variables.push_back(text.toStdString());
    }
    return variables;
}
#else
std::optional<std::vector<std::string>> environment() {
    return {};
}
#endif

/// Where a process is; empty where the system does not say.
QString folderOf(qint64 process) {
#ifdef Q_OS_MACOS
    proc_vnodepathinfo info{};
    const int size = proc_pidinfo(static_cast<int>(process), PROC_PIDVNODEPATHINFO, 0, &info, sizeof info);
    return size == sizeof info ? QFile::decodeName(info.pvi_cdir.vip_path) : QString();
#else
    return QFile::symLinkTarget(u"/proc/%1/cwd"_s.arg(process));
#endif
}

/// The last part of its path; of the root, all of it.
QString nameOf(const QUrl& directory) {
    const QString name = directory.adjusted(QUrl::StripTrailingSlash).fileName();
    return name.isEmpty() ? directory.path() : name;
}

} // namespace

/// What the terminal asks of its host.
class TerminalSession::Delegate final : public term::TerminalDelegate {
public:
    explicit Delegate(TerminalSession& session) : m_session(session) {
        m_synchronizedOutput.setSingleShot(true);
        QObject::connect(&m_synchronizedOutput, &QTimer::timeout, &session, [&session] {
            session.m_terminal->synchronizedOutputTimedOut();
            Q_EMIT session.outputReceived();
        });
    }

    void send(term::Terminal& /*source*/, term::Bytes data) override {
        m_session.noteInput(QByteArrayView(data));
        m_session.m_process->send(data);
    }
    void reply(term::Terminal& /*source*/, term::Bytes data) override {
        m_session.m_process->send(data, term::TerminalIOPipeline::SendOrigin::reply);
    }
    void setTerminalTitle(term::Terminal& /*source*/, const std::string& title) override {
        later([this, text = QString::fromStdString(title)] { m_session.setTitle(text); });
    }
    void bell(term::Terminal& /*source*/) override {
        QMetaObject::invokeMethod(&m_session, &TerminalSession::ring, Qt::QueuedConnection);
    }
    void notify(term::Terminal& /*source*/, const term::NotificationRequest& request) override {
        later([this, title = QString::fromStdString(request.title), body = QString::fromStdString(request.body)] {
            Q_EMIT m_session.notificationRequested(title, body);
        });
    }
    void progressReport(term::Terminal& /*source*/, const term::ProgressReport& report) override {
        later([this, report] { m_session.setProgress(report); });
    }
    void selectionChanged(term::Terminal& /*source*/) override {
        QMetaObject::invokeMethod(&m_session, &TerminalSession::selectionChanged, Qt::QueuedConnection);
    }
    void pointerShapeChanged(term::Terminal& /*source*/, const std::string& name) override {
        later([this, shape = QString::fromStdString(name)] { Q_EMIT m_session.pointerShapeRequested(shape); });
    }
    void clipboardCopy(term::Terminal& /*source*/, const term::ClipboardContent& content) override {
        const bool isPrimary = content.selections.find_first_of("cs") == std::string::npos;
        const QString text = QString::fromUtf8(
            reinterpret_cast<const char*>(content.data.data()), static_cast<qsizetype>(content.data.size()));
        later([this, text, isPrimary] { m_session.takeProgramsCopy(text, isPrimary); });
    }
    /// No program reads the clipboard here, so one that is told of a paste would get nothing.
    bool kittyClipboardSendPasteEvent(term::Terminal& /*source*/, term::ClipboardLocation /*location*/) override {
        return false;
    }
    std::optional<term::BaseColors> getColors(term::Terminal& /*source*/) override { return m_session.m_colors; }
    void synchronizedOutputChanged(term::Terminal& /*source*/, bool active) override {
        if (active) {
            Q_EMIT m_session.synchronizedOutputBegan();
        }
    }
    std::optional<term::WindowAnswer> windowCommand(
        term::Terminal& /*source*/, const term::WindowCommand& command) override {
        if (command.kind != term::WindowCommand::Kind::reportState) {
            return {};
        }
        return term::WindowAnswer{m_session.m_isShown ? 1 : 2, 0};
    }
    void scheduleSynchronizedOutputTimeout(term::Terminal& /*source*/, std::chrono::milliseconds limit) override {
        m_synchronizedOutput.start(limit);
    }
    std::optional<term::PasteControlBytes> terminalControlBytesForPaste(term::Terminal& /*source*/) override {
        return term::PasteControlBytes{
            .lineDiscipline = term::PseudoTerminalHelpers::controlBytes(m_session.m_process->childfd())};
    }
    std::optional<term::CellSize> cellSizeInPixels(term::Terminal& /*source*/) override {
        if (m_session.m_cellPixels.isEmpty()) {
            return {};
        }
        return term::CellSize{m_session.m_cellPixels.width(), m_session.m_cellPixels.height()};
    }

private:
    /// Whoever hears of it may close the session, which the terminal that calls would not survive.
    template <typename Task>
    void later(Task task) {
        QMetaObject::invokeMethod(&m_session, std::move(task), Qt::QueuedConnection);
    }

    TerminalSession& m_session;
    QTimer m_synchronizedOutput; ///< ends what a program has begun and does not end
};

/// What the process delivers, on the main thread. It outlives the session for as long as a delivery is on its way.
class TerminalSession::ProcessDelegate final : public term::LocalProcessDelegate {
public:
    explicit ProcessDelegate(TerminalSession& session) : m_session(&session) {}

    void processTerminated(term::LocalProcess& /*source*/, std::optional<int> exitCode) override {
        if (m_session) {
            m_session->processEnded(exitCode);
        }
    }
    void dataReceived(std::span<const uint8_t> slice) override {
        if (m_session) {
            m_session->m_terminal->feed(slice);
            QTimer& check = m_session->m_programCheck;
            if (!check.isActive() || check.intervalAsDuration() > programCheckDelay) {
                check.start(programCheckDelay);
            }
            Q_EMIT m_session->outputReceived();
        }
    }
    winsize getWindowSize() override { return m_session ? m_session->windowSize() : winsize{}; }

private:
    QPointer<TerminalSession> m_session;
};

TerminalSession::TerminalSession(const QUrl& directory, std::shared_ptr<MainThreadQueue> queue, QObject* parent)
    : QObject(parent),
      m_directory(directory),
      m_startFolder(directory),
      m_title(nameOf(directory)),
      m_lastDirectory(directory),
      m_delegate(std::make_unique<Delegate>(*this)),
      m_processDelegate(std::make_shared<ProcessDelegate>(*this)) {
    ORV_ASSERT_MAIN_THREAD();
    term::TerminalOptions options;
    options.cols = initialColumns;
    options.rows = initialRows;
    options.scrollback = scrollback;
    m_terminal = std::make_unique<term::Terminal>(*m_delegate, options);
    m_terminal->setXtVersionIdentity(std::string(term::engineName));
    // Whatever a program does to the foreground shows in what it, or the shell, writes then.
    m_programCheck.setSingleShot(true);
    connect(&m_programCheck, &QTimer::timeout, this, [this] {
        lookForPrograms();
        if (const auto next = 4 * m_programCheck.intervalAsDuration(); m_isAlive && next <= lastProgramCheck) {
            m_programCheck.start(next);
        }
    });
    m_process = term::LocalProcess::create(
        m_processDelegate, {.queue = std::move(queue),
                            .options = std::move(options),
                            .onLaunchFailure = [session = QPointer(this)](const term::LocalProcessError& error) {
                                if (session) {
                                    session->startFailed(error);
                                }
                            }});
}

TerminalSession::~TerminalSession() {
    terminate();
}

void TerminalSession::start() {
    start(loginShell());
}

void TerminalSession::start(const QString& shell) {
    ORV_ASSERT_MAIN_THREAD();
    if (std::exchange(m_started, true)) {
        return;
    }
    m_shell = shell;
    tellOfMissingFolder();
    m_process->startProcess(
        {.executable = shell.toStdString(),
         .args = {"-l"},
         .environment = environment(),
         .currentDirectory = m_startFolder.toLocalFile().toStdString()});
    setAlive(m_process->running());
}

void TerminalSession::startWhenShown(const QString& shell, const QUrl& folder, const QString& title) {
    ORV_ASSERT_MAIN_THREAD();
    m_shell = shell;
    m_startFolder = m_lastDirectory = folder;
    m_isWaiting = !m_started;
    setTitle(title);
}

/// What had the title the last time does not run now.
void TerminalSession::startAwaited() {
    if (std::exchange(m_isWaiting, false)) {
        setTitle(nameOf(m_directory));
        m_shell.isEmpty() ? start() : start(m_shell);
        Q_EMIT isAliveChanged();
    }
}

QUrl TerminalSession::currentDirectory() const {
    const std::optional<qint64> shell = shellPID();
    const QString folder = shell ? folderOf(*shell) : QString();
    // One that was removed is no place to start in.
    return QFileInfo(folder).isDir() ? QUrl::fromLocalFile(folder) : m_startFolder;
}

void TerminalSession::send(const QString& text) {
    send(QByteArrayView(text.toUtf8()));
}

void TerminalSession::send(QByteArrayView bytes) {
    ORV_ASSERT_MAIN_THREAD();
    noteInput(bytes);
    m_process->send(bytesOf(bytes));
}

void TerminalSession::terminate() {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_started) {
        return;
    }
    // Of a shell that has been reaped, the id may be someone else's by now.
    const pid_t shell = m_process->running() ? m_process->shellPid() : 0;
    m_process->terminate();
    if (shell >= 1) {
        ::kill(-shell, SIGHUP);
        ::kill(shell, SIGHUP);
    }
    setAlive(false);
}

void TerminalSession::resize(int columns, int rows, QSize cellPixels) {
    ORV_ASSERT_MAIN_THREAD();
    m_cellPixels = cellPixels;
    m_terminal->resize(columns, rows);
    m_process->updateWindowSize(windowSize());
    Q_EMIT resized();
}

std::optional<qint64> TerminalSession::shellPID() const {
    return m_process->running() ? std::optional<qint64>(m_process->shellPid()) : std::nullopt;
}

bool TerminalSession::hasForegroundProgram() const {
    if (!m_isAlive) {
        return false;
    }
    const pid_t foreground = m_process->foregroundProcessGroup();
    return foreground >= 1 && foreground != m_process->shellPid();
}

QString TerminalSession::endSignal() const {
    ORV_ASSERT_MAIN_THREAD();
    const std::optional<int> number = m_hasEnded ? m_process->endSignal() : std::nullopt;
    return number ? QString::fromLocal8Bit(::strsignal(*number)) : QString();
}

QString TerminalSession::outputForTesting() const {
    const term::Buffer& buffer = m_terminal->buffer();
    const auto first = static_cast<std::int64_t>(buffer.trimmedCount());
    const std::int64_t last = first + buffer.yBase() + buffer.rows() - 1;
    const std::string text = term::textIn(buffer, {{first, 0}, {last, buffer.cols()}});
    return QString::fromStdString(text);
}

void TerminalSession::setTerminalView(std::unique_ptr<QObject> view) {
    ORV_ASSERT_MAIN_THREAD();
    m_terminalView = std::move(view);
    Q_EMIT terminalViewChanged();
}

void TerminalSession::setTitle(const QString& title) {
    if (!title.isEmpty() && title != m_title) {
        m_title = title;
        Q_EMIT titleChanged();
    }
}

void TerminalSession::setAlive(bool isAlive) {
    if (isAlive != m_isAlive) {
        m_isAlive = isAlive;
        Q_EMIT isAliveChanged();
    }
}

void TerminalSession::setProgress(const term::ProgressReport& progress) {
    if (progress != m_progress) {
        m_progress = progress;
        Q_EMIT progressChanged();
    }
}

void TerminalSession::setHasUnseenBell(bool hasBell) {
    if (hasBell != m_hasUnseenBell) {
        m_hasUnseenBell = hasBell;
        Q_EMIT hasUnseenBellChanged();
    }
}

void TerminalSession::takeProgramsCopy(const QString& text, bool isPrimary) {
    switch (m_clipboardWrite) {
    case ClipboardWrite::off:
        break;
    case ClipboardWrite::ask:
        // Of several, the last one is what would be there.
        m_isProgramsCopyPrimary = isPrimary;
        setProgramsCopy(text);
        break;
    case ClipboardWrite::on:
        Q_EMIT clipboardWriteRequested(text, isPrimary);
        break;
    }
}

void TerminalSession::setProgramsCopy(const QString& text) {
    if (text != m_programsCopy) {
        m_programsCopy = text;
        Q_EMIT programsCopyChanged();
        updateQuestion();
    }
}

void TerminalSession::updateQuestion() {
    const bool hasQuestion = !m_programsCopy.isEmpty() && !m_isShown;
    if (hasQuestion != m_hasUnseenQuestion) {
        m_hasUnseenQuestion = hasQuestion;
        Q_EMIT hasUnseenQuestionChanged();
    }
}

void TerminalSession::answerProgramsCopy(bool isWanted) {
    ORV_ASSERT_MAIN_THREAD();
    const QString text = m_programsCopy;
    setProgramsCopy({});
    if (isWanted && !text.isEmpty()) {
        Q_EMIT clipboardWriteRequested(text, m_isProgramsCopyPrimary);
    }
}

void TerminalSession::ring() {
    setHasUnseenBell(!m_isShown);
    Q_EMIT bellRang();
}

void TerminalSession::setShown(bool isShown) {
    ORV_ASSERT_MAIN_THREAD();
    m_isShown = isShown;
    m_terminal->setVisibility(
        isShown ? term::TerminalVisibility::potentiallyVisible : term::TerminalVisibility::notVisible);
    if (isShown) {
        setHasUnseenBell(false);
    }
    updateQuestion();
    if (isShown && m_isWaiting) {
        // The view that says so is still on its way to its place.
        QMetaObject::invokeMethod(this, &TerminalSession::startAwaited, Qt::QueuedConnection);
    }
}

void TerminalSession::setTheme(const term::BaseColors& colors, term::ColorScheme scheme) {
    ORV_ASSERT_MAIN_THREAD();
    m_colors = colors;
    m_terminal->themeChanged();
    m_terminal->setColorScheme(scheme);
}

void TerminalSession::lookForPrograms() {
    const bool isBusy = hasForegroundProgram();
    const bool hasEnded = m_isBusy && !isBusy;
    if (isBusy != m_isBusy) {
        m_isBusy = isBusy;
        Q_EMIT isBusyChanged();
    }
    if (const QUrl directory = m_isAlive ? currentDirectory() : m_lastDirectory; directory != m_lastDirectory) {
        m_lastDirectory = directory;
        Q_EMIT currentDirectoryChanged();
    }
    if (isBusy) {
        m_looksLeft = 0; // what was entered is the program's
        return;
    }
    if (hasEnded) {
        // The shell may have more to carry out: it is looked at anew, as after a line.
        m_looksLeft = looksAtALine;
        m_programCheck.setInterval(programCheckDelay);
    }
    if (m_looksLeft == 0) {
        return;
    }
    m_looksLeft = m_isAlive ? m_looksLeft - 1 : 0;
    if (m_looksLeft == 0) {
        Q_EMIT commandSettled();
    }
}

void TerminalSession::noteInput(QByteArrayView bytes) {
    if (bytes.contains('\r') || bytes.contains('\n')) {
        m_looksLeft = looksAtALine;
    }
}

void TerminalSession::startFailed(const term::LocalProcessError& error) {
    const QString words = QString::fromStdString(std::generic_category().message(error.code));
    const bool isShells = error.reason == term::LocalProcessError::Reason::exec;
    m_startError = isShells ? u"%1: %2"_s.arg(m_shell, words) : words;
    Q_EMIT startErrorChanged();
}

/// What is typed in the belief of being elsewhere may do harm.
void TerminalSession::tellOfMissingFolder() {
    const QString folder = m_startFolder.toLocalFile();
    if (const QFileInfo info(folder); info.isDir() && info.isExecutable()) {
        return;
    }
    QString line = tr("%1 can't be entered: this shell starts in %2").arg(folder, QDir::currentPath());
    // A name may hold anything.
    std::ranges::replace_if(line, [](QChar sign) { return sign.category() == QChar::Other_Control; }, u'?');
    m_terminal->feed(line.toStdString() + "\r\n");
}

void TerminalSession::processEnded(std::optional<int> code) {
    m_exitCode = code;
    m_hasEnded = true;
    Q_EMIT ended();
    setAlive(false);
    setProgress({});
    lookForPrograms();
}

winsize TerminalSession::windowSize() const {
    const auto pixels = [](int cells, int size) { return static_cast<unsigned short>(cells * std::max(size, 0)); };
    return {
        .ws_row = static_cast<unsigned short>(m_terminal->rows()),
        .ws_col = static_cast<unsigned short>(m_terminal->cols()),
        .ws_xpixel = pixels(m_terminal->cols(), m_cellPixels.width()),
        .ws_ypixel = pixels(m_terminal->rows(), m_cellPixels.height())};
}

} // namespace orv
