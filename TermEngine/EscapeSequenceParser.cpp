#include "TermEngine/EscapeSequenceParser.h"

#include "TermEngine/EscapeSequenceParser_p.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace term {

using enum ParserState;

EscapeSequenceParser::EscapeSequenceParser(ParserHandler& handler, const VectorOps& ops)
    : m_handler(handler), m_ops(ops) {}

void EscapeSequenceParser::reset() {
    m_state = ground;
    m_utf8.reset();
    m_osc.clear();
    m_apc.clear();
    m_oscLimitExceeded = false;
    m_apcLimitExceeded = false;
    m_oscIgnoredPrefixBytes = 0;
    m_stringContinuationBytes = 0;
    m_dcs.reset();
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
        m_handler.log(detail::engineName + "Dropped bytes that a handler fed: " + std::to_string(bytes.size() - kept));
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
        if (m_state == ground) {
            walkGround(at);
        } else {
            walkTable(at);
        }
    }
}

void EscapeSequenceParser::walkGround(ParsingState& at) {
    while (!at.atEnd() && m_state == ground) {
        const std::uint8_t byte = *at.here();
        if (m_utf8.isPending() || byte >= 0x80) {
            walkText(at);
        } else if (byte >= 0x20 && byte != 0x7F) {
            const std::size_t run = m_ops.asciiRun(at.here(), at.left());
            const Bytes text = at.bytes.subspan(at.position, run);
            at.position += run;
            m_handler.printAscii(text);
        } else if (byte == 0x1B) {
            if (at.left() > 1 && at.here()[1] == '[') {
                at.position += 2;
                if (!walkPlainCsi(at)) {
                    clear();
                    m_state = csiEntry;
                    walkCsi(at);
                }
            } else {
                clear();
                ++at.position;
                m_state = escape;
            }
        } else {
            ++at.position;
            if (byte == 0x19 || byte == 0x7F) {
                logError(byte);
            } else {
                dispatchExecute(byte);
            }
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

/// From behind "ESC [": at most a private marker, numbers of up to four digits, semicolons and the final byte, all of
/// it within 32 bytes. False, and nothing is done, for what is not so plain or not all there.
bool EscapeSequenceParser::walkPlainCsi(ParsingState& at) {
    const std::uint8_t* p = at.here();
    // The last number is read four bytes at a look.
    if (at.left() < 1 + VectorOps::sequenceSize + 4) {
        return false;
    }
    std::size_t markers = 0;
    if ((*p & 0xFC) == 0x3C) {
        m_collect[0] = static_cast<char>(*p++);
        markers = 1;
    }
    const SequenceShape shape = m_ops.sequenceShape(p);
    const std::uint32_t ends = shape.others & ~shape.semicolons;
    const int size = std::countr_zero(ends | 0x80000000);
    const std::uint8_t final = p[size];
    if (final < 0x40 || final > 0x7E) {
        return false;
    }
    const auto behind = static_cast<std::size_t>(p + size + 1 - at.bytes.data());
    if (final == 'm' && markers == 0 && size < 16 && m_handler.applyKnownRendition(detail::sequenceText(p, size))) {
        at.position = behind;
        return true;
    }
    std::int32_t* const values = m_parameters.values.data();
    int count = 0;
    const std::uint32_t semicolons = shape.others & ((std::uint32_t{1} << size) - 1);
    std::uint32_t separators = semicolons | std::uint32_t{1} << size;
    if ((semicolons & (semicolons - 1)) == 0) [[likely]] {
        // One number or two: without a branch on how many, which nobody can foretell.
        const int end = std::countr_zero(separators);
        const int second = size - end - 1; // -1 when there is none
        if (end > 4 || second > 4) {
            return false;
        }
        values[0] = detail::numberAt(p, end);
        values[1] = detail::numberAt(p + end + 1, second);
        count = 2 + (second >> 31);
    } else {
        int start = 0;
        do {
            const int end = std::countr_zero(separators);
            separators &= separators - 1;
            if (end - start > 4 || count == CsiParameters::maximumCount) {
                return false;
            }
            values[count++] = detail::numberAt(p + start, end - start);
            start = end + 1;
        } while (separators != 0);
    }
    m_parameters.count = count;
    m_parameters.colonMask = 0;
    m_parameters.limitExceeded = false;
    m_collectCount = markers;
    at.position = behind;
    if (!m_handler.dispatchCsi(static_cast<char>(final), m_parameters, collected())) {
        logUnknownCsi(final);
    }
    return true;
}

/// From behind "ESC [" or CSI: parameters and final byte in one go, when they are all there and plain.
void EscapeSequenceParser::walkCsi(ParsingState& at) {
    if (!at.atEnd() && *at.here() >= 0x3C && *at.here() <= 0x3F) {
        collect(*at.here());
        ++at.position;
        m_state = csiParam;
    }
    scanParameters(at);
    if (at.atEnd() || *at.here() < 0x40 || *at.here() > 0x7E) {
        return;
    }
    const std::uint8_t final = *at.here();
    ++at.position;
    m_state = ground;
    dispatchCsi(final);
}

void EscapeSequenceParser::scanParameters(ParsingState& at) {
    const std::uint8_t* p = at.here();
    const std::uint8_t* const begin = p;
    const std::uint8_t* const end = p + at.left();
    std::int32_t value = m_parameters.last();
    for (; p < end; ++p) {
        if (const unsigned digit = *p - unsigned{'0'}; digit < 10) {
            value = std::min(value * 10 + static_cast<std::int32_t>(digit), CsiParameters::maximumValue);
        } else if (*p == ';' || *p == ':') {
            m_parameters.setLast(value);
            m_parameters.putSeparator(*p == ':');
            value = 0;
        } else {
            break;
        }
    }
    if (p != begin) {
        m_parameters.setLast(value);
        at.position += static_cast<std::size_t>(p - begin);
        m_state = csiParam;
    }
}

void EscapeSequenceParser::walkTable(ParsingState& at) {
    while (!at.atEnd() && m_state != ground) {
        const std::uint8_t byte = *at.here();
        switch (m_state) {
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
                    m_parameters.putSeparator(false);
                } else {
                    m_parameters.putDigit(byte - '0');
                }
                m_state = dcsParam;
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
            if (at.atEnd() || m_state != dcsPassthrough) {
                continue;
            }
            break;
        default:
            break;
        }
        at.code = *at.here();
        ++at.position;
        const TransitionTable::Step step = m_table.step(m_state, at.code);
        perform(step.action, step.next, at);
    }
}

void EscapeSequenceParser::perform(ParserAction action, ParserState next, ParsingState& at) {
    const ParserState before = m_state;
    if (before == programStatusEscape) {
        // Whatever the byte is, the string ends, and the byte stands behind an ESC.
        clear();
        m_state = escape;
        --at.position;
        endString(oscString, StringEnd::stringTerminator);
        return;
    }
    if (before == dcsPassthrough && next != dcsPassthrough) {
        if (at.code == 0x1B || action == ParserAction::dcsUnhook) {
            m_state = next;
            clear();
            unhookDcs();
            return;
        }
        m_dcs.reset();
    }
    if (action == ParserAction::error) {
        logError(at.code);
    }
    // First: a handler that resets the parser has the last word.
    m_state = next;
    switch (action) {
    case ParserAction::execute:
        dispatchExecute(at.code);
        break;
    case ParserAction::param:
        m_parameters.putDigit(at.code - '0');
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
        if (m_dcs) {
            m_dcs->put({&at.code, 1});
        }
        break;
    case ParserAction::ignore:
    case ParserAction::error:
    case ParserAction::print:
    case ParserAction::oscPut:
    case ParserAction::oscEnd:
    case ParserAction::dcsUnhook:
        break;
    }
}

void EscapeSequenceParser::clear() {
    m_parameters.clear();
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
        m_handler.log(detail::engineName + "Unknown EXECUTE code " + std::to_string(code));
    }
}

void EscapeSequenceParser::dispatchCsi(std::uint8_t final) {
    if (!m_handler.dispatchCsi(static_cast<char>(final), m_parameters, collected())) {
        logUnknownCsi(final);
    }
}

void EscapeSequenceParser::logUnknownCsi(std::uint8_t final) {
    if (!m_handler.isLogging()) {
        return;
    }
    std::string message = detail::engineName + "Unknown CSI Code (collect=";
    message.append(collected()).append(" code=").push_back(static_cast<char>(final));
    message += " pars=";
    for (int i = 0; i < m_parameters.count; ++i) {
        message += (i == 0 ? "" : ",") + std::to_string(m_parameters.at(i));
    }
    m_handler.log(message + ")");
}

void EscapeSequenceParser::dispatchEsc(std::uint8_t final) {
    if (!m_handler.dispatchEsc(collected(), static_cast<char>(final)) && m_handler.isLogging()) {
        std::string message = detail::engineName + "Unknown ESC Code: ESC + ";
        message.append(collected()).push_back(static_cast<char>(final));
        m_handler.log(message);
    }
}

void EscapeSequenceParser::logError(std::uint8_t byte) {
    if (m_handler.isLogging()) {
        m_handler.log(
            detail::engineName + "Parsing error, state: " + std::to_string(static_cast<int>(m_state)) +
            " byte: " + std::to_string(byte));
    }
}

} // namespace term
