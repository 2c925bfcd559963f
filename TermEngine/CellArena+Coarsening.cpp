#include "TermEngine/CellArena.h"

#include <algorithm>
#include <utility>

namespace term {
namespace {

/// The colour of so many steps for red, green and blue each that is nearest; only true colours change.
std::uint32_t coarseColor(std::uint32_t raw, std::uint32_t steps) {
    const Color color = Color::fromRaw(raw);
    if (color.kind() != Color::Kind::trueColor) {
        return raw;
    }
    const auto channel = [&](int shift) {
        const std::uint32_t value = color.value() >> shift & 0xFF;
        return static_cast<std::uint8_t>((value * (steps - 1) + 127) / 255 * 255 / (steps - 1));
    };
    return Color::rgb(channel(16), channel(8), channel(0)).raw();
}

PackedAttributeKey coarseKey(const PackedAttributeKey& key, std::uint32_t steps) {
    constexpr int underlineShift = 16;
    const auto at = [steps](std::uint64_t word, int shift) {
        return std::uint64_t{coarseColor(static_cast<std::uint32_t>(word >> shift), steps)} << shift;
    };
    const std::uint64_t rest = key.word1 & ~(std::uint64_t{0xFFFFFFFF} << underlineShift);
    return {at(key.word0, 0) | at(key.word0, 32), at(key.word1, underlineShift) | rest};
}

} // namespace

bool CellArena::coarsenWhenDue() {
    ++m_newSinceCoarsening;
    if (m_newSinceCoarsening < m_earliestCoarsening || !m_coarsening) {
        return false;
    }
    Coarsening coarsening(*this);
    m_coarsening(coarsening);
    std::vector<std::uint8_t>& used = coarsening.m_isKept;
    for (std::size_t id = 0; id < used.size(); ++id) {
        used[id] |= m_coarse[id];
    }
    keepAttributes(used);
    m_newSinceCoarsening = 0;
    // Where the screens need nearly all of them, there may be as little to gain the next time.
    const bool isPlenty = m_freeAttributes.size() > attributeCapacity / 8;
    m_earliestCoarsening = isPlenty ? 0 : std::max<std::size_t>(1024, coarsening.m_cells / 16);
    return true;
}

CellArena::Coarsening::Coarsening(CellArena& arena)
    : m_arena(arena),
      m_isKept(arena.m_attributes.size()),
      m_isReplaced(arena.m_attributes.size()),
      m_substitutes(arena.m_attributes.size(), unknown) {
    m_arena.m_coarse.resize(m_arena.m_attributes.size());
    m_arena.m_coarse[0] = 1; // the default attribute
    for (std::size_t id = 0; id < m_substitutes.size(); ++id) {
        if (m_arena.m_coarse[id] != 0) {
            m_substitutes[id] = static_cast<std::int32_t>(id);
            ++m_coarseCount;
        }
    }
}

void CellArena::Coarsening::keep(std::span<const PackedCell> cells) {
    m_cells += cells.size();
    for (const PackedCell cell : cells) {
        const std::uint16_t id = cell.attributeId();
        m_kept += (m_isKept[id] | m_arena.m_coarse[id]) == 0 ? 1 : 0;
        m_isKept[id] = 1;
    }
}

void CellArena::Coarsening::keepPlaceholders(std::span<const PackedCell> cells) {
    for (const PackedCell cell : cells) {
        if (m_arena.isPlaceholder(cell)) [[unlikely]] {
            (void)takesIn(cell.attributeId(), mostOfPlaceholders);
        }
    }
}

bool CellArena::Coarsening::changes(std::span<const PackedCell> cells) {
    m_cells += cells.size();
    int changed = 0;
    for (const PackedCell cell : cells) {
        const std::uint16_t id = cell.attributeId();
        // Also of those that stay as they are: they are in use then.
        changed += substituteOf(id) != id || m_isReplaced[id] != 0 ? 1 : 0;
    }
    return changed > 0;
}

void CellArena::Coarsening::coarsen(std::span<PackedCell> cells) {
    for (PackedCell& cell : cells) {
        const std::uint16_t before = cell.attributeId();
        const std::uint16_t after = substituteOf(before);
        std::uint64_t rest = cell.rawValue & ~PackedCell::attributeMask;
        if ((after != before || m_isReplaced[before] != 0) && m_arena.isPlaceholder(cell)) [[unlikely]] {
            // It would show a part of another image.
            rest = PackedCell::make(PackedCell::Kind::scalar, U' ', rest & ~(PackedCell::contentMask | 3)).rawValue;
        }
        cell = PackedCell(rest | std::uint64_t{after} << PackedCell::attributeShift);
    }
}

std::uint16_t CellArena::Coarsening::substituteOf(std::uint16_t id) {
    if (m_substitutes[id] == unknown) {
        m_substitutes[id] = findSubstitute(id);
    }
    return static_cast<std::uint16_t>(m_substitutes[id]);
}

/// An attribute in use, or this one made into another: nothing is free now.
std::uint16_t CellArena::Coarsening::findSubstitute(std::uint16_t id) {
    // What has few steps is among the colours of more.
    for (const auto& [steps, limit] : {std::pair(5U, mostFine), std::pair(3U, mostCoarse)}) {
        const PackedAttributeKey key = coarseKey(m_arena.m_attributes[id], steps);
        if (key == PackedAttributeKey{}) {
            return 0;
        }
        const std::uint16_t found = m_arena.known(key);
        if (found != 0) {
            if (takesIn(found, limit)) {
                return found;
            }
        } else if (takesIn(id, limit)) {
            if (m_isKept[id] == 0) {
                m_isReplaced[id] = 1;
                m_arena.m_attributes.replace(id, key);
                m_arena.addToSlots(id);
            }
            return id;
        }
    }
    return 0;
}

bool CellArena::Coarsening::takesIn(std::uint16_t id, std::size_t limit) {
    if (m_arena.m_coarse[id] == 0) {
        if (m_coarseCount >= limit) {
            return false;
        }
        m_arena.m_coarse[id] = 1;
        m_substitutes[id] = id;
        ++m_coarseCount;
    }
    return true;
}

} // namespace term
