#include "TermEngine/CellArena.h"

#include <algorithm>

namespace term {

/// Whether a number has become free.
bool CellArena::releaseWhenDue(Numbered what) {
    ++m_lostSinceReleasing;
    if (m_lostSinceReleasing < m_earliestReleasing || !m_releasing) {
        return false;
    }
    Releasing releasing(*this, what);
    m_releasing(releasing);
    const bool isOfLinks = what == Numbered::links;
    isOfLinks ? m_links.keepOnly(releasing.m_isKept) : m_graphemes.keepOnly(releasing.m_isKept);
    ++m_sweepCount;
    m_lostSinceReleasing = 0;
    // Where the screens need nearly all of them, there may be as little to gain the next time.
    const bool isPlenty = releasing.m_kept < releasing.m_capacity / 8 * 7;
    m_earliestReleasing = isPlenty ? 0 : std::max<std::size_t>(1024, releasing.m_cells / 16);
    return isOfLinks ? !m_links.isFull() : !m_graphemes.isFull();
}

CellArena::Releasing::Releasing(const CellArena& arena, Numbered what)
    : m_arena(arena),
      m_what(what),
      m_isKept((what == Numbered::links ? arena.m_links.highestNumber() : arena.m_graphemes.highestNumber()) + 1),
      m_capacity(what == Numbered::links ? linkCapacity : graphemeCapacity) {}

std::uint32_t CellArena::Releasing::numberOf(PackedCell cell) const {
    if (m_what == Numbered::links) {
        return cell.payload();
    }
    return cell.kind() == PackedCell::Kind::cluster ? cell.content() : 0;
}

void CellArena::Releasing::keep(std::span<const PackedCell> cells) {
    m_cells += cells.size();
    for (const PackedCell cell : cells) {
        if (const std::uint32_t number = numberOf(cell); number != 0 && !m_isKept[number]) {
            m_isKept[number] = true;
            ++m_kept;
        }
    }
}

bool CellArena::Releasing::changes(std::span<const PackedCell> cells) {
    m_cells += cells.size();
    return std::ranges::any_of(cells, [this](PackedCell cell) {
        const std::uint32_t number = numberOf(cell);
        return number != 0 && !m_isKept[number];
    });
}

void CellArena::Releasing::release(std::span<PackedCell> cells) const {
    for (PackedCell& cell : cells) {
        const std::uint32_t number = numberOf(cell);
        if (number == 0 || m_isKept[number]) {
            continue;
        }
        if (m_what == Numbered::links) {
            cell.rawValue &= ~PackedCell::payloadMask;
        } else {
            const std::uint64_t rest = cell.rawValue & ~(PackedCell::contentMask | 3);
            // A part of an image would be another one without its marks.
            const char32_t first = m_arena.isPlaceholder(cell) ? U' ' : m_arena.grapheme(number).front();
            cell = PackedCell::make(PackedCell::Kind::scalar, first, rest);
        }
    }
}

} // namespace term
