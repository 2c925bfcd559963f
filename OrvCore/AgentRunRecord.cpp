#include "OrvCore/AgentRunRecord.h"

#include "OrvCore/JsonRecord_p.h"

using namespace Qt::StringLiterals;

namespace orv {

namespace json {

/// JSON's numbers are doubles; these stay far below what one holds exactly.
template <>
struct Codec<qint64> {
    static QJsonValue encode(qint64 value) { return value; }
    static Decoded<qint64> decode(const QJsonValue& value) {
        return value.isDouble() ? Decoded<qint64>(value.toInteger()) : mismatch(QStringLiteral("a whole number"));
    }
};

template <>
struct Codec<double> {
    static QJsonValue encode(double value) { return value; }
    static Decoded<double> decode(const QJsonValue& value) {
        return value.isDouble() ? Decoded<double>(value.toDouble()) : mismatch(QStringLiteral("a number"));
    }
};

} // namespace json

template <json::RecordOf<AgentTokens> Self, typename Visitor>
void visitFields(Self& tokens, Visitor& visitor) {
    visitor.required("input"_L1, tokens.input);
    visitor.required("output"_L1, tokens.output);
}

template <json::RecordOf<AgentFileChange> Self, typename Visitor>
void visitFields(Self& file, Visitor& visitor) {
    visitor.required("path"_L1, file.path);
    visitor.optional("originalPath"_L1, file.originalPath);
    visitor.required("kind"_L1, file.kind);
    visitor.required("added"_L1, file.added);
    visitor.required("removed"_L1, file.removed);
    visitor.defaulted("isBinary"_L1, file.isBinary);
}

template <json::RecordOf<AgentCommit> Self, typename Visitor>
void visitFields(Self& commit, Visitor& visitor) {
    visitor.required("id"_L1, commit.id);
    visitor.required("subject"_L1, commit.subject);
}

template <json::RecordOf<AgentChanges> Self, typename Visitor>
void visitFields(Self& changes, Visitor& visitor) {
    visitor.required("files"_L1, changes.files);
    visitor.required("fileCount"_L1, changes.fileCount);
    visitor.required("added"_L1, changes.added);
    visitor.required("removed"_L1, changes.removed);
    visitor.required("commits"_L1, changes.commits);
    visitor.defaulted("dirtyBefore"_L1, changes.dirtyBefore);
    visitor.defaulted("isDiffCut"_L1, changes.isDiffCut);
    visitor.defaulted("isShared"_L1, changes.isShared);
    visitor.defaulted("note"_L1, changes.note);
}

template <json::RecordOf<AgentWorktree> Self, typename Visitor>
void visitFields(Self& worktree, Visitor& visitor) {
    visitor.required("repository"_L1, worktree.repository);
    visitor.required("folder"_L1, worktree.folder);
    visitor.required("branch"_L1, worktree.branch);
    visitor.required("base"_L1, worktree.base);
    visitor.required("copies"_L1, worktree.copies);
    visitor.required("state"_L1, worktree.state);
}

template <json::RecordOf<AgentRunRecord> Self, typename Visitor>
void visitFields(Self& run, Visitor& visitor) {
    visitor.required("id"_L1, run.id);
    visitor.required("agent"_L1, run.agent);
    visitor.required("projectID"_L1, run.projectID);
    visitor.required("projectName"_L1, run.projectName);
    visitor.required("projectRoot"_L1, run.projectRoot);
    visitor.required("task"_L1, run.task);
    visitor.required("autonomy"_L1, run.autonomy);
    visitor.optional("linkedTaskID"_L1, run.linkedTaskID);
    visitor.optional("parentID"_L1, run.parentID);
    visitor.required("startedAt"_L1, run.startedAt);
    visitor.optional("endedAt"_L1, run.endedAt);
    visitor.required("state"_L1, run.state);
    visitor.defaulted("reason"_L1, run.reason);
    visitor.optional("sessionID"_L1, run.sessionID);
    visitor.optional("summary"_L1, run.summary);
    visitor.defaulted("lastWords"_L1, run.lastWords);
    visitor.optional("costUSD"_L1, run.costUSD);
    visitor.optional("tokens"_L1, run.tokens);
    visitor.optional("changes"_L1, run.changes);
    visitor.optional("worktree"_L1, run.worktree);
}

QJsonObject AgentRunRecord::toJson() const {
    return json::encode(*this);
}
Decoded<AgentRunRecord> AgentRunRecord::fromJson(const QJsonObject& json) {
    return json::decode<AgentRunRecord>(json);
}

} // namespace orv
