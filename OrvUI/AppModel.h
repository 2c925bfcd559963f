#pragma once

#include "OrvCore/OverrideStore.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvCore/Settings.h"
#include "OrvCore/Tasks.h"
#include "OrvCore/WidgetSnapshot.h"
#include "OrvGit/GitService.h"
#include "OrvProcess/ProcessManager.h"
#include "OrvUI/AgentCatalog.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/DeviceTools.h"
#include "OrvUI/LaunchAtLogin.h"
#include "OrvUI/ModelTypes.h"
#include "OrvUI/Notifications.h"
#include "OrvUI/ProjectFilters.h"
#include "OrvUI/QuickActions.h"

#include <QAbstractListModel>
#include <QFuture>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>

Q_MOC_INCLUDE("OrvTerminal/TerminalTabs.h")
Q_MOC_INCLUDE("OrvUI/DevicesModel.h")
Q_MOC_INCLUDE("OrvUI/FilterBar.h")
Q_MOC_INCLUDE("OrvUI/GitModel.h")
Q_MOC_INCLUDE("OrvUI/NewProject.h")
Q_MOC_INCLUDE("OrvUI/OnboardingModel.h")
Q_MOC_INCLUDE("OrvUI/OrphanedWork.h")
Q_MOC_INCLUDE("OrvUI/AgentModels.h")
Q_MOC_INCLUDE("OrvUI/OutlineModel.h")
Q_MOC_INCLUDE("OrvUI/ServiceLogs.h")
Q_MOC_INCLUDE("OrvUI/Suggestions.h")
Q_MOC_INCLUDE("OrvUI/TaskLists.h")

class QThreadPool;

