#include "OrvTerminal/TerminalTabs.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/MainThreadQueue.h"

#include <algorithm>

namespace orv {

TerminalTabs::TerminalTabs(QObject* parent) : QObject(parent), m_queue(std::make_shared<MainThreadQueue>()) {
    ORV_ASSERT_MAIN_THREAD();
}

TerminalTabs::~TerminalTabs() {
    closeAll();
}

TerminalSession* TerminalTabs::session(const QUuid& id) const {
    const auto found = std::ranges::find(m_sessions, id, &TerminalSession::id);
    return found == m_sessions.cend() ? nullptr : *found;
}

TerminalSession* TerminalTabs::open(const QUrl& at) {
    ORV_ASSERT_MAIN_THREAD();
    return insert(m_sessions.size(), at);
}

TerminalSession* TerminalTabs::insert(qsizetype place, const QUrl& folder) {
    TerminalSession* session = make(place, folder);
    Q_EMIT sessionsChanged();
    setSelected(session->id());
    m_shell.isEmpty() ? session->start() : session->start(m_shell);
    return session;
}

TerminalSession* TerminalTabs::make(qsizetype place, const QUrl& folder) {
    auto* session = new TerminalSession(folder, m_queue, this);
    session->setClipboardWrite(m_clipboardWrite);
    connect(session, &TerminalSession::clipboardWriteRequested, this, &TerminalTabs::clipboardWriteRequested);
    connect(session, &TerminalSession::currentDirectoryChanged, this, &TerminalTabs::currentDirectoryChanged);
    for (const auto signal : {&TerminalSession::hasUnseenBellChanged, &TerminalSession::hasUnseenQuestionChanged}) {
        connect(session, signal, this, &TerminalTabs::hasUnseenChanged);
    }
    connect(session, &TerminalSession::commandSettled, this, [this, session] {
        Q_EMIT commandSettled(session->currentDirectory());
    });
    m_sessions.insert(place, session);
    return session;
}

QList<TerminalPlace> TerminalTabs::places() const {
    QList<TerminalPlace> places;
    for (const TerminalSession* session : m_sessions) {
        if (session->isAlive() || session->isWaiting()) {
            places.append(
                {session->directory(), session->currentDirectory(), session->title(), session->id() == m_selectedID});
        }
    }
    return places;
}

void TerminalTabs::restore(const QList<TerminalPlace>& places) {
    ORV_ASSERT_MAIN_THREAD();
    if (places.isEmpty()) {
        return;
    }
    std::optional<QUuid> selected = m_selectedID;
    for (const TerminalPlace& place : places) {
        TerminalSession* session = make(m_sessions.size(), place.directory);
        session->startWhenShown(m_shell, place.folder, place.title);
        if (!selected || place.isSelected) {
            selected = session->id();
        }
    }
    Q_EMIT sessionsChanged();
    setSelected(selected);
}

TerminalSession* TerminalTabs::renew(const QUuid& id) {
    ORV_ASSERT_MAIN_THREAD();
    TerminalSession* ended = session(id);
    if (ended == nullptr) {
        return nullptr;
    }
    TerminalSession* fresh = insert(m_sessions.indexOf(ended) + 1, ended->directory());
    close(id);
    return fresh;
}

void TerminalTabs::move(const QUuid& id, int place) {
    ORV_ASSERT_MAIN_THREAD();
    const qsizetype from = m_sessions.indexOf(session(id));
    if (from >= 0 && place >= 0 && place < m_sessions.size() && place != from) {
        m_sessions.move(from, place);
        Q_EMIT sessionsChanged();
    }
}

void TerminalTabs::close(const QUuid& id) {
    ORV_ASSERT_MAIN_THREAD();
    TerminalSession* closed = session(id);
    if (closed == nullptr) {
        return;
    }
    closed->terminate();
    m_sessions.removeOne(closed);
    // It may be the one whose signal led here.
    closed->deleteLater();
    Q_EMIT sessionsChanged();
    if (m_selectedID == id) {
        setSelected(m_sessions.isEmpty() ? std::nullopt : std::optional(m_sessions.constLast()->id()));
    }
}

void TerminalTabs::closeAll() {
    ORV_ASSERT_MAIN_THREAD();
    const QList<TerminalSession*> closed = m_sessions;
    std::ranges::for_each(closed, &TerminalSession::terminate);
    m_sessions.clear();
    std::ranges::for_each(closed, &TerminalSession::deleteLater);
    if (!closed.isEmpty()) {
        Q_EMIT sessionsChanged();
    }
    setSelected({});
}

void TerminalTabs::select(const QUuid& id) {
    ORV_ASSERT_MAIN_THREAD();
    if (session(id) != nullptr) {
        setSelected(id);
    }
}

bool TerminalTabs::hasUnseen() const {
    return std::ranges::any_of(m_sessions, [](const TerminalSession* session) {
        return session->hasUnseenBell() || session->hasUnseenQuestion();
    });
}

bool TerminalTabs::anyForegroundProgram() const {
    return std::ranges::any_of(m_sessions, &TerminalSession::hasForegroundProgram);
}

void TerminalTabs::setClipboardWrite(ClipboardWrite choice) {
    ORV_ASSERT_MAIN_THREAD();
    m_clipboardWrite = choice;
    for (TerminalSession* session : m_sessions) {
        session->setClipboardWrite(choice);
        if (choice != ClipboardWrite::ask) { // a question that waits is decided too
            session->answerProgramsCopy(choice == ClipboardWrite::on);
        }
    }
}

void TerminalTabs::setSelected(std::optional<QUuid> id) {
    if (id != m_selectedID) {
        m_selectedID = id;
        Q_EMIT selectedIDChanged();
    }
}

} // namespace orv
