#include "OrvCore/Agents.h"
#include "OrvCore/Tasks.h"
#include "OrvUI/AgentRows.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Keymap.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/Palette_p.h"
#include "OrvUI/QuitGuard.h"
#include "OrvUI/TerminalTyping.h"
#include "OrvUI/Tile.h"

#include <QCoreApplication>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 bit(int verb) {
    return 1U << verb;
}

} // namespace

void Palette::collect() {
    m_candidates.clear();
    m_items.clear();
    collectProjects();
    collectActions();
    collectPlaces();
    collectTasks();
}

void Palette::collectProjects() {
    // What services say is looked up once, not for each project.
    QSet<QString> active;
    QSet<QString> running;
    QSet<QString> reachable;
    const auto& states = m_model->processes().states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        if (entry->isActive() && !AppModel::isInstall(entry.key())) {
            active.insert(entry.key().projectID);
            if (entry->isRunning()) {
                running.insert(entry.key().projectID);
            }
            if (m_model->addressPort(entry.key())) {
                reachable.insert(entry.key().projectID);
            }
        }
    }
    for (const ServiceID& id : m_model->orphans()->services()) {
        active.insert(id.projectID);
    }
    QHash<QString, size_t> indices;
    m_candidates.reserve(static_cast<size_t>(m_model->projects().size()));
    for (const Project& project : m_model->projects()) {
        const bool isActive = active.contains(project.id);
        const bool isPinned = m_model->isPinned(project);
        Candidate candidate{
            .projectID = project.id,
            .name = FuzzyText(project.name.normalized(QString::NormalizationForm_C)),
            .tileIndex = Tile::index(project.name),
            .tileLetter = Tile::letter(project.name)};
        candidate.verbs = bit(show) | bit(terminal) | bit(ask) | bit(isPinned ? unpin : pin) | bit(showTasks) |
                          bit(showLogs) | bit(showFiles);
        candidate.verbs |= isActive ? bit(stop) : bit(run);
        candidate.verbs |= running.contains(project.id) ? bit(restart) : 0;
        candidate.verbs |= reachable.contains(project.id) ? bit(browse) : 0;
        if (m_model->gitBadge(project)) {
            candidate.verbs |= bit(showGit) | bit(fetch) | bit(pull) | bit(push);
        }
        candidate.nearness = (isActive ? 4 : 0) + (isPinned ? 2 : 0);
        indices.insert(project.id, m_candidates.size());
        m_candidates.push_back(std::move(candidate));
    }
    for (auto entry = m_counts.begin(); entry != m_counts.end(); ++entry) {
        const auto place = indices.constFind(entry.key().section(u':', 1));
        const auto verb = std::ranges::find(verbs(), entry.key().section(u':', 0, 0), &VerbInfo::name);
        if (place != indices.constEnd() && verb != verbs().end()) {
            m_candidates[*place].bonus[static_cast<size_t>(verb - verbs().begin())] = bonus(entry.key());
        }
    }
}

void Palette::add(Group group, PaletteRow row, std::function<void()> perform, const QString& alsoKnownAs) {
    Item item{
        .row = std::move(row),
        .group = group,
        .title = {},
        .alsoKnownAs = FuzzyText(alsoKnownAs),
        .bonus = 0,
        .perform = std::move(perform)};
    item.title = FuzzyText(item.row.title);
    item.bonus = bonus(item.row.what);
    m_items.push_back(std::move(item));
}

