#include "OrvUI/Suggestions.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/CTA.h"
#include "OrvUI/LaunchAtLogin.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

#ifdef Q_OS_MACOS
constexpr bool hasWidgets = true;
#else
constexpr bool hasWidgets = false;
#endif

/// What of the last run can be run once more; empty when nothing of it is there any more.
ServiceKinds resumable(const AppModel& model, const LastRun& last, const Project& project) {
    const std::optional<RunAction> known = runAction(last.action);
    const std::optional<RunAction> action = known ? known : model.primaryAction(project);
    ServiceKinds there;
    for (const ServiceKind kind : action ? kinds(*action) : ServiceKinds()) {
        if (std::ranges::find(project.targets, kind, &ServiceTarget::kind) != project.targets.end()) {
            there.insert(kind);
        }
    }
    return there;
}

CTAContext context(AppModel& model) {
    const AppSettings& settings = model.settings().settings();
    const Project* last = settings.lastRun ? model.project(settings.lastRun->projectID) : nullptr;
    if (last != nullptr && resumable(model, *settings.lastRun, *last).empty()) {
        last = nullptr;
    }
    return {
        .gitIdentitySet = model.gitIdentitySet(),
        .projectsWithChanges = static_cast<int>(model.projectsWithChanges().size()),
        .lastRunName = last != nullptr ? std::optional(last->name) : std::nullopt,
        .anythingRunning = model.runningCount() + model.leftCount() > 0,
        .themeChanged = settings.theme != AppSettings().theme,
        .widgetsConfirmed = settings.widgetsConfirmed || !hasWidgets,
        // Where the system has no such list there is nothing to suggest.
        .launchAtLogin = model.login()->isEnabled() || !model.login()->isAvailable(),
    };
}

AppPage settingsPage(SettingsSection section) {
    return {.kind = AppPage::Kind::settings, .id = {}, .section = section};
}

} // namespace

const std::vector<RowRole<SuggestionRow>>& SuggestionRow::roles() {
    static const std::vector<RowRole<SuggestionRow>> table{
        memberRole<&SuggestionRow::key, SuggestionRow>("key"),
        memberRole<&SuggestionRow::headline, SuggestionRow>("headline"),
        memberRole<&SuggestionRow::body, SuggestionRow>("body"),
        memberRole<&SuggestionRow::button, SuggestionRow>("button"),
        memberRole<&SuggestionRow::illustration, SuggestionRow>("illustration"),
    };
    return table;
}

Suggestions::Suggestions(AppModel& model, QObject* parent)
    : QObject(parent), m_model(model), m_updateSoon(this, [this] { update(); }) {
    const auto soon = [this] { m_updateSoon(); };
    for (const auto signal :
         {&AppModel::preferencesChanged, &AppModel::projectsChanged, &AppModel::servicesChanged,
          &AppModel::gitBadgesChanged, &AppModel::gitIdentitySetChanged}) {
        connect(&model, signal, this, soon);
    }
    connect(model.login(), &LaunchAtLogin::changed, this, soon);
    update();
}

void Suggestions::setLimit(int limit) {
    ORV_ASSERT_MAIN_THREAD();
    if (limit != m_limit) {
        m_limit = limit;
        update();
        Q_EMIT limitChanged();
    }
}

void Suggestions::update() {
    QList<SuggestionRow> rows;
    const auto& dismissed = m_model.settings().settings().dismissedCTAs;
    for (const CTA& cta : CTAEngine::visible(context(m_model), dismissed, m_limit)) {
        rows.append({rawValue(cta.id), cta.headline, cta.body, cta.button, cta.illustration()});
    }
    m_cards.setRows(rows);
}

void Suggestions::perform(const QString& key) {
    ORV_ASSERT_MAIN_THREAD();
    const std::optional<CTAID> id = fromRawValue<CTAID>(key);
    if (!id) {
        return;
    }
    switch (*id) {
    case CTAID::addProject:
        m_model.setSheet(AppSheet{AppSheet::Kind::addProject, AddProjectMode::newFolder});
        break;
    case CTAID::gitIdentity:
        m_model.setPage(settingsPage(SettingsSection::git));
        break;
    case CTAID::uncommitted:
        review();
        break;
    case CTAID::resume:
        resume();
        break;
    case CTAID::themes:
        m_model.setPage(settingsPage(SettingsSection::appearance));
        break;
    case CTAID::widgets:
        m_model.setSheet(AppSheet{AppSheet::Kind::widgetsHowTo, {}});
        break;
    case CTAID::login:
        m_model.login()->setEnabled(true);
        if (const QString& error = m_model.login()->error(); !error.isEmpty()) {
            m_model.report(error, true);
        }
        break;
    }
}

/// The one changed project's git page, or the list of several, without what else would keep one of them out of it.
void Suggestions::review() {
    const QStringList changed = m_model.projectsWithChanges();
    if (changed.size() == 1) {
        m_model.setDetailTab(DetailTab::git);
        m_model.setPage({.kind = AppPage::Kind::project, .id = changed.first()});
    } else if (!changed.isEmpty()) {
        ProjectFilterSet filters;
        if (m_model.filters().collections == CollectionMode::expand) {
            filters.collections = CollectionMode::expand;
        }
        m_model.setPage({});
        m_model.setSearchText({});
        m_model.setFilter(ProjectFilter::all);
        m_model.setFilters(filters);
        m_model.setShowOnlyUncommitted(true);
    }
}

void Suggestions::resume() {
    const std::optional<LastRun> last = m_model.settings().settings().lastRun;
    const Project* project = last ? m_model.project(last->projectID) : nullptr;
    if (project == nullptr) {
        return;
    }
    if (const ServiceKinds wanted = resumable(m_model, *last, *project); !wanted.empty()) {
        m_model.run(*project, wanted);
    }
}

void Suggestions::dismiss(const QString& key) {
    ORV_ASSERT_MAIN_THREAD();
    if (fromRawValue<CTAID>(key)) {
        m_model.changeSettings([key](AppSettings& settings) { settings.dismissedCTAs.insert(key); });
    }
}

void Suggestions::confirmWidgets() {
    ORV_ASSERT_MAIN_THREAD();
    m_model.changeSettings([](AppSettings& settings) { settings.widgetsConfirmed = true; });
}

void Suggestions::bringBack() {
    ORV_ASSERT_MAIN_THREAD();
    m_model.changeSettings([](AppSettings& settings) { settings.dismissedCTAs.clear(); });
}

} // namespace orv
