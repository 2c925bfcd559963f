#include "OrvUI/CTA.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::CTAEngine {

namespace {

#ifdef Q_OS_MACOS
constexpr QStringView loginHeadline = u"Start with your Mac";
#else
constexpr QStringView loginHeadline = u"Start at login";
#endif

struct Row {
    CTAID id;
    bool (*applies)(const CTAContext& context);
    QStringView headline, body, button;
};

/// In the order in which they are suggested. "%1" is the number of projects with changes, "%2" the last run's project.
constexpr std::array rows{
    Row{CTAID::gitIdentity, [](const CTAContext& context) { return !context.gitIdentitySet; }, u"Tell git who you are",
        u"Add your name and email so your commits carry your name.", u"Set up"},
    Row{CTAID::uncommitted, [](const CTAContext& context) { return context.projectsWithChanges == 1; },
        u"1 project has unsaved changes", u"Review what changed and commit it before it gets lost.", u"Review"},
    Row{CTAID::uncommitted, [](const CTAContext& context) { return context.projectsWithChanges > 1; },
        u"%1 projects have unsaved changes", u"Review what changed and commit it before it gets lost.", u"Review"},
    Row{CTAID::resume, [](const CTAContext& context) { return context.lastRunName && !context.anythingRunning; },
        u"Pick up where you left off", u"Start %2 again with the same setup.", u"Run %2"},
    Row{CTAID::addProject, [](const CTAContext&) { return true; }, u"Start something new",
        u"Create a folder or clone a repository and it shows up here.", u"Add project"},
    Row{CTAID::login, [](const CTAContext& context) { return !context.launchAtLogin; }, loginHeadline,
        u"Open OrvLauncher when you log in so your projects are one click away.", u"Turn on"},
    Row{CTAID::themes, [](const CTAContext& context) { return !context.themeChanged; }, u"Make it yours",
        u"Pick a theme and light or dark appearance.", u"Choose a theme"},
    Row{CTAID::widgets, [](const CTAContext& context) { return !context.widgetsConfirmed; },
        u"Keep an eye on your servers", u"Add the Running Services widget to your desktop.", u"Show me how"},
};

CTA card(const Row& row, const CTAContext& context) {
    // The name goes in last and whole: it may hold anything.
    const auto filled = [&context](QStringView text) {
        return text.toString()
            .replace(u"%1"_s, QString::number(context.projectsWithChanges))
            .replace(u"%2"_s, context.lastRunName.value_or(QString()));
    };
    return {row.id, filled(row.headline), filled(row.body), filled(row.button)};
}

} // namespace

QList<CTA> visible(const CTAContext& context, const QSet<QString>& dismissed, qsizetype limit) {
    QList<CTA> cards;
    for (const Row& row : rows) {
        if (cards.size() < limit && row.applies(context) && !dismissed.contains(rawValue(row.id))) {
            cards.append(card(row, context));
        }
    }
    return cards;
}

} // namespace orv::CTAEngine
