#include "TermEngine/EscapeSequenceParser.h"
#include "TermEngine/EscapeSequenceParser_p.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace term {

using enum ParserState;

namespace {

/// The number at the front of an OSC string: its value, none when there is none, and the size of its digits.
struct OscNumber {
    int value = -1;
    std::size_t size = 0;
};

OscNumber parseDecimal(Bytes bytes) {
    OscNumber number;
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    const auto [end, error] = std::from_chars(text, text + bytes.size(), number.value);
    if (error != std::errc() || *text == '-') {
        return {};
    }
    number.size = static_cast<std::size_t>(end - text);
    return number;
}

} // namespace

void EscapeSequenceParser::startString(ParserState kind) {
    m_stringContinuationBytes = 0;
    if (kind == oscString) {
        m_osc.clear();
        m_oscLimitExceeded = false;
        m_oscIgnoredPrefixBytes = 0;
    } else {
        m_apc.clear();
        m_apcLimitExceeded = false;
    }
}

void EscapeSequenceParser::appendString(Bytes bytes) {
    if (m_currentState == oscString) {
        appendOscBytes(bytes);
    } else {
        appendApcBytes(bytes);
    }
}

bool EscapeSequenceParser::isProgramStatusOsc(Bytes osc) const {
    if (m_programStatusOsc < 0) {
        return false;
    }
    const OscNumber number = parseDecimal(osc.first(std::min<std::size_t>(osc.size(), 12)));
    return number.value == m_programStatusOsc && number.size < osc.size() && osc[number.size] == ';';
}

/// The number stays in front; behind it the oldest bytes go.
void EscapeSequenceParser::trimProgramStatus(ByteBuffer& osc, std::size_t limit) {
    if (osc.size() <= limit || !isProgramStatusOsc(osc.bytes())) {
        return;
    }
    const std::size_t head = parseDecimal(osc.bytes()).size + 1;
    const std::size_t surplus = std::min(osc.size() - limit, osc.size() - head);
    osc.erase(head, surplus);
    m_oscIgnoredPrefixBytes += surplus;
}

void EscapeSequenceParser::appendOscBytes(Bytes bytes) {
    if (!m_oscLimitExceeded && m_osc.size() + bytes.size() <= m_maximumOscBytes) {
        m_osc.append(bytes);
        return;
    }
    if (m_programStatusOsc >= 0 && !m_oscLimitExceeded) {
        m_osc.append(bytes);
        // The number has to be within the limit, so that it does not matter how the bytes were cut.
        if (isProgramStatusOsc(m_osc.bytes().first(std::min(m_osc.size(), m_maximumOscBytes)))) {
            if (m_osc.size() / 2 > m_maximumOscBytes) {
                trimProgramStatus(m_osc, m_maximumOscBytes);
            }
            return;
        }
        bytes = {};
    }
    m_oscIgnoredPrefixBytes += bytes.size() + m_osc.size();
    m_oscLimitExceeded = true;
    m_osc.release();
}

void EscapeSequenceParser::appendApcBytes(Bytes bytes) {
    if (m_apcLimitExceeded || m_apc.size() + bytes.size() > maximumApcBytes) {
        m_apcLimitExceeded = true;
        m_apc.release();
        return;
    }
    m_apc.append(bytes);
}

/// Acts on a string that is all there, and stays where it is: so many bytes, and what ends it.
void EscapeSequenceParser::takeWholeString(ParsingState& at, std::size_t size) {
    const bool isOsc = m_currentState == oscString;
    const Bytes string = at.bytes.subspan(at.position, size);
    const bool isBell = at.here()[size] == 0x07;
    at.position += size + 1;
    clear();
    m_currentState = isBell ? ground : escape;
    if (isOsc) {
        dispatchAccumulatedOsc(string, isBell ? StringEnd::bell : StringEnd::stringTerminator);
    } else {
        dispatchApc(string);
    }
}

/// Whether a byte that no run of ASCII took is text nevertheless; notes how many bytes go on with its character.
bool EscapeSequenceParser::isStringText(std::uint8_t code) {
    const bool continues = m_stringContinuationBytes > 0 && (code & 0xC0) == 0x80;
    if (!continues && code < 0xA0 && code != 0x7F) {
        m_stringContinuationBytes = 0;
        return false;
    }
    // No character begins with 0xC0, 0xC1, or a byte from 0xF5 on.
    m_stringContinuationBytes = continues                     ? m_stringContinuationBytes - 1
                                : code >= 0xF5 || code < 0xC2 ? 0
                                : code >= 0xF0                ? 3
                                : code >= 0xE0                ? 2
                                                              : 1;
    return true;
}

