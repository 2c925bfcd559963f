#include "OrvUI/Navigator.h"

#include "OrvUI/AppModel.h"

#include <algorithm>

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

AppModel* Navigator::model() const {
    return m_model;
}

void Navigator::setModel(AppModel* model) {
    if (model == m_model) {
        return;
    }
    m_model = model;
    connect(model, &AppModel::pageChanged, this, &Navigator::follow);
    connect(model, &AppModel::detailTabChanged, this, &Navigator::tabChanged);
    connect(model, &AppModel::sheetChanged, this, &Navigator::sheetChanged);
    connect(model, &AppModel::treeChanged, this, &Navigator::leaveWhatIsGone);
    m_current = model->page();
    Q_EMIT modelChanged();
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
    if (page.kind == AppPage::Kind::settings) {
        m_lastSection = page.section;
    }
    Q_EMIT moved();
    Q_EMIT crumbsChanged();
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
