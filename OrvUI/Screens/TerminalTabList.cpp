#include "OrvUI/Screens/TerminalTabList.h"

#include "OrvCore/Async.h"
#include "OrvCore/Paths.h"
#include "OrvUI/AppModel.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace orv {

const std::vector<RowRole<TerminalTab>>& TerminalTab::roles() {
    static const std::vector<RowRole<TerminalTab>> table{
        memberRole<&TerminalTab::session, TerminalTab>("session"),
        memberRole<&TerminalTab::place, TerminalTab>("place"),
        memberRole<&TerminalTab::folder, TerminalTab>("folder"),
        memberRole<&TerminalTab::isGuest, TerminalTab>("isGuest"),
    };
    return table;
}

const std::vector<RowRole<OtherTerminal>>& OtherTerminal::roles() {
    static const std::vector<RowRole<OtherTerminal>> table{
        memberRole<&OtherTerminal::session, OtherTerminal>("session"),
        memberRole<&OtherTerminal::text, OtherTerminal>("text"),
        memberRole<&OtherTerminal::projectID, OtherTerminal>("projectID"),
        memberRole<&OtherTerminal::hasUnseen, OtherTerminal>("hasUnseen"),
    };
    return table;
}

TerminalTabList::TerminalTabList(QObject* parent) : QObject(parent) {
    ORV_ASSERT_MAIN_THREAD();
    connect(this, &TerminalTabList::projectIDChanged, this, [this] {
        m_guest = nullptr;
        follow();
    });
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
        connect(tabs, &TerminalTabs::hasUnseenChanged, this, &TerminalTabList::listRows);
        connect(tabs, &TerminalTabs::opened, this, &TerminalTabList::takeIn);
        // A shell that is left may stand in another folder than when it was come to.
        connect(tabs, &TerminalTabs::selectedIDChanged, this, [this] {
            TerminalSession* chosen = m_tabs->selectedID() ? m_tabs->session(*m_tabs->selectedID()) : nullptr;
            if (chosen != nullptr && ownerOf(*chosen) == Owner::project) {
                m_guest = nullptr;
            }
            follow();
        });
    }
    follow();
    Q_EMIT tabsChanged();
}

AppModel* TerminalTabList::model() const {
    return m_model;
}

void TerminalTabList::setModel(AppModel* model) {
    if (model == m_model) {
        return;
    }
    if (m_model != nullptr) {
        m_model->disconnect(this);
    }
    m_model = model;
    if (model != nullptr) {
        connect(model, &AppModel::projectsChanged, this, &TerminalTabList::follow);
    }
    follow();
    Q_EMIT modelChanged();
}

std::optional<QString> TerminalTabList::projectOf(const TerminalSession& session) const {
    return m_model != nullptr ? innermostProject(session.directory().toLocalFile(), m_model->projects()) : m_projectID;
}

TerminalTabList::Owner TerminalTabList::ownerOf(const TerminalSession& session) const {
    const std::optional<QString> project = projectOf(session);
    return !project ? Owner::none : *project == m_projectID ? Owner::project : Owner::another;
}

QList<TerminalSession*> TerminalTabList::own() const {
    QList<TerminalSession*> found;
    for (TerminalSession* session : m_tabs != nullptr ? m_tabs->sessions() : QList<TerminalSession*>()) {
        if (ownerOf(*session) == Owner::project) {
            found.append(session);
        }
    }
    return found;
}

/// What was opened, or asked for, is shown here unless another page has it.
void TerminalTabList::takeIn(TerminalSession* session) {
    if (const Owner owner = ownerOf(*session); owner != Owner::another) {
        m_guest = owner == Owner::none ? session : nullptr;
        follow();
    }
}

void TerminalTabList::follow() {
    const auto connectTo = [this](TerminalSession* session) {
        connect(session, &TerminalSession::titleChanged, this, &TerminalTabList::listRows, Qt::UniqueConnection);
        connect(session, &TerminalSession::isBusyChanged, this, &TerminalTabList::listRows, Qt::UniqueConnection);
    };
    const QList<TerminalSession*> all = m_tabs != nullptr ? m_tabs->sessions() : QList<TerminalSession*>();
    std::ranges::for_each(all, connectTo);
    if (m_guest != nullptr && (!all.contains(m_guest.data()) || ownerOf(*m_guest) != Owner::none)) {
        m_guest = nullptr;
    }
    if (m_closing != nullptr && !all.contains(m_closing.data())) {
        setClosing(nullptr);
    }
    listRows();
    Q_EMIT countChanged();
    Q_EMIT selectedChanged();
}

