#include "OrvCore/AgentCommandBuilder.h"

#include "OrvCore/CommandBuilder.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::AgentCommandBuilder {

namespace {

const QString earlier = u"Earlier in this project you were asked:"_s;
const QString followUp = u"Follow-up:"_s;
const QString cut = u"(What came before this was cut.)\n\n"_s;

/// What stands before the task, for plan, edit and full.
struct Line {
    QLatin1StringView start;
    std::array<QLatin1StringView, allAgentAutonomies.size()> flags;
    QLatin1StringView beforeTask;
};

constexpr Line claudeLine{
    "claude -p --output-format stream-json --verbose "_L1,
    {"--permission-mode plan --permission-prompts none"_L1,
     "--permission-mode acceptEdits --permission-prompts none"_L1, "--dangerously-skip-permissions"_L1},
    " -- "_L1};
constexpr Line codexLine{
    "codex exec --skip-git-repo-check "_L1,
    {"--sandbox read-only"_L1, "--full-auto"_L1, "--dangerously-bypass-approvals-and-sandbox"_L1},
    " -- "_L1};
constexpr Line geminiLine{"gemini "_L1, {""_L1, "--approval-mode auto_edit "_L1, "--yolo "_L1}, "--prompt="_L1};
constexpr Line antigravityLine{
    "agy "_L1, {"--mode plan"_L1, "--mode accept-edits"_L1, "--dangerously-skip-permissions"_L1}, " -p "_L1};

QString taskReference() {
    return "\"$"_L1 + taskVariable + u'"';
}

QString fixedLine(const Line& line, AgentAutonomy autonomy, const QString& extraFlags = {}) {
    return line.start + line.flags[static_cast<size_t>(autonomy)] + extraFlags + line.beforeTask + taskReference();
}

/// The end of a text, of so many bytes of UTF-8 at most; it begins with a whole character.
QString endOf(const QString& text, qsizetype bytes) {
    const QByteArray utf8 = text.toUtf8();
    qsizetype begin = std::max<qsizetype>(utf8.size() - std::max<qsizetype>(bytes, 0), 0);
    const auto isWithinCharacter = [&] { return (static_cast<unsigned char>(utf8[begin]) & 0xC0U) == 0x80U; };
    while (begin < utf8.size() && isWithinCharacter()) {
        ++begin;
    }
    return QString::fromUtf8(utf8.sliced(begin));
}

std::optional<QString> customLine(const QString& pattern) {
    const QString line = pattern.trimmed();
    if (line.isEmpty()) {
        return {};
    }
    return line.contains(u'$' + taskVariable) ? line : line + u' ' + taskReference();
}

} // namespace

std::optional<QString> command(
    AgentKind kind, AgentAutonomy autonomy, const std::optional<QString>& customTemplate,
    const std::optional<QString>& resumeSessionID) {
    switch (kind) {
    case AgentKind::claude:
        return fixedLine(
            claudeLine, autonomy,
            resumeSessionID ? " --resume "_L1 + CommandBuilder::quote(*resumeSessionID) : QString());
    case AgentKind::codex:
        return fixedLine(codexLine, autonomy);
    case AgentKind::gemini:
        return fixedLine(geminiLine, autonomy);
    case AgentKind::antigravity:
        return agentLocalBinPath + u' ' + fixedLine(antigravityLine, autonomy);
    case AgentKind::custom:
        break;
    }
    return customLine(customTemplate.value_or(QString()));
}

std::optional<QString> interactiveCommand(AgentKind kind, const QString& task) {
    switch (kind) {
    case AgentKind::claude:
    case AgentKind::codex:
    case AgentKind::gemini:
        return rawValue(kind) + " -- "_L1 + CommandBuilder::quote(task);
    case AgentKind::antigravity:
        return agentLocalBinPath + " agy -i "_L1 + CommandBuilder::quote(task);
    case AgentKind::custom:
        break;
    }
    return {};
}

QString followUpMessage(const QString& task) {
    const QString mark = u"\n\n"_s + followUp + u"\n\n"_s;
    const qsizetype found = task.startsWith(earlier) ? task.lastIndexOf(mark) : -1;
    return found < 0 ? task : task.sliced(found + mark.size());
}

QString followUpTask(const QString& previousTask, const QString& previousAnswer, const QString& message) {
    QStringList paragraphs{earlier, previousTask};
    if (!previousAnswer.isEmpty()) {
        paragraphs << u"You answered:"_s << previousAnswer;
    }
    paragraphs << followUp << message;
    const QString whole = paragraphs.join("\n\n"_L1);
    const qsizetype excess = whole.toUtf8().size() - longestFollowUpBytes;
    if (excess <= 0) {
        return whole;
    }
    paragraphs[1] = cut + endOf(previousTask, previousTask.toUtf8().size() - excess - cut.toUtf8().size());
    return paragraphs.join("\n\n"_L1);
}

} // namespace orv::AgentCommandBuilder
