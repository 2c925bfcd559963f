#pragma once

#include "OrvCore/Devices.h"
#include "OrvCore/Models.h"
#include "OrvGit/GitModels.h"
#include "OrvProcess/ProcessManager.h"

#include <QUuid>

#include <array>
#include <set>
#include <variant>

namespace orv {

// The pages, sheets and tabs that the window shows, as the model names them.

enum class SettingsSection { profile, git, ai, appearance, notifications, general, projects };
[[nodiscard]] QString title(SettingsSection section);

enum class DetailTab { overview, tasks, terminal, logs, git, files };
[[nodiscard]] QString title(DetailTab tab);

struct AppPage {
    enum class Kind { settings, collection, project, folder, home, tasks, ai };
    Kind kind = Kind::home;
    QString id; ///< the path of a collection or folder, or a project's id
    SettingsSection section = SettingsSection::profile;

    bool operator==(const AppPage&) const = default;
};

enum class AddProjectMode { newFolder, clone };
struct AppSheet {
    enum class Kind { addProject, widgetsHowTo };
    Kind kind = Kind::addProject;
    AddProjectMode mode = AddProjectMode::newFolder;

    bool operator==(const AppSheet&) const = default;
};

/// Whether the application has an icon in the Dock, or lives in the menu bar only.
enum class ActivationPolicy { regular, accessory };

/// A transient line; two messages with one text are still two.
struct StatusMessage {
    QUuid id = QUuid::createUuid();
    QString text;
    bool isError = false;
    bool isOngoing = false; ///< says what is being done

    bool operator==(const StatusMessage&) const = default;
};

struct ModalContent {
    QString title;
    QString body;

    bool operator==(const ModalContent&) const = default;
};

/// "Next.js + FastAPI": what a project is made of, each once; what is unknown is called by its kind.
[[nodiscard]] QString stackLine(const Project& project);
/// The id of the project in whose folder, or below it, the folder is; of several the innermost.
[[nodiscard]] std::optional<QString> innermostProject(const QString& folder, const QList<Project>& projects);

/// The sidebar's filter.
enum class ProjectFilter { all, pinned, running, fullStack, flutter };
inline constexpr std::array allProjectFilters{
    ProjectFilter::all, ProjectFilter::pinned, ProjectFilter::running, ProjectFilter::fullStack,
    ProjectFilter::flutter};
[[nodiscard]] QString title(ProjectFilter filter);
/// The name of its picture in the set of icons ("circle-play").
[[nodiscard]] QString icon(ProjectFilter filter);

/// What a run button offers.
enum class RunAction { frontend, backend, both, app, flutter, docker };
inline constexpr std::array allRunActions{RunAction::frontend, RunAction::backend, RunAction::both,
                                          RunAction::app,      RunAction::flutter, RunAction::docker};
using ServiceKinds = std::set<ServiceKind>;
/// The button's label, which is also what is stored as the last run's action.
[[nodiscard]] QString rawValue(RunAction action);
[[nodiscard]] std::optional<RunAction> runAction(QStringView raw);
[[nodiscard]] ServiceKinds kinds(RunAction action);
[[nodiscard]] std::optional<RunAction> runActionFrom(const ServiceKinds& kinds);

/// A run that waits for its first install.
struct PendingInstall {
    Project project;
    ServiceKinds kinds;
    std::optional<QString> flutterDevice;

    bool operator==(const PendingInstall&) const = default;
};

struct SetupStep {
    enum class Status { pending, running, done, failed };
    ServiceID id;
    QString title;
    QString command;
    Status status = Status::pending;

    bool operator==(const SetupStep&) const = default;
};

[[nodiscard]] QString rawValue(SetupStep::Status status); ///< "pending", "running", "done", "failed"

/// A project's first install, from the question to its end.
struct SetupSession {
    struct Phase {
        enum class Kind { failed, confirm, running };
        Kind kind = Kind::confirm;
        QString reason; ///< of a failed one

        bool operator==(const Phase&) const = default;
    };
    Project project;
    QList<SetupStep> steps;
    Phase phase;

    bool operator==(const SetupSession&) const = default;
    /// The sentence under the sheet's title.
    [[nodiscard]] QString text() const;
};

} // namespace orv
