#include "OrvCore/Async.h"
#include "OrvCore/BackgroundThread.h"
#include "OrvCore/Paths.h"
#include "OrvCore/StoreWatcher.h"
#include "OrvCore/WidgetChange.h"
#include "OrvProcess/ChildRecords.h"
#include "OrvUI/AppModel_p.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/NewProject.h"

#include <QFileInfo>
#include <QTimer>
#include <QUrlQuery>

#include <algorithm>
#include <chrono>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds untilSaid{250};

template <typename T>
std::unique_ptr<T> orMake(std::unique_ptr<T> given, const std::function<std::unique_ptr<T>()>& make) {
    return given ? std::move(given) : make();
}

QString supportFile(const QString& name) {
    return Paths::supportDirectory() + u'/' + name;
}

} // namespace

AppModel::Private::Private(Options options)
    : settings(orMake<SettingsStore>(
          std::move(options.settings),
          [] { return std::make_unique<SettingsStore>(supportFile(u"settings.json"_s)); })),
      overrides(
          options.overrides ? std::move(options.overrides)
                            : std::make_shared<OverrideStore>(supportFile(u"overrides.json"_s))),
      processes(orMake<ProcessManager>(
          std::move(options.processes), [] { return std::make_unique<ProcessManager>(std::chrono::seconds(3)); })),
      taskStore(options.tasksFile.isEmpty() ? TaskStore::defaultPath() : options.tasksFile),
      installs(std::make_shared<InstallRecord>(QFileInfo(settings->filePath()).path() + u"/installs.json"_s)),
      reportTime(options.reportTime),
      undo(options.undoTime),
      agents(orMake<AgentCatalog>(
          std::move(options.agents),
          [this] {
              return std::make_unique<AgentCatalog>(AgentCatalog::Options{
                  .shell = {}, .customCommand = [this] { return settings->settings().customAgentCommand; }});
          })),
      terminals(std::make_unique<TerminalTabs>()),
      lastSettings(settings->settings()),
      publisher(options.snapshotDirectory.isEmpty() ? SharedContainer::defaultDirectory() : options.snapshotDirectory),
      choices(QFileInfo(settings->filePath()).path() + u"/choices.json"_s),
      notifier(std::move(options.notifier)),
      appIsActive(std::move(options.appIsActive)),
      login(std::move(options.login)),
      devices(std::move(options.deviceTools), choices) {
    scanPool.setObjectName(u"orv-scan"_s);
    scanPool.setMaxThreadCount(1);
    workPool.setObjectName(u"orv-work"_s);
    workPool.setMaxThreadCount(3);
    const QString support = QFileInfo(settings->filePath()).path();
    AgentRuns::Options runs = options.agentRuns ? *std::move(options.agentRuns)
                                                : AgentRuns::Options{
                                                      .files = AgentRunFiles(support + u"/agents"_s),
                                                      .worktreeFolder = support + u"/worktrees"_s,
                                                      .settings = {},
                                                      .children = ChildRecords()};
    const ChildRecords children(support + u"/running"_s);
    processes->setRecords(children);
    runs.children = children;
    runs.settings = [this] { return settings->settings(); };
    runs.endLeft = [this](const AgentRun& run) { return orphans->stopRun(run.facts().id); };
    agentRuns = std::make_unique<AgentRuns>(std::move(runs));
}

