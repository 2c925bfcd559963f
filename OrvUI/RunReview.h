#pragma once

#include "OrvUI/AgentWork.h"
#include "OrvUI/DiffModel.h"
#include "OrvUI/ModelPart.h"

#include <expected>

namespace orv {

/// What a run of an agent has changed, one file at a time. Lives on the main thread; the stored diff is read in the
/// runs' pool, once a run.
class RunReview : public orv::ModelPart {
    Q_OBJECT
    /// Of the run that is reviewed; empty: none. Each time it is set, its diff is read again.
    Q_PROPERTY(QString runKey READ runKey WRITE setRunKey NOTIFY changed FINAL)
    /// Of the file that is looked at, as the list of changed files has it.
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY changed FINAL)
    Q_PROPERTY(orv::DiffModel* lines READ lines CONSTANT FINAL)
    /// Why there are no lines; empty where there are some, and as long as they are read.
    Q_PROPERTY(QString note READ note NOTIFY changed FINAL)

public:
    using ModelPart::ModelPart;

    [[nodiscard]] const QString& runKey() const { return m_runKey; }
    void setRunKey(const QString& key);
    [[nodiscard]] const QString& path() const { return m_path; }
    void setPath(const QString& path);
    [[nodiscard]] DiffModel* lines() { return &m_lines; }
    [[nodiscard]] const QString& note() const { return m_note; }

Q_SIGNALS:
    void changed();

private:
    void takeModel() override {}
    void show();

    QString m_runKey;
    QString m_path;
    std::expected<AgentWork::Diff, QString> m_diff;
    DiffModel m_lines;
    QString m_note;
    int m_generation = 0; ///< of the run: what comes too late is dropped
};

} // namespace orv