/// Appends as much as belongs to the string and ends the string when its terminator is there. A byte of 0x80 to 0x9F
/// that goes on with a UTF-8 sequence is text, not a control.
void EscapeSequenceParser::consumeOscRun(ParsingState& at) {
    const bool isOsc = m_currentState == oscString;
    // Of a string of which nothing is kept so far. That of a program's status has its own end.
    const auto endsWhole = [&](std::uint8_t byte, std::size_t size) {
        return isOsc ? (byte == 0x1B || byte == 0x07) && m_osc.empty() && !m_oscLimitExceeded &&
                           size <= m_maximumOscBytes && m_programStatusOsc < 0
                     : byte == 0x1B && m_apc.empty() && !m_apcLimitExceeded && size <= maximumApcBytes;
    };
    while (!at.atEnd()) {
        const std::size_t run = m_ops.asciiRun(at.here(), at.left());
        if (run > 0 && run < at.left() && endsWhole(at.here()[run], run)) {
            takeWholeString(at, run);
            return;
        }
        if (run > 0) {
            appendString(at.bytes.subspan(at.position, run));
            at.position += run;
            m_stringContinuationBytes = 0;
            continue;
        }
        at.code = *at.here();
        ++at.position;
        if (isStringText(at.code)) {
            appendString({&at.code, 1});
            continue;
        }
        if (at.code == 0x07 && isOsc) {
            m_currentState = ground;
            endString(oscString, StringEnd::bell);
            return;
        }
        if (at.code == 0x1B && isOsc && isProgramStatusOsc(m_osc.bytes())) {
            m_currentState = programStatusEscape;
            return;
        }
        const TransitionTable::Step step = m_table->step(m_currentState, at.code);
        if (step.next == m_currentState && step.action != ParserAction::oscStart) {
            continue;
        }
        if (at.code == 0x1B || at.code == 0x9C) {
            clear();
            m_currentState = step.next;
            endString(isOsc ? oscString : apcString, StringEnd::stringTerminator);
            return;
        }
        perform(step.action, step.next, at);
        return;
    }
}

void EscapeSequenceParser::endString(ParserState kind, StringEnd end) {
    constexpr std::size_t keptCapacity = 0x10000;
    ByteBuffer& memory = kind == oscString ? m_osc : m_apc;
    ByteBuffer string = std::move(memory);
    if (kind == apcString) {
        dispatchApc(string.bytes());
    } else if (!m_oscLimitExceeded) {
        // A string of a program's status is let grow to twice the limit, so that its bytes are moved seldom.
        trimProgramStatus(string, m_maximumOscBytes);
        dispatchAccumulatedOsc(string.bytes(), end);
    }
    if (memory.empty() && string.capacity() <= keptCapacity) {
        string.clear();
        memory = std::move(string);
    }
}

void EscapeSequenceParser::dispatchAccumulatedOsc(Bytes osc, StringEnd end) {
    const OscNumber number = parseDecimal(osc);
    if (number.size == 0 || (number.size < osc.size() && osc[number.size] != ';')) {
        return;
    }
    const Bytes payload = osc.subspan(std::min(number.size + 1, osc.size()));
    if (!m_handler.dispatchOsc(number.value, payload, end) && m_handler.isLogging()) {
        m_handler.log(detail::logPrefix + "Unknown OSC code: " + std::to_string(number.value));
    }
}

void EscapeSequenceParser::dispatchApc(Bytes apc) {
    if (m_apcLimitExceeded || apc.empty()) {
        return;
    }
    if (!m_handler.dispatchApc(apc) && m_handler.isLogging()) {
        m_handler.log(detail::logPrefix + "Unknown APC code: " + std::to_string(apc[0]));
    }
}

void EscapeSequenceParser::hookDcs(std::uint8_t final) {
    m_activeDcsHandler = m_handler.dcsHandler(static_cast<char>(final), m_pars, collected());
    if (!m_activeDcsHandler && m_handler.isLogging()) {
        std::string message = detail::logPrefix + "Unknown DCS + ";
        message.append(collected()).push_back(static_cast<char>(final));
        m_handler.log(message);
    }
}

void EscapeSequenceParser::consumeDcsRun(ParsingState& at) {
    const std::size_t run = m_ops.asciiRun(at.here(), at.left());
    if (run > 0) {
        if (m_activeDcsHandler) {
            m_activeDcsHandler->put(at.bytes.subspan(at.position, run));
        }
        at.position += run;
    }
}

void EscapeSequenceParser::unhookDcs() {
    if (const std::unique_ptr<DcsHandler> dcs = std::move(m_activeDcsHandler)) {
        dcs->unhook();
    }
}

} // namespace term