AppModel::AppModel(Options options, QObject* parent)
    : QObject(parent), d(std::make_unique<Private>(std::move(options))) {
    ORV_ASSERT_MAIN_THREAD();
    d->lastGreeting = greeting();
    connect(d->settings.get(), &SettingsStore::settingsChanged, this, &AppModel::takeInSettings);
    auto* watcher = new StoreWatcher({d->overrides->filePath(), d->taskStore.filePath(), d->choices.filePath()}, this);
    // Whatever changed between their first reading and the watching.
    d->overrides->reload();
    d->taskStore.reload();
    d->choices.reload();
    d->overridesSeen = d->overrides->generation();
    d->tasks = d->taskStore.tasks();
    connect(watcher, &StoreWatcher::changed, this, [this] {
        d->overrides->reload();
        const auto seen = std::exchange(d->overridesSeen, d->overrides->generation());
        if (seen != d->overridesSeen) {
            rescan();
        }
        if (d->taskStore.reload()) {
            reloadTasks();
        }
        if (d->choices.reload()) {
            d->devices.takeInChoices();
            Q_EMIT preferencesChanged(); // the actions of the cards
        }
    });
    connect(&d->publisher, &SnapshotPublisher::written, this, [this] {
        if (d->reloadWidgets) {
            d->reloadWidgets();
        }
    });
    connect(d->processes.get(), &ProcessManager::listeningPortsChanged, this, [this](const ServiceID& id) {
        d->addresses.remove(id);
        // A debugger listens a moment before it says that it does.
        QTimer::singleShot(untilSaid, this, [this, id] {
            if (addressPort(id)) {
                d->processes->noteUp(id);
            }
        });
        noteAddress(id);
    });
    connect(d->processes.get(), &ProcessManager::logAppended, this, [this](const ServiceID& id, qsizetype added) {
        takeInOutput(id, added);
        if (d->setupRunner != nullptr && d->setupRunner->currentStep() == id) {
            Q_EMIT setupLastLineChanged();
        }
    });
    setUpGit();
    followAgents();
    d->orphans = std::make_unique<OrphanedWork>(*this);
    connect(d->orphans.get(), &OrphanedWork::changed, this, &AppModel::servicesChanged);
    d->home = std::make_unique<HomeModels>(*this);
    d->agentModels = std::make_unique<AgentModels>(*this);
    connect(d->home.get(), &HomeModels::summaryChanged, this, &AppModel::summaryChanged);
    makeParts();
    connect(&d->undo, &UndoOffer::changed, this, &AppModel::undoTextChanged);
    d->processes->setOnChange([this] {
        publishSnapshot();
        processStatesChanged();
    });
}

AppModel::~AppModel() {
    d->isEnding = true;
    d->processes->setOnChange({});
    d->processes->disconnect(this);
    if (d->scanCancellation) {
        d->scanCancellation->cancel();
    }
    delete d->setupRunner;
    d->notifier.reset(); // before what its clicks reach
    d->agentModels.reset();
    d->agentRuns.reset();
    d->terminals.reset();
    d->scanPool.waitForDone();
    d->workPool.waitForDone();
    d->publisher.flush();
    for (const StoreResult& saved :
         {d->settings->flush(), d->overrides->flush(), d->taskStore.flush(), d->choices.flush()}) {
        if (!saved) {
            qWarning("%s", qUtf8Printable(saved.error().text()));
        }
    }
}

const QList<Project>& AppModel::projects() const {
    return d->projects;
}
const QList<ProjectNode>& AppModel::tree() const {
    return d->tree;
}
bool AppModel::isScanning() const {
    return d->isScanning;
}
bool AppModel::hasScanned() const {
    return d->hasScanned;
}
const QString& AppModel::searchText() const {
    return d->searchText;
}
ProjectFilter AppModel::filter() const {
    return d->filter;
}
const std::optional<PendingInstall>& AppModel::pendingInstall() const {
    return d->pendingInstall;
}
const std::optional<SetupSession>& AppModel::setup() const {
    return d->setup;
}
const AppPage& AppModel::page() const {
    return d->page;
}
const std::optional<AppSheet>& AppModel::sheet() const {
    return d->sheet;
}
const std::optional<ModalContent>& AppModel::modal() const {
    return d->modal;
}
const std::optional<StatusMessage>& AppModel::statusMessage() const {
    return d->statusMessage;
}
DetailTab AppModel::detailTab() const {
    return d->detailTab;
}
const std::optional<QString>& AppModel::aiPanelProjectID() const {
    return d->aiPanelProjectID;
}
bool AppModel::showOnlyUncommitted() const {
    return d->showOnlyUncommitted;
}
int AppModel::refreshToken() const {
    return d->refreshToken;
}
const std::optional<QUrl>& AppModel::queuedURL() const {
    return d->queuedURL;
}
const std::optional<QString>& AppModel::installCommandOverride() const {
    return d->installCommandOverride;
}
const QList<ProjectTask>& AppModel::tasks() const {
    return d->tasks;
}
SettingsStore& AppModel::settings() {
    return *d->settings;
}
OverrideStore& AppModel::overrides() {
    return *d->overrides;
}
ProcessManager& AppModel::processes() {
    return *d->processes;
}

