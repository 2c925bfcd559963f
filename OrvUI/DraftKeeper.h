#pragma once

#include "OrvCore/StoreFile.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>

namespace orv {

class AppModel;
class TaskLists;

/// Words that are being written and were neither committed, sent nor added yet.
struct Draft {
    enum class Kind { commit, agent, task };
    Kind kind = Kind::commit;
    QString place = {}; ///< the repository's folder, the project, the run that is replied to; empty: on the page of all
    QString text = {};
    QString description = {}; ///< of a commit
    QString projectID = {};   ///< on a page of all: the project that it is for
    QString taskID = {};      ///< the to-do item that an agent is told to do
    QString handed = {};      ///< its words as they came

    bool operator==(const Draft&) const = default;
};

/// Drafts from one run of the application to the next: "drafts.json" beside the settings. Lives on the main thread;
/// another one writes.
class DraftKeeper : public QObject {
    Q_OBJECT
public:
    static constexpr qsizetype limit = 50;          ///< drafts that are kept: those that were changed last
    static constexpr qsizetype longest = 64 * 1024; ///< characters of a text; the rest is not kept

    /// Of those that belong to settings in that file.
    [[nodiscard]] static QString filePath(const QString& settingsPath);
    /// Why such a file can't be understood; empty: it can.
    [[nodiscard]] static QString problem(const QByteArray& bytes);

    /// Puts what was left by the last run back into the model.
    explicit DraftKeeper(AppModel& model, QObject* parent = nullptr);
    ~DraftKeeper() override;

    /// Blocks until what was changed last is on disk.
    void flush();

private:
    void restore(AppModel& model) const;
    void follow(AppModel& model);
    void follow(TaskLists& lists);
    void note(Draft draft);
    void write();

    StoreFile<QList<Draft>> m_file;
    QList<Draft> m_drafts; ///< what was changed last stands first
    QTimer m_due;
    QThreadPool m_pool; ///< last, so that what runs in it ends before what it uses goes
};

} // namespace orv
