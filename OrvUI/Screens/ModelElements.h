#pragma once

#include "OrvUI/AgentModels.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/BranchChoices.h"
#include "OrvUI/Collection.h"
#include "OrvUI/CommitForm.h"
#include "OrvUI/DeviceRun.h"
#include "OrvUI/DevicesModel.h"
#include "OrvUI/FilterBar.h"
#include "OrvUI/FolderTree.h"
#include "OrvUI/GitIdentityForm.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/Keymap.h"
#include "OrvUI/LaunchAtLogin.h"
#include "OrvUI/LogModel.h"
#include "OrvUI/LogSelection.h"
#include "OrvUI/ModelPart.h"
#include "OrvUI/Navigator.h"
#include "OrvUI/NewProject.h"
#include "OrvUI/OnboardingModel.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/OutlineModel.h"
#include "OrvUI/OverrideRows.h"
#include "OrvUI/Palette.h"
#include "OrvUI/ProjectChoice.h"
#include "OrvUI/ProjectDetail.h"
#include "OrvUI/ProjectFiles.h"
#include "OrvUI/RunReview.h"
#include "OrvUI/ScanWatch.h"
#include "OrvUI/ServiceLogs.h"
#include "OrvUI/SettingsForm.h"
#include "OrvUI/Shortcuts.h"
#include "OrvUI/StatusErrors.h"
#include "OrvUI/Suggestions.h"
#include "OrvUI/TaskLists.h"

#include <QtQml/qqml.h>

// The model knows nothing of QML; here its types get their names there.

