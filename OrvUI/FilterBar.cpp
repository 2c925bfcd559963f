#include "OrvUI/FilterBar.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/ProjectFilters.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array gitFilters{GitFilter::any, GitFilter::changes, GitFilter::clean};
constexpr std::array collectionModes{
    CollectionMode::show, CollectionMode::expand, CollectionMode::hide, CollectionMode::only};

const QString gitKey = u"git"_s;
const QString runningKey = u"running"_s;
const QString pinnedKey = u"pinned"_s;
const QString collectionsKey = u"collections"_s;

QString key(KindFilter kind) {
    return u"kind:"_s + title(kind);
}
QString key(const QString& framework) {
    return u"framework:"_s + framework;
}

/// Says of what: as a chip it stands by itself.
QString chipTitle(CollectionMode mode) {
    switch (mode) {
    case CollectionMode::expand:
        return FilterBar::tr("Apps of collections");
    case CollectionMode::hide:
        return FilterBar::tr("Collections hidden");
    case CollectionMode::show:
    case CollectionMode::only:
        break;
    }
    return title(mode);
}

QStringList titles(const auto& values) {
    QStringList found;
    for (const auto value : values) {
        found.append(title(value));
    }
    return found;
}

} // namespace

const std::vector<RowRole<FilterChoiceRow>>& FilterChoiceRow::roles() {
    static const std::vector<RowRole<FilterChoiceRow>> table{
        memberRole<&FilterChoiceRow::key, FilterChoiceRow>("key"),
        memberRole<&FilterChoiceRow::title, FilterChoiceRow>("title"),
        memberRole<&FilterChoiceRow::isOn, FilterChoiceRow>("isOn"),
    };
    return table;
}

FilterBar::FilterBar(AppModel& model, QObject* parent)
    : QObject(parent), m_model(model), m_updateSoon(this, [this] { update(); }) {
    connect(&model, &AppModel::projectsChanged, this, [this] { m_updateSoon(); });
    connect(&model, &AppModel::filtersChanged, this, &FilterBar::update);
    connect(&model, &AppModel::showOnlyUncommittedChanged, this, &FilterBar::changed);
    update();
}

void FilterBar::update() {
    const ProjectFilterSet& filters = m_model.filters();
    QList<FilterChoiceRow> kindRows;
    QList<FilterChoiceRow> chipRows;
    for (const KindFilter kind : allKindFilters) {
        kindRows.append({key(kind), title(kind), filters.kinds.contains(kind)});
    }
    QStringList names = m_model.availableFrameworks();
    for (const QString& framework : filters.frameworks) {
        if (!names.contains(framework)) {
            names.append(framework);
        }
    }
    names.sort(Qt::CaseInsensitive);
    QList<FilterChoiceRow> frameworkRows;
    for (const QString& framework : std::as_const(names)) {
        frameworkRows.append({key(framework), framework, filters.frameworks.contains(framework)});
    }
    std::ranges::copy_if(kindRows + frameworkRows, std::back_inserter(chipRows), &FilterChoiceRow::isOn);
    if (filters.git != GitFilter::any) {
        chipRows.append({gitKey, title(filters.git), true});
    }
    if (filters.onlyRunning) {
        chipRows.append({runningKey, tr("Only running"), true});
    }
    if (filters.onlyPinned) {
        chipRows.append({pinnedKey, tr("Only pinned"), true});
    }
    if (filters.collections != CollectionMode::show) {
        chipRows.append({collectionsKey, chipTitle(filters.collections), true});
    }
    m_kinds.setRows(kindRows);
    m_frameworks.setRows(frameworkRows);
    m_chips.setRows(chipRows);
    Q_EMIT changed();
}

void FilterBar::toggle(const QString& wanted) {
    ORV_ASSERT_MAIN_THREAD();
    ProjectFilterSet filters = m_model.filters();
    const ProjectFilterSet none;
    for (const KindFilter kind : allKindFilters) {
        if (key(kind) == wanted && filters.kinds.erase(kind) == 0) {
            filters.kinds.insert(kind);
        }
    }
    if (wanted == key(wanted.section(u':', 1))) {
        const QString framework = wanted.section(u':', 1);
        if (!filters.frameworks.remove(framework)) {
            filters.frameworks.insert(framework);
        }
    } else if (wanted == gitKey) {
        filters.git = none.git;
    } else if (wanted == runningKey) {
        filters.onlyRunning = none.onlyRunning;
    } else if (wanted == pinnedKey) {
        filters.onlyPinned = none.onlyPinned;
    } else if (wanted == collectionsKey) {
        filters.collections = none.collections;
    }
    m_model.setFilters(filters);
}

void FilterBar::clear() {
    m_model.clearFilters();
    m_model.setShowOnlyUncommitted(false);
}

void FilterBar::change(void (*set)(ProjectFilterSet& filters, int value), int value) {
    ProjectFilterSet filters = m_model.filters();
    set(filters, value);
    m_model.setFilters(filters);
}

QStringList FilterBar::gitTitles() {
    return titles(gitFilters);
}
QStringList FilterBar::collectionTitles() {
    return titles(collectionModes);
}
int FilterBar::git() const {
    return static_cast<int>(m_model.filters().git);
}
int FilterBar::collections() const {
    return static_cast<int>(m_model.filters().collections);
}
bool FilterBar::onlyRunning() const {
    return m_model.filters().onlyRunning;
}
bool FilterBar::onlyPinned() const {
    return m_model.filters().onlyPinned;
}
bool FilterBar::onlyUncommitted() const {
    return m_model.showOnlyUncommitted();
}
int FilterBar::activeCount() const {
    return m_model.filters().activeCount();
}

bool FilterBar::narrows() const {
    return m_model.filters().narrowsProjects() || m_model.showOnlyUncommitted();
}

void FilterBar::setGit(int place) {
    if (place >= 0 && place < static_cast<int>(gitFilters.size())) {
        change([](ProjectFilterSet& filters, int value) { filters.git = static_cast<GitFilter>(value); }, place);
    }
}
void FilterBar::setCollections(int place) {
    if (place >= 0 && place < static_cast<int>(collectionModes.size())) {
        change(
            [](ProjectFilterSet& filters, int value) { filters.collections = static_cast<CollectionMode>(value); },
            place);
    }
}
void FilterBar::setOnlyRunning(bool isOn) {
    change([](ProjectFilterSet& filters, int value) { filters.onlyRunning = value != 0; }, isOn ? 1 : 0);
}
void FilterBar::setOnlyPinned(bool isOn) {
    change([](ProjectFilterSet& filters, int value) { filters.onlyPinned = value != 0; }, isOn ? 1 : 0);
}
void FilterBar::setOnlyUncommitted(bool isOn) {
    m_model.setShowOnlyUncommitted(isOn);
}

} // namespace orv
