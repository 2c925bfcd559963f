#include "OrvUI/OnboardingForm.h"

#include <QDir>
#include <QFileInfo>

namespace orv {

OnboardingForm OnboardingForm::from(const AppSettings& settings) {
    return {
        .step = OnboardingStep::welcome,
        .name = settings.displayName,
        .folder = settings.scanRoot,
        .gitName = {},
        .gitEmail = {},
        .theme = settings.theme,
        .appearance = settings.appearance,
        .notifications = settings.notificationsEnabled,
        .launchAtLogin = false,
        .defaultAgent = settings.defaultAgent,
        .autonomy = settings.agentAutonomy};
}

bool OnboardingForm::folderExists() const {
    return QDir::isAbsolutePath(folder) && QFileInfo(folder).isDir();
}

bool OnboardingForm::canAdvance() const {
    switch (step) {
    case OnboardingStep::name:
        return !name.trimmed().isEmpty();
    case OnboardingStep::projects:
        return folderExists();
    default:
        return true;
    }
}

void OnboardingForm::next() {
    if (canAdvance() && step != allOnboardingSteps.back()) {
        step = static_cast<OnboardingStep>(static_cast<int>(step) + 1);
    }
}

void OnboardingForm::back() {
    if (step != allOnboardingSteps.front()) {
        step = static_cast<OnboardingStep>(static_cast<int>(step) - 1);
    }
}

void OnboardingForm::applyTo(AppSettings& settings) const {
    settings.displayName = name.trimmed();
    settings.scanRoot = folder;
    settings.theme = theme;
    settings.appearance = appearance;
    settings.notificationsEnabled = notifications;
    settings.defaultAgent = defaultAgent;
    settings.agentAutonomy = autonomy;
    settings.onboardingCompleted = true;
}

} // namespace orv
