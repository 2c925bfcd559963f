#pragma once

#include "TermEngine/ByteBuffer.h"
#include "TermEngine/CsiParameters.h"
#include "TermEngine/TransitionTable.h"
#include "TermEngine/Utf8Decoder.h"
#include "TermEngine/VectorOps.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace term {

using Bytes = std::span<const std::uint8_t>;

/// What ended a string: an answer to it ends in the same way.
enum class StringEnd : std::uint8_t { bell, stringTerminator };

/// Takes the data of one DCS string.
class DcsHandler {
public:
    virtual ~DcsHandler() = default;
    virtual void put(Bytes data) = 0;
    /// The string is whole. A string that is cut off destroys its handler without this call.
    virtual void unhook() = 0;
};

/// The parameters of a control sequence as they came, of at most fifteen bytes; zeros behind them.
struct SequenceText {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    bool operator==(const SequenceText&) const = default;
};

/// What a parser hands on: runs and whole sequences, never single bytes of a text.
/// A function that answers false or nothing does not know the sequence.
class ParserHandler {
public:
    virtual ~ParserHandler() = default;
    /// Bytes of 0x20 to 0x7E.
    virtual void printAscii(Bytes text) = 0;
    virtual void printScalars(std::span<const char32_t> text) = 0;
    virtual bool execute(std::uint8_t code) = 0;
    virtual bool dispatchCsi(char final, const CsiParameters& parameters, std::string_view collected) = 0;
    /// Before some SGR sequences: true when the handler knows what the text does and has done it. Otherwise
    /// `dispatchCsi` follows.
    virtual bool applyKnownRendition(const SequenceText& /*text*/) { return false; }
    /// Before some SGR sequences that are nothing but one colour of the foreground, '3', or of the background, '4':
    /// true when the handler has done it. Otherwise `dispatchCsi` follows.
    virtual bool applyTrueColor(std::uint8_t /*ground*/, int /*red*/, int /*green*/, int /*blue*/) { return false; }
    /// The same for a colour of the palette.
    virtual bool applyPaletteColor(std::uint8_t /*ground*/, int /*index*/) { return false; }
    /// Before some sequences with nothing but at most two numbers; the second one is -1 where there is none: true when
    /// the handler has done what the sequence says. Otherwise `dispatchCsi` follows.
    virtual bool dispatchNumbers(char /*final*/, int /*first*/, int /*second*/) { return false; }
    virtual bool dispatchEsc(std::string_view collected, char final) = 0;
    virtual bool dispatchOsc(int code, Bytes payload, StringEnd end) = 0;
    virtual bool dispatchApc(Bytes payload) = 0;
    virtual std::unique_ptr<DcsHandler> dcsHandler(
        char final, const CsiParameters& parameters, std::string_view collected) = 0;
    /// Whether messages are made at all.
    [[nodiscard]] virtual bool isLogging() const { return false; }
    virtual void log(std::string_view /*message*/) {}
};

/// Where a call stands in its bytes.
class ParsingState {
public:
    explicit ParsingState(Bytes span) : bytes(span) {}
    [[nodiscard]] bool atEnd() const { return position >= bytes.size(); }
    [[nodiscard]] const std::uint8_t* here() const { return bytes.data() + position; }
    [[nodiscard]] std::size_t left() const { return bytes.size() - position; }

    Bytes bytes;
    std::size_t position = 0;
    std::uint8_t code = 0;
};

/// The byte stream of a program turned into calls on a handler. Any bytes at all are accepted, cut anywhere.
///
/// A handler may reset the parser, which then takes the rest of the bytes from the ground state, and may feed bytes,
/// which are parsed after those of the call that is under way. What handlers of fed bytes feed in turn is parsed as
/// well, up to `fedBackAtOnce` bytes in a call, and the rest with the next one: so there is an end to each.
class EscapeSequenceParser {
public:
    static constexpr ParserState initialState = ParserState::ground;
    static constexpr std::size_t maximumApcBytes = 0x4100000;
    static constexpr std::size_t defaultMaximumOscBytes = 0x4100000;
    static constexpr std::size_t fedBackAtOnce = 1 << 16;
    /// More than that can't wait: it is dropped, with a message.
    static constexpr std::size_t maximumFedBackBytes = 0x4000000;

    /// A function of the parser that is made for a kind of handler.
    using GroundWalk = void (EscapeSequenceParser::*)(ParsingState&);
    /// `EscapeSequenceParser+Ground_p.h` has to be instantiated for it somewhere.
    template <typename Handler>
    [[nodiscard]] static GroundWalk groundWalkFor() {
        return &EscapeSequenceParser::walkGround<Handler>;
    }