void AppModel::setSearchText(const QString& text) {
    assign(this, d->searchText, text, &AppModel::searchTextChanged);
}
void AppModel::setFilter(ProjectFilter filter) {
    assign(this, d->filter, filter, &AppModel::filterChanged);
}
void AppModel::setPage(const AppPage& page) {
    assign(this, d->page, page, &AppModel::pageChanged);
}
void AppModel::setSheet(const std::optional<AppSheet>& sheet) {
    // A clone that was put aside comes back, whatever was to be added.
    std::optional<AppSheet> shown = sheet;
    if (shown && shown->kind == AppSheet::Kind::addProject && d->newProject->isAside()) {
        shown->mode = AddProjectMode::clone;
    }
    assign(this, d->sheet, shown, &AppModel::sheetChanged);
}
void AppModel::setModal(const std::optional<ModalContent>& modal) {
    assign(this, d->modal, modal, &AppModel::modalChanged);
}
void AppModel::setStatusMessage(const std::optional<StatusMessage>& message) {
    assign(this, d->statusMessage, message, &AppModel::statusMessageChanged);
}
void AppModel::setDetailTab(DetailTab tab) {
    assign(this, d->detailTab, tab, &AppModel::detailTabChanged);
}
void AppModel::setAiPanelProjectID(const std::optional<QString>& projectID) {
    assign(this, d->aiPanelProjectID, projectID, &AppModel::aiPanelProjectIDChanged);
}
void AppModel::setShowOnlyUncommitted(bool isOn) {
    assign(this, d->showOnlyUncommitted, isOn, &AppModel::showOnlyUncommittedChanged);
}
void AppModel::reloadViews() {
    assign(this, d->refreshToken, d->refreshToken + 1, &AppModel::refreshTokenChanged);
}
void AppModel::setInstallCommandOverride(const std::optional<QString>& command) {
    const bool isBlank = !command || command->trimmed().isEmpty();
    assign(this, d->installCommandOverride, isBlank ? std::nullopt : command, &AppModel::installCommandOverrideChanged);
}
void AppModel::setPendingInstall(const std::optional<PendingInstall>& pending) {
    assign(this, d->pendingInstall, pending, &AppModel::pendingInstallChanged);
}
void AppModel::setSetup(const std::optional<SetupSession>& setup) {
    // One that asks, or is over, is nothing to be put aside.
    d->isSetupAside = d->isSetupAside && setup && setup->phase.kind != SetupSession::Phase::Kind::confirm;
    assign(this, d->setup, setup, &AppModel::setupChanged);
    Q_EMIT setupLastLineChanged();
}

int AppModel::runningCount() const {
    const auto& states = d->processes->states();
    int count = 0;
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        count += entry->isRunning() && !isInstall(entry.key()) ? 1 : 0;
    }
    return count;
}

int AppModel::leftCount() const {
    return static_cast<int>(d->orphans->services().size());
}

QString AppModel::menuBarTitle() const {
    const int count = runningCount() + leftCount();
    return count > 0 ? QString::number(count) : QString();
}

bool AppModel::shouldConfirmQuit() const {
    return runningCount() > 0;
}

QThreadPool& AppModel::workPool() {
    return d->workPool;
}

/// What screens bind to and needs the rest of the model.
void AppModel::makeParts() {
    d->filterBar = std::make_unique<FilterBar>(*this);
    d->taskLists = std::make_unique<TaskLists>(*this);
    d->projectTasks = std::make_unique<TaskLists>(*this);
    d->suggestions = std::make_unique<Suggestions>(*this);
    d->onboarding = std::make_unique<OnboardingModel>(*this);
    d->logs = std::make_unique<ServiceLogs>(*this);
    d->terminalNotices = std::make_unique<TerminalNotices>(*this, *d->terminals, d->appIsActive);
    d->terminals->setClipboardWrite(d->lastSettings.terminalClipboard);
    connect(this, &AppModel::pageChanged, this, &AppModel::takeInPage);
    connect(this, &AppModel::projectAdded, this, [this](const QString& name, const QString& path, bool cloned) {
        post(ProjectAdded{name, path, cloned});
    });
    if (d->notifier) {
        d->notifier->projectClicked = [this](const QString& id, const NotificationPart& part) {
            openFromNotification(id, part);
        };
        d->notifier->addressClicked = [this](const QUrl& address) {
            if (!openUrl || !openUrl(address)) {
                refuse(tr("Could not open %1: no browser was found.").arg(address.toString()));
            }
        };
    }
}

