#include "TermEngine/EscapeSequenceParser.h"

#include "TermEngine/EscapeSequenceParser+Ground_p.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace term {

using enum ParserState;

EscapeSequenceParser::EscapeSequenceParser(ParserHandler& handler, const VectorOps& ops)
    : EscapeSequenceParser(handler, ops, groundWalkFor<ParserHandler>()) {}

EscapeSequenceParser::EscapeSequenceParser(ParserHandler& handler, const VectorOps& ops, GroundWalk groundWalk)
    : m_handler(handler), m_ops(ops), m_walkGround(groundWalk) {}

void EscapeSequenceParser::reset() {
    m_currentState = initialState;
    m_utf8.reset();
    m_osc.clear();
    m_apc.clear();
    m_oscLimitExceeded = false;
    m_apcLimitExceeded = false;
    m_oscIgnoredPrefixBytes = 0;
    m_stringContinuationBytes = 0;
    m_activeDcsHandler.reset();
    clear();
    ++m_resetSerial;
}

void EscapeSequenceParser::parseBorrowed(Bytes bytes) {
    if (m_parseDepth > 0) {
        keepFedBack(bytes);
        return;
    }
    ++m_parseDepth;
    if (m_fedBack.empty()) [[likely]] {
        ParsingState at(bytes);
        walk(at);
    } else {
        keepFedBack(bytes);
    }
    if (!m_fedBack.empty()) [[unlikely]] {
        walkFedBack();
    }
    --m_parseDepth;
}

void EscapeSequenceParser::keepFedBack(Bytes bytes) {
    const std::size_t kept = std::min(bytes.size(), maximumFedBackBytes - m_fedBack.size());
    m_fedBack.insert(m_fedBack.end(), bytes.data(), bytes.data() + kept);
    if (kept < bytes.size() && m_handler.isLogging()) {
        m_handler.log(detail::logPrefix + "Dropped bytes that a handler fed: " + std::to_string(bytes.size() - kept));
    }
}

void EscapeSequenceParser::walkFedBack() {
    // A handler that feeds bytes for every sequence that it gets would never come to an end.
    std::size_t walked = 0;
    while (!m_fedBack.empty() && walked < fedBackAtOnce) {
        const std::vector<std::uint8_t> fed = std::exchange(m_fedBack, {});
        ParsingState at(fed);
        walk(at);
        walked += m_fedBack.size();
    }
}

void EscapeSequenceParser::walk(ParsingState& at) {
    while (!at.atEnd()) {
        if (m_currentState == ground) {
            (this->*m_walkGround)(at);
        } else {
            walkTable(at);
        }
    }
}

/// Text with bytes above 0x7F in it, up to a control or to a longer run of ASCII.
void EscapeSequenceParser::walkText(ParsingState& at) {
    constexpr std::size_t room = 512;
    std::array<char32_t, room + VectorOps::decodeSlack> scalars;
    std::size_t count = 0;
    const auto put = [&](char32_t scalar) { scalars[count++] = scalar; };
    // A byte can end a broken sequence and be a character: two scalars.
    while (!at.atEnd() && count + 2 <= room) {
        if (m_utf8.isPending()) {
            if (*at.here() < 0x80) {
                m_utf8.finish(put);
            } else {
                m_utf8.put(*at.here(), put);
                ++at.position;
            }
            continue;
        }
        const DecodedText decoded =
            m_ops.decodeUtf8(at.here(), std::min(at.left(), room - count), scalars.data() + count);
        at.position += decoded.bytes;
        count += decoded.scalars;
        if (at.atEnd() || *at.here() < 0x80) {
            break;
        }
        if (decoded.bytes == 0) {
            m_utf8.put(*at.here(), put);
            ++at.position;
        }
    }
    if (count > 0) {
        m_handler.printScalars({scalars.data(), count});
    }
}

/// From behind "ESC [" or CSI: parameters and final byte in one go, when they are all there and plain.
void EscapeSequenceParser::walkCsi(ParsingState& at) {
    if (!at.atEnd() && *at.here() >= 0x3C && *at.here() <= 0x3F) {
        collect(*at.here());
        ++at.position;
        m_currentState = csiParam;
    }
    scanParameters(at);
    if (at.atEnd() || *at.here() < 0x40 || *at.here() > 0x7E) {
        return;
    }
    const std::uint8_t final = *at.here();
    ++at.position;
    m_currentState = ground;
    dispatchCsi(final);
}

void EscapeSequenceParser::scanParameters(ParsingState& at) {
    const std::uint8_t* p = at.here();
    const std::uint8_t* const begin = p;
    const std::uint8_t* const end = p + at.left();
    std::int32_t value = m_pars.last();
    for (; p < end; ++p) {
        if (const unsigned digit = *p - unsigned{'0'}; digit < 10) {
            value = std::min(value * 10 + static_cast<std::int32_t>(digit), CsiParameters::maximumValue);
        } else if (*p == ';' || *p == ':') {
            m_pars.setLast(value);
            m_pars.putSeparator(*p == ':');
            value = 0;
        } else {
            break;
        }
    }
    if (p != begin) {
        m_pars.setLast(value);
        at.position += static_cast<std::size_t>(p - begin);
        m_currentState = csiParam;
    }
}

