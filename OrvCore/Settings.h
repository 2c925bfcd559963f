#pragma once

#include "OrvCore/Agents.h"
#include "OrvCore/Models.h"
#include "OrvCore/StoreFile.h"
#include "OrvCore/StoreWatcher.h"

#include <QMap>
#include <QObject>
#include <QSet>

namespace orv {

enum class AppearanceMode { system, light, dark };
enum class ThemeID { ember, ocean, forest, violet, graphite };
enum class ViewMode { cards, folders };
enum class PullPreference { ffOnly, merge, rebase };
/// Whether what runs in a terminal may put text on the clipboard (OSC 52).
enum class ClipboardWrite { off, ask, on };

template <>
struct StoredNames<AppearanceMode> {
    static constexpr std::array table{
        std::pair{AppearanceMode::system, QLatin1StringView("system")},
        std::pair{AppearanceMode::light, QLatin1StringView("light")},
        std::pair{AppearanceMode::dark, QLatin1StringView("dark")},
    };
};

template <>
struct StoredNames<ThemeID> {
    static constexpr std::array table{
        std::pair{ThemeID::ember, QLatin1StringView("ember")},
        std::pair{ThemeID::ocean, QLatin1StringView("ocean")},
        std::pair{ThemeID::forest, QLatin1StringView("forest")},
        std::pair{ThemeID::violet, QLatin1StringView("violet")},
        std::pair{ThemeID::graphite, QLatin1StringView("graphite")},
    };
};

template <>
struct StoredNames<ViewMode> {
    static constexpr std::array table{
        std::pair{ViewMode::cards, QLatin1StringView("cards")},
        std::pair{ViewMode::folders, QLatin1StringView("folders")},
    };
};

template <>
struct StoredNames<PullPreference> {
    static constexpr std::array table{
        std::pair{PullPreference::ffOnly, QLatin1StringView("ffOnly")},
        std::pair{PullPreference::merge, QLatin1StringView("merge")},
        std::pair{PullPreference::rebase, QLatin1StringView("rebase")},
    };
};

template <>
struct StoredNames<ClipboardWrite> {
    static constexpr std::array table{
        std::pair{ClipboardWrite::off, QLatin1StringView("off")},
        std::pair{ClipboardWrite::ask, QLatin1StringView("ask")},
        std::pair{ClipboardWrite::on, QLatin1StringView("on")},
    };
};

/// The project and action of the last run.
struct LastRun {
    QString projectID;
    QString action; ///< the label of the run action ("Both")

    bool operator==(const LastRun&) const = default;
};

/// Every preference of the user. In JSON each member stands under its own name; the first four are required there,
/// every other absent one takes its default, unknown ones are ignored (and kept by the store when it writes).
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
    bool agentWorktrees = false; ///< whether a run of an agent gets a git work tree of its own
    /// By project: patterns of untracked files that such a work tree is given, from the project's folder.
    QMap<QString, QStringList> agentFiles;
    ClipboardWrite terminalClipboard = ClipboardWrite::ask;
    /// Opens a file, with "{file}", "{line}" and "{column}" in it; empty: as the desktop does.
    QString editorCommand;

    bool operator==(const AppSettings&) const = default;
    [[nodiscard]] static AppSettings defaults();
    /// The first word of an account's full name; "there" when it is empty.
    [[nodiscard]] static QString displayNameFor(const QString& fullAccountName);
    /// Where nothing is said of the project, files with the environment of its services.
    [[nodiscard]] QStringList worktreeCopies(const QString& projectID) const;
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<AppSettings> fromJson(const QJsonObject& json);
};

/// What "settings.json" holds: the preferences, and the members that only a newer version knows.
struct StoredSettings {
    AppSettings settings;
    QJsonObject unknown;

    bool operator==(const StoredSettings&) const = default;
};

/// Owns "settings.json". Lives on the main thread and notices what other processes write.
class SettingsStore : public QObject {
    Q_OBJECT
public:
    explicit SettingsStore(const QString& filePath = defaultPath(), QObject* parent = nullptr);
    [[nodiscard]] static QString defaultPath();

    [[nodiscard]] const AppSettings& settings() const { return m_settings; }
    /// Changes the record and saves it at once. The change stays in memory when the file can't be written, and is
    /// written with the next one or by `flush`, unless another process has changed the same member since. `change` may
    /// run several times, on what another process wrote too.
    StoreResult change(const std::function<void(AppSettings&)>& change);
    /// Writes the record as it is (a first start makes the file with it).
    StoreResult save();
    /// Writes what could not be written before, if anything.
    StoreResult flush();
    [[nodiscard]] QString filePath() const;

Q_SIGNALS:
    /// The record is another one: by `change`, or because the file changed.
    void settingsChanged();

private:
    void takeIn();

    StoreWatcher m_watcher;
    StoreFile<StoredSettings> m_file;
    AppSettings m_settings;
};

} // namespace orv