namespace orv {

class AgentModels;
class Completion;
class DevicesModel;
class FilterBar;
class GitModel;
class GitOverview;
class HomeModels;
class NewProject;
class OnboardingModel;
class OrphanedWork;
class OutlineModel;
class ServiceLogs;
class Suggestions;
class TaskLists;
class TerminalTabs;
struct RunRequest;

/// All run-time state of the application, and every user action. One a process, on the main thread; needs no window.
///
/// Parts of it stand in files of their own: AppModel+Run (running and stopping), AppModel+Setup (the install before a
/// first run), AppModel+Addresses, AppModel+Agents, AppModel+Filters, AppModel+Git, AppModel+Notifications,
/// AppModel+Pinning, AppModel+Tasks, AppModel+Screen (what QML binds to).
class AppModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)
    Q_PROPERTY(bool hasScanned READ hasScanned NOTIFY hasScannedChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(QString greeting READ greeting NOTIFY greetingChanged)
    Q_PROPERTY(QString summaryLine READ summaryLine NOTIFY summaryChanged)
    Q_PROPERTY(int runningCount READ runningCount NOTIFY servicesChanged)
    Q_PROPERTY(int openTaskCount READ openTaskCount NOTIFY tasksChanged)
    Q_PROPERTY(int projectCount READ projectCount NOTIFY projectsChanged)
    Q_PROPERTY(int shownCount READ shownCount NOTIFY summaryChanged)
    Q_PROPERTY(int filterIndex READ filterIndex WRITE setFilterIndex NOTIFY filterChanged)
    Q_PROPERTY(QString filterTitle READ filterTitle NOTIFY filterChanged)
    Q_PROPERTY(QString displayName READ displayName NOTIFY preferencesChanged)
    Q_PROPERTY(QString scanRootText READ scanRootText NOTIFY preferencesChanged)
    Q_PROPERTY(QString scanRootFolder READ scanRootFolder NOTIFY preferencesChanged)
    Q_PROPERTY(QUrl scanRootUrl READ scanRootUrl NOTIFY preferencesChanged)
    Q_PROPERTY(QUrl supportUrl READ supportUrl CONSTANT)
    Q_PROPERTY(int themeIndex READ themeIndex WRITE setThemeIndex NOTIFY preferencesChanged)
    Q_PROPERTY(int appearance READ appearance WRITE setAppearance NOTIFY preferencesChanged)
    Q_PROPERTY(bool isQuitting READ isQuitting NOTIFY isQuittingChanged)
    Q_PROPERTY(bool hasStatus READ hasStatus NOTIFY statusMessageChanged)
    Q_PROPERTY(bool statusIsError READ statusIsError NOTIFY statusMessageChanged)
    Q_PROPERTY(bool statusIsOngoing READ statusIsOngoing NOTIFY statusMessageChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusMessageChanged)
    Q_PROPERTY(bool hasModal READ hasModal NOTIFY modalChanged)
    Q_PROPERTY(QString modalTitle READ modalTitle NOTIFY modalChanged)
    Q_PROPERTY(QString modalBody READ modalBody NOTIFY modalChanged)
    /// What was done last and can be taken back, as a sentence; empty when there is nothing.
    Q_PROPERTY(QString undoText READ undoText NOTIFY undoTextChanged)
    Q_PROPERTY(bool setupActive READ setupActive NOTIFY setupChanged)
    Q_PROPERTY(bool setupAside READ isSetupAside WRITE setSetupAside NOTIFY setupChanged)
    Q_PROPERTY(QString setupPhase READ setupPhase NOTIFY setupChanged)
    Q_PROPERTY(QString setupProjectID READ setupProjectID NOTIFY setupChanged)
    Q_PROPERTY(QString setupTitle READ setupTitle NOTIFY setupChanged)
    Q_PROPERTY(int setupTileIndex READ setupTileIndex NOTIFY setupChanged)
    Q_PROPERTY(QString setupTileLetter READ setupTileLetter NOTIFY setupChanged)
    Q_PROPERTY(QString setupText READ setupText NOTIFY setupChanged)
    Q_PROPERTY(QString setupReason READ setupReason NOTIFY setupChanged)
    Q_PROPERTY(int setupStepCount READ setupStepCount NOTIFY setupChanged)
    Q_PROPERTY(int setupDoneCount READ setupDoneCount NOTIFY setupChanged)
    Q_PROPERTY(QString setupLastLine READ setupLastLineText NOTIFY setupLastLineChanged)
    Q_PROPERTY(QStringList setupOutput READ setupOutput NOTIFY setupLastLineChanged)
    Q_PROPERTY(QString installCommandOverrideText READ installCommandOverrideText WRITE setInstallCommandOverrideText
                   NOTIFY installCommandOverrideChanged)
    Q_PROPERTY(QAbstractListModel* cards READ cards CONSTANT)
    Q_PROPERTY(QAbstractListModel* running READ running CONSTANT)
    Q_PROPERTY(QAbstractListModel* pinned READ pinned CONSTANT)
    Q_PROPERTY(QAbstractListModel* sidebarFilters READ sidebarFilters CONSTANT)
    Q_PROPERTY(QAbstractListModel* setupSteps READ setupSteps CONSTANT)
    Q_PROPERTY(orv::OutlineModel* outline READ outline CONSTANT)
    Q_PROPERTY(bool gitIdentitySet READ gitIdentitySet NOTIFY gitIdentitySetChanged)
    Q_PROPERTY(QString defaultBranch READ defaultBranch NOTIFY preferencesChanged)
    Q_PROPERTY(orv::GitModel* git READ gitModel NOTIFY gitModelChanged)
    Q_PROPERTY(orv::NewProject* newProject READ newProject CONSTANT)
    Q_PROPERTY(QAbstractListModel* homeCards READ homeCards CONSTANT)
    Q_PROPERTY(orv::FilterBar* filterBar READ filterBar CONSTANT)
    Q_PROPERTY(orv::TaskLists* taskLists READ taskLists CONSTANT)
    Q_PROPERTY(orv::TaskLists* projectTasks READ projectTasks CONSTANT)
    Q_PROPERTY(orv::Suggestions* suggestions READ suggestions CONSTANT)
    Q_PROPERTY(orv::OnboardingModel* onboarding READ onboarding CONSTANT)
    Q_PROPERTY(orv::DevicesModel* devices READ devices CONSTANT)
    Q_PROPERTY(orv::ServiceLogs* logs READ logs CONSTANT)
    Q_PROPERTY(orv::OrphanedWork* orphans READ orphans CONSTANT)
    Q_PROPERTY(orv::LaunchAtLogin* login READ login CONSTANT)
    Q_PROPERTY(bool needsOnboarding READ needsOnboarding NOTIFY preferencesChanged)
    Q_PROPERTY(bool notificationsEnabled READ notificationsEnabled NOTIFY preferencesChanged)
    Q_PROPERTY(QString notificationStatusText READ notificationStatusText NOTIFY notificationStatusChanged)
    Q_PROPERTY(orv::AgentModels* agentModels READ agentModels CONSTANT)
    Q_PROPERTY(orv::TerminalTabs* terminalTabs READ terminalTabs CONSTANT)
    Q_PROPERTY(int runningAgentCount READ runningAgentCount NOTIFY runningAgentCountChanged)

public:
    /// What a test or a preview puts in the place of the real thing. What is left empty is made.
    struct Options {
        std::unique_ptr<SettingsStore> settings; ///< its folder is where the model's other files stand
        std::shared_ptr<OverrideStore> overrides;
        std::unique_ptr<ProcessManager> processes;
        QString tasksFile;
        std::unique_ptr<AgentCatalog> agents;
        std::optional<AgentRuns::Options> agentRuns;
        QString snapshotDirectory; ///< empty: the folder shared with the widgets
        std::chrono::milliseconds reportTime = std::chrono::seconds(8);
        std::chrono::milliseconds undoTime = std::chrono::seconds(10); ///< for which it is offered
        std::unique_ptr<Notifying> notifier;                           ///< none: nothing is posted
        std::unique_ptr<LoginItemController> login;                    ///< none: it can't be turned on
        std::function<bool()> appIsActive; ///< whether the user looks at the application; none: never
        DeviceTools deviceTools = DeviceTools::ofThisMachine();
    };

    explicit AppModel(Options options, QObject* parent = nullptr);
    AppModel() : AppModel(Options{}) {}
    ~AppModel() override;

    // State. Each setter notifies only when the value is another one.
    [[nodiscard]] const QList<Project>& projects() const;
    [[nodiscard]] const QList<ProjectNode>& tree() const;
    [[nodiscard]] bool isScanning() const;
    [[nodiscard]] bool hasScanned() const;
    [[nodiscard]] const QString& searchText() const;
    void setSearchText(const QString& text);
    [[nodiscard]] ProjectFilter filter() const;
    void setFilter(ProjectFilter filter);
    [[nodiscard]] const std::optional<PendingInstall>& pendingInstall() const;
    [[nodiscard]] const std::optional<SetupSession>& setup() const;
    [[nodiscard]] const AppPage& page() const;
    void setPage(const AppPage& page);
    [[nodiscard]] const std::optional<AppSheet>& sheet() const;
    void setSheet(const std::optional<AppSheet>& sheet);
    [[nodiscard]] const std::optional<ModalContent>& modal() const;
    void setModal(const std::optional<ModalContent>& modal);
    [[nodiscard]] const std::optional<StatusMessage>& statusMessage() const;
    void setStatusMessage(const std::optional<StatusMessage>& message);
    [[nodiscard]] DetailTab detailTab() const;
    void setDetailTab(DetailTab tab);
    [[nodiscard]] const std::optional<QString>& aiPanelProjectID() const; ///< whose agent panel is open
    void setAiPanelProjectID(const std::optional<QString>& projectID);
    [[nodiscard]] bool showOnlyUncommitted() const;
    void setShowOnlyUncommitted(bool isOn);
    [[nodiscard]] int refreshToken() const; ///< views that read something by themselves read it again when it goes up
    void reloadViews();                     ///< makes it go up
    [[nodiscard]] const std::optional<QUrl>& queuedURL() const;
    [[nodiscard]] const std::optional<QString>& installCommandOverride() const;
    void setInstallCommandOverride(const std::optional<QString>& command);
    [[nodiscard]] const QList<ProjectTask>& tasks() const;

    [[nodiscard]] SettingsStore& settings();
    [[nodiscard]] OverrideStore& overrides();
    [[nodiscard]] HomeModels& home();
    [[nodiscard]] ProcessManager& processes();

    /// Changes the settings and reports when that can't be saved. `change` may run again later.
    void changeSettings(const std::function<void(AppSettings&)>& change);
    /// Corrects a service, or with an absent value takes the correction away, and scans again.
    void setOverride(const QString& key, const std::optional<Override>& value);

    // Derived
    [[nodiscard]] int runningCount() const; ///< running services, installs not counted
    [[nodiscard]] int leftCount() const;    ///< services that still run from last time
    [[nodiscard]] QString menuBarTitle() const;
    [[nodiscard]] bool shouldConfirmQuit() const;
    [[nodiscard]] QString greeting() const;
    [[nodiscard]] bool isRunning(const Project& project) const;
    [[nodiscard]] bool isInstalling(const QString& projectID) const; ///< from the confirmation to the start
    [[nodiscard]] static QString quickPanelShortcutLabel();
    [[nodiscard]] bool keeps(ProjectFilter filter, const Project& project) const;
    /// By the sidebar's filter, the search text and the refine filters, in scan order.
    [[nodiscard]] QList<Project> filteredProjects() const;
    [[nodiscard]] QList<Project> pinnedProjects() const;
    [[nodiscard]] bool isPinned(const Project& project) const;
    [[nodiscard]] const Project* project(
        const QString& id) const; ///< null when there is none; valid until the next scan
    /// Services of the project (installs included) that were started at least once: in the order of its targets, then
    /// those that are none of its targets any more, then installs.
    [[nodiscard]] QList<ServiceID> services(const Project& project) const;
    /// An install runs as a service of its project's id with a mark behind it, so that it is never taken for the
    /// service that it is for.
    [[nodiscard]] static ServiceID installID(const ServiceTarget& target, const QString& projectID);
    [[nodiscard]] static bool isInstall(const ServiceID& id);
    /// The project's id, of an install too.
    [[nodiscard]] static QString projectID(const ServiceID& id);
    /// The project's name; of one that is not found any more, its folder's.
    [[nodiscard]] QString projectName(const ServiceID& id) const;

    // Scan and publish
    /// Scans the root. While a scan runs, this is the end of that one.
    QFuture<void> refresh();
    void publishSnapshot();
    /// Waits until what `publishSnapshot` wrote is on disk (for the way out).
    void flushSnapshot();
    QFuture<void> handle(const QUrl& url);

    // Run control
    [[nodiscard]] static QList<RunAction> availableActions(const Project& project);
    /// The action of a run button that offers no choice: "Both" where there is one, else the first.
    [[nodiscard]] static std::optional<RunAction> defaultAction(const Project& project);
    [[nodiscard]] static std::optional<RunAction> preferred(const QList<RunAction>& actions);
    /// Those for each kind of which something does not run yet.
    [[nodiscard]] QList<RunAction> startableActions(const Project& project) const;
    QFuture<void> run(
        const Project& project, const ServiceKinds& kinds, const std::optional<QString>& flutterDevice = {});
    /// Stops these services of the project, then starts them again, a Flutter app on the device that it was on.
    QFuture<void> restart(const Project& project, const QList<ServiceID>& services);
    /// Stops a project that runs or starts; runs the default action of any other.
    QFuture<void> toggleRun(const Project& project);
    /// Installs what the session asks for, then runs the project. Also the new try of a session that failed.
    QFuture<void> confirmInstall();
    /// Drops the session; an install that runs is stopped.
    void cancelInstall();
    [[nodiscard]] std::optional<QString> setupLastLine() const;
    QFuture<void> stop(const Project& project);
    QFuture<void> stopService(const ServiceID& id);
    QFuture<void> stopAllServices();
    [[nodiscard]] OrphanedWork* orphans() const; ///< what an application that was killed has left
    /// Kills what has a live process, agents too, without giving it time. Their states follow.
    void killServices();
    /// Asks them to end, and kills what is left after `grace`. Blocks, and needs no event loop: their states do not
    /// follow.
    void endServices(std::chrono::milliseconds grace);
    QFuture<QList<FlutterDevice>> flutterDevices();
    [[nodiscard]] static QList<FlutterDevice> parseFlutterDevices(const QByteArray& listing);

    // Refine filters and quick actions
    [[nodiscard]] const ProjectFilterSet& filters() const;
    void setFilters(const ProjectFilterSet& filters);
    Q_INVOKABLE void clearFilters();
    [[nodiscard]] bool passesFilters(const Project& project) const;
    [[nodiscard]] QStringList availableFrameworks() const;
    [[nodiscard]] QSet<QString> appsInCollections() const;
    [[nodiscard]] QStringList projectsWithChanges() const; ///< the ids of those with files that are not committed
    /// What the button of the project's card starts: what was last run there, where it is still offered.
    [[nodiscard]] std::optional<RunAction> primaryAction(const Project& project) const;
    /// That, unless it runs already while another one could be started.
    [[nodiscard]] std::optional<RunAction> offeredAction(const Project& project) const;
    [[nodiscard]] QList<PinnedEntry> pinnedEntries() const;
    [[nodiscard]] QList<int> runningPorts(const Project& project) const; ///< of its running services, ascending

    // Notifications
    /// Tells the user, where the settings want it.
    void post(const NotificationEvent& event);
    /// The same, whatever the settings say.
    void notify(const NotificationRequest& request);
    /// Shows the project's page in the window, there what the notification was about.
    void openFromNotification(const QString& projectID, const NotificationPart& part = {});
    [[nodiscard]] const NotificationStatus& notificationStatus() const;
    /// Turning them on asks the system whether it shows them. Finishes with its answer.
    Q_INVOKABLE QFuture<void> setNotificationsEnabled(bool isOn);
    Q_INVOKABLE QFuture<void> refreshNotificationStatus();

    // Login item, first start
    [[nodiscard]] LaunchAtLogin* login() const;
    [[nodiscard]] bool needsOnboarding() const;
    Q_INVOKABLE void skipOnboarding();  ///< changes nothing else
    Q_INVOKABLE void startOnboarding(); ///< once more

    // Addresses
    /// The port at which a running or starting service is best reached: a listening one where that is known, else the
    /// announced one.
    [[nodiscard]] std::optional<int> addressPort(const ServiceID& id) const;
    /// False when it is known that nothing of the service listens on its `addressPort`.
    [[nodiscard]] bool isAddressListening(const ServiceID& id) const;
    /// Looks the ports up once more, then opens "http://localhost:<port>" with the opener.
    QFuture<void> openAddress(const ServiceID& id);

    // Pins and tasks
    void togglePin(const Project& project);
    [[nodiscard]] QList<ProjectTask> tasks(const Project& project) const;
    QUuid addTask(const QString& title, const QString& notes, const Project& project);
    void renameTask(const QUuid& id, const QString& title, const QString& notes);
    void setTaskDone(const QUuid& id, bool done);
    void deleteTask(const QUuid& id);

    // Git. The badge of a project is absent where it has no repository, and until it was looked at.
    [[nodiscard]] const QHash<QString, GitBadge>& gitBadges() const; ///< by the project's id
    [[nodiscard]] std::optional<GitBadge> gitBadge(const Project& project) const;
    [[nodiscard]] bool isGitKnown(const Project& project) const; ///< whether its repositories were looked for
    [[nodiscard]] const QSet<QString>& gitBusy() const;          ///< the ids of the projects with an action under way
    [[nodiscard]] bool isGitBusy(const Project& project) const;
    /// Whether a name and an e-mail for commits are configured; true until that is known.
    [[nodiscard]] bool gitIdentitySet() const;
    QFuture<void> refreshGitBadges(); ///< of all projects, and whether the identity is set
    QFuture<void> refreshGitIdentity();
    QFuture<QuickGitReport> quickGit(QuickGitAction action, const Project& project);
    [[nodiscard]] QString defaultBranch() const; ///< on which a new repository begins
    [[nodiscard]] GitOverview& gitOverview();
    /// Behind the git page of the project that was last opened there; null when it is closed.
    [[nodiscard]] GitModel* gitModel() const;
    [[nodiscard]] NewProject* newProject() const;
    Q_INVOKABLE void openGit(const QString& projectID); ///< an empty id closes it
    /// Reads the badges and the open page again, unless that was done a moment ago: the window asks when it is looked
    /// at.
    Q_INVOKABLE void lookAtGit();
    /// "fetch", "pull" or "push"; how it ended is said in the status line.
    Q_INVOKABLE void quickGitFor(const QString& projectID, const QString& action);
    // Agents (AppModel+Agents)
    [[nodiscard]] AgentCatalog& agents();
    [[nodiscard]] AgentRuns& agentRunner(); ///< what there is beyond the actions here
    [[nodiscard]] TerminalTabs& terminals();
    [[nodiscard]] TerminalTabs* terminalTabs();
    [[nodiscard]] AgentModels* agentModels() const;
    [[nodiscard]] const QList<AgentRun*>& agentRuns() const; ///< newest first
    [[nodiscard]] int runningAgentCount() const;
    [[nodiscard]] const std::optional<AgentDraft>& agentDraft() const;
    void setAgentDraft(const std::optional<AgentDraft>& draft);
    [[nodiscard]] const std::optional<QString>& agentError() const; ///< why the last run could not be started
    void setAgentError(const std::optional<QString>& error);
    /// Null when it could not be started, for which `agentError` says why, or when a desktop agent was opened. What
    /// only comes out when git and the disk were looked at makes the run go away again, with `agentError` set.
    AgentRun* startAgent(
        AgentKind kind, const QString& task, const Project& project, const std::optional<QUuid>& linkedTask = {},
        const std::optional<AgentAutonomy>& autonomy = {}, const AgentRun* replyingTo = nullptr);
    AgentRun* startAgent(const AgentRuns::Start& wish, const Project& project);
    /// A new run that goes on where this one ended; null for a blank message, or when the project is gone. Without an
    /// autonomy that of the run holds.
    AgentRun* continueAgent(
        const AgentRun& run, const QString& message, const std::optional<AgentAutonomy>& autonomy = {});
    /// The same once more; null when the project is gone.
    AgentRun* retryAgent(const AgentRun& run);
    QFuture<void> stopAgent(AgentRun* run);
    /// Those of this process: what another one has started is that one's to stop.
    QFuture<void> stopAllAgents();
    /// Stops services and agents; from now on nothing new is started.
    QFuture<void> quit();
    [[nodiscard]] bool isQuitting() const;
    void startAgentInTerminal(AgentKind kind, const QString& task, const Project& project);
    /// Opens a terminal with the agent's own sign-in in it.
    void signIn(AgentKind kind);
    void openInAntigravity(const Project& project, const QString& task);
    /// Fills the composer with a to-do item.
    void draftAgentTask(const ProjectTask& task, const Project& project);
    /// The same by the to-do item's id, as a list has it.
    Q_INVOKABLE void draftAgentTaskFor(const QString& taskID);
    void mergeAgentWork(const AgentRun& run);
    void discardAgentWork(const AgentRun& run, TaskWorktrees::Discard discard);
    std::function<bool(const QString& application, const QString& folder)> openApplication; ///< false: it can't
    std::function<void(const QString& text)> setClipboard;

    /// Shows the message for 8 seconds, unless a newer one takes its place.
    void report(const QString& text, bool isError);
    /// Why nothing comes of what the user has just asked for, perhaps in the quick panel: the window shows itself.
    void refuse(const QString& text);
    void dismissStatusMessage();

    // What can be taken back: a task's deletion, an unpinning, what was discarded in git. One at a time, for 10
    // seconds.
    [[nodiscard]] QString undoText() const;
    Q_INVOKABLE void undo();
    Q_INVOKABLE void dismissUndo();

    // What QML binds to
    [[nodiscard]] QString summaryLine() const;
    [[nodiscard]] int openTaskCount() const;
    [[nodiscard]] int projectCount() const;
    [[nodiscard]] int shownCount() const;
    [[nodiscard]] int filterIndex() const;
    [[nodiscard]] QString filterTitle() const;
    [[nodiscard]] QString displayName() const;
    [[nodiscard]] QString scanRootText() const;   ///< with "~" for the home folder
    [[nodiscard]] QString scanRootFolder() const; ///< an absolute path
    [[nodiscard]] QUrl scanRootUrl() const;
    [[nodiscard]] QUrl supportUrl() const; ///< the folder of settings, corrections and tasks
    [[nodiscard]] int themeIndex() const;
    void setThemeIndex(int index);
    [[nodiscard]] int appearance() const;
    void setAppearance(int mode);
    [[nodiscard]] bool hasModal() const;
    [[nodiscard]] QString modalTitle() const;
    [[nodiscard]] QString modalBody() const;
    Q_INVOKABLE void dismissModal();
    [[nodiscard]] bool hasStatus() const;
    [[nodiscard]] bool statusIsError() const;
    [[nodiscard]] bool statusIsOngoing() const;
    [[nodiscard]] QString statusText() const;
    [[nodiscard]] bool setupActive() const;
    /// It runs, or has failed, behind what the user looks at.
    [[nodiscard]] bool isSetupAside() const;
    void setSetupAside(bool isAside);
    [[nodiscard]] QString setupPhase() const; ///< "", "confirm", "running", "failed"
    [[nodiscard]] QString setupProjectID() const;
    [[nodiscard]] QString setupTitle() const;
    [[nodiscard]] int setupTileIndex() const;
    [[nodiscard]] QString setupTileLetter() const;
    [[nodiscard]] QString setupText() const;
    [[nodiscard]] QString setupReason() const;
    [[nodiscard]] int setupStepCount() const;
    [[nodiscard]] int setupDoneCount() const;
    [[nodiscard]] QString setupLastLineText() const;
    [[nodiscard]] QStringList setupOutput() const; ///< the newest non-blank lines, at most 6
    [[nodiscard]] QString installCommandOverrideText() const;
    void setInstallCommandOverrideText(const QString& text);
    [[nodiscard]] QAbstractListModel* cards() const;
    [[nodiscard]] QAbstractListModel* running() const;
    [[nodiscard]] QAbstractListModel* pinned() const;
    [[nodiscard]] QAbstractListModel* sidebarFilters() const;
    [[nodiscard]] QAbstractListModel* setupSteps() const;
    [[nodiscard]] OutlineModel* outline() const;
    [[nodiscard]] QAbstractListModel* homeCards() const; ///< cards and collections, as the filters want collections
    [[nodiscard]] FilterBar* filterBar() const;
    [[nodiscard]] TaskLists* taskLists() const;
    [[nodiscard]] TaskLists* projectTasks() const; ///< of the project whose page is shown
    [[nodiscard]] Suggestions* suggestions() const;
    [[nodiscard]] OnboardingModel* onboarding() const;
    [[nodiscard]] DevicesModel* devices() const;
    [[nodiscard]] ServiceLogs* logs() const; ///< of the project whose page is shown
    [[nodiscard]] bool notificationsEnabled() const;
    [[nodiscard]] QString notificationStatusText() const;

    Q_INVOKABLE void setFilterIndex(int index);
    Q_INVOKABLE void refreshNow();
    /// The greeting depends on the hour, and nothing wakes up to look: the window asks when it is looked at.
    Q_INVOKABLE void updateGreeting();
    Q_INVOKABLE void toggleProject(const QString& projectID);
    Q_INVOKABLE void runAction(const QString& projectID, const QString& label);
    Q_INVOKABLE void stopProject(const QString& projectID);
    /// Its services that run or start.
    Q_INVOKABLE void restartProject(const QString& projectID);
    Q_INVOKABLE void stopServiceByKey(const QString& key);
    Q_INVOKABLE void openServiceByKey(const QString& key);
    /// The address of its first running service that has one.
    Q_INVOKABLE void openProject(const QString& projectID);
    Q_INVOKABLE void togglePinFor(const QString& projectID);
    Q_INVOKABLE void stopAll();
    Q_INVOKABLE void confirmSetup();
    Q_INVOKABLE void cancelSetup();
    Q_INVOKABLE void dismissStatus();
    /// A path, or a file URL as a folder dialog gives it.
    Q_INVOKABLE void chooseScanRoot(const QString& folder);
    /// By what the desktop opens it with; a folder by its file manager.
    Q_INVOKABLE void openLink(const QUrl& url);
    /// In the user's editor, at that line and column when they are known; by the desktop when no editor is set.
    Q_INVOKABLE void openFile(const QString& path, int line = 0, int column = 0);
    Q_INVOKABLE void showStatus(const QString& text, bool isError);

    // Set by the shell
    void setOpenMainWindowAction(std::function<void()> action); ///< opens or raises the main window
    void setReloadWidgets(std::function<void()> reload);
    /// Takes the quick panel's key or lets go of it, and says whether that was done. Called with what the settings say
    /// now, and whenever they say something else.
    void setApplyQuickPanelShortcut(std::function<bool(bool isOn)> apply);
    /// Whether the key is as the settings want it: had, or let go of.
    [[nodiscard]] bool isQuickPanelShortcutApplied() const;
    void noteQuickPanelShortcut(bool isApplied); ///< by whoever learns later that it is had, or lost
    std::function<bool(const QUrl&)> openUrl;    ///< false when nothing could open it
    std::function<void(ActivationPolicy)> setActivationPolicy;
    /// Sets the application's activation policy as the settings want it.
    void applyDockIconPolicy();

    [[nodiscard]] QThreadPool& workPool(); ///< for blocking functions of values

Q_SIGNALS:
    void projectsChanged();
    void treeChanged();
    void isScanningChanged();
    void hasScannedChanged();
    void isQuittingChanged();
    void searchTextChanged();
    void filterChanged();
    void filtersChanged();
    void notificationStatusChanged();
    void pendingInstallChanged();
    void setupChanged();
    void setupLastLineChanged();
    void pageChanged();
    void sheetChanged();
    void modalChanged();
    void undoTextChanged();
    void statusMessageChanged();
    void detailTabChanged();
    void aiPanelProjectIDChanged();
    void showOnlyUncommittedChanged();
    void refreshTokenChanged();
    void openMainWindowActionChanged();
    void reloadWidgetsChanged();
    void applyQuickPanelShortcutChanged();
    void quickPanelShortcutAppliedChanged();
    void queuedURLChanged();
    void installCommandOverrideChanged();
    void tasksChanged();
    void agentRunsChanged(); ///< which there are
    void runningAgentCountChanged();
    void agentDraftChanged();
    void agentErrorChanged();
    void agentRunEnded(const orv::AgentFinished& event); ///< worth a notification
    void pinsChanged();
    void greetingChanged();
    void gitBadgesChanged();
    void gitBusyChanged();
    void gitIdentitySetChanged();
    void gitModelChanged();
    /// A folder was made or cloned, and the projects were looked for again.
    void projectAdded(const QString& name, const QString& path, bool cloned);
    /// Some setting.
    void preferencesChanged();
    /// How many projects are shown, or the line under the greeting.
    void summaryChanged();
    /// The state or the addresses of some service.
    void servicesChanged();
    void serviceChanged(const orv::ServiceID& id);
    /// What `addressPort` and `isAddressListening` say of the service may have changed, though its state has not.
    void addressChanged(const orv::ServiceID& id);

private:
    struct Private;

    void startScan();
    void rescan(); ///< what a scan reads has changed
    void scanEnded(const QList<ProjectNode>& tree);
    void takeInSettings();
    void applyQuickPanelShortcut();
    void processStatesChanged();
    void takeInOutput(const ServiceID& id, qsizetype added);
    void noteAddress(const ServiceID& id);
    void showMainWindow();
    [[nodiscard]] bool refusesWork(); ///< while it quits; says so
    void reportFailure(const StoreResult& result);
    void reloadTasks();
    void makeParts();
    void takeInPage();
    void postTransitions();
    QFuture<void> findNotificationStatus(Notifying::Ask ask);
    QFuture<void> runOnChosenDevice(const RunRequest& request, const QString& key);

    void setUpGit();
    void lookAtGitOf(const QString& folder);
    void lookAtGitOfPage();
    void lookAtShownGit();
    void takeInNewProject(const QString& name, const QString& path, bool cloned);
    void followAgents();
    void agentFinished(AgentRun* run);
    AgentRun* taken(const std::expected<AgentRun*, QString>& started);

    void setPendingInstall(const std::optional<PendingInstall>& pending);
    void setSetup(const std::optional<SetupSession>& setup);
    void askForInstall(const RunRequest& request, const QList<ServiceTarget>& targets, const QStringList& bodies);
    void setupEnded(const QString& reason);
    void runInstalled(const RunRequest& request, const Completion& completion);
    void stopSetup(); ///< whichever project's is under way
    void endSetup();
    QFuture<void> run(const RunRequest& request);
    void startWhenGone(const RunRequest& request, const QList<ServiceTarget>& targets, const Completion& completion);
    void start(const RunRequest& request, const QList<ServiceTarget>& targets);
    QFuture<void> stopServices(const QList<ServiceID>& ids);
    QFuture<void> publishAfter(const QFuture<void>& stops);

    std::unique_ptr<Private> d;
};

} // namespace orv
