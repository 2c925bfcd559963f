#include "OrvUI/Navigator.h"

#include "OrvUI/AppModel.h"

#include <QFileInfo>
#include <QSysInfo>

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// More than anybody goes back.
constexpr qsizetype maximumWay = 100;

/// The nodes from a root of the tree to the one for which `isWanted` holds, that one included; empty when none does.
template <typename Predicate>
QList<const ProjectNode*> way(const QList<ProjectNode>& nodes, const Predicate& isWanted) {
    for (const ProjectNode& node : nodes) {
        if (isWanted(node)) {
            return {&node};
        }
        if (QList<const ProjectNode*> below = way(node.children, isWanted); !below.isEmpty()) {
            below.prepend(&node);
            return below;
        }
    }
    return {};
}

QList<const ProjectNode*> way(const QList<ProjectNode>& tree, const AppPage& page) {
    return way(tree, [&page](const ProjectNode& node) {
        return page.kind == AppPage::Kind::project ? node.project && node.project->id == page.id : node.path == page.id;
    });
}

AppPage at(AppPage::Kind kind, const QString& id = {}, SettingsSection section = SettingsSection::profile) {
    return {kind, id, section};
}

AppPage pageOf(const ProjectNode& node) {
    return node.project ? at(AppPage::Kind::project, node.project->id) : at(AppPage::Kind::collection, node.path);
}

} // namespace

void Navigator::takeModel() {
    connect(m_model, &AppModel::pageChanged, this, &Navigator::follow);
    connect(m_model, &AppModel::detailTabChanged, this, &Navigator::tabChanged);
    connect(m_model, &AppModel::sheetChanged, this, &Navigator::sheetChanged);
    connect(m_model, &AppModel::aiPanelProjectIDChanged, this, &Navigator::agentPanelChanged);
    connect(this, &Navigator::moved, this, &Navigator::agentPanelChanged);
    connect(m_model, &AppModel::treeChanged, this, &Navigator::leaveWhatIsGone);
    m_current = m_model->page();
    Q_EMIT moved();
    Q_EMIT crumbsChanged();
}

int Navigator::tab() const {
    return m_model ? static_cast<int>(m_model->detailTab()) : 0;
}

void Navigator::setTab(int tab) {
    if (tab >= 0 && tab <= static_cast<int>(DetailTab::files)) {
        m_model->setDetailTab(static_cast<DetailTab>(tab));
    }
}

bool Navigator::agentPanel() const {
    return m_model && m_current.kind == AppPage::Kind::project && m_model->aiPanelProjectID() == m_current.id;
}

void Navigator::setAgentPanel(bool isOpen) {
    if (isOpen == agentPanel() || m_current.kind != AppPage::Kind::project) {
        return;
    }
    m_model->setAiPanelProjectID(isOpen ? std::optional(m_current.id) : std::nullopt);
}

QVariantList Navigator::crumbs() const {
    QVariantList list;
    for (const Crumb& crumb : trail()) {
        list.append(QVariantMap{{u"title"_s, crumb.title}});
    }
    return list;
}

QList<Navigator::Crumb> Navigator::trail() const {
    QList<Crumb> list{{tr("Home"), AppPage{}}};
    switch (m_current.kind) {
    case AppPage::Kind::home:
        break;
    case AppPage::Kind::tasks:
        list.append({tr("Tasks"), m_current});
        break;
    case AppPage::Kind::ai:
        list.append({tr("AI"), m_current});
        break;
    case AppPage::Kind::settings:
        list.append({tr("Settings"), at(AppPage::Kind::settings)});
        list.append({title(m_current.section), m_current});
        break;
    case AppPage::Kind::collection:
    case AppPage::Kind::folder:
    case AppPage::Kind::project:
        for (const ProjectNode* node : way(m_model->tree(), m_current)) {
            list.append({node->name, pageOf(*node)});
        }
        break;
    }
    return list;
}

void Navigator::home() {
    m_model->setPage({});
}

void Navigator::tasks() {
    m_model->setPage(at(AppPage::Kind::tasks));
}

void Navigator::ai() {
    m_model->setPage(at(AppPage::Kind::ai));
}

void Navigator::settings(int section) {
    const bool isKnown = section >= 0 && section <= static_cast<int>(SettingsSection::projects);
    const SettingsSection wanted = isKnown ? static_cast<SettingsSection>(section) : m_lastSection;
    m_model->setPage(at(AppPage::Kind::settings, {}, wanted));
}

void Navigator::project(const QString& projectID, int tab) {
    if (m_model->project(projectID) != nullptr) {
        setTab(tab);
        m_model->setPage(at(AppPage::Kind::project, projectID));
    }
}

