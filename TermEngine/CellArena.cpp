#include "TermEngine/CellArena.h"

#include <algorithm>
#include <utility>

namespace term {
namespace {

std::size_t hashOf(const PackedAttributeKey& key) {
    std::uint64_t hash = (key.word0 ^ (key.word1 * 0x9E3779B97F4A7C15ULL)) * 0xD6E8FEB86659FD93ULL;
    hash ^= hash >> 32;
    return static_cast<std::size_t>(hash * 0xD6E8FEB86659FD93ULL >> 16);
}

const PackedAttributeKey& defaultKey() {
    static const PackedAttributeKey key = Attribute{}.packed();
    return key;
}

} // namespace

CellArena::CellArena() : m_attributes{defaultKey()}, m_slots(256), m_lastKey(defaultKey()) {}

std::shared_ptr<const CellArena> CellArena::snapshot() const {
    std::shared_ptr<CellArena> copy(new CellArena(*this));
    copy->m_roots = nullptr;
    return copy;
}

std::size_t CellArena::slotOf(const PackedAttributeKey& key) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hashOf(key) & mask;
    while (m_slots[slot] != 0 && m_attributes[m_slots[slot]] != key) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

void CellArena::addToSlots(std::uint16_t id) {
    m_slots[slotOf(m_attributes[id])] = id;
}

void CellArena::growSlots() {
    const std::vector<std::uint16_t> old = std::exchange(m_slots, std::vector<std::uint16_t>(m_slots.size() * 2));
    for (const std::uint16_t id : old) {
        if (id != 0) {
            addToSlots(id);
        }
    }
}

std::uint16_t CellArena::intern(const Attribute& attribute) {
    const PackedAttributeKey key = attribute.packed();
    if (key == m_lastKey) {
        return m_lastId;
    }
    if (key == defaultKey()) {
        m_lastKey = key;
        m_lastId = 0;
        return 0;
    }
    std::size_t slot = slotOf(key);
    if (m_slots[slot] == 0) {
        const auto isFull = [this] { return m_freeAttributes.empty() && m_attributes.size() > attributeCapacity; };
        sweepWhenDue(isFull() ? Room::none : Room::some);
        if (isFull()) {
            return 0;
        }
        std::uint16_t id = 0;
        if (m_freeAttributes.empty()) {
            id = static_cast<std::uint16_t>(m_attributes.size());
            m_attributes.push_back(key);
        } else {
            id = m_freeAttributes.back();
            m_freeAttributes.pop_back();
            m_attributes[id] = key;
        }
        ++m_attributeCount;
        if (m_attributeCount * 2 > m_slots.size()) {
            growSlots();
        }
        slot = slotOf(key);
        m_slots[slot] = id;
    }
    m_lastKey = key;
    m_lastId = m_slots[slot];
    return m_lastId;
}

std::uint32_t CellArena::internCluster(std::u32string_view scalars) {
    sweepWhenDue(m_clusters.isFull() ? Room::none : Room::some);
    return m_clusters.intern(std::u32string(scalars.substr(0, maximumClusterScalars))).value_or(0);
}

TinyAtom CellArena::internLink(const std::string& link) {
    sweepWhenDue(m_links.isFull() ? Room::none : Room::some);
    return static_cast<TinyAtom>(m_links.intern(link).value_or(0));
}

void CellArena::sweepWhenDue(Room room) {
    ++m_changes;
    ++m_newSinceSweep;
    if (m_newSinceSweep >= (room == Room::none ? m_earliestSweep : m_nextSweep) && m_roots) {
        sweep();
    }
}

void CellArena::sweep() {
    Marker marker(*this);
    m_roots(marker);
    m_clusters.keepOnly(marker.m_clusters);
    m_links.keepOnly(marker.m_links);
    m_freeAttributes.clear();
    m_attributeCount = 0;
    std::ranges::fill(m_slots, std::uint16_t{0});
    for (std::size_t id = m_attributes.size() - 1; id > 0; --id) {
        if (marker.m_attributes[id]) {
            ++m_attributeCount;
            addToSlots(static_cast<std::uint16_t>(id));
        } else {
            m_freeAttributes.push_back(static_cast<std::uint16_t>(id));
        }
    }
    m_lastKey = defaultKey();
    m_lastId = 0;
    m_newSinceSweep = 0;
    m_nextSweep = std::max(leastBetweenSweeps, marker.m_cells);
    m_earliestSweep = std::max<std::size_t>(1024, marker.m_cells / 16);
}

CellArena::Marker::Marker(const CellArena& arena)
    : m_attributes(arena.m_attributes.size()),
      m_clusters(arena.m_clusters.highestNumber() + 1),
      m_links(arena.m_links.highestNumber() + 1) {}

void CellArena::Marker::mark(std::span<const PackedCell> cells) {
    m_cells += cells.size();
    std::uint16_t last = 0;
    for (const PackedCell cell : cells) {
        if (const std::uint16_t id = cell.attributeId(); id != last) {
            m_attributes[id] = true;
            last = id;
        }
        if (cell.kind() == PackedCell::Kind::cluster) {
            m_clusters[cell.content()] = true;
        }
        if (cell.payload() != 0) {
            m_links[cell.payload()] = true;
        }
    }
}

PackedCell CellArena::blank(const Attribute& attribute) {
    const Attribute background = attribute.background();
    if (attribute.bg.isDefault()) {
        return {};
    }
    if (attribute.bg.kind() == Color::Kind::ansi256) {
        return PackedCell::make(PackedCell::Kind::paletteBlank, attribute.bg.value());
    }
    if (attribute.bg.kind() == Color::Kind::trueColor) {
        return PackedCell::make(PackedCell::Kind::trueColorBlank, attribute.bg.value());
    }
    return PackedCell(std::uint64_t{intern(background)} << PackedCell::attributeShift);
}

Attribute CellArena::attributeOf(PackedCell cell) const {
    Attribute made = attribute(cell.attributeId());
    if (cell.kind() == PackedCell::Kind::paletteBlank) {
        made.bg = Color::palette(static_cast<std::uint8_t>(cell.content()));
    } else if (cell.kind() == PackedCell::Kind::trueColorBlank) {
        made.bg = Color::fromRaw(cell.content() | std::uint32_t{1} << 24);
    }
    return made;
}

std::optional<PackedCell> CellArena::pack(const CharData& cell) {
    const auto semantic = static_cast<std::uint64_t>(cell.semanticContentCode);
    if (semantic > 6) {
        return {};
    }
    WidthState width = cell.widthStateCode;
    if (width == WidthState::narrow && cell.width != 1) {
        width = cell.width == 2 ? WidthState::wide : WidthState::spacer;
    }
    const std::uint64_t rest = static_cast<std::uint64_t>(width) << PackedCell::widthShift |
                               std::uint64_t{cell.isProtected} << PackedCell::protectedShift |
                               std::uint64_t{cell.payload} << PackedCell::payloadShift |
                               semantic << PackedCell::semanticShift;
    if (cell.code == 0 && cell.graphemeScalarValues.empty() && cell.attribute == cell.attribute.background()) {
        return PackedCell(blank(cell.attribute).rawValue | rest);
    }
    const std::uint64_t pen = rest | std::uint64_t{intern(cell.attribute)} << PackedCell::attributeShift;
    if (cell.graphemeScalarValues.size() > 1) {
        if (!unicode::isScalar(cell.graphemeScalarValues.front())) {
            return PackedCell::make(PackedCell::Kind::scalar, unicode::replacement, pen);
        }
        const std::uint32_t id = internCluster(cell.graphemeScalarValues);
        return id == 0 ? PackedCell::make(PackedCell::Kind::scalar, cell.graphemeScalarValues.front(), pen)
                       : PackedCell::make(PackedCell::Kind::cluster, id, pen);
    }
    if (!unicode::isScalar(static_cast<char32_t>(cell.code))) {
        return {};
    }
    return PackedCell::make(PackedCell::Kind::scalar, static_cast<std::uint32_t>(cell.code), pen);
}

CharData CellArena::unpack(PackedCell cell) const {
    CharData made;
    if (cell.kind() == PackedCell::Kind::scalar) {
        made.code = static_cast<std::int32_t>(cell.content());
    } else if (cell.kind() == PackedCell::Kind::cluster) {
        made.graphemeScalarValues = cluster(cell.content());
        made.code = static_cast<std::int32_t>(made.graphemeScalarValues.front());
    }
    made.widthStateCode = cell.widthState();
    made.width = cell.isWide() ? 2 : cell.isSpacer() ? 0 : 1;
    made.payload = cell.payload();
    made.semanticContentCode = static_cast<SemanticContent>(cell.semanticCode());
    made.isProtected = cell.isProtected();
    made.attribute = attributeOf(cell);
    return made;
}

std::u32string_view CellArena::scalars(PackedCell cell, char32_t& memory) const {
    if (cell.kind() == PackedCell::Kind::cluster) {
        return cluster(cell.content());
    }
    memory = cell.kind() == PackedCell::Kind::scalar ? cell.content() : 0;
    return {&memory, memory == 0 ? 0U : 1U};
}

void CellArena::appendText(std::string& utf8, PackedCell cell) const {
    if (cell.kind() == PackedCell::Kind::scalar) {
        unicode::appendUtf8(utf8, cell.content() == 0 ? U' ' : static_cast<char32_t>(cell.content()));
    } else if (cell.kind() == PackedCell::Kind::cluster) {
        for (const char32_t scalar : cluster(cell.content())) {
            unicode::appendUtf8(utf8, scalar);
        }
    } else {
        utf8 += ' ';
    }
}

PackedCell CellArena::withAttribute(PackedCell cell, const Attribute& attribute) {
    std::uint64_t raw = cell.rawValue & ~PackedCell::attributeMask;
    if (cell.isEmpty()) {
        // An empty cell with more than a background is an empty scalar.
        raw &= ~(PackedCell::contentMask | 3);
        if (attribute == attribute.background()) {
            return PackedCell(raw | blank(attribute).rawValue);
        }
    }
    return PackedCell(raw | std::uint64_t{intern(attribute)} << PackedCell::attributeShift);
}

PackedCell CellArena::adopt(PackedCell cell, const CellArena& from) {
    std::uint64_t raw = cell.rawValue;
    if (cell.kind() == PackedCell::Kind::cluster) {
        const std::u32string& text = from.cluster(cell.content());
        const std::uint32_t id = internCluster(text);
        raw = (raw & ~(PackedCell::contentMask | 3)) |
              (id != 0 ? PackedCell::make(PackedCell::Kind::cluster, id)
                       : PackedCell::make(PackedCell::Kind::scalar, text.front()))
                  .rawValue;
    }
    if (cell.attributeId() != 0) {
        raw = (raw & ~PackedCell::attributeMask) | std::uint64_t{intern(from.attribute(cell.attributeId()))}
                                                       << PackedCell::attributeShift;
    }
    if (cell.payload() != 0) {
        raw = (raw & ~PackedCell::payloadMask) | std::uint64_t{internLink(from.link(cell.payload()))}
                                                     << PackedCell::payloadShift;
    }
    return PackedCell(raw);
}

} // namespace term
