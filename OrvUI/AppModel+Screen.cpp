#include "OrvCore/Async.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvCore/Paths.h"
#include "OrvProcess/ShellRunner.h"
#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AppModel_p.h"
#include "OrvUI/EditorCommand.h"
#include "OrvUI/Pool_p.h"
#include "OrvUI/TerminalTyping.h"
#include "OrvUI/Tile.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QThreadPool>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

QString AppModel::summaryLine() const {
    return d->home->summaryLine();
}
int AppModel::shownCount() const {
    return d->home->shownCount();
}
int AppModel::projectCount() const {
    return static_cast<int>(d->projects.size());
}
int AppModel::openTaskCount() const {
    return static_cast<int>(std::ranges::count_if(d->tasks, [](const ProjectTask& task) { return !task.isDone(); }));
}
int AppModel::filterIndex() const {
    return static_cast<int>(d->filter);
}
QString AppModel::filterTitle() const {
    return title(d->filter);
}
QString AppModel::displayName() const {
    return d->settings->settings().displayName;
}
int AppModel::themeIndex() const {
    return static_cast<int>(d->settings->settings().theme);
}
int AppModel::appearance() const {
    return static_cast<int>(d->settings->settings().appearance);
}

bool AppModel::hasModal() const {
    return d->modal.has_value();
}

QString AppModel::modalTitle() const {
    return d->modal ? d->modal->title : QString();
}

QString AppModel::modalBody() const {
    return d->modal ? d->modal->body : QString();
}

void AppModel::dismissModal() {
    setModal({});
}

bool AppModel::hasStatus() const {
    return d->statusMessage.has_value();
}
bool AppModel::statusIsError() const {
    return d->statusMessage && d->statusMessage->isError;
}
bool AppModel::statusIsOngoing() const {
    return d->statusMessage && d->statusMessage->isOngoing;
}
QString AppModel::statusText() const {
    return d->statusMessage ? d->statusMessage->text : QString();
}

bool AppModel::setupActive() const {
    return d->setup.has_value();
}
QString AppModel::setupProjectID() const {
    return d->setup ? d->setup->project.id : QString();
}
QString AppModel::setupTitle() const {
    return d->setup ? d->setup->project.name : QString();
}
int AppModel::setupTileIndex() const {
    return Tile::index(setupTitle());
}
QString AppModel::setupTileLetter() const {
    return Tile::letter(setupTitle());
}
QString AppModel::setupText() const {
    return d->setup ? d->setup->text() : QString();
}
QString AppModel::setupReason() const {
    return d->setup ? d->setup->phase.reason : QString();
}
int AppModel::setupStepCount() const {
    return d->setup ? static_cast<int>(d->setup->steps.size()) : 0;
}
int AppModel::setupDoneCount() const {
    const QList<SetupStep> steps = d->setup ? d->setup->steps : QList<SetupStep>();
    return static_cast<int>(std::ranges::count(steps, SetupStep::Status::done, &SetupStep::status));
}
QString AppModel::setupLastLineText() const {
    return setupLastLine().value_or(QString());
}
QString AppModel::installCommandOverrideText() const {
    return d->installCommandOverride.value_or(QString());
}

HomeModels& AppModel::home() {
    return *d->home;
}
QAbstractListModel* AppModel::cards() const {
    return &d->home->cards;
}
QAbstractListModel* AppModel::running() const {
    return &d->home->running;
}
QAbstractListModel* AppModel::pinned() const {
    return &d->home->pinned;
}
QAbstractListModel* AppModel::sidebarFilters() const {
    return &d->home->sidebarFilters;
}
QAbstractListModel* AppModel::setupSteps() const {
    return &d->home->setupSteps;
}
OutlineModel* AppModel::outline() const {
    return &d->home->outline;
}

QAbstractListModel* AppModel::homeCards() const {
    return &d->home->homeCards;
}
FilterBar* AppModel::filterBar() const {
    return d->filterBar.get();
}
TaskLists* AppModel::taskLists() const {
    return d->taskLists.get();
}
TaskLists* AppModel::projectTasks() const {
    return d->projectTasks.get();
}
Suggestions* AppModel::suggestions() const {
    return d->suggestions.get();
}
OnboardingModel* AppModel::onboarding() const {
    return d->onboarding.get();
}
DevicesModel* AppModel::devices() const {
    return &d->devices;
}
ServiceLogs* AppModel::logs() const {
    return d->logs.get();
}
bool AppModel::notificationsEnabled() const {
    return d->settings->settings().notificationsEnabled;
}
QString AppModel::notificationStatusText() const {
    return d->notificationStatus.text();
}

QString AppModel::scanRootFolder() const {
    return d->settings->settings().scanRoot;
}

QUrl AppModel::scanRootUrl() const {
    return QUrl::fromLocalFile(d->settings->settings().scanRoot);
}

QString AppModel::scanRootText() const {
    return Paths::shortened(d->settings->settings().scanRoot);
}

QString AppModel::setupPhase() const {
    if (!d->setup) {
        return {};
    }
    switch (d->setup->phase.kind) {
    case SetupSession::Phase::Kind::confirm:
        return u"confirm"_s;
    case SetupSession::Phase::Kind::running:
        return u"running"_s;
    case SetupSession::Phase::Kind::failed:
        break;
    }
    return u"failed"_s;
}

