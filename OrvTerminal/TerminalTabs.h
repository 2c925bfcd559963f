#pragma once

#include "OrvTerminal/TerminalSession.h"

#include <QList>
#include <QObject>
#include <QUrl>
#include <QUuid>

#include <memory>
#include <optional>

namespace orv {

/// A terminal as it can be opened again.
struct TerminalPlace {
    QUrl directory; ///< for which it was opened
    QUrl folder;    ///< in which its shell is
    QString title;
    int lastUse = 0; ///< counts up: the greatest was selected last; 0: none knows

    bool operator==(const TerminalPlace&) const = default;
};

/// The open terminals, in the order in which they were opened, and the one that is shown. Lives on the main thread.
class TerminalTabs : public QObject {
    Q_OBJECT
public:
    explicit TerminalTabs(QObject* parent = nullptr);
    /// Closes all.
    ~TerminalTabs() override;

    [[nodiscard]] const QList<TerminalSession*>& sessions() const { return m_sessions; }
    [[nodiscard]] std::optional<QUuid> selectedID() const { return m_selectedID; }
    [[nodiscard]] TerminalSession* session(const QUuid& id) const;

    /// A new session in the folder, at the end, selected and started. It belongs to the tabs.
    TerminalSession* open(const QUrl& at);
    /// Ends the session. When it was the selected one, the last one is selected then. An id that is not there is let
    /// be.
    void close(const QUuid& id);
    void closeAll();
    void select(const QUuid& id);
    /// Of these the one that was selected last, or the first; null of none.
    [[nodiscard]] TerminalSession* lastUsed(const QList<TerminalSession*>& sessions) const;
    /// Puts the session at another place; the others close up.
    void move(const QUuid& id, int place);
    /// Closes a session, and starts a new one in its folder at its place. Null where there is no such session.
    TerminalSession* renew(const QUuid& id);
    /// What sessions run that are opened from now on; empty: the login shell.
    void setShell(const QString& path) { m_shell = path; }
    /// In all sessions, those that are opened later too.
    void setClipboardWrite(ClipboardWrite choice);
    /// Of the sessions whose shell has not ended, each in the folder in which its shell is now.
    [[nodiscard]] QList<TerminalPlace> places() const;
    /// Opens them again, behind those that are open. A shell starts when its session is first shown.
    void restore(const QList<TerminalPlace>& places);
    /// Whether something else than a shell at its prompt runs in any of them.
    [[nodiscard]] bool anyForegroundProgram() const;

Q_SIGNALS:
    void sessionsChanged();
    void hasUnseenChanged(); ///< perhaps, of one of the sessions
    void selectedIDChanged();
    void opened(orv::TerminalSession* session); ///< now, by whoever did
    void currentDirectoryChanged();             ///< of one of the sessions
    /// What a program in one of the sessions copies, and may.
    void clipboardWriteRequested(const QString& text, bool isPrimary);
    /// As a session says it; the folder is where its shell is.
    void commandSettled(const QUrl& folder);

private:
    TerminalSession* insert(qsizetype place, const QUrl& folder);
    TerminalSession* make(qsizetype place, const QUrl& folder);
    void setSelected(std::optional<QUuid> id);
    void use(const QUuid& id);

    std::shared_ptr<MainThreadQueue> m_queue;
    QList<TerminalSession*> m_sessions;
    std::optional<QUuid> m_selectedID;
    QList<QUuid> m_used; ///< as they were selected, the last one behind the others
    QString m_shell;
    ClipboardWrite m_clipboardWrite = ClipboardWrite::ask;
};

} // namespace orv