void TerminalTabList::listRows() {
    QList<TerminalTab> rows;
    QList<OtherTerminal> others;
    const QList<TerminalSession*> shown = own();
    for (TerminalSession* session : shown) {
        rows.append({session->id().toString(), session});
    }
    for (TerminalSession* session : m_tabs != nullptr ? m_tabs->sessions() : QList<TerminalSession*>()) {
        if (session != m_guest && !shown.contains(session)) {
            others.append(otherRow(*session));
        }
    }
    tellApart(rows);
    if (m_guest != nullptr) {
        const QString folder = m_guest->directory().fileName();
        rows.append({m_guest->id().toString(), m_guest, {}, folder != m_guest->title() ? folder : QString(), true});
    }
    m_rows.setRows(rows);
    m_others.setRows(others);
    Q_EMIT hasUnseenChanged();
}

OtherTerminal TerminalTabList::otherRow(TerminalSession& session) const {
    const std::optional<QString> id = projectOf(session);
    const Project* project = id ? m_model->project(*id) : nullptr;
    const QString place = project != nullptr ? project->name : Paths::shortened(session.directory().toLocalFile());
    const QString title = session.title();
    const bool isNamed = title == place || title == session.directory().fileName();
    return {
        session.id().toString(), &session, isNamed ? place : tr("%1: %2").arg(place, title), id.value_or(QString()),
        session.hasUnseen()};
}

bool TerminalTabList::hasUnseen() const {
    return std::ranges::any_of(m_rows.rows(), [](const TerminalTab& row) { return row.session->hasUnseen(); });
}

bool TerminalTabList::hasUnseenElsewhere() const {
    return std::ranges::any_of(m_others.rows(), &OtherTerminal::hasUnseen);
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
    return m_guest != nullptr ? m_guest.data() : m_tabs != nullptr ? m_tabs->lastUsed(own()) : nullptr;
}

void TerminalTabList::open(const QUrl& folder) {
    m_tabs->open(folder);
}

void TerminalTabList::select(TerminalSession* session) {
    m_tabs->select(session->id());
    takeIn(session);
}

void TerminalTabList::selectAt(int place) {
    if (place >= 0 && place < count()) {
        select(m_rows.rows().at(place).session);
    }
}

void TerminalTabList::step(int direction) {
    const auto isSelected = [session = selected()](const TerminalTab& row) { return row.session == session; };
    if (count() > 0) {
        const auto place = static_cast<int>(std::ranges::find_if(m_rows.rows(), isSelected) - m_rows.rows().begin());
        selectAt((place + direction + count()) % count());
    }
}

void TerminalTabList::moveTo(TerminalSession* session, TerminalSession* other) {
    m_tabs->move(session->id(), static_cast<int>(m_tabs->sessions().indexOf(other)));
}

void TerminalTabList::moveSelected(int direction) {
    const QList<TerminalSession*> sessions = own();
    const qsizetype place = sessions.indexOf(selected());
    const qsizetype next = place + direction;
    if (place >= 0 && next >= 0 && next < sessions.size()) {
        moveTo(sessions[place], sessions[next]);
    }
}

void TerminalTabList::close(TerminalSession* session) {
    if (session->hasForegroundProgram()) {
        select(session);
        setClosing(session);
    } else {
        closeNow(*session);
    }
}

void TerminalTabList::answerClosing(bool isWanted) {
    TerminalSession* session = m_closing;
    setClosing(nullptr);
    if (isWanted && session != nullptr) {
        closeNow(*session);
    }
}

/// Behind the one that was shown comes the last one that is left.
void TerminalTabList::closeNow(TerminalSession& session) {
    const bool wasShown = &session == selected();
    m_tabs->close(session.id());
    if (const QList<TerminalSession*> left = own(); wasShown && !left.isEmpty()) {
        select(left.constLast());
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