void AppModel::setFilterIndex(int index) {
    if (index >= 0 && index < static_cast<int>(allProjectFilters.size())) {
        setFilter(allProjectFilters[static_cast<size_t>(index)]);
    }
}

void AppModel::setThemeIndex(int index) {
    if (index >= 0 && index <= static_cast<int>(ThemeID::graphite) && index != themeIndex()) {
        changeSettings([index](AppSettings& settings) { settings.theme = static_cast<ThemeID>(index); });
    }
}

void AppModel::setAppearance(int mode) {
    if (mode >= 0 && mode <= static_cast<int>(AppearanceMode::dark) && mode != appearance()) {
        changeSettings([mode](AppSettings& settings) { settings.appearance = static_cast<AppearanceMode>(mode); });
    }
}

void AppModel::setInstallCommandOverrideText(const QString& text) {
    setInstallCommandOverride(text);
}

void AppModel::refreshNow() {
    refresh();
    reloadViews();
}

void AppModel::updateGreeting() {
    assign(this, d->lastGreeting, greeting(), &AppModel::greetingChanged);
}

void AppModel::toggleProject(const QString& projectID) {
    if (const Project* wanted = project(projectID)) {
        toggleRun(*wanted);
    }
}

void AppModel::runAction(const QString& projectID, const QString& label) {
    const Project* wanted = project(projectID);
    if (const auto action = orv::runAction(label); wanted != nullptr && action) {
        run(*wanted, kinds(*action));
    }
}

void AppModel::stopProject(const QString& projectID) {
    if (const Project* wanted = project(projectID)) {
        stop(*wanted);
    }
}

void AppModel::restartProject(const QString& projectID) {
    const Project* wanted = project(projectID);
    if (wanted == nullptr) {
        return;
    }
    QList<ServiceID> active;
    for (const ServiceID& id : services(*wanted)) {
        if (!isInstall(id) && d->processes->state(id).isActive()) {
            active.append(id);
        }
    }
    restart(*wanted, active);
}

void AppModel::stopServiceByKey(const QString& key) {
    if (const std::optional<ServiceID> id = d->home->service(key)) {
        stopService(*id);
    }
}

void AppModel::openServiceByKey(const QString& key) {
    if (const std::optional<ServiceID> id = d->home->service(key)) {
        openAddress(*id);
    }
}

void AppModel::openProject(const QString& projectID) {
    const Project* wanted = project(projectID);
    const QList<ServiceID> ids = wanted != nullptr ? services(*wanted) : QList<ServiceID>();
    const auto isOpen = [this](const ServiceID& id) { return !isInstall(id) && addressPort(id).has_value(); };
    if (const auto found = std::ranges::find_if(ids, isOpen); found != ids.end()) {
        openAddress(*found);
    }
}

void AppModel::togglePinFor(const QString& projectID) {
    if (const Project* wanted = project(projectID)) {
        togglePin(*wanted);
    }
}

void AppModel::stopAll() {
    d->orphans->stopServices();
    stopAllServices();
}

void AppModel::confirmSetup() {
    confirmInstall();
}

void AppModel::cancelSetup() {
    cancelInstall();
}

void AppModel::dismissStatus() {
    dismissStatusMessage();
}

void AppModel::chooseScanRoot(const QString& folder) {
    const QUrl url(folder);
    const QString path = QDir::cleanPath(url.isLocalFile() ? url.toLocalFile() : folder);
    if (!QDir::isAbsolutePath(path)) {
        return;
    }
    changeSettings([path](AppSettings& settings) { settings.scanRoot = path; });
}

QUrl AppModel::supportUrl() const {
    return QUrl::fromLocalFile(QFileInfo(d->settings->filePath()).absolutePath());
}

void AppModel::openLink(const QUrl& url) {
    if (!openUrl || !openUrl(url)) {
        report(
            tr("Couldn't open %1.").arg(url.isLocalFile() ? Paths::shortened(url.toLocalFile()) : url.toString()),
            true);
    }
}

void AppModel::openFile(const QString& path, int line, int column) {
    const QString editor = EditorCommand::lineOf(d->settings->settings().editorCommand);
    if (editor.isEmpty()) {
        openLink(QUrl::fromLocalFile(path));
        return;
    }
    const QString command = EditorCommand::of(editor, {path, line, column});
    if (EditorCommand::needsTerminal(editor)) {
        typeWhenReady(openTerminal(*this, QFileInfo(path).path()), command);
        return;
    }
    const QString program = EditorCommand::program(editor);
    const auto start = [program, command] {
        const std::atomic<bool> never = false;
        const QString check = u"command -v "_s + CommandBuilder::quote(program);
        const auto found = ShellRunner::run(ShellRunner::shellWords(check), {}, never);
        QStringList words = ShellRunner::shellWords(command);
        const QString shell = words.takeFirst();
        return found && found->exitCode == 0 && QProcess::startDetached(shell, words);
    };
    onFinished(runIn(*QThreadPool::globalInstance(), start), this, [this, program](bool isStarted) {
        if (!isStarted) {
            report(tr("Couldn't start %1. The editor is set in Settings, General.").arg(program), true);
        }
    });
}

TerminalTabs* AppModel::terminalTabs() {
    return d->terminals.get();
}

void AppModel::showStatus(const QString& text, bool isError) {
    report(text, isError);
}

} // namespace orv
