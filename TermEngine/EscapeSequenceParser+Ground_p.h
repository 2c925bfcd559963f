#pragma once

#include "TermEngine/EscapeSequenceParser.h"
#include "TermEngine/EscapeSequenceParser_p.h"

#include <algorithm>
#include <bit>

namespace term {

/// The state in which text is written and most sequences are read whole, for one kind of handler: where the compiler
/// knows it, its functions become a part of the loop.
template <typename Handler>
[[gnu::flatten]] void EscapeSequenceParser::walkGround(ParsingState& at) {
    using enum ParserState;
    auto& handler = static_cast<Handler&>(m_handler);
    if (m_utf8.isPending()) {
        walkText(at);
        return;
    }
    const std::uint8_t* p = at.here();
    const std::uint8_t* const end = p + at.left();
    const auto stopAt = [&](const std::uint8_t* place) {
        at.position = static_cast<std::size_t>(place - at.bytes.data());
    };
    // Before here, what stands at the front can be read without a look at the end.
    const std::uint8_t* const roomy = end - std::min<std::ptrdiff_t>(end - p, detail::sequenceRoom);
    while (p != end) {
        const std::uint8_t byte = *p;
        if (byte - 0x20U < 0x5F) {
            std::size_t run = p < roomy ? detail::asciiRun16(p) : 16;
            if (run == 16) {
                run = m_ops.asciiRun(p, static_cast<std::size_t>(end - p));
            }
            handler.printAscii(Bytes(p, run));
            p += run;
            continue;
        }
        if (p < roomy && detail::beginsCsi(p) && !m_isVt52) {
            if (const std::uint8_t* const behind = walkPlainCsi(handler, p + 2); behind != nullptr) [[likely]] {
                p = behind;
                continue;
            }
        }
        if (byte == 0x1B) {
            if (end - p == 1) {
                clear();
                m_currentState = escape;
                ++p;
                break;
            }
            const std::uint8_t next = p[1];
            p += 2;
            if (next == '[' && !m_isVt52) {
                clear();
                m_currentState = csiEntry;
                stopAt(p);
                walkCsi(at);
                p = at.here();
            } else {
                clear();
                const TransitionTable::Step step = m_table->step(escape, next);
                if (step.action == ParserAction::escDispatch && step.next == ground) {
                    dispatchEsc(next);
                    continue;
                }
                m_currentState = escape;
                --p;
            }
            if (m_currentState != ground) {
                break;
            }
        } else if (byte >= 0x80) {
            stopAt(p);
            walkText(at);
            p = at.here();
            if (m_utf8.isPending()) {
                break;
            }
        } else {
            ++p;
            if (byte == 0x19 || byte == 0x7F) {
                logError(byte, ground);
            } else {
                dispatchExecute(byte);
            }
        }
    }
    stopAt(p);
}

/// From behind "ESC [", with `sequenceRoom` to read: at most a private marker, numbers of up to four digits, semicolons
/// and the final byte, all of it within 32 bytes; where it ends. Null, and nothing is done, for what is not so plain.
template <typename Handler>
const std::uint8_t* EscapeSequenceParser::walkPlainCsi(Handler& handler, const std::uint8_t* p) {
    if (detail::ShortSequence sequence;
        detail::readShortSequence(p, sequence) &&
        handler.dispatchNumbers(static_cast<char>(sequence.final), sequence.first, sequence.second)) [[likely]] {
        return p + sequence.size;
    }
    std::size_t markers = 0;
    if ((*p & 0xFC) == 0x3C) {
        m_collect[0] = static_cast<char>(*p++);
        markers = 1;
    }
    const detail::SequenceShape shape = detail::sequenceShape(p);
    const std::uint32_t ends = (shape.others ^ shape.semicolons) | 0x80000000;
    const int size = std::countr_zero(ends);
    const std::uint8_t final = p[size];
    if (final - 0x40U > 0x3E) {
        return nullptr;
    }
    const std::uint8_t* const behind = p + size + 1;
    const std::uint32_t lastBit = ends & (0 - ends);
    const std::uint32_t semicolons = shape.semicolons & (lastBit - 1);
    if (final == 'm' && markers == 0 && (semicolons & (semicolons - 1)) != 0 &&
        applyLongRendition(handler, p, size, semicolons)) [[likely]] {
        return behind;
    }
    std::uint32_t separators = semicolons | lastBit;
    int count = 0;
    int start = 0;
    do {
        const int stop = std::countr_zero(separators);
        separators &= separators - 1;
        if (stop - start > 4 || count == CsiParameters::maximumCount) {
            return nullptr;
        }
        m_pars.values[static_cast<std::size_t>(count++)] = detail::numberAt(p + start, stop - start);
        start = stop + 1;
    } while (separators != 0);
    m_pars.count = count;
    m_pars.colonMask = 0;
    m_pars.limitExceeded = false;
    m_collectCount = markers;
    dispatchCsi(final);
    return behind;
}

/// An SGR sequence of three numbers or more, whose parameters are `size` bytes at `p`: whether the handler has done it.
template <typename Handler>
bool EscapeSequenceParser::applyLongRendition(
    Handler& handler, const std::uint8_t* p, int size, std::uint32_t semicolons) {
    // Colours alone: there are many of them, of which most do not come again.
    if (detail::beginsTrueColor(p)) {
        const std::uint32_t rest = semicolons & ~std::uint32_t{0x1F};
        const std::uint32_t last = rest & (rest - 1);
        const int red = std::countr_zero(rest | 0x80000000);
        const int green = std::countr_zero(last | 0x80000000);
        return last != 0 && (last & (last - 1)) == 0 && red <= 9 && green - red <= 5 && size - green <= 5 &&
               handler.applyTrueColor(
                   p[0], detail::numberAt(p + 5, red - 5), detail::numberAt(p + red + 1, green - red - 1),
                   detail::numberAt(p + green + 1, size - green - 1));
    }
    if (detail::beginsPaletteColor(p) && semicolons == 0x14 && size <= 9) {
        return handler.applyPaletteColor(p[0], detail::numberAt(p + 5, size - 5));
    }
    return size < 16 && handler.applyKnownRendition(detail::sequenceText(p, size));
}

} // namespace term
