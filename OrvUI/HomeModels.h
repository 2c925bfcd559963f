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
    RowModel<RunningRow> running;
    RowModel<PinnedRow> pinned;
    RowModel<FilterRow> sidebarFilters;
    RowModel<SetupStepRow> setupSteps;
    OutlineModel outline;

    /// A project as its card shows it.
    [[nodiscard]] CardRow card(const Project& project) const;
    /// "3 services running · 5 open tasks"
    [[nodiscard]] const QString& summaryLine() const { return m_summaryLine; }
    /// A service in a word that QML can hand back; empty keys stand for none.
    [[nodiscard]] static QString key(const ServiceID& id);
    [[nodiscard]] std::optional<ServiceID> service(const QString& key) const;

Q_SIGNALS:
    void summaryChanged();
    /// Every list has taken over what changed.
    void updated();

private:
    struct Activity;

    void updateSoon();
    void update();
    void updateRunning();
    void updateSummary(qsizetype shownBefore);
    [[nodiscard]] CardRow collection(const ProjectNode& node) const;
    void addHomeCards(
        const QList<ProjectNode>& nodes, const QHash<QString, CardRow>& shown, QList<CardRow>& rows) const;
    [[nodiscard]] Activity activity(const Project& project) const;
    [[nodiscard]] QVariantMap shown(const ServiceID& id) const;
    [[nodiscard]] static QVariantMap failed(const ServiceID& id, const QString& message);
    [[nodiscard]] QString address(const ServiceID& id) const;

    AppModel& m_model;
    QSet<QString> m_startedProjects; ///< that have a service which was started at least once
    QString m_summaryLine;
    bool m_isUpdateDue = false;
};

} // namespace orv