    explicit EscapeSequenceParser(ParserHandler& handler, const VectorOps& ops = fastestVectorOps());
    /// With a walk that is for this handler's kind.
    EscapeSequenceParser(ParserHandler& handler, const VectorOps& ops, GroundWalk groundWalk);

    /// Reads the bytes where they are: nothing but an unfinished sequence is copied.
    void parseBorrowed(Bytes bytes);
    void reset();
    /// Whether a handler is at work.
    [[nodiscard]] bool isParsing() const { return m_parseDepth > 0; }

    [[nodiscard]] ParserState currentState() const { return m_currentState; }
    [[nodiscard]] std::uint64_t resetSerial() const { return m_resetSerial; }
    /// Of the OSC string that is being collected or was the last: how many bytes were not kept.
    [[nodiscard]] std::size_t oscIgnoredBytes() const { return m_oscIgnoredPrefixBytes; }

    void setMaximumOscBytes(std::size_t limit) { m_maximumOscBytes = limit; }
    /// DECANM: whether escape sequences are those of the VT52.
    void setVt52(bool isVt52) {
        m_isVt52 = isVt52;
        m_table = isVt52 ? &sharedVt52Table() : &sharedVt500Table();
    }
    /// The OSC number of strings that report a program's status: of such a string that is too long, the end is kept.
    /// None, a negative number, at first.
    void setProgramStatusOsc(int code) { m_programStatusOsc = code; }

private:
    void keepFedBack(Bytes bytes);
    void walkFedBack();
    void walk(ParsingState& at);
    template <typename Handler>
    void walkGround(ParsingState& at);
    void walkText(ParsingState& at);
    void walkTable(ParsingState& at);
    template <typename Handler>
    [[nodiscard]] const std::uint8_t* walkPlainCsi(Handler& handler, const std::uint8_t* p);
    template <typename Handler>
    [[nodiscard]] bool applyLongRendition(Handler& handler, const std::uint8_t* p, int size, std::uint32_t semicolons);
    void walkCsi(ParsingState& at);
    void scanParameters(ParsingState& at);
    void consumeOscRun(ParsingState& at);
    void takeWholeString(ParsingState& at, std::size_t size);
    bool isStringText(std::uint8_t code);
    void consumeDcsRun(ParsingState& at);
    void perform(ParserAction action, ParserState next, ParsingState& at);
    bool leaveString(ParserAction action, ParserState next, ParsingState& at);

    void clear();
    void collect(std::uint8_t byte);
    void dispatchExecute(std::uint8_t code);
    void dispatchCsi(std::uint8_t final);
    void logUnknownCsi(std::uint8_t final);
    void dispatchEsc(std::uint8_t final);
    void startString(ParserState kind);
    void appendString(Bytes bytes);
    void appendOscBytes(Bytes bytes);
    void appendApcBytes(Bytes bytes);
    [[nodiscard]] bool isProgramStatusOsc(Bytes osc) const;
    void trimProgramStatus(ByteBuffer& osc, std::size_t limit);
    void endString(ParserState kind, StringEnd end);
    void dispatchAccumulatedOsc(Bytes osc, StringEnd end);
    void dispatchApc(Bytes apc);
    void hookDcs(std::uint8_t final);
    void unhookDcs();
    void logError(std::uint8_t byte, ParserState state);
    [[nodiscard]] std::string_view collected() const { return {m_collect.data(), m_collectCount}; }

    ParserHandler& m_handler;
    const VectorOps& m_ops;
    GroundWalk m_walkGround;
    const TransitionTable* m_table = &sharedVt500Table();
    bool m_isVt52 = false;
    ParserState m_currentState = initialState;
    Utf8Decoder m_utf8;
    CsiParameters m_pars;
    std::array<char, 8> m_collect{};
    std::size_t m_collectCount = 0;

    ByteBuffer m_osc;
    ByteBuffer m_apc;
    std::size_t m_maximumOscBytes = defaultMaximumOscBytes;
    std::size_t m_oscIgnoredPrefixBytes = 0;
    bool m_oscLimitExceeded = false;
    bool m_apcLimitExceeded = false;
    int m_stringContinuationBytes = 0;
    int m_programStatusOsc = -1;
    std::unique_ptr<DcsHandler> m_activeDcsHandler;

    int m_parseDepth = 0;
    std::uint64_t m_resetSerial = 0;
    std::vector<std::uint8_t> m_fedBack;
};

} // namespace term