void EscapeSequenceParser::walkTable(ParsingState& at) {
    while (!at.atEnd() && m_currentState != ground) {
        const std::uint8_t byte = *at.here();
        switch (m_currentState) {
        case csiEntry:
        case csiParam:
            if (byte >= '0' && byte <= ';') {
                scanParameters(at);
                continue;
            }
            break;
        case dcsEntry:
        case dcsParam:
            // A ':' has an entry of its own here: it spoils the string.
            if ((byte >= '0' && byte <= '9') || byte == ';') {
                if (byte == ';') {
                    m_pars.putSeparator(false);
                } else {
                    m_pars.putDigit(byte - '0');
                }
                m_currentState = dcsParam;
                ++at.position;
                continue;
            }
            break;
        case oscString:
        case apcString:
            consumeOscRun(at);
            continue;
        case dcsPassthrough:
            consumeDcsRun(at);
            if (at.atEnd() || m_currentState != dcsPassthrough) {
                continue;
            }
            break;
        default:
            break;
        }
        at.code = *at.here();
        ++at.position;
        const TransitionTable::Step step = m_table->step(m_currentState, at.code);
        perform(step.action, step.next, at);
    }
}

/// Whether the byte ended a string, and that is all that it does.
bool EscapeSequenceParser::leaveString(ParserAction action, ParserState next, ParsingState& at) {
    if (m_currentState == programStatusEscape) {
        // Whatever the byte is, the string ends, and the byte stands behind an ESC.
        clear();
        m_currentState = escape;
        --at.position;
        endString(oscString, StringEnd::stringTerminator);
        return true;
    }
    if (next == dcsPassthrough) {
        return false;
    }
    if (at.code == 0x1B || action == ParserAction::dcsUnhook) {
        m_currentState = next;
        clear();
        unhookDcs();
        return true;
    }
    m_activeDcsHandler.reset();
    return false;
}

void EscapeSequenceParser::perform(ParserAction action, ParserState next, ParsingState& at) {
    if ((m_currentState == programStatusEscape || m_currentState == dcsPassthrough) && leaveString(action, next, at)) {
        return;
    }
    // First: a handler that resets the parser has the last word.
    const ParserState before = std::exchange(m_currentState, next);
    switch (action) {
    case ParserAction::error:
        logError(at.code, before);
        break;
    case ParserAction::execute:
        dispatchExecute(at.code);
        break;
    case ParserAction::param:
        m_pars.putDigit(at.code - '0');
        break;
    case ParserAction::collect:
        collect(at.code);
        break;
    case ParserAction::clear:
        clear();
        break;
    case ParserAction::csiDispatch:
        dispatchCsi(at.code);
        break;
    case ParserAction::escDispatch:
        dispatchEsc(at.code);
        break;
    case ParserAction::oscStart:
        startString(next);
        break;
    case ParserAction::dcsHook:
        hookDcs(at.code);
        break;
    case ParserAction::dcsPut:
        if (m_activeDcsHandler) {
            m_activeDcsHandler->put({&at.code, 1});
        }
        break;
    case ParserAction::ignore:
    case ParserAction::print:
    case ParserAction::oscPut:
    case ParserAction::oscEnd:
    case ParserAction::dcsUnhook:
        break;
    }
}

void EscapeSequenceParser::clear() {
    m_pars.clear();
    m_collectCount = 0;
}

/// No function has more than three, so nothing is lost: what is longer stays unknown.
void EscapeSequenceParser::collect(std::uint8_t byte) {
    if (m_collectCount < m_collect.size()) {
        m_collect[m_collectCount++] = static_cast<char>(byte);
    }
}

void EscapeSequenceParser::dispatchExecute(std::uint8_t code) {
    if (!m_handler.execute(code) && m_handler.isLogging()) {
        m_handler.log(detail::logPrefix + "Unknown EXECUTE code " + std::to_string(code));
    }
}

void EscapeSequenceParser::dispatchCsi(std::uint8_t final) {
    if (!m_handler.dispatchCsi(static_cast<char>(final), m_pars, collected())) {
        logUnknownCsi(final);
    }
}

void EscapeSequenceParser::logUnknownCsi(std::uint8_t final) {
    if (!m_handler.isLogging()) {
        return;
    }
    std::string message = detail::logPrefix + "Unknown CSI Code (collect=";
    message.append(collected()).append(" code=").push_back(static_cast<char>(final));
    message += " pars=";
    for (int i = 0; i < m_pars.count; ++i) {
        message += (i == 0 ? "" : ",") + std::to_string(m_pars.at(i));
    }
    m_handler.log(message + ")");
}

void EscapeSequenceParser::dispatchEsc(std::uint8_t final) {
    if (!m_handler.dispatchEsc(collected(), static_cast<char>(final)) && m_handler.isLogging()) {
        std::string message = detail::logPrefix + "Unknown ESC Code: ESC + ";
        message.append(collected()).push_back(static_cast<char>(final));
        m_handler.log(message);
    }
}

void EscapeSequenceParser::logError(std::uint8_t byte, ParserState state) {
    if (m_handler.isLogging()) {
        m_handler.log(
            detail::logPrefix + "Parsing error, state: " + std::to_string(static_cast<int>(state)) +
            " byte: " + std::to_string(byte));
    }
}

} // namespace term
