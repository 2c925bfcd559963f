#pragma once

#include "OrvUI/HomeRows.h"
#include "OrvUI/OutlineModel.h"

#include <QHash>
#include <QObject>

namespace orv {

class AppModel;
struct Project;
struct ProjectNode;
struct ServiceID;

/// The lists that the home page shows, kept like the model: whatever changes there is taken over once, in the next turn
/// of the event loop. Lives on the main thread.
class HomeModels : public QObject {
    Q_OBJECT
public:
    explicit HomeModels(AppModel& model);

    RowModel<CardRow> cards;     ///< every project that passes the filters
    RowModel<CardRow> homeCards; ///< the same with collections among them, as the filters want them
    /// The same projects in the folders in which they lie; empty while the home page shows cards.
    RowModel<CardRow> folderRows;
    RowModel<RunningRow> running;
    RowModel<PinnedRow> pinned;
    RowModel<FilterRow> sidebarFilters;
    RowModel<SetupStepRow> setupSteps;
    OutlineModel outline;

    /// A project as its card shows it.
    [[nodiscard]] CardRow card(const Project& project) const;
    /// A folder of projects as its card shows it.
    [[nodiscard]] CardRow collection(const ProjectNode& node) const;
    /// How many projects the home page shows, in collections and closed folders too.
    [[nodiscard]] int shownCount() const { return m_shownCount; }
    /// Of a folder in `folderRows`, by its path.
    void setFolderOpen(const QString& path, bool isOpen);
    /// Those that were opened or closed, by their paths; others are as the filters want them.
    [[nodiscard]] const QHash<QString, bool>& openFolders() const { return m_openFolders; }
    void setOpenFolders(const QHash<QString, bool>& folders);
    /// "3 services running · 5 open tasks"
    [[nodiscard]] const QString& summaryLine() const { return m_summaryLine; }
    /// A service in a word that QML can hand back; empty keys stand for none.
    [[nodiscard]] static QString key(const ServiceID& id);
    [[nodiscard]] std::optional<ServiceID> service(const QString& key) const;

Q_SIGNALS:
    void summaryChanged();
    void openFoldersChanged();
    /// Every list has taken over what changed.
    void updated();

private:
    struct Activity;

    void updateSoon();
    void update();
    void updateRunning();
    void updateSummary(int shownBefore);
    using Shown = QHash<QString, CardRow>; ///< by the project's id
    [[nodiscard]] bool isNarrowed() const;
    [[nodiscard]] int countShown(const Shown& shown) const;
    void addHomeCards(const QList<ProjectNode>& nodes, const Shown& shown, QList<CardRow>& rows) const;
    void addFolderRows(const QList<ProjectNode>& nodes, int depth, const Shown& shown, QList<CardRow>& rows) const;
    [[nodiscard]] Activity activity(const Project& project) const;
    [[nodiscard]] QVariantMap shown(const ServiceID& id) const;
    [[nodiscard]] QVariantMap failed(const ServiceID& id, const QString& message) const;
    [[nodiscard]] QString address(const ServiceID& id) const;

    AppModel& m_model;
    QSet<QString> m_startedProjects; ///< that have a service which was started at least once
    QString m_summaryLine;
    QHash<QString, bool> m_openFolders;
    int m_shownCount = 0;
    bool m_isUpdateDue = false;
};

} // namespace orv
