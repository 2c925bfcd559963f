#include "OrvUI/FolderTree.h"

#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/HomeModels.h"

#include <QFileInfo>

#include <algorithm>

namespace orv {

AppModel* FolderTree::model() const {
    return m_model;
}

void FolderTree::setModel(AppModel* model) {
    if (model != m_model) {
        m_model = model;
        connect(model, &AppModel::isScanningChanged, this, &FolderTree::rootLookedAt);
        Q_EMIT modelChanged();
        Q_EMIT rootLookedAt();
    }
}

QAbstractListModel* FolderTree::rows() const {
    return m_model ? &m_model->home().folderRows : nullptr;
}

bool FolderTree::isRootMissing() const {
    return m_model && !QFileInfo(m_model->scanRootFolder()).isDir();
}

void FolderTree::setOpen(const QString& path, bool isOpen) {
    m_model->home().setFolderOpen(path, isOpen);
}

void FolderTree::show(const QString& path) {
    m_model->openLink(QUrl::fromLocalFile(path));
}

void FolderTree::openTerminal(const QString& path) {
    openTerminal(*m_model, path);
}

void FolderTree::openTerminal(AppModel& model, const QString& path) {
    model.terminals().open(QUrl::fromLocalFile(path));
    // Terminals are on the pages of projects.
    const auto isThere = [&path](const Project& project) {
        return project.root == path || project.root.startsWith(path + u'/');
    };
    const auto found = std::ranges::find_if(model.projects(), isThere);
    if (found != model.projects().end()) {
        model.setPage({.kind = AppPage::Kind::project, .id = found->id});
    }
    model.setDetailTab(DetailTab::terminal);
}

} // namespace orv
