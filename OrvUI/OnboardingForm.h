#pragma once

#include "OrvCore/Settings.h"

#include <array>

namespace orv {

/// The pages of the first start, in their order.
enum class OnboardingStep { welcome, name, projects, git, look, ai, extras };
inline constexpr std::array allOnboardingSteps{OnboardingStep::welcome, OnboardingStep::name, OnboardingStep::projects,
                                               OnboardingStep::git,     OnboardingStep::look, OnboardingStep::ai,
                                               OnboardingStep::extras};

/// What the pages of the first start ask, and the rules of going through them. Nothing is written before the end.
struct OnboardingForm {
    OnboardingStep step = OnboardingStep::welcome;
    QString name;
    QString folder;  ///< the projects folder, an absolute path
    QString gitName; ///< what git puts on commits; empty where it has none
    QString gitEmail;
    ThemeID theme = ThemeID::ember;
    AppearanceMode appearance = AppearanceMode::system;
    bool notifications = false;
    bool launchAtLogin = false;
    AgentKind defaultAgent = AgentKind::claude;
    AgentAutonomy autonomy = AgentAutonomy::edit;

    bool operator==(const OnboardingForm&) const = default;

    /// Filled with what is set already; git and the login item are not among the settings.
    [[nodiscard]] static OnboardingForm from(const AppSettings& settings);

    [[nodiscard]] bool folderExists() const;
    [[nodiscard]] bool canAdvance() const;
    void next(); ///< where `canAdvance`; on the last page nothing
    void back(); ///< on the first page nothing

    /// At the end. The onboarding is marked as done.
    void applyTo(AppSettings& settings) const;
};

} // namespace orv
