#include "TermEngine/SemanticPrompt.h"

#include "TermEngine/OscPayloads.h"
#include "TermEngine/TextFields_p.h"

#include <algorithm>
#include <array>

namespace term {

using detail::cutAt;
using detail::numberOf;

namespace {

template <typename Value>
struct Named {
    std::string_view name;
    Value value;
};

constexpr std::array kinds = std::to_array<Named<SemanticReport::Kind>>({
    {"L", SemanticReport::Kind::freshLine},
    {"A", SemanticReport::Kind::prompt},
    {"N", SemanticReport::Kind::promptAfterEnd},
    {"P", SemanticReport::Kind::promptPart},
    {"B", SemanticReport::Kind::input},
    {"I", SemanticReport::Kind::inputLine},
    {"C", SemanticReport::Kind::output},
    {"D", SemanticReport::Kind::end},
});

constexpr std::array clickModes = std::to_array<Named<SemanticClickMode>>({
    {"line", SemanticClickMode::line},
    {"m", SemanticClickMode::multipleLines},
    {"v", SemanticClickMode::conservativeVertical},
    {"w", SemanticClickMode::smartVertical},
});

/// More than a command line and all other options take.
constexpr std::size_t longestMark = 64 * 1024;

template <typename Table>
const auto* entryOf(const Table& table, std::string_view name) {
    const auto found = std::ranges::find(table, name, [](const auto& entry) { return entry.name; });
    return found == table.end() ? nullptr : &*found;
}

} // namespace

std::optional<SemanticReport> parseSemanticPrompt(std::string_view payload) {
    payload = payload.substr(0, longestMark);
    const auto* const kind = entryOf(kinds, cutAt(payload, ';'));
    if (kind == nullptr) {
        return {};
    }
    SemanticReport report{.kind = kind->value};
    for (bool isFirst = true; !payload.empty(); isFirst = false) {
        std::string_view value = cutAt(payload, ';');
        const bool isOption = value.find('=') != std::string_view::npos;
        const std::string_view name = cutAt(value, '=');
        if (!isOption) {
            report.exitCode = isFirst ? numberOf(name) : report.exitCode;
        } else if (name == "k") {
            report.continuesPrompt = value == "c" || value == "s" || value == "r";
        } else if (name == "aid") {
            report.applicationId = cleanText(value, 64);
        } else if (name == "cl" && report.clickMode != SemanticClickMode::events) {
            const auto* const mode = entryOf(clickModes, value);
            report.clickMode = mode != nullptr ? mode->value : SemanticClickMode::none;
        } else if (name == "click_events" && value == "1") {
            report.clickMode = SemanticClickMode::events;
        } else if (name == "special_key") {
            report.usesSpecialCursorKeys = value == "1";
        }
    }
    return report;
}

bool SemanticState::begin(const std::string& applicationId) {
    const auto same = std::ranges::find(commands, applicationId, &Command::applicationId);
    const bool ended = same != commands.end();
    commands.erase(same, commands.end());
    if (commands.size() == mostCommands) {
        commands.erase(commands.begin());
    }
    commands.push_back({applicationId, ++groupCounter});
    return ended;
}

bool SemanticState::end(const std::optional<std::string>& applicationId) {
    if (!applicationId) {
        if (!commands.empty()) {
            commands.pop_back();
        }
        return true;
    }
    const auto same = std::ranges::find(commands, *applicationId, &Command::applicationId);
    const bool isOpen = same != commands.end();
    commands.erase(same, commands.end());
    return isOpen;
}

} // namespace term