void Palette::collectActions() {
    const auto action = [this](
                            const char* name, const QString& title, const char* icon, const char* keys,
                            std::function<void()> perform, const QString& alsoKnownAs = {}) {
        PaletteRow row;
        row.what = u"action:"_s + QString::fromLatin1(name);
        row.title = title;
        row.icon = QString::fromLatin1(icon);
        row.shortcut = *keys != 0 ? Keymap::text(QString::fromLatin1(keys)) : QString();
        add(actions, std::move(row), std::move(perform), alsoKnownAs);
    };
    AppModel& model = *m_model;
    action(
        "new-folder", tr("Add project"), "folder-plus", "newFolder",
        [&model] { model.setSheet(AppSheet{AppSheet::Kind::addProject, AddProjectMode::newFolder}); },
        tr("New folder"));
    action("clone", tr("Clone repository"), "git-branch", "clone", [&model] {
        model.setSheet(AppSheet{AppSheet::Kind::addProject, AddProjectMode::clone});
    });
    action("refresh", tr("Refresh projects"), "refresh-cw", "refresh", [&model] { model.refreshNow(); }, tr("Scan"));
    if (const int services = RunningWork::of(model).services; services > 0) {
        const QString title = services == 1 ? tr("Stop the only service that runs")
                                            : tr("Stop all %1 services of all projects").arg(services);
        action("stop-all", title, "own-stop-fill", "", [&model] { model.stopAll(); }, tr("Stop all services"));
    }
    action(
        "shortcuts", tr("Show all shortcuts"), "square-terminal", "shortcuts", [this] { Q_EMIT shortcutsAsked(); },
        tr("Keyboard help"));
    action(
        "diagnostics", tr("Copy diagnostics"), "copy", "", [this] { Q_EMIT diagnosticsAsked(); },
        tr("Help, version, bug report"));
    const bool isListed = model.settings().settings().viewMode == ViewMode::folders;
    action(
        "view", isListed ? tr("Show projects as cards") : tr("Show projects as folders"),
        isListed ? "layout-grid" : "list-tree", "view", [&model, isListed] {
            model.changeSettings([isListed](AppSettings& settings) {
                settings.viewMode = isListed ? ViewMode::cards : ViewMode::folders;
            });
            model.setPage({});
        });
    action("unsaved", tr("Show projects with unsaved changes"), "file-diff", "unsaved", [&model] {
        model.setShowOnlyUncommitted(true);
        model.setPage({});
    });
    if (model.filters().isActive() || model.showOnlyUncommitted() || !model.searchText().isEmpty()) {
        action("clear-filters", tr("Clear filters and search"), "list-filter", "", [&model] {
            model.clearFilters();
            model.setShowOnlyUncommitted(false);
            model.setSearchText({});
            model.setPage({});
        });
    }
    action("projects-folder", tr("Show the projects folder"), "folder-open", "", [&model] {
        model.openLink(model.scanRootUrl());
    });
    const std::array themes{tr("Ember"), tr("Ocean"), tr("Forest"), tr("Violet"), tr("Graphite")};
    for (size_t theme = 0; theme < themes.size(); ++theme) {
        const int index = static_cast<int>(theme);
        if (index != model.themeIndex()) {
            action(
                qPrintable(u"theme-"_s + QString::number(index)), tr("Theme: %1").arg(themes[theme]), "palette", "",
                [&model, index] { model.setThemeIndex(index); }, tr("Colors"));
        }
    }
    const std::array looks{tr("Look: as the system"), tr("Look: light"), tr("Look: dark")};
    const std::array lookIcons{"monitor", "sun", "moon"};
    for (size_t look = 0; look < looks.size(); ++look) {
        const int index = static_cast<int>(look);
        if (index != model.appearance()) {
            action(
                qPrintable(u"look-"_s + QString::number(index)), looks[look], lookIcons[look], "",
                [&model, index] { model.setAppearance(index); }, tr("Appearance mode"));
        }
    }
    action("tour", tr("Start the welcome tour"), "circle-play", "", [&model] { model.startOnboarding(); });
}

void Palette::collectPlaces() {
    AppModel& model = *m_model;
    const auto place = [this](
                           const QString& name, const QString& title, const QString& icon, const QString& keys,
                           std::function<void()> perform, const QString& detail = {}, const QString& known = {}) {
        PaletteRow row;
        row.what = u"page:"_s + name;
        row.title = title;
        row.detail = detail;
        row.icon = icon;
        row.shortcut = keys;
        add(places, std::move(row), std::move(perform), known);
    };
    const auto page = [&model](AppPage::Kind kind, const QString& id = {}, SettingsSection section = {}) {
        return [&model, wanted = AppPage{kind, id, section}] { model.setPage(wanted); };
    };
    const int open = model.openTaskCount();
    place(
        u"tasks"_s, tr("Tasks"), u"list-todo"_s, Keymap::text(u"tasks"_s), page(AppPage::Kind::tasks),
        open > 0 ? tr("%1 open").arg(open) : QString());
    place(u"ai"_s, tr("AI"), u"sparkles"_s, Keymap::text(u"ai"_s), page(AppPage::Kind::ai), {}, tr("Agents"));
    place(
        u"settings"_s, tr("Settings"), u"settings"_s, Keymap::text(u"settings"_s), page(AppPage::Kind::settings), {},
        tr("Preferences"));
    place(u"home"_s, tr("Home"), u"layout-grid"_s, Keymap::text(u"home"_s), page(AppPage::Kind::home));
    for (const ProjectFilter filter : allProjectFilters) {
        const int index = static_cast<int>(filter);
        place(
            u"filter-"_s + QString::number(index), title(filter), icon(filter), Keymap::nthText(u"filter"_s, index),
            [&model, index] {
                model.setFilterIndex(index);
                model.setPage({});
            });
    }
    struct Section {
        SettingsSection section;
        QStringView icon;
        QString known; ///< what is set there
    };
    const Section sections[] = {
        {SettingsSection::profile, u"circle-user", tr("Name, picture")},
        {SettingsSection::git, u"git-branch", tr("Commit identity, email, pull, default branch")},
        {SettingsSection::ai, u"sparkles", tr("Default agent, autonomy, work trees")},
        {SettingsSection::appearance, u"palette", tr("Theme, dark, light")},
        {SettingsSection::notifications, u"bell", tr("Tell me when")},
        {SettingsSection::general, u"sliders-horizontal", tr("Projects folder, start at login, quick panel shortcut")},
        {SettingsSection::projects, u"folder-cog", tr("Commands, ports, overrides")},
    };
    for (const auto& [section, icon, known] : sections) {
        place(
            u"settings-"_s + QString::number(static_cast<int>(section)), tr("Settings: %1").arg(title(section)),
            icon.toString(), {}, page(AppPage::Kind::settings, {}, section), {}, known);
    }
    const auto folders = [&](const auto& self, const QList<ProjectNode>& nodes) -> void {
        for (const ProjectNode& node : nodes) {
            if (!node.project) {
                place(
                    u"folder-"_s + node.path, node.name, u"folder"_s, {}, page(AppPage::Kind::collection, node.path),
                    tr("Folder"));
            }
            self(self, node.children);
        }
    };
    folders(folders, model.tree());
}

