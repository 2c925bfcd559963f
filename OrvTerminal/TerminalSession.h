#pragma once

#include "OrvCore/Settings.h"
#include "TermEngine/LocalProcess.h"
#include "TermEngine/Terminal.h"

#include <QByteArrayView>
#include <QObject>
#include <QSize>
#include <QTimer>
#include <QUrl>
#include <QUuid>

#include <memory>
#include <optional>

namespace orv {

class MainThreadQueue;

/// A login shell in a folder, on a terminal of the engine. Lives on the main thread.
///
/// It is started once and never again: after its shell has ended it keeps the last screen.
class TerminalSession : public QObject {
    Q_OBJECT
    Q_PROPERTY(QUuid id READ id CONSTANT)
    Q_PROPERTY(QUrl directory READ directory CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(bool isAlive READ isAlive NOTIFY isAliveChanged)
    Q_PROPERTY(bool isWaiting READ isWaiting NOTIFY isAliveChanged)
    Q_PROPERTY(bool hasEnded READ hasEnded NOTIFY ended)
    Q_PROPERTY(int exitCode READ exitCodeOrNone NOTIFY ended)
    Q_PROPERTY(QString endSignal READ endSignal NOTIFY ended)
    Q_PROPERTY(QString startError READ startError NOTIFY startErrorChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY isBusyChanged)
    Q_PROPERTY(bool hasUnseenBell READ hasUnseenBell NOTIFY hasUnseenBellChanged)
    Q_PROPERTY(bool hasUnseenQuestion READ hasUnseenQuestion NOTIFY hasUnseenQuestionChanged)
    Q_PROPERTY(int progressState READ progressState NOTIFY progressChanged)
    Q_PROPERTY(int progressPercent READ progressPercent NOTIFY progressChanged)
    Q_PROPERTY(QObject* terminalView READ terminalView NOTIFY terminalViewChanged)
public:
    /// What a terminal is taken to be as long as no view says otherwise: 1200 by 420 points.
    static constexpr int initialColumns = 150;
    static constexpr int initialRows = 24;
    /// Lines of history; they cost memory only once they are there.
    static constexpr int scrollback = 10'000;

    /// `queue`: on which its output comes in; shared among sessions.
    TerminalSession(const QUrl& directory, std::shared_ptr<MainThreadQueue> queue, QObject* parent = nullptr);
    /// Ends the shell.
    ~TerminalSession() override;

    [[nodiscard]] QUuid id() const { return m_id; }
    /// For which it was opened. The shell starts there unless something else is said.
    [[nodiscard]] QUrl directory() const { return m_directory; }
    /// Where the shell is now, as far as the system says; else the folder in which it starts.
    [[nodiscard]] QUrl currentDirectory() const;
    /// The folder's name until a program sets another one.
    [[nodiscard]] QString title() const { return m_title; }
    /// Whether the shell runs.
    [[nodiscard]] bool isAlive() const { return m_isAlive; }
    /// Whether the shell is yet to start, once the session is shown.
    [[nodiscard]] bool isWaiting() const { return m_isWaiting; }
    /// Whether its shell is gone, or could not be started.
    [[nodiscard]] bool hasEnded() const { return m_hasEnded; }
    /// Of the shell that ended; 128 and the number of the signal that ended it. Nothing where nobody knows.
    [[nodiscard]] std::optional<int> exitCode() const { return m_exitCode; }
    /// The signal that ended the shell, in the system's words ("Killed"); empty where none did.
    [[nodiscard]] QString endSignal() const;
    /// The same; -1 for none.
    [[nodiscard]] int exitCodeOrNone() const { return m_exitCode.value_or(-1); }
    /// Why there is no shell, in the system's words ("/bin/zsh: Permission denied"); empty where one was started.
    [[nodiscard]] QString startError() const { return m_startError; }
    /// `hasForegroundProgram` as it was shortly after the last output.
    [[nodiscard]] bool isBusy() const { return m_isBusy; }
    /// A bell rang while the session was not shown.
    [[nodiscard]] bool hasUnseenBell() const { return m_hasUnseenBell; }
    /// A program wants to copy, while the session is not shown.
    [[nodiscard]] bool hasUnseenQuestion() const { return m_hasUnseenQuestion; }
    /// What the program says of its progress (OSC 9;4): a `term::ProgressReport::State`, and 0 to 100 or -1.
    [[nodiscard]] int progressState() const { return static_cast<int>(m_progress.state); }
    [[nodiscard]] int progressPercent() const { return m_progress.percent.value_or(-1); }
    /// Either of them.
    [[nodiscard]] bool hasUnseen() const { return m_hasUnseenBell || m_hasUnseenQuestion; }
    /// Whether somebody can see the session.
    void setShown(bool isShown);
    [[nodiscard]] bool isShown() const { return m_isShown; }
    /// The colours that programs are told of, and whether the theme is dark.
    void setTheme(const term::BaseColors& colors, term::ColorScheme scheme);

    /// What becomes of what programs copy.
    void setClipboardWrite(ClipboardWrite choice) { m_clipboardWrite = choice; }
    /// What a program wants to put on the clipboard and nobody has decided upon. Empty: none does.
    [[nodiscard]] QString programsCopy() const { return m_programsCopy; }
    void answerProgramsCopy(bool isWanted);

    /// A second call does nothing. A shell that can't be started leaves the session not alive, with a `startError`. One
    /// whose folder can't be entered starts where the application is, and a line before its first says so.
    void start(const QString& shell);
    /// The login shell.
    void start();
    /// The same once somebody can see the session, in that folder; `shell` may be empty then. Until it starts the
    /// session has this title.
    void startWhenShown(const QString& shell, const QUrl& folder, const QString& title);
    /// Writes the text to the shell's input as it stands: a line is carried out when it ends in "\n".
    void send(const QString& text);
    void send(QByteArrayView bytes);
    /// Hangs the shell and its jobs up.
    void terminate();
    void resize(int columns, int rows, QSize cellPixels);
    /// Of a cell, as `resize` said.
    [[nodiscard]] QSize cellPixels() const { return m_cellPixels; }

    [[nodiscard]] std::optional<qint64> shellPID() const;
    /// Whether another program than the shell has the terminal's foreground.
    [[nodiscard]] bool hasForegroundProgram() const;
    /// The text of screen and history.
    [[nodiscard]] QString outputForTesting() const;

    [[nodiscard]] term::Terminal& terminal() { return *m_terminal; }
    [[nodiscard]] const term::Terminal& terminal() const { return *m_terminal; }

    /// The item that shows the session, once there is one. It belongs to the session and goes with it.
    [[nodiscard]] QObject* terminalView() const { return m_terminalView.get(); }
    void setTerminalView(std::unique_ptr<QObject> view);

Q_SIGNALS:
    void titleChanged();
    void isAliveChanged();
    void ended();
    void startErrorChanged();
    /// As it was shortly after the last output: a shell that goes elsewhere prints a prompt, if nothing else.
    void currentDirectoryChanged();
    void terminalViewChanged();
    /// The terminal took in output, once a piece of up to 64 KiB.
    void outputReceived();
    /// What was entered may have been carried out, and the shell has the foreground: once a moment after the last line,
    /// or after the program that was started is over. What is entered into a program is not told of.
    void commandSettled();
    void bellRang();
    void isBusyChanged();
    /// The lines lie otherwise than before.
    void resized();
    void hasUnseenBellChanged();
    void hasUnseenQuestionChanged();
    void progressChanged();
    void selectionChanged();
    /// A program begins to draw what is to be seen only as a whole. Comes while the terminal takes in output, before
    /// any of it: what stands on the screen now is whole too.
    void synchronizedOutputBegan();
    void programsCopyChanged();
    /// What a program copies (OSC 52), and may.
    void clipboardWriteRequested(const QString& text, bool isPrimary);
    void notificationRequested(const QString& title, const QString& body);
    /// OSC 22: a name of CSS; empty: the usual one.
    void pointerShapeRequested(const QString& name);

private:
    class Delegate;
    class ProcessDelegate;

    void setTitle(const QString& title);
    void setAlive(bool isAlive);
    void setProgress(const term::ProgressReport& progress);
    void setHasUnseenBell(bool hasBell);
    void takeProgramsCopy(const QString& text, bool isPrimary);
    void setProgramsCopy(const QString& text);
    void updateQuestion();
    void ring();
    void lookForPrograms();
    void noteInput(QByteArrayView bytes);
    void processEnded(std::optional<int> code);
    void startFailed(const term::LocalProcessError& error);
    void tellOfMissingFolder();
    void startAwaited();
    [[nodiscard]] winsize windowSize() const;

    const QUuid m_id = QUuid::createUuid();
    const QUrl m_directory;
    QUrl m_startFolder; ///< in which the shell starts
    QString m_title;
    bool m_started = false;
    bool m_isAlive = false;
    bool m_isWaiting = false;
    bool m_hasEnded = false;
    std::optional<int> m_exitCode;
    QString m_shell;
    QString m_startError;
    bool m_isBusy = false;
    QUrl m_lastDirectory; ///< in which the shell was last seen
    int m_looksLeft = 0;  ///< at what the line that was entered last does, until it counts as carried out
    bool m_isShown = false;
    bool m_hasUnseenBell = false;
    bool m_hasUnseenQuestion = false;
    ClipboardWrite m_clipboardWrite = ClipboardWrite::ask;
    QString m_programsCopy;
    bool m_isProgramsCopyPrimary = false;
    term::ProgressReport m_progress;
    std::optional<term::BaseColors> m_colors;
    QTimer m_programCheck; ///< runs for a moment after output
    QSize m_cellPixels;
    std::unique_ptr<Delegate> m_delegate;
    std::unique_ptr<term::Terminal> m_terminal;
    std::shared_ptr<ProcessDelegate> m_processDelegate;
    std::shared_ptr<term::LocalProcess> m_process;
    std::unique_ptr<QObject> m_terminalView;
};

} // namespace orv
