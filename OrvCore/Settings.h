#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/StoreFile.h"

#include <QObject>
#include <QSet>

class QFileSystemWatcher;

namespace orv {

enum class AppearanceMode { system, light, dark };
enum class ThemeID { ember, ocean, forest, violet, graphite };
enum class ViewMode { cards, folders };
enum class PullPreference { ffOnly, merge, rebase };
enum class AgentKind { claude, codex, gemini, antigravity, custom };
enum class AgentAutonomy { plan, edit, full };

/// The project and action of the last run.
struct LastRun {
    QString projectID;
    QString action; ///< the label of the run action ("Both")

    bool operator==(const LastRun&) const = default;
};

/// Every preference of the user. In JSON each member stands under its own name; the first four are required there, every
/// other absent one takes its default, unknown ones are ignored (and kept by the store when it writes).
struct AppSettings {
    QString displayName;
    QString scanRoot; ///< absolute path; a file URL in JSON
    bool showDockIcon = true;
    QStringList pinnedProjectIDs;
    AppearanceMode appearance = AppearanceMode::system;
    ThemeID theme = ThemeID::ember;
    ViewMode viewMode = ViewMode::cards;
    QSet<QString> dismissedCTAs;
    std::optional<QString> avatarColorHex;
    std::optional<QString> avatarPhotoPath;
    std::optional<LastRun> lastRun;
    QString defaultBranch = QStringLiteral("main");
    PullPreference defaultPullStrategy = PullPreference::ffOnly;
    bool widgetsConfirmed = false;
    bool onboardingCompleted = false;
    bool notificationsEnabled = false;
    bool notifyReady = true;
    bool notifyCrash = true;
    bool notifyAdded = true;
    bool notifyOnlyInBackground = true;
    bool notifyAgents = true;
    AgentKind defaultAgent = AgentKind::claude;
    AgentAutonomy agentAutonomy = AgentAutonomy::edit;
    QString customAgentCommand;
    bool quickPanelShortcutEnabled = true;

    bool operator==(const AppSettings&) const = default;
    [[nodiscard]] static AppSettings defaults();
    /// The first word of an account's full name; "there" when it is empty.
    [[nodiscard]] static QString displayNameFor(const QString& fullAccountName);
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<AppSettings> fromJson(const QJsonObject& json);
};

/// Owns "settings.json". Lives on the main thread and notices what other processes write.
class SettingsStore : public QObject {
    Q_OBJECT
public:
    explicit SettingsStore(const QString& filePath, QObject* parent = nullptr);
    ~SettingsStore() override;

    [[nodiscard]] const AppSettings& settings() const { return m_settings; }
    /// Changes the record and saves it at once. The change stays in memory when the file can't be written.
    StoreResult change(const std::function<void(AppSettings&)>& change);
    /// Writes the record as it is (a first start makes the file with it).
    StoreResult save();
    [[nodiscard]] QString filePath() const;

Q_SIGNALS:
    /// The record is another one: by `change`, or because the file changed.
    void settingsChanged();

private:
    void takeIn();

    AppSettings m_settings;
    StoreFile<AppSettings> m_file;
    QFileSystemWatcher* m_watcher;
};

} // namespace orv
