#pragma once

#include "OrvProcess/ProcessManager.h"
#include "OrvUI/LogModel.h"
#include "OrvUI/LogSelection.h"
#include "OrvUI/RowModel.h"
#include "OrvUI/UpdateSoon_p.h"

namespace orv {

class AppModel;

/// A service of the project whose output is looked at.
struct LogServiceRow {
    QString key;
    QString label; ///< "Frontend"; of an install "Frontend setup"
    QString phase; ///< "starting", "running", "stopped", "failed"
    QString port;  ///< ":3000"; empty while it has none
    bool isShown = false;

    bool operator==(const LogServiceRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<LogServiceRow>>& roles();
};

/// The page with the output of a project's services: one of them is shown. Lives on the main thread.
class ServiceLogs : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString projectID READ projectID WRITE setProjectID NOTIFY projectIDChanged)
    Q_PROPERTY(QString shownKey READ shownKey NOTIFY shownChanged)
    Q_PROPERTY(QAbstractListModel* services READ services CONSTANT)
    Q_PROPERTY(orv::LogModel* lines READ lines CONSTANT)
    Q_PROPERTY(orv::LogSelection* selection READ selection CONSTANT)
    /// Where the relative paths in the output of the service that is shown may begin, the likeliest first.
    Q_PROPERTY(QStringList folders READ folders NOTIFY shownChanged)
    /// How the lines are shown, for as long as the application runs.
    Q_PROPERTY(bool wrap MEMBER m_wrap NOTIFY lookChanged)
    Q_PROPERTY(bool timed MEMBER m_timed NOTIFY lookChanged)

public:
    explicit ServiceLogs(AppModel& model, QObject* parent = nullptr);

    [[nodiscard]] const QString& projectID() const { return m_projectID; }
    /// Shows the first of its services that failed, else the one that was chosen before, else the first.
    void setProjectID(const QString& projectID);
    [[nodiscard]] QString shownKey() const; ///< empty: none
    [[nodiscard]] QAbstractListModel* services() { return &m_services; }
    [[nodiscard]] LogModel* lines() { return &m_lines; }
    [[nodiscard]] LogSelection* selection() { return &m_selection; }
    [[nodiscard]] QStringList folders() const;

    Q_INVOKABLE void show(const QString& key);
    /// What was shown last by someone's choice. With its project it is shown again, once there is output of it.
    [[nodiscard]] const QString& chosenKey() const { return m_chosenKey; }
    void setChosenKey(const QString& key) { m_chosenKey = key; }

Q_SIGNALS:
    void projectIDChanged();
    void shownChanged();
    void chosenKeyChanged();
    void lookChanged();

private:
    void update();
    void show(const std::optional<ServiceID>& id);

    AppModel& m_model;
    QString m_projectID;
    std::optional<ServiceID> m_shown;
    bool m_wrap = false;
    bool m_timed = false;
    bool m_isChosen = false; ///< what is shown is, by someone
    QString m_chosenKey;
    QHash<ServiceID, qint64> m_before;  ///< lines that its log has no more, or never had
    QHash<ServiceID, qint64> m_cleared; ///< of those that were printed, so many are not to be seen again
    RowModel<LogServiceRow> m_services;
    LogModel m_lines;
    LogSelection m_selection{m_lines};
    UpdateSoon m_updateSoon;
};

} // namespace orv
