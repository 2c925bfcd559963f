#include "OrvUI/FolderTree.h"

#include "OrvUI/AppModel.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/TerminalTyping.h"

#include <QFileInfo>

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
    orv::openTerminal(*m_model, path);
}

} // namespace orv
