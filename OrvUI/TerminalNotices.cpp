#include "OrvUI/TerminalNotices.h"

#include "OrvUI/AppModel.h"

#include <algorithm>

namespace orv {

TerminalNotices::TerminalNotices(AppModel& model, TerminalTabs& terminals, std::function<bool()> appIsActive)
    : m_model(model), m_terminals(terminals), m_appIsActive(std::move(appIsActive)) {
    connect(&terminals, &TerminalTabs::sessionsChanged, this, &TerminalNotices::follow);
    follow();
}

void TerminalNotices::follow() {
    m_pauses.removeIf([this](const auto& entry) { return m_terminals.session(entry.key()) == nullptr; });
    for (TerminalSession* session : m_terminals.sessions()) {
        if (!m_pauses.contains(session->id())) {
            m_pauses.insert(session->id(), QDeadlineTimer(0));
            connect(
                session, &TerminalSession::notificationRequested, this,
                [this, session](const QString& title, const QString& body) { take(*session, title, body); });
        }
    }
}

void TerminalNotices::take(const TerminalSession& session, const QString& title, const QString& body) {
    const bool isSeen = session.isShown() && m_appIsActive && m_appIsActive();
    const auto pauseOf = m_pauses.find(session.id());
    if (!m_model.settings().settings().notificationsEnabled || isSeen || pauseOf == m_pauses.end() ||
        !pauseOf->hasExpired()) {
        return;
    }
    *pauseOf = QDeadlineTimer(pause);
    // Most of them send one text alone.
    const bool hasBoth = !title.trimmed().isEmpty() && !body.trimmed().isEmpty();
    const QString text = hasBoth ? body : title + body;
    m_model.notify(
        {.title = (hasBoth ? title : session.title()).trimmed().left(titleLength),
         .body = text.trimmed().left(bodyLength),
         .projectID = innermostProject(session.directory().toLocalFile(), m_model.projects()),
         .openURL = {},
         .part = {NotificationPart::Kind::terminal, session.id().toString()}});
}

} // namespace orv