void Navigator::collection(const QString& path) {
    const AppPage wanted = at(AppPage::Kind::collection, path);
    if (exists(wanted)) {
        m_model->setPage(wanted);
    }
}

void Navigator::folder(const QString& path) {
    const AppPage wanted = at(AppPage::Kind::folder, path);
    if (exists(wanted)) {
        m_model->setPage(wanted);
    }
}

void Navigator::openCrumb(int index) {
    const QList<Crumb> list = trail();
    if (index >= 0 && index < list.size()) {
        m_model->setPage(list[index].page);
    }
}

QString Navigator::sheet() const {
    const std::optional<AppSheet> open = m_model ? m_model->sheet() : std::nullopt;
    if (!open) {
        return {};
    }
    if (open->kind == AppSheet::Kind::widgetsHowTo) {
        return u"widgetsHowTo"_s;
    }
    return open->mode == AddProjectMode::clone ? u"clone"_s : u"addProject"_s;
}

void Navigator::addProject(bool clones) {
    m_model->setSheet(AppSheet{AppSheet::Kind::addProject, clones ? AddProjectMode::clone : AddProjectMode::newFolder});
}

void Navigator::closeSheet() {
    m_model->setSheet(std::nullopt);
}

void Navigator::back() {
    travel(m_behind, m_ahead);
}

void Navigator::forward() {
    travel(m_ahead, m_behind);
}

/// Goes to the newest place of `from` that is still there, and notes this one in `to`.
void Navigator::travel(QList<AppPage>& from, QList<AppPage>& to) {
    while (!from.isEmpty()) {
        const AppPage wanted = from.takeLast();
        if (wanted == m_current || !exists(wanted)) {
            continue;
        }
        to.append(m_current);
        m_isTravelling = true;
        m_model->setPage(wanted);
        m_isTravelling = false;
        return;
    }
    Q_EMIT moved();
}

void Navigator::follow() {
    const AppPage page = m_model->page();
    if (page == m_current) {
        return;
    }
    if (!m_isTravelling) {
        m_behind.append(m_current);
        m_behind = m_behind.last(std::min(m_behind.size(), maximumWay));
        m_ahead.clear();
    }
    m_current = page;
    m_wish.clear();
    if (page.kind == AppPage::Kind::settings) {
        m_lastSection = page.section;
    }
    Q_EMIT moved();
    Q_EMIT crumbsChanged();
}

void Navigator::wishFor(const QString& projectID, int tab, const QString& wish) {
    project(projectID, tab);
    if (m_current.kind == AppPage::Kind::project && m_current.id == projectID) {
        setWish(wish);
    }
}

void Navigator::followLink(const QUrl& link) {
    constexpr std::array known{"http"_L1, "https"_L1, "mailto"_L1, "ftp"_L1, "ftps"_L1, "sftp"_L1, "ssh"_L1};
    const QString host = link.host();
    const bool isHere =
        host.isEmpty() || host == u"localhost" || host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
    if (link.scheme() == u"file" && isHere) {
        const QString path = link.path(QUrl::FullyDecoded);
        if (QFileInfo(path).isDir()) {
            m_model->openLink(QUrl::fromLocalFile(path));
        } else {
            m_model->openFile(path);
        }
    } else if (std::ranges::find(known, link.scheme()) != known.end()) {
        m_model->openLink(link);
    } else {
        m_model->showStatus(tr("%1 is not opened from a terminal.").arg(link.toDisplayString()), true);
    }
}

void Navigator::newTask() {
    tasks();
    setWish(u"newTask"_s);
}

void Navigator::setWish(const QString& wish) {
    m_wish = wish;
    Q_EMIT wishChanged();
}

bool Navigator::take(const QString& wish) {
    const bool isWished = !wish.isEmpty() && m_wish == wish;
    if (isWished) {
        m_wish.clear();
    }
    return isWished;
}

void Navigator::leaveWhatIsGone() {
    if (!exists(m_current)) {
        m_model->setPage({});
    }
    Q_EMIT crumbsChanged();
}

bool Navigator::exists(const AppPage& page) const {
    switch (page.kind) {
    case AppPage::Kind::collection:
    case AppPage::Kind::folder:
    case AppPage::Kind::project:
        return !way(m_model->tree(), page).isEmpty();
    case AppPage::Kind::settings:
    case AppPage::Kind::home:
    case AppPage::Kind::tasks:
    case AppPage::Kind::ai:
        return true;
    }
    return false;
}

} // namespace orv