void AppModel::takeInPage() {
    if (d->page.kind == AppPage::Kind::project) {
        d->projectTasks->setProjectID(d->page.id);
        d->logs->setProjectID(d->page.id);
    }
}

QString AppModel::greeting() const {
    return Greeter::greeting(QDateTime::currentDateTime(), d->settings->settings().displayName);
}

bool AppModel::isRunning(const Project& project) const {
    const auto& states = d->processes->states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        if (entry.key().projectID == project.id && entry->isRunning()) {
            return true;
        }
    }
    return false;
}

QString AppModel::quickPanelShortcutLabel() {
    return u"⌃⌥⌘L"_s;
}

const Project* AppModel::project(const QString& id) const {
    const auto found = d->projectIndex.constFind(id);
    return found == d->projectIndex.cend() ? nullptr : &d->projects[*found];
}

QFuture<void> AppModel::refresh() {
    ORV_ASSERT_MAIN_THREAD();
    if (d->isScanning) {
        return d->scanCompletion->future();
    }
    d->scanCompletion.emplace();
    const QFuture<void> end = d->scanCompletion->future();
    d->isScanning = true;
    startScan();
    Q_EMIT isScanningChanged();
    return end;
}

void AppModel::startScan() {
    d->isScanStale = false;
    d->scanCancellation = std::make_shared<ScanCancellation>();
    ProjectScanner scanner;
    scanner.overrides = d->overrides;
    const QString root = d->settings->settings().scanRoot;
    const auto scan = [scanner, root, cancellation = d->scanCancellation] {
        becomeBackgroundThread(); // its pool is for scans alone
        return scanner.scanTree(root, cancellation.get());
    };
    onFinished(runIn(d->scanPool, scan), this, [this, root](const ScanResult<QList<ProjectNode>>& tree) {
        if (d->isScanStale) {
            startScan();
            return;
        }
        if (!tree) {
            report(tree.error().text(), true);
        }
        // What could not be looked at is as it was, as far as anyone knows; of another folder nothing is known.
        const bool isSameRoot = std::exchange(d->scannedRoot, root) == root;
        scanEnded(tree ? *tree : isSameRoot ? QList<ProjectNode>(d->tree) : QList<ProjectNode>());
    });
}

void AppModel::scanEnded(const QList<ProjectNode>& tree) {
    QList<Project> projects;
    for (const ProjectNode& node : tree) {
        projects.append(node.apps());
    }
    const bool isOtherTree = !std::ranges::equal(tree, d->tree);
    const bool areOtherProjects = projects != d->projects;
    d->tree = tree;
    d->projects = projects;
    d->projectIndex.clear();
    for (qsizetype i = 0; i < projects.size(); ++i) {
        d->projectIndex.insert(projects[i].id, i);
    }
    const bool isFirst = !std::exchange(d->hasScanned, true);
    const Completion ended = *std::exchange(d->scanCompletion, {});
    d->isScanning = false;
    // Everything is set before anyone is told, so that nobody sees one half.
    if (isOtherTree) {
        Q_EMIT treeChanged();
    }
    if (areOtherProjects) {
        Q_EMIT projectsChanged();
    }
    if (isFirst) {
        Q_EMIT hasScannedChanged();
    }
    Q_EMIT isScanningChanged();
    publishSnapshot();
    d->git->setProjects(d->projects, d->settings->settings().scanRoot);
    refreshGitBadges();
    if (const std::optional<QUrl> url = std::exchange(d->queuedURL, {})) {
        Q_EMIT queuedURLChanged();
        handle(*url);
    }
    ended.finish();
}

void AppModel::rescan() {
    if (d->isScanning) {
        d->isScanStale = true;
        d->scanCancellation->cancel();
    } else if (d->hasScanned) {
        refresh();
    }
}

void AppModel::takeInSettings() {
    const AppSettings before = std::exchange(d->lastSettings, d->settings->settings());
    const AppSettings& now = d->lastSettings;
    if (before == now) {
        return;
    }
    d->terminals->setClipboardWrite(now.terminalClipboard);
    Q_EMIT preferencesChanged();
    d->agents->updateCustom();
    if (before.displayName != now.displayName) {
        updateGreeting();
    }
    if (before.pinnedProjectIDs != now.pinnedProjectIDs) {
        Q_EMIT pinsChanged();
        publishSnapshot();
    }
    if (before.scanRoot != now.scanRoot) {
        rescan();
    }
    if (before.quickPanelShortcutEnabled != now.quickPanelShortcutEnabled) {
        applyQuickPanelShortcut();
    }
}