namespace orv {

struct AppModelElement {
    Q_GADGET
    QML_FOREIGN(orv::AppModel)
    QML_NAMED_ELEMENT(AppModel)
    QML_UNCREATABLE("There is one, made by the application")
};

struct AgentModelsElement {
    Q_GADGET
    QML_FOREIGN(orv::AgentModels)
    QML_NAMED_ELEMENT(AgentModels)
    QML_UNCREATABLE("The application's model owns it")
};

struct ModelPartElement {
    Q_GADGET
    QML_FOREIGN(orv::ModelPart)
    QML_ANONYMOUS
};

struct BranchChoicesElement {
    Q_GADGET
    QML_FOREIGN(orv::BranchChoices)
    QML_NAMED_ELEMENT(BranchChoices)
};

struct CommitFormElement {
    Q_GADGET
    QML_FOREIGN(orv::CommitForm)
    QML_NAMED_ELEMENT(CommitForm)
    QML_UNCREATABLE("The model of the git page owns it")
};

struct CollectionElement {
    Q_GADGET
    QML_FOREIGN(orv::Collection)
    QML_NAMED_ELEMENT(Collection)
};

struct GitIdentityFormElement {
    Q_GADGET
    QML_FOREIGN(orv::GitIdentityForm)
    QML_NAMED_ELEMENT(GitIdentityForm)
};
struct DeviceRunElement {
    Q_GADGET
    QML_FOREIGN(orv::DeviceRun)
    QML_NAMED_ELEMENT(DeviceRun)
};

struct DevicesModelElement {
    Q_GADGET
    QML_FOREIGN(orv::DevicesModel)
    QML_NAMED_ELEMENT(DevicesModel)
    QML_UNCREATABLE("The application's model owns it")
};

struct DiffModelElement {
    Q_GADGET
    QML_FOREIGN(orv::DiffModel)
    QML_NAMED_ELEMENT(DiffModel)
    QML_UNCREATABLE("The model of the git page owns it")
};

struct FilterBarElement {
    Q_GADGET
    QML_FOREIGN(orv::FilterBar)
    QML_NAMED_ELEMENT(FilterBar)
    QML_UNCREATABLE("The application's model owns it")
};

struct GitFileListElement {
    Q_GADGET
    QML_FOREIGN(orv::GitFileList)
    QML_NAMED_ELEMENT(GitFileList)
    QML_UNCREATABLE("The model of the git page owns it")
};

struct FolderTreeElement {
    Q_GADGET
    QML_FOREIGN(orv::FolderTree)
    QML_NAMED_ELEMENT(FolderTree)
};

struct GitModelElement {
    Q_GADGET
    QML_FOREIGN(orv::GitModel)
    QML_NAMED_ELEMENT(GitModel)
    QML_UNCREATABLE("The application's model owns it")
};

struct LaunchAtLoginElement {
    Q_GADGET
    QML_FOREIGN(orv::LaunchAtLogin)
    QML_NAMED_ELEMENT(LaunchAtLogin)
    QML_UNCREATABLE("The application's model owns it")
};

struct LogModelElement {
    Q_GADGET
    QML_FOREIGN(orv::LogModel)
    QML_NAMED_ELEMENT(LogModel)
    QML_UNCREATABLE("The application's model owns it")
};

struct LogSelectionElement {
    Q_GADGET
    QML_FOREIGN(orv::LogSelection)
    QML_NAMED_ELEMENT(LogSelection)
    QML_UNCREATABLE("The application's model owns it")
};

struct NavigatorElement {
    Q_GADGET
    QML_FOREIGN(orv::Navigator)
    QML_NAMED_ELEMENT(Navigator)
};

struct NewProjectElement {
    Q_GADGET
    QML_FOREIGN(orv::NewProject)
    QML_NAMED_ELEMENT(NewProject)
    QML_UNCREATABLE("The application's model owns it")
};

struct OnboardingModelElement {
    Q_GADGET
    QML_FOREIGN(orv::OnboardingModel)
    QML_NAMED_ELEMENT(OnboardingModel)
    QML_UNCREATABLE("The application's model owns it")
};

struct OrphanedWorkElement {
    Q_GADGET
    QML_FOREIGN(orv::OrphanedWork)
    QML_NAMED_ELEMENT(OrphanedWork)
    QML_UNCREATABLE("The application's model owns it")
};

struct OutlineModelElement {
    Q_GADGET
    QML_FOREIGN(orv::OutlineModel)
    QML_NAMED_ELEMENT(OutlineModel)
    QML_UNCREATABLE("The application's model owns it")
};

struct OverrideRowsElement {
    Q_GADGET
    QML_FOREIGN(orv::OverrideRows)
    QML_NAMED_ELEMENT(OverrideRows)
};

struct PaletteElement {
    Q_GADGET
    QML_FOREIGN(orv::Palette)
    QML_NAMED_ELEMENT(PaletteModel)
};

struct ScanWatchElement {
    Q_GADGET
    QML_FOREIGN(orv::ScanWatch)
    QML_NAMED_ELEMENT(ScanWatch)
};

struct ProjectChoiceElement {
    Q_GADGET
    QML_FOREIGN(orv::ProjectChoice)
    QML_NAMED_ELEMENT(ProjectChoice)
};

struct ProjectDetailElement {
    Q_GADGET
    QML_FOREIGN(orv::ProjectDetail)
    QML_NAMED_ELEMENT(ProjectDetail)
};

struct ProjectFilesElement {
    Q_GADGET
    QML_FOREIGN(orv::ProjectFiles)
    QML_NAMED_ELEMENT(FilesModel)
    QML_UNCREATABLE("The project's detail owns it")
};

struct RunReviewElement {
    Q_GADGET
    QML_FOREIGN(orv::RunReview)
    QML_NAMED_ELEMENT(RunReview)
};

struct ServiceLogsElement {
    Q_GADGET
    QML_FOREIGN(orv::ServiceLogs)
    QML_NAMED_ELEMENT(ServiceLogs)
    QML_UNCREATABLE("The application's model owns it")
};

struct SettingsFormElement {
    Q_GADGET
    QML_FOREIGN(orv::SettingsForm)
    QML_NAMED_ELEMENT(SettingsForm)
};

struct KeymapElement {
    Q_GADGET
    QML_FOREIGN(orv::Keymap)
    QML_NAMED_ELEMENT(Keymap)
    QML_SINGLETON
};

struct ShortcutsElement {
    Q_GADGET
    QML_FOREIGN(orv::Shortcuts)
    QML_NAMED_ELEMENT(Shortcuts)
};

struct StatusErrorsElement {
    Q_GADGET
    QML_FOREIGN(orv::StatusErrors)
    QML_NAMED_ELEMENT(StatusErrors)
};

struct SuggestionsElement {
    Q_GADGET
    QML_FOREIGN(orv::Suggestions)
    QML_NAMED_ELEMENT(Suggestions)
    QML_UNCREATABLE("The application's model owns it")
};

struct TaskListsElement {
    Q_GADGET
    QML_FOREIGN(orv::TaskLists)
    QML_NAMED_ELEMENT(TaskLists)
    QML_UNCREATABLE("The application's model owns it")
};

} // namespace orv
