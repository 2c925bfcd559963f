#pragma once

#include "OrvCore/StoredEnum.h"

#include <QList>
#include <QSet>

#include <array>

namespace orv {

/// The suggested steps of the home page.
enum class CTAID { addProject, gitIdentity, uncommitted, resume, themes, widgets, login };

/// What stands in the set of those that the user has dismissed.
template <>
struct StoredNames<CTAID> {
    static constexpr std::array table{
        std::pair{CTAID::addProject, QLatin1StringView("add-project")},
        std::pair{CTAID::gitIdentity, QLatin1StringView("git-identity")},
        std::pair{CTAID::uncommitted, QLatin1StringView("uncommitted")},
        std::pair{CTAID::resume, QLatin1StringView("resume")},
        std::pair{CTAID::themes, QLatin1StringView("themes")},
        std::pair{CTAID::widgets, QLatin1StringView("widgets")},
        std::pair{CTAID::login, QLatin1StringView("login")},
    };
};

/// What decides which steps are worth suggesting.
struct CTAContext {
    bool gitIdentitySet = false;        ///< git knows a name and an e-mail address
    int projectsWithChanges = 0;        ///< by their git badges
    std::optional<QString> lastRunName; ///< of the project that was last run
    bool anythingRunning = false;
    bool themeChanged = false;     ///< from the default one
    bool widgetsConfirmed = false; ///< also where the desktop has no widgets
    bool launchAtLogin = false;
};

/// One card.
struct CTA {
    CTAID id = CTAID::addProject;
    QString headline;
    QString body;
    QString button;

    bool operator==(const CTA&) const = default;
    /// The name of its picture, one a kind of card.
    [[nodiscard]] QString illustration() const { return rawValue(id); }
};

namespace CTAEngine {
/// The first `limit` cards that apply and were not dismissed, most useful first. Pure.
[[nodiscard]] QList<CTA> visible(const CTAContext& context, const QSet<QString>& dismissed, qsizetype limit);
} // namespace CTAEngine

} // namespace orv