void AppModel::changeSettings(const std::function<void(AppSettings&)>& change) {
    reportFailure(d->settings->change(change));
}

void AppModel::setOverride(const QString& key, const std::optional<Override>& value) {
    reportFailure(d->overrides->set(key, value));
    d->overridesSeen = d->overrides->generation();
    rescan();
}

void AppModel::reportFailure(const StoreResult& result) {
    if (!result) {
        report(result.error().text(), true);
    }
}

void AppModel::processStatesChanged() {
    const auto& states = d->processes->states();
    QList<ServiceID> changed;
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        const auto before = d->lastServiceStates.constFind(entry.key());
        if (before == d->lastServiceStates.cend() || *before != *entry) {
            changed.append(entry.key());
        }
    }
    d->lastServiceStates = states;
    for (const ServiceID& id : changed) {
        Q_EMIT serviceChanged(id);
    }
    if (!changed.isEmpty()) {
        Q_EMIT servicesChanged();
    }
    postTransitions();
}

void AppModel::publishSnapshot() {
    ORV_ASSERT_MAIN_THREAD();
    WidgetSnapshot snapshot;
    const auto& states = d->processes->states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        if (entry->isRunning() && !isInstall(entry.key())) {
            snapshot.running.append({projectName(entry.key()), entry.key().kind, addressPort(entry.key())});
        }
    }
    std::ranges::sort(snapshot.running, {}, [](const WidgetSnapshot::Running& running) {
        // UTF-8 sorts as code points do; UTF-16 does not.
        return std::tuple(running.projectName.toUtf8(), rawValue(running.kind), running.port.value_or(0));
    });
    for (const Project& project : pinnedProjects()) {
        snapshot.pinned.append({project.id, project.name});
    }
    takeTasks(snapshot, d->taskStore);
    d->publisher.publish(snapshot);
}

void AppModel::flushSnapshot() {
    ORV_ASSERT_MAIN_THREAD();
    d->publisher.flush();
}

QFuture<void> AppModel::handle(const QUrl& url) {
    ORV_ASSERT_MAIN_THREAD();
    if (!d->hasScanned) {
        assign(this, d->queuedURL, std::optional(url), &AppModel::queuedURLChanged);
        return finishedFuture();
    }
    if (url.scheme() != u"orvlauncher" || url.host() != u"run") {
        return finishedFuture();
    }
    const Project* wanted = project(QUrlQuery(url).queryItemValue(u"project"_s, QUrl::FullyDecoded));
    const std::optional<RunAction> action = wanted != nullptr ? defaultAction(*wanted) : std::nullopt;
    if (!action) {
        return finishedFuture();
    }
    return run(*wanted, kinds(*action));
}

void AppModel::showMainWindow() {
    if (d->openMainWindowAction) {
        d->openMainWindowAction();
    }
}

void AppModel::setOpenMainWindowAction(std::function<void()> action) {
    d->openMainWindowAction = std::move(action);
    Q_EMIT openMainWindowActionChanged();
}

void AppModel::setApplyQuickPanelShortcut(std::function<bool(bool isOn)> apply) {
    d->applyQuickPanelShortcut = std::move(apply);
    Q_EMIT applyQuickPanelShortcutChanged();
    applyQuickPanelShortcut();
}

void AppModel::applyQuickPanelShortcut() {
    if (d->applyQuickPanelShortcut) {
        noteQuickPanelShortcut(d->applyQuickPanelShortcut(d->settings->settings().quickPanelShortcutEnabled));
    }
}

bool AppModel::isQuickPanelShortcutApplied() const {
    return d->isQuickPanelShortcutApplied;
}

void AppModel::noteQuickPanelShortcut(bool isApplied) {
    assign(this, d->isQuickPanelShortcutApplied, isApplied, &AppModel::quickPanelShortcutAppliedChanged);
}

void AppModel::setReloadWidgets(std::function<void()> reload) {
    d->reloadWidgets = std::move(reload);
    Q_EMIT reloadWidgetsChanged();
}

void AppModel::applyDockIconPolicy() {
    ORV_ASSERT_MAIN_THREAD();
    if (setActivationPolicy) {
        setActivationPolicy(
            d->settings->settings().showDockIcon ? ActivationPolicy::regular : ActivationPolicy::accessory);
    }
}

} // namespace orv