void Palette::collectTasks() {
    for (const ProjectTask& task : m_model->tasks()) {
        if (task.isDone()) {
            continue;
        }
        const Project* project = m_model->project(task.projectID);
        PaletteRow row;
        row.what = u"task:"_s + task.id.toString(QUuid::WithoutBraces);
        row.title = task.title;
        row.detail = project != nullptr ? project->name : QString();
        row.icon = u"list-todo"_s;
        const AppPage page = project != nullptr ? AppPage{AppPage::Kind::project, project->id, {}}
                                                : AppPage{AppPage::Kind::tasks, {}, {}};
        add(tasks, std::move(row), [this, page] {
            m_model->setDetailTab(DetailTab::tasks);
            m_model->setPage(page);
        });
    }
}

QString Palette::detail(const Project& project, Verb verb) const {
    const GitBadge badge = m_model->gitBadge(project).value_or(GitBadge());
    switch (verb) {
    case show:
        return stackLine(project);
    case run: {
        const std::optional<RunAction> action = m_model->primaryAction(project);
        return action ? QCoreApplication::translate("RunAction", rawValue(*action).toUtf8().constData()) : QString();
    }
    case stop: {
        const auto isActive = [this](const ServiceID& id) {
            return !AppModel::isInstall(id) && m_model->processes().state(id).isActive();
        };
        const auto own = std::ranges::count_if(m_model->services(project), isActive);
        const auto left = std::ranges::count(m_model->orphans()->services(), project.id, &ServiceID::projectID);
        const QString count = own + left == 1 ? tr("1 service") : tr("%1 services").arg(own + left);
        return left == 0  ? count
               : own == 0 ? tr("%1 from last time").arg(count)
                          : tr("%1, %2 from last time").arg(count).arg(left);
    }
    case browse: {
        for (const ServiceID& id : m_model->services(project)) {
            if (const auto port = AppModel::isInstall(id) ? std::nullopt : m_model->addressPort(id)) {
                return u"localhost:"_s + QString::number(*port);
            }
        }
        return {};
    }
    case push:
        return badge.ahead == 0   ? QString()
               : badge.ahead == 1 ? tr("1 commit ahead")
                                  : tr("%1 commits ahead").arg(badge.ahead);
    case pull:
        return badge.behind == 0   ? QString()
               : badge.behind == 1 ? tr("1 commit behind")
                                   : tr("%1 commits behind").arg(badge.behind);
    case showGit:
        return badge.changes == 0   ? QString()
               : badge.changes == 1 ? tr("1 change")
                                    : tr("%1 changes").arg(badge.changes);
    case ask:
        return agentText(agentInfo(m_model->settings().settings().defaultAgent).displayName);
    case showTasks: {
        const QList<ProjectTask> all = m_model->tasks(project);
        const auto open = std::ranges::count_if(all, [](const ProjectTask& task) { return !task.isDone(); });
        return open > 0 ? tr("%1 open").arg(open) : QString();
    }
    default:
        return {};
    }
}

void Palette::performVerb(const PaletteRow& row) {
    const auto found = std::ranges::find(verbs(), row.what.section(u':', 0, 0), &VerbInfo::name);
    const Project* known = m_model->project(row.projectID);
    if (found == verbs().end() || known == nullptr) {
        return;
    }
    const Project project = *known;
    const auto open = [&](DetailTab tab) {
        m_model->setDetailTab(tab);
        m_model->setPage({.kind = AppPage::Kind::project, .id = project.id});
    };
    switch (static_cast<Verb>(found - verbs().begin())) {
    case show:
        return open(DetailTab::overview);
    case run:
    case stop:
        return m_model->toggleProject(project.id);
    case restart:
        return m_model->restartProject(project.id);
    case browse:
        return m_model->openProject(project.id);
    case push:
    case pull:
    case fetch:
        return m_model->quickGitFor(project.id, found->name);
    case terminal:
        return static_cast<void>(openTerminal(*m_model, project.root));
    case ask:
        if (m_model->page() != AppPage{AppPage::Kind::project, project.id, {}}) {
            open(DetailTab::overview);
        }
        m_model->setAiPanelProjectID(project.id);
        return m_model->setAgentDraft(AgentDraft{project.id, {}, {}}); // the composer takes the keys
    case pin:
    case unpin:
        return m_model->togglePin(project);
    case showTasks:
        return open(DetailTab::tasks);
    case showLogs:
        return open(DetailTab::logs);
    case showGit:
        return open(DetailTab::git);
    case showFiles:
        return open(DetailTab::files);
    case verbCount:
        break;
    }
}

} // namespace orv
