#pragma once

#include "TermEngine/EscapeSequenceParser.h"
#include "TermEngine/EscapeSequenceParser_p.h"

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
    while (p != end) {
        const std::uint8_t byte = *p;
        if (byte - 0x20U < 0x5F) {
            const auto left = static_cast<std::size_t>(end - p);
            std::size_t run = detail::asciiRun16(p, left);
            if (run == 16 || left < 16) {
                run = m_ops.asciiRun(p, left);
            }
            handler.printAscii(Bytes(p, run));
            p += run;
        } else if (byte == 0x1B) {
            if (end - p == 1) {
                clear();
                m_currentState = escape;
                ++p;
                break;
            }
            const std::uint8_t next = p[1];
            p += 2;
            if (next == '[' && !m_isVt52) [[likely]] {
                if (const std::uint8_t* const behind = walkPlainCsi(handler, p, end); behind != nullptr) [[likely]] {
                    p = behind;
                    continue;
                }
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

/// From behind "ESC [": at most a private marker, numbers of up to four digits, semicolons and the final byte, all of
/// it within 32 bytes; where it ends. Null, and nothing is done, for what is not so plain or not all there.
template <typename Handler>
const std::uint8_t* EscapeSequenceParser::walkPlainCsi(
    Handler& handler, const std::uint8_t* p, const std::uint8_t* end) {
    // The last number is read four bytes at a look.
    if (end - p < 1 + detail::sequenceSize + 4) {
        return nullptr;
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
    std::int32_t* const values = m_pars.values.data();
    int count = 0;
    std::uint32_t separators = semicolons | lastBit;
    if ((semicolons & (semicolons - 1)) == 0) [[likely]] {
        // One number or two: without a branch on how many, which nobody can foretell.
        const int first = std::countr_zero(separators);
        const int second = size - first - 1; // -1 when there is none
        if (first > 4 || second > 4) {
            return nullptr;
        }
        const std::uint64_t both = detail::numbersAt(p, first, p + first + 1, second);
        const auto left = static_cast<std::int32_t>(both & 0xFFFF);
        const auto right = static_cast<std::int32_t>(both >> 32) | second >> 31;
        if (markers == 0 && handler.dispatchNumbers(static_cast<char>(final), left, right)) [[likely]] {
            return behind;
        }
        values[0] = left;
        values[1] = right;
        count = 2 + (second >> 31);
    } else {
        if (final == 'm' && markers == 0 && applyLongRendition(handler, p, size, semicolons)) [[likely]] {
            return behind;
        }
        int start = 0;
        do {
            const int stop = std::countr_zero(separators);
            separators &= separators - 1;
            if (stop - start > 4 || count == CsiParameters::maximumCount) {
                return nullptr;
            }
            values[count++] = detail::numberAt(p + start, stop - start);
            start = stop + 1;
        } while (separators != 0);
    }
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
