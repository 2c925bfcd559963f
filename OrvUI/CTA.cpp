#include "OrvUI/CTA.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::CTAEngine {

namespace {

#ifdef Q_OS_MACOS
constexpr auto loginHeadline = QT_TRANSLATE_NOOP("CTA", "Start with your Mac");
#else
constexpr auto loginHeadline = QT_TRANSLATE_NOOP("CTA", "Start at login");
#endif

struct Row {
    CTAID id;
    bool (*applies)(const CTAContext& context);
    const char *headline, *body, *button;
};

/// In the order in which they are suggested. "%1" is the number of projects with changes, "%2" the last run's project.
constexpr std::array rows{
    Row{CTAID::gitIdentity, [](const CTAContext& context) { return !context.gitIdentitySet; },
        QT_TRANSLATE_NOOP("CTA", "Tell git who you are"),
        QT_TRANSLATE_NOOP("CTA", "Add your name and email so your commits carry your name."),
        QT_TRANSLATE_NOOP("CTA", "Set up")},
    Row{CTAID::uncommitted, [](const CTAContext& context) { return context.projectsWithChanges == 1; },
        QT_TRANSLATE_NOOP("CTA", "1 project has unsaved changes"),
        QT_TRANSLATE_NOOP("CTA", "Review what changed and commit it before it gets lost."),
        QT_TRANSLATE_NOOP("CTA", "Review")},
    Row{CTAID::uncommitted, [](const CTAContext& context) { return context.projectsWithChanges > 1; },
        QT_TRANSLATE_NOOP("CTA", "%1 projects have unsaved changes"),
        QT_TRANSLATE_NOOP("CTA", "Review what changed and commit it before it gets lost."),
        QT_TRANSLATE_NOOP("CTA", "Review")},
    Row{CTAID::resume, [](const CTAContext& context) { return context.lastRunName && !context.anythingRunning; },
        QT_TRANSLATE_NOOP("CTA", "Pick up where you left off"),
        QT_TRANSLATE_NOOP("CTA", "Start %2 again with the same setup."), QT_TRANSLATE_NOOP("CTA", "Run %2")},
    Row{CTAID::addProject, [](const CTAContext&) { return true; }, QT_TRANSLATE_NOOP("CTA", "Start something new"),
        QT_TRANSLATE_NOOP("CTA", "Create a folder or clone a repository and it shows up here."),
        QT_TRANSLATE_NOOP("CTA", "Add project")},
    Row{CTAID::login, [](const CTAContext& context) { return !context.launchAtLogin; }, loginHeadline,
        QT_TRANSLATE_NOOP("CTA", "Open OrvLauncher when you log in so your projects are one click away."),
        QT_TRANSLATE_NOOP("CTA", "Turn on")},
    Row{CTAID::themes, [](const CTAContext& context) { return !context.themeChanged; },
        QT_TRANSLATE_NOOP("CTA", "Make it yours"),
        QT_TRANSLATE_NOOP("CTA", "Pick a theme and light or dark appearance."),
        QT_TRANSLATE_NOOP("CTA", "Choose a theme")},
    Row{CTAID::widgets, [](const CTAContext& context) { return !context.widgetsConfirmed; },
        QT_TRANSLATE_NOOP("CTA", "Keep an eye on your servers"),
        QT_TRANSLATE_NOOP("CTA", "Add the Running Services widget to your desktop."),
        QT_TRANSLATE_NOOP("CTA", "Show me how")},
};

CTA card(const Row& row, const CTAContext& context) {
    // The name goes in last and whole: it may hold anything.
    const auto filled = [&context](const char* text) {
        return QCoreApplication::translate("CTA", text)
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
