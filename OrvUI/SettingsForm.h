#pragma once

#include "OrvCore/Settings.h"
#include "OrvUI/ModelPart.h"

#include <QObject>

namespace orv {

/// The preferences as the settings page edits them; each change is saved at once. Choices are indices of their
/// enumerations. Lives on the main thread.
class SettingsForm : public orv::ModelPart {
    Q_OBJECT
    Q_PROPERTY(QString displayName READ displayName WRITE setDisplayName NOTIFY changed FINAL)
    /// "#rrggbb"; empty: the accent of the theme.
    Q_PROPERTY(QString avatarColor READ avatarColor WRITE setAvatarColor NOTIFY changed FINAL)
    Q_PROPERTY(QString avatarPhoto READ avatarPhoto WRITE setAvatarPhoto NOTIFY changed FINAL)
    Q_PROPERTY(QString defaultBranch READ defaultBranch WRITE setDefaultBranch NOTIFY changed FINAL)
    Q_PROPERTY(int pullStrategy READ pullStrategy WRITE setPullStrategy NOTIFY changed FINAL)
    Q_PROPERTY(int defaultAgent READ defaultAgent WRITE setDefaultAgent NOTIFY changed FINAL)
    Q_PROPERTY(int autonomy READ autonomy WRITE setAutonomy NOTIFY changed FINAL)
    Q_PROPERTY(QString editorCommand READ editorCommand WRITE setEditorCommand NOTIFY changed FINAL)
    Q_PROPERTY(QString customAgentCommand READ customAgentCommand WRITE setCustomAgentCommand NOTIFY changed FINAL)
    Q_PROPERTY(int viewMode READ viewMode WRITE setViewMode NOTIFY changed FINAL)
    Q_PROPERTY(bool notifyReady READ notifyReady WRITE setNotifyReady NOTIFY changed FINAL)
    Q_PROPERTY(bool notifyCrash READ notifyCrash WRITE setNotifyCrash NOTIFY changed FINAL)
    Q_PROPERTY(bool notifyAdded READ notifyAdded WRITE setNotifyAdded NOTIFY changed FINAL)
    Q_PROPERTY(bool notifyAgents READ notifyAgents WRITE setNotifyAgents NOTIFY changed FINAL)
    Q_PROPERTY(
        bool notifyOnlyInBackground READ notifyOnlyInBackground WRITE setNotifyOnlyInBackground NOTIFY changed FINAL)
    Q_PROPERTY(bool showDockIcon READ showDockIcon WRITE setShowDockIcon NOTIFY changed FINAL)
    Q_PROPERTY(bool quickPanelShortcut READ quickPanelShortcut WRITE setQuickPanelShortcut NOTIFY changed FINAL)
    Q_PROPERTY(int terminalClipboard READ terminalClipboard WRITE setTerminalClipboard NOTIFY changed FINAL)
    Q_PROPERTY(int pinnedCount READ pinnedCount NOTIFY changed FINAL)
    Q_PROPERTY(int dismissedSuggestions READ dismissedSuggestions NOTIFY changed FINAL)

public:
    using ModelPart::ModelPart;

    [[nodiscard]] QString displayName() const { return now().displayName; }
    void setDisplayName(const QString& name);
    [[nodiscard]] QString avatarColor() const { return now().avatarColorHex.value_or(QString()); }
    void setAvatarColor(const QString& color);
    [[nodiscard]] QString avatarPhoto() const { return now().avatarPhotoPath.value_or(QString()); }
    /// A path, or a file URL as a dialog gives it; empty takes the picture away.
    void setAvatarPhoto(const QString& file);
    [[nodiscard]] QString defaultBranch() const { return now().defaultBranch; }
    void setDefaultBranch(const QString& branch);
    [[nodiscard]] int pullStrategy() const { return static_cast<int>(now().defaultPullStrategy); }
    void setPullStrategy(int strategy);
    [[nodiscard]] int defaultAgent() const { return static_cast<int>(now().defaultAgent); }
    void setDefaultAgent(int agent);
    [[nodiscard]] int autonomy() const { return static_cast<int>(now().agentAutonomy); }
    void setAutonomy(int autonomy);
    [[nodiscard]] QString editorCommand() const { return now().editorCommand; }
    void setEditorCommand(const QString& command);
    [[nodiscard]] QString customAgentCommand() const { return now().customAgentCommand; }
    void setCustomAgentCommand(const QString& command);
    [[nodiscard]] int viewMode() const { return static_cast<int>(now().viewMode); }
    void setViewMode(int mode);
    [[nodiscard]] bool notifyReady() const { return now().notifyReady; }
    void setNotifyReady(bool isOn) { set(&AppSettings::notifyReady, isOn); }
    [[nodiscard]] bool notifyCrash() const { return now().notifyCrash; }
    void setNotifyCrash(bool isOn) { set(&AppSettings::notifyCrash, isOn); }
    [[nodiscard]] bool notifyAdded() const { return now().notifyAdded; }
    void setNotifyAdded(bool isOn) { set(&AppSettings::notifyAdded, isOn); }
    [[nodiscard]] bool notifyAgents() const { return now().notifyAgents; }
    void setNotifyAgents(bool isOn) { set(&AppSettings::notifyAgents, isOn); }
    [[nodiscard]] bool notifyOnlyInBackground() const { return now().notifyOnlyInBackground; }
    void setNotifyOnlyInBackground(bool isOn) { set(&AppSettings::notifyOnlyInBackground, isOn); }
    [[nodiscard]] bool showDockIcon() const { return now().showDockIcon; }
    void setShowDockIcon(bool isOn);
    [[nodiscard]] bool quickPanelShortcut() const { return now().quickPanelShortcutEnabled; }
    void setQuickPanelShortcut(bool isOn) { set(&AppSettings::quickPanelShortcutEnabled, isOn); }
    [[nodiscard]] int terminalClipboard() const { return static_cast<int>(now().terminalClipboard); }
    void setTerminalClipboard(int choice);
    /// Of the projects that were pinned, whether or not they are there.
    [[nodiscard]] int pinnedCount() const { return static_cast<int>(now().pinnedProjectIDs.size()); }
    [[nodiscard]] int dismissedSuggestions() const { return static_cast<int>(now().dismissedCTAs.size()); }

    /// A notification that only says that it came.
    Q_INVOKABLE void sendTestNotification();
    /// Suggestions that were dismissed come again when their time does.
    Q_INVOKABLE void restoreSuggestions();

Q_SIGNALS:
    void changed();

private:
    void takeModel() override;
    [[nodiscard]] const AppSettings& now() const;
    template <typename T>
    void set(T AppSettings::* member, const T& value);
    /// Takes an index for what it stands for; one past the last is no choice.
    template <typename T>
    void choose(T AppSettings::* member, int index, T last);
};

} // namespace orv
