#pragma once

#include "OrvCore/OverrideStore.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvCore/Settings.h"
#include "OrvCore/Tasks.h"
#include "OrvCore/WidgetSnapshot.h"
#include "OrvProcess/ProcessManager.h"
#include "OrvUI/ModelTypes.h"

#include <QFuture>
#include <QObject>
#include <QUrl>
#include <memory>

namespace orv {

/// All run-time state of the application, and every user action. One a process, on the main thread; needs no window.
///
/// Parts of it stand in files of their own: AppModel+Run (running and stopping), AppModel+Filters, AppModel+Pinning,
/// AppModel+Tasks.
class AppModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)
    Q_PROPERTY(bool hasScanned READ hasScanned NOTIFY hasScannedChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(QString greeting READ greeting NOTIFY greetingChanged)
    Q_PROPERTY(int runningCount READ runningCount NOTIFY servicesChanged)

public:
    /// What a test or a preview puts in the place of the real thing. What is left empty is made.
    struct Options {
        std::unique_ptr<SettingsStore> settings;
        std::shared_ptr<OverrideStore> overrides;
        std::unique_ptr<ProcessManager> processes;
        std::function<bool()> appIsActive;
        QString tasksFile;
        QString snapshotDirectory; ///< empty: the folder shared with the widgets
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
    [[nodiscard]] const QHash<QString, GitBadge>& gitBadges() const;
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
    [[nodiscard]] const std::optional<QUrl>& queuedURL() const;
    [[nodiscard]] const std::optional<QString>& installCommandOverride() const;
    void setInstallCommandOverride(const std::optional<QString>& command);
    [[nodiscard]] const QList<ProjectTask>& tasks() const;

    [[nodiscard]] SettingsStore& settings();
    [[nodiscard]] OverrideStore& overrides();
    [[nodiscard]] ProcessManager& processes();

    // Derived
    [[nodiscard]] int runningCount() const; ///< running services, installs not counted
    [[nodiscard]] QString menuBarTitle() const;
    [[nodiscard]] bool shouldConfirmQuit() const;
    [[nodiscard]] QString greeting() const;
    [[nodiscard]] bool isRunning(const Project& project) const;
    [[nodiscard]] static QString quickPanelShortcutLabel();
    [[nodiscard]] QList<Project> filteredProjects() const;
    [[nodiscard]] QList<Project> pinnedProjects() const;
    [[nodiscard]] bool isPinned(const Project& project) const;
    [[nodiscard]] const Project* project(const QString& id) const; ///< null when there is none; valid until the next scan
    /// Services of the project (installs included) that were started at least once.
    [[nodiscard]] QList<ServiceID> services(const Project& project) const;
    [[nodiscard]] static bool isInstall(const ServiceID& id);

    // Scan and publish
    QFuture<void> refresh();
    void publishSnapshot();
    /// Waits until what `publishSnapshot` wrote is on disk (for the way out).
    void flushSnapshot();
    QFuture<void> handle(const QUrl& url);

    // Run control
    [[nodiscard]] static QList<RunAction> availableActions(const Project& project);
    /// The action of a run button that offers no choice: "Both" where there is one, else the first.
    [[nodiscard]] static std::optional<RunAction> defaultAction(const Project& project);
    QFuture<void> run(const Project& project, const ServiceKinds& kinds, const std::optional<QString>& flutterDevice = {});
    QFuture<void> restart(const Project& project, const ServiceKinds& kinds);
    QFuture<void> toggleRun(const Project& project);
    QFuture<void> confirmInstall();
    void cancelInstall();
    [[nodiscard]] std::optional<QString> setupLastLine() const;
    QFuture<void> stop(const Project& project);
    QFuture<void> stopService(const ServiceID& id);
    QFuture<void> stopAllServices();
    QFuture<QList<FlutterDevice>> flutterDevices();
    [[nodiscard]] static QList<FlutterDevice> parseFlutterDevices(const QByteArray& listing);

    // Addresses
    /// The port at which a service is best reached: a listening one where that is known, else the announced one.
    [[nodiscard]] std::optional<int> addressPort(const ServiceID& id) const;
    /// False when the listening ports are known and the announced port is not among them.
    [[nodiscard]] bool isAnnouncedPortListening(const ServiceID& id) const;
    /// Looks the ports up once more, then opens "http://localhost:<port>" with the opener.
    QFuture<void> openAddress(const ServiceID& id);

    // Pins and tasks
    void togglePin(const Project& project);
    [[nodiscard]] QList<ProjectTask> tasks(const Project& project) const;
    QUuid addTask(const QString& title, const QString& notes, const Project& project);
    void renameTask(const QUuid& id, const QString& title, const QString& notes);
    void setTaskDone(const QUuid& id, bool done);
    void deleteTask(const QUuid& id);

    /// Shows the message for 8 seconds, unless a newer one takes its place.
    void report(const QString& text, bool isError);
    void dismissStatusMessage();

    // Set by the shell
    std::function<void()> openMainWindowAction;
    std::function<bool(bool)> applyQuickPanelShortcut;
    std::function<void()> reloadWidgets;
    std::function<void(const QUrl&)> openUrl;

Q_SIGNALS:
    void projectsChanged();
    void treeChanged();
    void isScanningChanged();
    void hasScannedChanged();
    void searchTextChanged();
    void filterChanged();
    void gitBadgesChanged();
    void pendingInstallChanged();
    void setupChanged();
    void setupLastLineChanged();
    void pageChanged();
    void sheetChanged();
    void modalChanged();
    void statusMessageChanged();
    void detailTabChanged();
    void queuedURLChanged();
    void installCommandOverrideChanged();
    void tasksChanged();
    void pinsChanged();
    void greetingChanged();
    /// The state or the addresses of some service.
    void servicesChanged();
    void serviceChanged(const orv::ServiceID& id);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace orv
