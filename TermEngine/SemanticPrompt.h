#pragma once

#include "TermEngine/CharData.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace term {

/// What ends the input of a prompt: a mark of the shell, or already the end of its line.
enum class SemanticInput : std::uint8_t { untilMark, untilLineEnd };

/// How a shell wants to be told of a click into its input (OSC 133, the options cl and click_events).
enum class SemanticClickMode : std::uint8_t {
    none,
    line,                 ///< cl=line: cursor keys to the left and right, within the line
    multipleLines,        ///< cl=m: the same over all lines, where the end of a line is a character
    conservativeVertical, ///< cl=v: up and down too, from the beginning of a line
    smartVertical,        ///< cl=w: up and down too; the column is kept over shorter lines
    events                ///< click_events=1: the click itself, as mode 1006 has it
};

/// OSC 133: what a shell says of its prompts ("Semantic prompts", with what kitty's shell integration adds).
struct SemanticReport {
    enum class Kind : std::uint8_t {
        freshLine,      ///< L
        prompt,         ///< A
        promptAfterEnd, ///< N: A, after D
        promptPart,     ///< P: A without a fresh line
        input,          ///< B
        inputLine,      ///< I: B, up to the end of the line
        output,         ///< C
        end             ///< D
    };
    Kind kind = Kind::freshLine;
    bool continuesPrompt = false; ///< k: it goes on with a prompt that stands above, or stands at the right
    std::optional<int> exitCode{};
    std::optional<std::string> applicationId{}; ///< aid
    std::optional<SemanticClickMode> clickMode{};
    std::optional<bool> usesSpecialCursorKeys{};
    bool operator==(const SemanticReport&) const = default;
};
/// `payload` begins behind "133;".
[[nodiscard]] std::optional<SemanticReport> parseSemanticPrompt(std::string_view payload);

/// What a shell has said of the prompt that it shows.
struct SemanticState {
    /// A prompt and what came of it: those of a shell that another one started stand above the others.
    struct Command {
        std::string applicationId{};
        std::uint32_t group = 0;
    };
    static constexpr std::size_t mostCommands = 16;

    SemanticContent content = SemanticContent::none;
    SemanticInput input = SemanticInput::untilMark;
    SemanticClickMode clickMode = SemanticClickMode::none;
    /// The shell has keys of its own for moving its cursor, since the usual ones do more than that.
    bool usesSpecialCursorKeys = false;
    std::uint32_t groupCounter = 0;
    std::vector<Command> commands{};

    [[nodiscard]] bool isInPrompt() const {
        return content == SemanticContent::prompt || content == SemanticContent::input;
    }
    /// Of the prompt that is the newest; 0: there is none.
    [[nodiscard]] std::uint32_t activeGroup() const { return commands.empty() ? 0 : commands.back().group; }
    /// A new prompt, which ends the one of the same application and all above that. Whether there was one.
    bool begin(const std::string& applicationId);
    /// Ends the newest command, or the one of an application with all above it. False: that one has none.
    bool end(const std::optional<std::string>& applicationId);
};

} // namespace term
