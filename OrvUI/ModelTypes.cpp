#include "OrvUI/ModelTypes.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

struct ActionRow {
    RunAction action;
    QStringView label;
    std::array<std::optional<ServiceKind>, 2> kinds;
};

/// In the order in which the actions are offered, but for "Both", which is tried before single kinds.
constexpr std::array actionRows{
    ActionRow{RunAction::frontend, u"" QT_TRANSLATE_NOOP("RunAction", "Frontend"), {ServiceKind::frontend, {}}},
    ActionRow{RunAction::backend, u"" QT_TRANSLATE_NOOP("RunAction", "Backend"), {ServiceKind::backend, {}}},
    ActionRow{
        RunAction::both, u"" QT_TRANSLATE_NOOP("RunAction", "Both"), {ServiceKind::frontend, ServiceKind::backend}},
    ActionRow{RunAction::app, u"" QT_TRANSLATE_NOOP("RunAction", "App"), {ServiceKind::app, {}}},
    ActionRow{RunAction::flutter, u"" QT_TRANSLATE_NOOP("RunAction", "Flutter"), {ServiceKind::flutter, {}}},
    ActionRow{RunAction::docker, u"" QT_TRANSLATE_NOOP("RunAction", "Docker"), {ServiceKind::docker, {}}},
};

struct FilterRow {
    const char* title;
    QStringView icon;
};

constexpr std::array filterRows{
    FilterRow{QT_TRANSLATE_NOOP("ModelTypes", "All Projects"), u"layout-grid"},
    FilterRow{QT_TRANSLATE_NOOP("ModelTypes", "Pinned"), u"pin"},
    FilterRow{QT_TRANSLATE_NOOP("ModelTypes", "Running"), u"circle-play"},
    FilterRow{QT_TRANSLATE_NOOP("ModelTypes", "Full-stack"), u"layers-2"},
    FilterRow{QT_TRANSLATE_NOOP("ModelTypes", "Flutter"), u"smartphone"},
};

constexpr std::array sectionTitles{
    QT_TRANSLATE_NOOP("ModelTypes", "Profile"),
    QT_TRANSLATE_NOOP("ModelTypes", "Git"),
    QT_TRANSLATE_NOOP("ModelTypes", "AI"),
    QT_TRANSLATE_NOOP("ModelTypes", "Appearance"),
    QT_TRANSLATE_NOOP("ModelTypes", "Notifications"),
    QT_TRANSLATE_NOOP("ModelTypes", "General"),
    QT_TRANSLATE_NOOP("ModelTypes", "Projects")};
constexpr std::array tabTitles{QT_TRANSLATE_NOOP("ModelTypes", "Overview"), QT_TRANSLATE_NOOP("ModelTypes", "Tasks"),
                               QT_TRANSLATE_NOOP("ModelTypes", "Terminal"), QT_TRANSLATE_NOOP("ModelTypes", "Logs"),
                               QT_TRANSLATE_NOOP("ModelTypes", "Git"),      QT_TRANSLATE_NOOP("ModelTypes", "Files")};

} // namespace

QString title(SettingsSection section) {
    return QCoreApplication::translate("ModelTypes", sectionTitles[static_cast<size_t>(section)]);
}

QString title(DetailTab tab) {
    return QCoreApplication::translate("ModelTypes", tabTitles[static_cast<size_t>(tab)]);
}

QString stackLine(const Project& project) {
    QStringList names;
    QList<ServiceTarget> targets = project.targets;
    std::ranges::stable_sort(targets, {}, &ServiceTarget::kind);
    for (const ServiceTarget& target : targets) {
        const QString name = target.framework.value_or(title(target.kind));
        if (!names.contains(name)) {
            names.append(name);
        }
    }
    return names.join(u" + "_s);
}

std::optional<QString> innermostProject(const QString& folder, const QList<Project>& projects) {
    std::optional<QString> found;
    for (const Project& project : projects) {
        const bool isWithin = folder == project.id || folder.startsWith(project.id + u'/');
        if (isWithin && (!found || project.id.size() > found->size())) {
            found = project.id;
        }
    }
    return found;
}

QString title(ProjectFilter filter) {
    return QCoreApplication::translate("ModelTypes", filterRows[static_cast<size_t>(filter)].title);
}

QString icon(ProjectFilter filter) {
    return filterRows[static_cast<size_t>(filter)].icon.toString();
}

QString rawValue(RunAction action) {
    return actionRows[static_cast<size_t>(action)].label.toString();
}

std::optional<RunAction> runAction(QStringView raw) {
    for (const ActionRow& row : actionRows) {
        if (row.label == raw) {
            return row.action;
        }
    }
    return {};
}

ServiceKinds kinds(RunAction action) {
    ServiceKinds found;
    for (const auto& kind : actionRows[static_cast<size_t>(action)].kinds) {
        if (kind) {
            found.insert(*kind);
        }
    }
    return found;
}

std::optional<RunAction> runActionFrom(const ServiceKinds& wanted) {
    if (wanted.contains(ServiceKind::frontend) && wanted.contains(ServiceKind::backend)) {
        return RunAction::both;
    }
    for (const ActionRow& row : actionRows) {
        if (row.action != RunAction::both && wanted.contains(*row.kinds[0])) {
            return row.action;
        }
    }
    return {};
}

QString rawValue(SetupStep::Status status) {
    constexpr std::array names{u"pending", u"running", u"done", u"failed"};
    return QString::fromUtf16(names[static_cast<size_t>(status)]);
}

QString SetupSession::text() const {
    switch (phase.kind) {
    case Phase::Kind::confirm:
        return QCoreApplication::translate(
                   "SetupSession", "%1 needs its dependencies before it can run. This happens once.")
            .arg(project.name);
    case Phase::Kind::running:
        return QCoreApplication::translate(
                   "SetupSession", "Installing what %1 needs. It starts as soon as this is done.")
            .arg(project.name);
    case Phase::Kind::failed:
        break;
    }
    return QCoreApplication::translate("SetupSession", "Setup stopped. Fix the problem below and try again.");
}

} // namespace orv
