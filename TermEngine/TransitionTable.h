#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace term {

enum class ParserState : std::uint8_t {
    ground,
    escape,
    escapeIntermediate,
    csiEntry,
    csiParam,
    csiIntermediate,
    csiIgnore,
    sosPmApcString,
    oscString,
    apcString,
    dcsEntry,
    dcsParam,
    dcsIgnore,
    dcsIntermediate,
    dcsPassthrough,
    /// After an ESC in the string of a program's status: the next byte ends the string.
    programStatusEscape
};

enum class ParserAction : std::uint8_t {
    ignore,
    error,
    print,
    execute,
    oscStart,
    oscPut,
    oscEnd,
    csiDispatch,
    param,
    collect,
    escDispatch,
    clear,
    dcsHook,
    dcsPut,
    dcsUnhook
};

/// What a parser of the VT500 series does with a byte in a state (Paul Williams, "A parser for DEC's ANSI-compatible
/// video terminals", has the model).
class TransitionTable {
public:
    struct Step {
        ParserAction action;
        ParserState next;
    };

    TransitionTable();
    /// The same, with the escape sequences of the VT52: ESC Y has two bytes behind it, which come as collected and as
    /// the final one, and there are neither control sequences nor strings.
    [[nodiscard]] static TransitionTable forVt52();
    [[nodiscard]] Step step(ParserState state, std::uint8_t byte) const {
        const std::size_t index = static_cast<std::size_t>(state) * 256 + byte;
        const std::uint8_t entry = index < table.size() ? table[index] : defaultEntry;
        return {static_cast<ParserAction>(entry >> 4), static_cast<ParserState>(entry & 15)};
    }

    /// Action in the high half, next state in the low one. The last byte of the last state has no entry.
    static constexpr std::size_t entryCount = 4095;
    std::array<std::uint8_t, entryCount> table;

private:
    static constexpr std::uint8_t defaultEntry = static_cast<std::uint8_t>(ParserAction::error) << 4;
    void set(ParserState state, int byte, ParserAction action, ParserState next);
    void set(ParserState state, int first, int last, ParserAction action, ParserState next);
    void setExecutable(ParserState state, ParserAction action);
    void buildAnywhere();
    void buildEscape();
    void buildCsi();
    void buildStrings();
    void buildDcs();
};

[[nodiscard]] const TransitionTable& sharedVt500Table();
[[nodiscard]] const TransitionTable& sharedVt52Table();

} // namespace term
