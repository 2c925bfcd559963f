#include "OrvUI/Screens/PlaceKeeper.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/ServiceLogs.h"

#include <QGuiApplication>
#include <QQuickItem>

#include <algorithm>

namespace orv {
namespace {

bool hasFolder(const QList<ProjectNode>& tree, const QString& path) {
    return std::ranges::any_of(tree, [&path](const ProjectNode& node) {
        return (node.path == path && !node.children.isEmpty()) || hasFolder(node.children, path);
    });
}

/// Whether the keyboard is in a field, or in what stands over the page.
bool isTyping() {
    const auto* item = qobject_cast<QQuickItem*>(QGuiApplication::focusObject());
    if (item != nullptr && item->flags().testFlag(QQuickItem::ItemAcceptsInputMethod)) {
        return true;
    }
    while (item != nullptr && !item->inherits("QQuickOverlay")) {
        item = item->parentItem();
    }
    return item != nullptr;
}

} // namespace

PlaceKeeper::PlaceKeeper(AppModel& model, QObject* parent) : QObject(parent), m_model(model) {
    ORV_ASSERT_MAIN_THREAD();
    for (const auto signal :
         {&AppModel::pageChanged, &AppModel::detailTabChanged, &AppModel::aiPanelProjectIDChanged}) {
        connect(&model, signal, this, &PlaceKeeper::changed);
    }
    connect(model.outline(), &OutlineModel::expandedPathsChanged, this, &PlaceKeeper::changed);
    connect(&model.home(), &HomeModels::openFoldersChanged, this, &PlaceKeeper::changed);
    connect(model.logs(), &ServiceLogs::chosenKeyChanged, this, &PlaceKeeper::changed);
    // Not for titles: a program may set one many times a second.
    connect(&model.terminals(), &TerminalTabs::sessionsChanged, this, &PlaceKeeper::changed);
    connect(&model.terminals(), &TerminalTabs::selectedIDChanged, this, &PlaceKeeper::changed);
    connect(&model.terminals(), &TerminalTabs::currentDirectoryChanged, this, &PlaceKeeper::changed);
}

void PlaceKeeper::restore(const WindowState& last, Page page) {
    ORV_ASSERT_MAIN_THREAD();
    m_model.outline()->setExpandedPaths(last.outline);
    m_model.home().setOpenFolders(last.homeFolders);
    m_model.logs()->setChosenKey(last.logKey);
    // Also where a folder is missing, as long as a drive is not there yet: the shell says so.
    m_model.terminals().restore(last.terminals);
    if (page == Page::another) {
        return;
    }
    // What it is of is known when it was found again.
    if (last.page.id.isEmpty() || m_model.hasScanned()) {
        showPage(last);
    } else {
        m_isPageDue = true;
        connect(
            &m_model, &AppModel::hasScannedChanged, this, [this, last] { showPage(last); }, Qt::SingleShotConnection);
    }
}

void PlaceKeeper::showPage(const WindowState& last) {
    m_isPageDue = false;
    const AppPage& wanted = last.page;
    const bool isGone = wanted.kind == AppPage::Kind::project
                            ? m_model.project(wanted.id) == nullptr
                            : !wanted.id.isEmpty() && !hasFolder(m_model.tree(), wanted.id);
    if (m_model.page() != AppPage() || isGone || isTyping()) {
        return;
    }
    m_model.setPage(wanted);
    m_model.setDetailTab(last.tab);
    if (m_model.project(last.agentPanelID) != nullptr) {
        m_model.setAiPanelProjectID(last.agentPanelID);
    }
}

void PlaceKeeper::store(WindowState& state) const {
    if (!m_isPageDue || m_model.page() != AppPage()) {
        state.page = m_model.page();
        state.tab = m_model.detailTab();
        state.agentPanelID = m_model.aiPanelProjectID().value_or(QString());
    }
    state.logKey = m_model.logs()->chosenKey();
    state.outline = m_model.outline()->expandedPaths();
    state.homeFolders = m_model.home().openFolders();
    state.terminals = m_model.terminals().places();
}

} // namespace orv
