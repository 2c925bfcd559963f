#include "OrvUI/StartPage.h"

#include "OrvUI/AppModel.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// On the home page, where else that would not be seen.
void showOnly(AppModel& model, ProjectFilter filter) {
    model.setPage({});
    model.setFilter(filter);
}

struct Entry {
    QLatin1StringView value;
    void (*open)(AppModel& model);
};
constexpr std::array entries{
    Entry{"ai"_L1, [](AppModel& model) { model.setPage({.kind = AppPage::Kind::ai, .id = {}}); }},
    Entry{"tasks"_L1, [](AppModel& model) { model.setPage({.kind = AppPage::Kind::tasks, .id = {}}); }},
    Entry{
        "settings"_L1,
        [](AppModel& model) {
            model.setPage({.kind = AppPage::Kind::settings, .id = {}, .section = SettingsSection::ai});
        }},
    Entry{"flutter"_L1, [](AppModel& model) { showOnly(model, ProjectFilter::flutter); }},
    Entry{"running"_L1, [](AppModel& model) { showOnly(model, ProjectFilter::running); }},
    Entry{"pinned"_L1, [](AppModel& model) { showOnly(model, ProjectFilter::pinned); }},
    Entry{"add-project"_L1, [](AppModel& model) { model.setSheet(AppSheet{AppSheet::Kind::addProject}); }},
    Entry{"widgets-how-to"_L1, [](AppModel& model) { model.setSheet(AppSheet{AppSheet::Kind::widgetsHowTo}); }},
};

} // namespace

bool openStartPage(AppModel& model, const QString& value) {
    const auto entry = std::ranges::find(entries, value, &Entry::value);
    if (entry != entries.end()) {
        entry->open(model);
        return true;
    }
    if (!value.startsWith(u"project"_s)) {
        return false;
    }
    if (!model.hasScanned()) {
        const auto openThen = [&model, value] { openStartPage(model, value); };
        const auto queue = [&model, openThen] { QMetaObject::invokeMethod(&model, openThen, Qt::QueuedConnection); };
        QObject::connect(&model, &AppModel::hasScannedChanged, &model, queue, Qt::SingleShotConnection);
        return true;
    }
    const QString name = value.contains(u':') ? value.section(u':', 1) : value;
    const QList<Project>& projects = model.projects();
    const auto found = std::ranges::find(projects, name, &Project::name);
    if (found == projects.end()) {
        return true;
    }
    const QString id = found->id;
    model.setPage({.kind = AppPage::Kind::project, .id = id});
    if (value.startsWith(u"project-ai:"_s)) {
        model.setAiPanelProjectID(id);
    }
    return true;
}

} // namespace orv
