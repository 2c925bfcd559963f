#include "OrvCore/ChildRecord.h"

#include "OrvCore/JsonRecord_p.h"

using namespace Qt::StringLiterals;

namespace orv {

template <json::RecordOf<ProcessIdentity> Self, typename Visitor>
void visitFields(Self& process, Visitor& visitor) {
    visitor.required("pid"_L1, process.pid);
    visitor.required("startTime"_L1, process.startTime);
}

template <json::RecordOf<ChildRecord> Self, typename Visitor>
void visitFields(Self& child, Visitor& visitor) {
    visitor.required("projectID"_L1, child.projectID);
    visitor.required("directory"_L1, child.directory);
    visitor.optional("kind"_L1, child.kind);
    visitor.required("command"_L1, child.command);
    visitor.required("leader"_L1, child.leader);
    visitor.required("owner"_L1, child.owner);
    visitor.required("boot"_L1, child.boot);
    visitor.required("mark"_L1, child.mark);
    visitor.optional("run"_L1, child.run);
}

QJsonObject ChildRecord::toJson() const {
    return json::encode(*this);
}
Decoded<ChildRecord> ChildRecord::fromJson(const QJsonObject& json) {
    return json::decode<ChildRecord>(json);
}

} // namespace orv
