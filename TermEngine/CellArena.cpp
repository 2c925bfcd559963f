#include "TermEngine/CellArena.h"

#include <algorithm>
#include <array>
#include <utility>

namespace term {
namespace {

/// Apart from the bits that choose the slot.
std::uint16_t tagOf(std::uint64_t hash) {
    return static_cast<std::uint16_t>(hash >> 28);
}

} // namespace

CellArena::CellArena() : m_attributeIdentifiers(std::size_t{1} << initialSlotBits) {
    m_attributes.add({});
}

CellArena::CellArena(Snapshot /*unused*/, const CellArena& arena)
    : m_attributes(arena.m_attributes),
      m_attributeCount(arena.m_attributeCount),
      m_graphemes(arena.m_graphemes.readable()),
      m_links(arena.m_links.readable()) {}

std::shared_ptr<const CellArena> CellArena::snapshotOf(
    const CellArena& arena, std::shared_ptr<const CellArena> before) {
    if (before && arena.preservesEncoding(*before)) {
        return before;
    }
    return std::shared_ptr<const CellArena>(new CellArena(Snapshot(), arena));
}

bool CellArena::preservesEncoding(const CellArena& snapshot) const {
    return m_attributes.hasBlocksOf(snapshot.m_attributes) && m_graphemes.hasValuesOf(snapshot.m_graphemes) &&
           m_links.hasValuesOf(snapshot.m_links);
}

std::size_t CellArena::slotOf(PackedAttributeKey key, std::uint64_t hash) const {
    const std::size_t mask = m_attributeIdentifiers.size() - 1;
    std::size_t slot = firstSlotOf(hash);
    while (m_attributeIdentifiers[slot].id != 0 &&
           (m_attributeIdentifiers[slot].tag != tagOf(hash) || m_attributes[m_attributeIdentifiers[slot].id] != key)) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

/// It is not among them yet.
void CellArena::addToSlots(std::uint16_t id) {
    const std::uint64_t hash = hashOf(m_attributes[id]);
    const std::size_t mask = m_attributeIdentifiers.size() - 1;
    std::size_t slot = firstSlotOf(hash);
    while (m_attributeIdentifiers[slot].id != 0) {
        slot = (slot + 1) & mask;
    }
    m_attributeIdentifiers[slot] = {id, tagOf(hash)};
}

void CellArena::growSlots() {
    const std::vector<Slot> old =
        std::exchange(m_attributeIdentifiers, std::vector<Slot>(m_attributeIdentifiers.size() * 2));
    --m_slotShift;
    for (const Slot slot : old) {
        if (slot.id != 0) {
            addToSlots(slot.id);
        }
    }
}

std::uint16_t CellArena::internOther(PackedAttributeKey key) {
    if (key == m_attributeCache.key) {
        return m_attributeCache.id;
    }
    const std::uint64_t hash = hashOf(key);
    const std::size_t slot = slotOf(key, hash);
    std::uint16_t id = m_attributeIdentifiers[slot].id;
    if (id == 0) {
        id = addAttribute(key, hash, slot);
        if (id == 0) {
            return 0;
        }
    }
    m_attributeCache = {key, id};
    return id;
}

/// 0: none.
std::uint16_t CellArena::known(const PackedAttributeKey& key) const {
    return m_attributeIdentifiers[slotOf(key, hashOf(key))].id;
}

/// `slot` is the free one where it belongs; 0 when there is no room.
std::uint16_t CellArena::addAttribute(PackedAttributeKey key, std::uint64_t hash, std::size_t slot) {
    bool isRebuilt = sweepWhenDue(isFullOfAttributes() ? Room::none : Room::some);
    if (isFullOfAttributes()) {
        isRebuilt = coarsenWhenDue() || isRebuilt;
    }
    if (isFullOfAttributes()) {
        return 0;
    }
    std::uint16_t id = 0;
    if (m_freeAttributes.empty()) {
        id = static_cast<std::uint16_t>(m_attributes.size());
        m_attributes.add(key);
    } else {
        id = m_freeAttributes.back();
        m_freeAttributes.pop_back();
        m_attributes.replace(id, key);
    }
    ++m_attributeCount;
    if (m_attributeCount * 4 > m_attributeIdentifiers.size()) {
        growSlots();
        addToSlots(id);
    } else if (isRebuilt) {
        addToSlots(id);
    } else {
        m_attributeIdentifiers[slot] = {id, tagOf(hash)};
    }
    return id;
}

std::uint32_t CellArena::intern(std::u32string_view scalars) {
    scalars = scalars.substr(0, maximumClusterScalars);
    std::uint32_t hash = 0;
    for (const char32_t scalar : scalars) {
        hash = (hash ^ scalar) * 0x9E3779B1U;
    }
    std::uint32_t& recent = m_recentGraphemes[hash >> (32 - recentGraphemeBits)];
    // A number that was given back belongs to no cluster, or to another one.
    if (recent == 0 || m_graphemes[recent] != scalars) {
        sweepWhenDue(m_graphemes.isFull() ? Room::none : Room::some);
        const std::u32string cluster(scalars);
        std::optional<std::uint32_t> number = m_graphemes.intern(cluster);
        if (!number && releaseWhenDue(Numbered::clusters)) {
            number = m_graphemes.intern(cluster);
        }
        recent = number.value_or(0);
    }
    return recent;
}

TinyAtom CellArena::internLink(const std::string& link) {
    sweepWhenDue(m_links.isFull() ? Room::none : Room::some);
    std::optional<std::uint32_t> number = m_links.intern(link);
    if (!number && releaseWhenDue(Numbered::links)) {
        number = m_links.intern(link);
    }
    return static_cast<TinyAtom>(number.value_or(0));
}

bool CellArena::sweepWhenDue(Room room) {
    ++m_newSinceSweep;
    if (m_newSinceSweep < (room == Room::none ? m_earliestSweep : m_nextSweep) || !m_roots) {
        return false;
    }
    sweep();
    return true;
}

void CellArena::sweep() {
    Marker marker(*this);
    m_roots(marker);
    m_graphemes.keepOnly(marker.m_graphemes);
    m_links.keepOnly(marker.m_links);
    keepAttributes(marker.m_attributes);
    for (std::size_t id = 0; id < m_coarse.size(); ++id) {
        m_coarse[id] &= marker.m_attributes[id];
    }
    m_newSinceSweep = 0;
    // Cells are looked at fast; to look at a cluster or a link costs more.
    m_nextSweep = std::max(leastBetweenSweeps, marker.m_cells / 4 + m_graphemes.size() + m_links.size());
    m_earliestSweep = std::max<std::size_t>(1024, marker.m_cells / 16);
}

/// Not 0: used. All others are free from now on.
void CellArena::keepAttributes(const std::vector<std::uint8_t>& used) {
    // Each goes to both lists and stays in one: no branch on which, that nobody can foretell.
    std::vector<std::uint16_t> kept(m_attributes.size());
    m_freeAttributes.resize(m_attributes.size());
    std::size_t freeCount = 0;
    m_attributeCount = 0;
    for (std::size_t id = m_attributes.size() - 1; id > 0; --id) {
        kept[m_attributeCount] = static_cast<std::uint16_t>(id);
        m_freeAttributes[freeCount] = static_cast<std::uint16_t>(id);
        m_attributeCount += used[id] != 0 ? 1 : 0;
        freeCount += used[id] != 0 ? 0 : 1;
    }
    m_freeAttributes.resize(freeCount);
    std::ranges::fill(m_attributeIdentifiers, Slot{});
    for (const std::uint16_t id : std::span(kept).first(m_attributeCount)) {
        addToSlots(id);
    }
    m_attributeCache = {};
    ++m_sweepCount;
}

CellArena::Marker::Marker(const CellArena& arena)
    : m_attributes(arena.m_attributes.size()),
      m_graphemes(arena.m_graphemes.highestNumber() + 1),
      m_links(arena.m_links.highestNumber() + 1) {}

void CellArena::Marker::mark(std::span<const PackedCell> cells) {
    m_cells += cells.size();
    for (const PackedCell cell : cells) {
        m_attributes[cell.attributeId()] = 1;
        if ((cell.rawValue & (PackedCell::payloadMask | 3)) == 0) [[likely]] {
            continue;
        }
        if (cell.kind() == PackedCell::Kind::cluster) {
            m_graphemes[cell.content()] = true;
        }
        if (cell.payload() != 0) {
            m_links[cell.payload()] = true;
        }
    }
}

PackedCell CellArena::blankOfInverted(Color background) {
    Attribute blank;
    blank.bg = background;
    return PackedCell(std::uint64_t{intern(blank)} << PackedCell::attributeShift);
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
        const std::uint32_t id = intern(cell.graphemeScalarValues);
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
        made.graphemeScalarValues = grapheme(cell.content());
        made.code = static_cast<std::int32_t>(made.graphemeScalarValues.front());
    }
    made.widthStateCode = cell.widthState();
    made.width = static_cast<std::int8_t>(cell.isWide() ? 2 : cell.isSpacer() ? 0 : 1);
    made.payload = cell.payload();
    made.semanticContentCode = static_cast<SemanticContent>(cell.semanticCode());
    made.isProtected = cell.isProtected();
    made.attribute = attributeOf(cell);
    return made;
}

std::u32string_view CellArena::scalarValues(PackedCell cell, char32_t& memory) const {
    if (cell.kind() == PackedCell::Kind::cluster) {
        return grapheme(cell.content());
    }
    memory = cell.kind() == PackedCell::Kind::scalar ? cell.content() : 0;
    return {&memory, memory == 0 ? 0U : 1U};
}

void CellArena::appendText(std::string& utf8, PackedCell cell) const {
    if (cell.kind() == PackedCell::Kind::scalar) {
        unicode::appendUtf8(utf8, cell.content() == 0 ? U' ' : static_cast<char32_t>(cell.content()));
    } else if (cell.kind() == PackedCell::Kind::cluster) {
        for (const char32_t scalar : grapheme(cell.content())) {
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

PackedCell CellArena::replacingContent(PackedCell cell, std::u32string_view scalars) {
    // What an empty cell has as its content is its background.
    const std::uint64_t attribute = cell.kind() == PackedCell::Kind::scalar || cell.kind() == PackedCell::Kind::cluster
                                        ? cell.rawValue & PackedCell::attributeMask
                                        : std::uint64_t{intern(attributeOf(cell))} << PackedCell::attributeShift;
    const std::uint64_t rest = (cell.rawValue & ~(PackedCell::contentMask | PackedCell::attributeMask | 3)) | attribute;
    if (scalars.empty()) {
        return withAttribute(PackedCell(rest), attributeOf(PackedCell(rest)));
    }
    if (const std::uint32_t id = scalars.size() > 1 ? intern(scalars) : 0; id != 0) {
        return PackedCell::make(PackedCell::Kind::cluster, id, rest);
    }
    return PackedCell::make(PackedCell::Kind::scalar, scalars.front(), rest);
}

PackedCell CellArena::adopt(PackedCell cell, const CellArena& from) {
    std::uint64_t raw = cell.rawValue;
    if (cell.kind() == PackedCell::Kind::cluster) {
        raw = replacingContent(cell, from.grapheme(cell.content())).rawValue;
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
