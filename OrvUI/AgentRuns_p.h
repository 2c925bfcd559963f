#pragma once

#include "OrvProcess/AgentProcess.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/Pool_p.h"

#include <QTimer>

namespace orv {

/// What a run of this process lives on, from its beginning until it is stored as it ended.
struct AgentRuns::Active {
    QString command;
    QString words; ///< what the user said
    AgentWork::Ready ready;
    std::unique_ptr<AgentProcess> process;
    std::shared_ptr<ChildRecords::Note> note; ///< until it is reaped
    std::optional<QString> storedSession;
    QTimer question;
    QTimer quiet;
    Completion settled;
};

/// How far the output of a stored run was read.
struct AgentRuns::Reading {
    explicit Reading(AgentKind agent) : stream(agent) {}

    AgentStream stream; ///< the pool's while `isBusy`
    qint64 position = 0;
    bool isBusy = false;
    bool isDue = false; ///< there was more while it was busy
    bool isOver = false;
    Completion first;
    Completion last;
    bool hasRead = false;
};

} // namespace orv
