#include "OrvUI/SettingsForm.h"

#include "OrvUI/AppModel.h"

#include <QUrl>

namespace orv {

void SettingsForm::takeModel() {
    connect(m_model, &AppModel::preferencesChanged, this, &SettingsForm::changed);
    Q_EMIT changed();
}

const AppSettings& SettingsForm::now() const {
    static const AppSettings none;
    return m_model ? m_model->settings().settings() : none;
}

template <typename T>
void SettingsForm::set(T AppSettings::* member, const T& value) {
    if (now().*member != value) {
        m_model->changeSettings([member, value](AppSettings& settings) { settings.*member = value; });
    }
}

// The header's setters call it.
template void SettingsForm::set(bool AppSettings::* member, const bool& value);

template <typename T>
void SettingsForm::choose(T AppSettings::* member, int index, T last) {
    if (index >= 0 && index <= static_cast<int>(last)) {
        set(member, static_cast<T>(index));
    }
}

void SettingsForm::setDisplayName(const QString& name) {
    if (const QString trimmed = name.trimmed(); !trimmed.isEmpty()) {
        set(&AppSettings::displayName, trimmed);
    }
}

void SettingsForm::setAvatarColor(const QString& color) {
    set(&AppSettings::avatarColorHex, color.isEmpty() ? std::nullopt : std::optional(color));
}

void SettingsForm::setAvatarPhoto(const QString& file) {
    const QUrl url(file);
    const QString path = url.isLocalFile() ? url.toLocalFile() : file;
    set(&AppSettings::avatarPhotoPath, path.isEmpty() ? std::nullopt : std::optional(path));
}

void SettingsForm::setDefaultBranch(const QString& branch) {
    if (const QString trimmed = branch.trimmed(); !trimmed.isEmpty()) {
        set(&AppSettings::defaultBranch, trimmed);
    }
}

void SettingsForm::setPullStrategy(int strategy) {
    choose(&AppSettings::defaultPullStrategy, strategy, PullPreference::rebase);
}

void SettingsForm::setDefaultAgent(int agent) {
    choose(&AppSettings::defaultAgent, agent, AgentKind::custom);
}

void SettingsForm::setAutonomy(int autonomy) {
    choose(&AppSettings::agentAutonomy, autonomy, AgentAutonomy::full);
}

void SettingsForm::setEditorCommand(const QString& command) {
    set(&AppSettings::editorCommand, command.trimmed());
}

void SettingsForm::setCustomAgentCommand(const QString& command) {
    set(&AppSettings::customAgentCommand, command.trimmed());
}

void SettingsForm::setViewMode(int mode) {
    choose(&AppSettings::viewMode, mode, ViewMode::folders);
}

void SettingsForm::setShowDockIcon(bool isOn) {
    set(&AppSettings::showDockIcon, isOn);
    m_model->applyDockIconPolicy();
}

void SettingsForm::setTerminalClipboard(int choice) {
    choose(&AppSettings::terminalClipboard, choice, ClipboardWrite::on);
}

void SettingsForm::sendTestNotification() {
    m_model->notify(
        {.title = tr("Notifications work"),
         .body = tr("This is how OrvLauncher tells you what happened."),
         .projectID = {},
         .openURL = {}});
}

void SettingsForm::restoreSuggestions() {
    set(&AppSettings::dismissedCTAs, QSet<QString>());
}

} // namespace orv
