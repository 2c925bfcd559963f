#pragma once

#include "OrvCore/StoredEnum.h"

#include <QStringView>

#include <array>

namespace orv {

/// The command-line coding agents that a task can be handed to, in the order of every picker.
enum class AgentKind { claude, codex, gemini, antigravity, custom };

/// How much an agent may do without asking, from least to most.
enum class AgentAutonomy { plan, edit, full };

inline constexpr std::array allAgentKinds{
    AgentKind::claude, AgentKind::codex, AgentKind::gemini, AgentKind::antigravity, AgentKind::custom};
inline constexpr std::array allAgentAutonomies{AgentAutonomy::plan, AgentAutonomy::edit, AgentAutonomy::full};

template <>
struct StoredNames<AgentKind> {
    static constexpr std::array table{
        std::pair{AgentKind::claude, QLatin1StringView("claude")},
        std::pair{AgentKind::codex, QLatin1StringView("codex")},
        std::pair{AgentKind::gemini, QLatin1StringView("gemini")},
        std::pair{AgentKind::antigravity, QLatin1StringView("antigravity")},
        std::pair{AgentKind::custom, QLatin1StringView("custom")},
    };
};

template <>
struct StoredNames<AgentAutonomy> {
    static constexpr std::array table{
        std::pair{AgentAutonomy::plan, QLatin1StringView("plan")},
        std::pair{AgentAutonomy::edit, QLatin1StringView("edit")},
        std::pair{AgentAutonomy::full, QLatin1StringView("full")},
    };
};

/// What is known of an agent before one looks at the machine. What it does not have is a null text.
struct AgentInfo {
    AgentKind kind = AgentKind::custom;
    QStringView displayName;
    QStringView binary;         ///< the name looked up on the PATH
    QStringView signInCommand;  ///< typed into a terminal for the user
    QStringView installHint;    ///< a shell line; of a custom agent, a sentence
    QStringView notice;         ///< a caution beside the agent in pickers
    bool keepsSessions = false; ///< a later run can go on where an earlier one ended
    bool hasAutonomy = true;    ///< its command line is made for each level; a custom one's is as the user wrote it
};
[[nodiscard]] const AgentInfo& agentInfo(AgentKind kind);

struct AutonomyInfo {
    AgentAutonomy autonomy = AgentAutonomy::plan;
    QStringView title;
    QStringView explanation;
};
[[nodiscard]] const AutonomyInfo& autonomyInfo(AgentAutonomy autonomy);
/// What holds this agent to the level, where that is not what the level says of itself.
[[nodiscard]] QStringView autonomyExplanation(AgentKind kind, AgentAutonomy autonomy);

/// An assignment of the shell that puts the user's own executables, where installers of agents put them, first.
inline constexpr QLatin1StringView agentLocalBinPath("PATH=\"$HOME/.local/bin:$PATH\"");

} // namespace orv
