#include "OrvCore/Agents.h"

#include <algorithm>

namespace orv {

namespace {

/// In the order of the cases.
constexpr std::array agents{
    AgentInfo{
        .kind = AgentKind::claude,
        .displayName = u"Claude Code",
        .binary = u"claude",
        .signInCommand = u"claude",
        .installHint = u"npm install -g @anthropic-ai/claude-code",
        .notice = {},
        .keepsSessions = true},
    AgentInfo{
        .kind = AgentKind::codex,
        .displayName = u"Codex",
        .binary = u"codex",
        .signInCommand = u"codex login",
        .installHint = u"npm install -g @openai/codex",
        .notice = {}},
    AgentInfo{
        .kind = AgentKind::gemini,
        .displayName = u"Gemini CLI",
        .binary = u"gemini",
        .signInCommand = u"gemini",
        .installHint = u"npm install -g @google/gemini-cli",
        .notice = u"" QT_TRANSLATE_NOOP(
            "Agents", "Replaced by Antigravity CLI for Google AI Pro, Ultra and free users since 18 June 2026. Still "
                      "works with a paid Gemini API key.")},
    AgentInfo{
        .kind = AgentKind::antigravity,
        .displayName = u"Antigravity",
        .binary = u"agy",
        .signInCommand = u"agy",
        .installHint = u"curl -fsSL https://antigravity.google/cli/install.sh | bash",
        .notice = {}},
    AgentInfo{
        .kind = AgentKind::custom,
        .displayName = u"" QT_TRANSLATE_NOOP("Agents", "Custom agent"),
        .binary = {},
        .signInCommand = {},
        .installHint = u"" QT_TRANSLATE_NOOP("Agents", "Any command-line agent; set its command in Settings \u2192 AI"),
        .notice = {},
        .hasAutonomy = false},
};

constexpr std::array autonomies{
    AutonomyInfo{
        AgentAutonomy::plan, u"" QT_TRANSLATE_NOOP("Agents", "Plan only"),
        u"" QT_TRANSLATE_NOOP("Agents", "Reads the project and proposes a plan. Changes nothing.")},
    AutonomyInfo{
        AgentAutonomy::edit, u"" QT_TRANSLATE_NOOP("Agents", "Edit files"),
        u"" QT_TRANSLATE_NOOP("Agents", "Edits files in the project. Commands that need approval are refused.")},
    AutonomyInfo{
        AgentAutonomy::full, u"" QT_TRANSLATE_NOOP("Agents", "Full auto"),
        u"" QT_TRANSLATE_NOOP("Agents", "Edits files and runs any command without asking. Use with care.")},
};

struct OwnHold {
    AgentKind kind;
    AgentAutonomy autonomy;
    QStringView explanation;
};
constexpr QStringView heldByItsLine =
    u"" QT_TRANSLATE_NOOP("Agents", "Its own command line says what it may do. Nothing else holds it back.");
constexpr std::array ownHolds{
    OwnHold{
        AgentKind::codex, AgentAutonomy::plan,
        u"" QT_TRANSLATE_NOOP("Agents", "Runs in a sandbox in which it reads everything and writes nothing.")},
    OwnHold{
        AgentKind::codex, AgentAutonomy::edit,
        u"" QT_TRANSLATE_NOOP(
            "Agents", "Edits files and runs commands without asking, in a sandbox: it writes only in the project and "
                      "has no network.")},
    OwnHold{
        AgentKind::gemini, AgentAutonomy::plan,
        u"" QT_TRANSLATE_NOOP(
            "Agents", "Is not told to plan: what would change something needs an approval, and nobody is there to "
                      "give it.")},
    OwnHold{AgentKind::custom, AgentAutonomy::plan, heldByItsLine},
    OwnHold{AgentKind::custom, AgentAutonomy::edit, heldByItsLine},
    OwnHold{AgentKind::custom, AgentAutonomy::full, heldByItsLine},
};

/// Whether each row stands at the place of its case.
template <typename Rows, typename Member>
constexpr bool isInOrder(const Rows& rows, Member member) {
    for (size_t row = 0; row < rows.size(); ++row) {
        if (static_cast<size_t>(rows[row].*member) != row) {
            return false;
        }
    }
    return true;
}
static_assert(agents.size() == allAgentKinds.size() && isInOrder(agents, &AgentInfo::kind));
static_assert(autonomies.size() == allAgentAutonomies.size() && isInOrder(autonomies, &AutonomyInfo::autonomy));

} // namespace

const AgentInfo& agentInfo(AgentKind kind) {
    return agents[static_cast<size_t>(kind)];
}

const AutonomyInfo& autonomyInfo(AgentAutonomy autonomy) {
    return autonomies[static_cast<size_t>(autonomy)];
}

QStringView autonomyExplanation(AgentKind kind, AgentAutonomy autonomy) {
    const auto own = std::ranges::find_if(
        ownHolds, [&](const OwnHold& each) { return each.kind == kind && each.autonomy == autonomy; });
    return own != ownHolds.end() ? own->explanation : autonomyInfo(autonomy).explanation;
}

} // namespace orv
