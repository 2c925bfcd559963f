#pragma once

#include "OrvCore/Models.h"

namespace orv {

/// A process, told from any other that has the same number before or after it.
struct ProcessIdentity {
    int pid = 0;
    /// As the system says it, in a unit of its own. A text: JSON keeps no whole number of 64 bits.
    QString startTime;

    bool operator==(const ProcessIdentity&) const = default;
};

/// What is written down of a process group while it runs, so that one that outlives the application is known again.
struct ChildRecord {
    QString projectID; ///< of a service as its `ServiceID` has it
    QString directory;
    std::optional<ServiceKind> kind; ///< absent: a coding agent
    QString command;
    ProcessIdentity leader = {};   ///< of the session and the group
    ProcessIdentity owner = {};    ///< the process that started it and follows it
    QString boot = {};             ///< of the system; process numbers begin anew with each
    QString mark = {};             ///< the value of a variable in the environment of every process of the group
    std::optional<QUuid> run = {}; ///< of the coding agent; absent, too, where an older version wrote it

    bool operator==(const ChildRecord&) const = default;
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<ChildRecord> fromJson(const QJsonObject& json);
};

} // namespace orv
