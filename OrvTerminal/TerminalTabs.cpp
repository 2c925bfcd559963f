#include "OrvTerminal/TerminalTabs.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/MainThreadQueue.h"

#include <QHash>
#include <QMap>

#include <algorithm>
#include <iterator>
#include <utility>

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
    use(session->id());
    m_shell.isEmpty() ? session->start() : session->start(m_shell);
    Q_EMIT opened(session);
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
    QList<TerminalSession*> kept;
    std::ranges::copy_if(m_sessions, std::back_inserter(kept), [](const TerminalSession* session) {
        return session->isAlive() || session->isWaiting();
    });
    QHash<QUuid, int> uses;
    for (const QUuid& id : m_used) {
        if (kept.contains(session(id))) {
            uses.insert(id, static_cast<int>(uses.size()) + 1);
        }
    }
    QList<TerminalPlace> places;
    for (const TerminalSession* session : std::as_const(kept)) {
        places.append({session->directory(), session->currentDirectory(), session->title(), uses.value(session->id())});
    }
    return places;
}

void TerminalTabs::restore(const QList<TerminalPlace>& places) {
    ORV_ASSERT_MAIN_THREAD();
    if (places.isEmpty()) {
        return;
    }
    QMap<int, QUuid> uses;
    for (const TerminalPlace& place : places) {
        TerminalSession* session = make(m_sessions.size(), place.directory);
        session->startWhenShown(m_shell, place.folder, place.title);
        if (place.lastUse > 0) {
            uses.insert(place.lastUse, session->id());
        }
    }
    m_used += uses.values();
    Q_EMIT sessionsChanged();
    if (const TerminalSession* last = lastUsed(m_sessions)) {
        setSelected(last->id());
    }
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
    m_used.removeOne(id);
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
    m_used.clear();
    std::ranges::for_each(closed, &TerminalSession::deleteLater);
    if (!closed.isEmpty()) {
        Q_EMIT sessionsChanged();
    }
    setSelected({});
}

void TerminalTabs::select(const QUuid& id) {
    ORV_ASSERT_MAIN_THREAD();
    if (session(id) != nullptr) {
        use(id);
    }
}

TerminalSession* TerminalTabs::lastUsed(const QList<TerminalSession*>& sessions) const {
    const auto use = [this](const TerminalSession* session) { return m_used.indexOf(session->id()); };
    const auto last = std::ranges::max_element(sessions, {}, use);
    return last == sessions.cend() ? nullptr : *last;
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

void TerminalTabs::use(const QUuid& id) {
    m_used.removeOne(id);
    m_used.append(id);
    setSelected(id);
}

} // namespace orv
