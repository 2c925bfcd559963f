#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

namespace term {
namespace {

/// What stands behind the four that name the rectangle.
CsiParameters changeIn(const CsiParameters& parameters) {
    CsiParameters change;
    change.count = 0;
    for (int i = 4; i < parameters.count; ++i) {
        change.values[static_cast<std::size_t>(change.count++)] = parameters.at(i);
    }
    change.count = std::max(change.count, 1);
    change.colonMask = parameters.colonMask >> 4;
    return change;
}

/// Those that DECRARA reverses.
std::uint8_t stylesIn(const CsiParameters& change) {
    constexpr std::array<std::pair<int, StyleBit>, 5> bits = {
        {{1, StyleBit::bold},
         {4, StyleBit::underline},
         {5, StyleBit::blink},
         {7, StyleBit::inverse},
         {8, StyleBit::invisible}}};
    CharacterStyle styles;
    for (int i = 0; i < change.count; ++i) {
        for (const auto& [code, bit] : bits) {
            if (change.at(i) == code || (change.at(i) == 0 && code != 8)) {
                styles.set(bit);
            }
        }
    }
    return styles.raw();
}

} // namespace

/// Of the parameters from `first` on: top, left, bottom, right, which count from 1 and from the margins in origin mode.
Rectangle Terminal::rectangle(const CsiParameters& parameters, int first) const {
    const Buffer& b = *m_buffer;
    const bool origin = m_modes.origin;
    const Rectangle limits{
        origin ? b.scrollTop() : 0, origin ? b.marginLeft() : 0, origin ? b.scrollBottom() + 1 : b.rows(),
        origin ? b.marginRight() + 1 : b.cols()};
    const auto end = [&](int index, int start, int limit) {
        const int given = parameters.at(first + index);
        return given == 0 ? limit : std::min(start + given, limit);
    };
    return {
        limits.top + parameters.atLeastOne(first) - 1, limits.left + parameters.atLeastOne(first + 1) - 1,
        end(2, limits.top, limits.bottom), end(3, limits.left, limits.right)};
}

void Terminal::csiCopyRectangularArea(const CsiParameters& parameters) {
    Buffer& b = *m_buffer;
    const Rectangle source = rectangle(parameters, 0);
    if (source.isEmpty()) {
        return;
    }
    const bool origin = m_modes.origin;
    // Parameters 4 and 7 are pages.
    const int top = (origin ? b.scrollTop() : 0) + parameters.atLeastOne(5) - 1;
    const int left = (origin ? b.marginLeft() : 0) + parameters.atLeastOne(6) - 1;
    const int height = std::min(source.bottom - source.top, (origin ? b.scrollBottom() + 1 : b.rows()) - top);
    const int width = std::min(source.right - source.left, (origin ? b.marginRight() + 1 : b.cols()) - left);
    loseTextImages({top, left, top + height, left + width});
    for (int i = 0; i < height; ++i) {
        // From the end that is not written over before it is read.
        const int row = top > source.top ? height - 1 - i : i;
        b.line(top + row).copyFrom(b.line(source.top + row), source.left, left, width);
    }
}

void Terminal::fillRectangle(const CsiParameters& parameters) {
    const int code = parameters.at(0);
    const bool isPrintable = (code >= 0x20 && code <= 0x7E) || (code >= 0xA0 && code <= 0xFF);
    const Rectangle area = rectangle(parameters, 1);
    if (!isPrintable || area.isEmpty()) {
        return;
    }
    const char32_t scalar =
        code < 0x80 ? characterIn(m_charset.left, static_cast<std::uint8_t>(code)) : static_cast<char32_t>(code);
    loseTextImages(area);
    const PackedCell cell = PackedCell::make(PackedCell::Kind::scalar, scalar, pen().bits);
    const std::uint32_t sum = scalar * static_cast<std::uint32_t>(area.right - area.left);
    for (int row = area.top; row < area.bottom; ++row) {
        m_buffer->line(row).fill(area.left, area.right, cell);
        m_rectangles.noteSum(row, m_buffer->line(row), {area.left, area.right}, sum);
    }
}

void Terminal::eraseRectangle(const CsiParameters& parameters, EraseKind kind) {
    const Rectangle area = rectangle(parameters, 0);
    if (area.isEmpty()) {
        return;
    }
    loseTextImages(area);
    // What SPA protects holds against the other functions only, as in xterm.
    const EraseKind made = m_isErasureGuarded ? EraseKind::all : kind;
    for (int row = area.top; row < area.bottom; ++row) {
        eraseText(row, area.left, area.right, made);
    }
}

/// DECCARA, or DECRARA when it reverses: of a rectangle, or of the text from its first to its last corner.
void Terminal::changeAttributes(const CsiParameters& parameters, bool reverses) {
    Buffer& b = *m_buffer;
    const Rectangle area = rectangle(parameters, 0);
    if (area.top >= area.bottom || !m_rectangles.hasSteps()) {
        return;
    }
    const CsiParameters change = changeIn(parameters);
    AttributeChange& made = m_rectangles.change(
        *m_arena, reverses ? AttributeChange::Kind{.reversed = stylesIn(change)}
                           : AttributeChange::Kind{.patch = patchOf(change)});
    const int lastColumn = m_modes.origin ? b.marginRight() + 1 : b.cols();
    const int firstColumn = m_modes.origin ? b.marginLeft() : 0;
    // From its first corner to its last one, in whole rows between.
    const bool isStream = !m_changesRectangles && area.top + 1 < area.bottom;
    const std::array<Rectangle, 3> parts{
        {{area.top, area.left, area.top + 1, lastColumn},
         {area.top + 1, firstColumn, area.bottom - 1, lastColumn},
         {area.bottom - 1, firstColumn, area.bottom, area.right}}};
    for (const Rectangle& part : isStream ? std::span(parts) : std::span(&area, 1)) {
        loseTextImages(part);
    }
    for (int row = area.top; row < area.bottom; ++row) {
        const int left = m_changesRectangles || row == area.top ? area.left : firstColumn;
        const int right = m_changesRectangles || row + 1 == area.bottom ? area.right : lastColumn;
        if (left >= right) {
            continue;
        }
        const RectangleMemory::Changing changing{{left, right}, made.kind()};
        if (!reverses && m_rectangles.isChanged(b.line(row), changing)) {
            continue;
        }
        made.change(b.line(row).edit(left, right));
        if (!reverses) {
            m_rectangles.noteChanged(row, b.line(row), changing);
        }
    }
    m_rectangles.addSteps(made.takeSteps());
}

void Terminal::cmdDECRQCRA(const CsiParameters& parameters) {
    if (!m_rectangles.hasSteps()) {
        return;
    }
    const Rectangle area = rectangle(parameters, 2);
    std::uint32_t sum = 0;
    for (int row = area.top; row < area.bottom; ++row) {
        if (area.left < area.right) {
            sum += m_rectangles.sumOf(*m_arena, row, m_buffer->line(row), {area.left, area.right});
        }
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%d!~%04X", parameters.at(0), (0x10000U - (sum & 0xFFFFU)) & 0xFFFFU);
    sendDcs(text.data());
}

} // namespace term
