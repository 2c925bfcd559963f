#pragma once

#include "OrvUI/RowModel.h"
#include "OrvUI/UpdateSoon_p.h"

#include <QHash>
#include <QObject>

namespace orv {

class AppModel;

struct TaskRow {
    QString key; ///< the task's id
    QString title;
    QString notes;
    QString projectID;
    QString projectName;
    int tileIndex = 0;
    QString tileLetter;
    bool isDone = false;
    QString agentName;  ///< of the one that works on it; empty: none does
    QString when;       ///< it was added, or done: "2 days ago"
    int groupCount = 0; ///< rows of its project in this list, for the heading above the first of them

    bool operator==(const TaskRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<TaskRow>>& roles();
};

/// To-do items as a page lists them: the open ones project by project, pinned projects first, then by name; the done
/// ones with the newest first. Lives on the main thread.
class TaskLists : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString projectID READ projectID WRITE setProjectID NOTIFY projectIDChanged)
    Q_PROPERTY(QAbstractListModel* open READ open CONSTANT)
    Q_PROPERTY(QAbstractListModel* recentlyDone READ recentlyDone CONSTANT)
    Q_PROPERTY(QAbstractListModel* done READ done CONSTANT)
    Q_PROPERTY(int openCount READ openCount NOTIFY changed)
    Q_PROPERTY(int doneCount READ doneCount NOTIFY changed)

public:
    static constexpr int recentDays = 7;
    static constexpr int recentLimit = 5;

    explicit TaskLists(AppModel& model, QObject* parent = nullptr);

    /// Whose tasks; empty: those of all projects.
    [[nodiscard]] const QString& projectID() const { return m_projectID; }
    void setProjectID(const QString& projectID);
    [[nodiscard]] QAbstractListModel* open() { return &m_open; }
    [[nodiscard]] QAbstractListModel* recentlyDone() { return &m_recentlyDone; }
    [[nodiscard]] QAbstractListModel* done() { return &m_done; }
    [[nodiscard]] int openCount() const { return m_open.rowCount(); }
    [[nodiscard]] int doneCount() const { return m_done.rowCount(); }

    /// False, and nothing happens, for a blank title or a project that is not there.
    Q_INVOKABLE bool add(const QString& title, const QString& notes, const QString& projectID);
    /// What is typed for a new item in the list of a project, or with an empty place in the list of all, and was not
    /// added yet. It stays while the list is closed.
    [[nodiscard]] Q_INVOKABLE QString words(const QString& place) const { return m_unadded.value(place).title; }
    [[nodiscard]] Q_INVOKABLE QString wordsProjectID(const QString& place) const {
        return m_unadded.value(place).projectID;
    }
    Q_INVOKABLE void keepWords(const QString& place, const QString& title, const QString& projectID);
    Q_INVOKABLE void setDone(const QString& key, bool isDone);
    /// A blank title leaves the old one.
    Q_INVOKABLE void rename(const QString& key, const QString& title, const QString& notes);
    Q_INVOKABLE void remove(const QString& key);
    /// Nothing wakes up when "today" becomes "yesterday": a page asks when it is looked at.
    Q_INVOKABLE void refresh();

Q_SIGNALS:
    void projectIDChanged();
    void changed();
    void wordsChanged(const QString& place);

private:
    void update();

    struct Unadded {
        QString title;
        QString projectID; ///< that it is for
        bool operator==(const Unadded&) const = default;
    };

    AppModel& m_model;
    QString m_projectID;
    QHash<QString, Unadded> m_unadded; ///< by its place, as in `words`
    RowModel<TaskRow> m_open;
    RowModel<TaskRow> m_recentlyDone;
    RowModel<TaskRow> m_done;
    UpdateSoon m_updateSoon;
};

} // namespace orv
