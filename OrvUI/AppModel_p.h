#pragma once

#include "OrvCore/CommandBuilder.h"
#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AgentModels.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/DevicesModel.h"
#include "OrvUI/FilterBar.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/InstallRecord.h"
#include "OrvUI/OnboardingModel.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/Pool_p.h"
#include "OrvUI/PortGuesses.h"
#include "OrvUI/RunChoices.h"
#include "OrvUI/RunRequest_p.h"
#include "OrvUI/ServiceLogs.h"
#include "OrvUI/SetupRunner.h"
#include "OrvUI/SnapshotPublisher.h"
#include "OrvUI/Suggestions.h"
#include "OrvUI/TaskLists.h"
#include "OrvUI/TerminalNotices.h"
#include "OrvUI/UndoOffer.h"

#include <QThreadPool>

#include <algorithm>
#include <atomic>

namespace orv {

/// A project's install between the question and the run that it was for.
struct SetupPlan {
    RunRequest request;
    QList<QList<ServiceTarget>> targets;             ///< of each step of the session: what it installs for
    QList<CommandBuilder::InstallPlace> places = {}; ///< and by what, unless another command is typed
};

/// Where a service in this state is best reached.
struct KnownAddress {
    ServiceState state;
    std::optional<int> port;
    QList<int> choice;    ///< the ports among which a line of its output decides; empty when there is nothing to decide
    bool isGuess = false; ///< no line of the output names the port
};

struct AppModel::Private {
    explicit Private(Options options);

    std::unique_ptr<SettingsStore> settings;
    std::shared_ptr<OverrideStore> overrides;
    quint64 overridesSeen = 0; ///< the generation that the last scan was asked for
    std::unique_ptr<ProcessManager> processes;
    TaskStore taskStore;
    std::shared_ptr<InstallRecord> installs;
    const std::chrono::milliseconds reportTime;
    UndoOffer undo;

    QList<Project> projects;
    QHash<QString, qsizetype> projectIndex; ///< from id to the place in `projects`
    QList<ProjectNode> tree;
    bool isScanning = false;
    bool hasScanned = false;
    bool isQuitting = false;
    QString searchText;
    ProjectFilter filter = ProjectFilter::all;
    std::optional<PendingInstall> pendingInstall;
    std::optional<SetupSession> setup;
    bool isSetupAside = false;
    std::optional<QString> installCommandOverride;
    AppPage page;
    std::optional<AppSheet> sheet;
    std::optional<ModalContent> modal;
    std::optional<StatusMessage> statusMessage;
    DetailTab detailTab = DetailTab::overview;
    std::optional<QString> aiPanelProjectID;
    bool showOnlyUncommitted = false;
    int refreshToken = 0;
    std::optional<QUrl> queuedURL;
    QList<ProjectTask> tasks;

    std::unique_ptr<AgentCatalog> agents;
    std::unique_ptr<TerminalTabs> terminals;
    std::unique_ptr<AgentRuns> agentRuns;
    std::unique_ptr<AgentModels> agentModels;
    std::optional<AgentDraft> agentDraft;
    std::optional<QString> agentError;

    std::function<void()> openMainWindowAction;
    std::function<void()> reloadWidgets;
    std::function<bool(bool isOn)> applyQuickPanelShortcut;
    bool isQuickPanelShortcutApplied = false;

    AppSettings lastSettings; ///< as of the last notification
    QString lastGreeting;
    QHash<ServiceID, ServiceState> lastServiceStates;
    mutable QHash<ServiceID, KnownAddress> addresses; ///< worked out already, from the ports that listened then

    Stops stops;
    QHash<QString, std::optional<QString>> flutterDevices; ///< on which a project's Flutter app was last started

    std::optional<SetupPlan> setupPlan; ///< of the session, until it is over
    SetupRunner* setupRunner = nullptr;
    std::optional<Completion> setupCompletion; ///< from the confirmation to the start of the services

    std::shared_ptr<ScanCancellation> scanCancellation;
    std::optional<Completion> scanCompletion;
    QString scannedRoot;      ///< of the last scan that ended, well or not
    bool isScanStale = false; ///< what the running scan reads has changed since it began
    std::atomic<bool> isEnding = false;
    SnapshotPublisher publisher;

    std::unique_ptr<GitOverview> git;
    std::unique_ptr<GitModel> gitModel; ///< of the project whose git page is open
    bool isGitModelOld = false;         ///< something may have been done since it was read
    std::unique_ptr<NewProject> newProject;

    std::unique_ptr<HomeModels> home;

    ProjectFilterSet filters;
    RunChoices choices;
    std::unique_ptr<Notifying> notifier;
    std::function<bool()> appIsActive;
    NotificationStatus notificationStatus;
    /// Whether what failed is to be told, of the kind that the switch is for: nobody looks at what was put aside, nor
    /// at anything while the window is not in front.
    [[nodiscard]] bool tellsFailure(bool isAside, bool AppSettings::* wanted) const;
    std::unique_ptr<TerminalNotices> terminalNotices;
    ServiceTransitions transitions;
    PortGuesses portGuesses;
    LaunchAtLogin login;
    DevicesModel devices;
    std::unique_ptr<FilterBar> filterBar;
    std::unique_ptr<TaskLists> taskLists;
    std::unique_ptr<TaskLists> projectTasks;
    std::unique_ptr<Suggestions> suggestions;
    std::unique_ptr<OnboardingModel> onboarding;
    std::unique_ptr<ServiceLogs> logs;
    std::unique_ptr<OrphanedWork> orphans;

    // Last, so that what runs in them ends before what it uses goes.
    QThreadPool scanPool;
    QThreadPool workPool;
};

/// Notifies only when the value is another one.
template <typename T, typename Signal>
void assign(AppModel* model, T& member, const T& value, Signal changed) {
    if (member == value) {
        return;
    }
    member = value;
    Q_EMIT(model->*changed)();
}

[[nodiscard]] inline bool hasTarget(const Project& project, ServiceKind kind) {
    return std::ranges::find(project.targets, kind, &ServiceTarget::kind) != project.targets.end();
}

} // namespace orv
