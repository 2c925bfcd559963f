#include "OrvUI/Screens/TerminalTabList.h"

#include "OrvCore/Async.h"

#include <QHash>

#include <utility>

namespace orv {

const std::vector<RowRole<TerminalTab>>& TerminalTab::roles() {
    static const std::vector<RowRole<TerminalTab>> table{
        memberRole<&TerminalTab::session, TerminalTab>("session"),
        memberRole<&TerminalTab::place, TerminalTab>("place"),
        memberRole<&TerminalTab::folder, TerminalTab>("folder"),
    };
    return table;
}

TerminalTabList::TerminalTabList(QObject* parent) : QObject(parent) {
    ORV_ASSERT_MAIN_THREAD();
}

void TerminalTabList::setTabs(TerminalTabs* tabs) {
    if (tabs == m_tabs) {
        return;
    }
    if (m_tabs != nullptr) {
        m_tabs->disconnect(this);
    }
    m_tabs = tabs;
    if (tabs != nullptr) {
        connect(tabs, &TerminalTabs::sessionsChanged, this, &TerminalTabList::follow);
        connect(tabs, &TerminalTabs::selectedIDChanged, this, &TerminalTabList::selectedChanged);
        connect(tabs, &TerminalTabs::hasUnseenChanged, this, &TerminalTabList::hasUnseenChanged);
        // A shell that is left may stand in another folder than when it was come to.
        connect(tabs, &TerminalTabs::selectedIDChanged, this, &TerminalTabList::listRows);
    }
    follow();
    Q_EMIT tabsChanged();
    Q_EMIT selectedChanged();
}

void TerminalTabList::follow() {
    const qsizetype before = m_rows.rowCount();
    listRows();
    if (m_tabs != nullptr) {
        for (TerminalSession* session : m_tabs->sessions()) {
            connect(session, &TerminalSession::titleChanged, this, &TerminalTabList::listRows, Qt::UniqueConnection);
            connect(session, &TerminalSession::isBusyChanged, this, &TerminalTabList::listRows, Qt::UniqueConnection);
        }
    }
    if (m_closing != nullptr && (m_tabs == nullptr || !m_tabs->sessions().contains(m_closing.data()))) {
        setClosing(nullptr);
    }
    if (before != m_rows.rowCount()) {
        Q_EMIT countChanged();
    }
}

void TerminalTabList::listRows() {
    QList<TerminalTab> rows;
    if (m_tabs != nullptr) {
        for (TerminalSession* session : m_tabs->sessions()) {
            rows.append({session->id().toString(), session});
        }
    }
    Q_EMIT hasUnseenChanged();
    tellApart(rows);
    m_rows.setRows(rows);
}

void TerminalTabList::tellApart(QList<TerminalTab>& rows) const {
    QHash<QString, int> counts;
    for (const TerminalTab& row : std::as_const(rows)) {
        ++counts[row.session->title()];
    }
    QHash<QString, int> places;
    for (TerminalTab& row : rows) {
        const QString title = row.session->title();
        if (counts[title] > 1) {
            row.place = tr("%1 of %2").arg(++places[title]).arg(counts[title]);
            const QString folder = row.session->currentDirectory().fileName();
            row.folder = folder != row.session->directory().fileName() ? folder : QString();
        }
    }
}

TerminalSession* TerminalTabList::selected() const {
    return m_tabs != nullptr && m_tabs->selectedID() ? m_tabs->session(*m_tabs->selectedID()) : nullptr;
}

void TerminalTabList::open(const QUrl& folder) {
    m_tabs->open(folder);
}

void TerminalTabList::select(TerminalSession* session) {
    m_tabs->select(session->id());
}

void TerminalTabList::selectAt(int place) {
    if (place >= 0 && place < count()) {
        select(m_tabs->sessions().at(place));
    }
}

void TerminalTabList::step(int direction) {
    if (count() > 0) {
        const auto place = static_cast<int>(m_tabs->sessions().indexOf(selected()));
        selectAt((place + direction + count()) % count());
    }
}

void TerminalTabList::moveTo(TerminalSession* session, TerminalSession* other) {
    m_tabs->move(session->id(), static_cast<int>(m_tabs->sessions().indexOf(other)));
}

void TerminalTabList::moveSelected(int direction) {
    if (const TerminalSession* session = selected()) {
        const auto place = static_cast<int>(m_tabs->sessions().indexOf(session));
        m_tabs->move(session->id(), place + direction);
    }
}

void TerminalTabList::close(TerminalSession* session) {
    if (session->hasForegroundProgram()) {
        select(session);
        setClosing(session);
    } else {
        m_tabs->close(session->id());
    }
}

void TerminalTabList::answerClosing(bool isWanted) {
    TerminalSession* session = m_closing;
    setClosing(nullptr);
    if (isWanted && session != nullptr) {
        m_tabs->close(session->id());
    }
}

void TerminalTabList::renew(TerminalSession* session) {
    m_tabs->renew(session->id());
}

/// The program may end while its tab waits for an answer.
void TerminalTabList::lookAtClosing() {
    if (m_closing == nullptr || !m_closing->hasForegroundProgram()) {
        setClosing(nullptr);
    }
}

void TerminalTabList::setClosing(TerminalSession* session) {
    if (session != m_closing) {
        if (m_closing != nullptr) {
            for (const auto signal :
                 {&TerminalSession::outputReceived, &TerminalSession::isBusyChanged,
                  &TerminalSession::isAliveChanged}) {
                disconnect(m_closing, signal, this, &TerminalTabList::lookAtClosing);
            }
        }
        m_closing = session;
        if (session != nullptr) {
            connect(session, &TerminalSession::outputReceived, this, &TerminalTabList::lookAtClosing);
            connect(session, &TerminalSession::isBusyChanged, this, &TerminalTabList::lookAtClosing);
            connect(session, &TerminalSession::isAliveChanged, this, &TerminalTabList::lookAtClosing);
        }
        Q_EMIT closingChanged();
    }
}

} // namespace orv
