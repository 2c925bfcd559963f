#include "TermEngine/RectangleMemory.h"

#include <algorithm>

namespace term {
namespace {

/// What says how an empty cell looks: the content of one with a colour of its own is that colour.
constexpr std::uint64_t ofBlanks = PackedCell::attributeMask | PackedCell::contentMask | 3;

/// The used cells in the columns; all behind them are blank.
std::span<const PackedCell> usedIn(const BufferLine& line, ColumnRange columns) {
    const auto used = line.usedCells();
    const std::size_t end = std::min(used.size(), static_cast<std::size_t>(columns.end));
    const std::size_t first = std::min(end, static_cast<std::size_t>(columns.first));
    return used.subspan(first, end - first);
}

/// How many columns are summed up together for questions about parts of a row.
constexpr std::size_t blockColumns = 16;

/// The attribute's words: those of a cell's number, but for the background of a cell that is empty.
PackedAttributeKey keyOf(const CellArena& arena, PackedCell cell) {
    const std::uint64_t isBlank = cell.rawValue >> 1 & 1;
    const std::uint64_t ofBackground = (std::uint64_t{0} - isBlank) << 32;
    // The kinds of empty cells are in the order of the kinds of colours.
    const std::uint64_t background = (cell.rawValue & 1) << 24 | cell.content();
    const PackedAttributeKey& key = arena.keyOf(cell.attributeId());
    return {(key.word0 & ~ofBackground) | (background << 32 & ofBackground), key.word1};
}

/// How many cells are looked at together.
constexpr std::size_t cellsAtOnce = 32;

/// Whether all have text and the attribute of the cell `before`. Written so that it takes several cells at once,
/// without compares: a sum goes beyond the mask where there is text.
template <std::size_t extent>
bool isTextLike(std::uint64_t before, std::span<PackedCell, extent> cells) {
    constexpr std::uint64_t text = PackedCell::contentMask | 3;
    std::uint64_t others = 0;
    std::uint64_t kinds = 0;
    std::uint64_t texts = ~std::uint64_t{0};
    for (std::size_t i = 0; i < cells.size(); ++i) {
        others |= cells[i].rawValue ^ before;
        kinds |= cells[i].rawValue;
        texts &= (cells[i].rawValue & text) + text;
    }
    return (others & PackedCell::attributeMask) == 0 && (kinds & 2) == 0 && (texts & (text + 1)) != 0;
}

PackedCell withIdentifier(PackedCell cell, std::uint16_t attribute) {
    return PackedCell(
        (cell.rawValue & ~PackedCell::attributeMask) | std::uint64_t{attribute} << PackedCell::attributeShift);
}

} // namespace

std::uint32_t RectangleMemory::sumOfCells(const CellArena& arena, std::span<const PackedCell> cells) {
    TextSum sum = m_ops.sumScalars(reinterpret_cast<const std::uint64_t*>(cells.data()), cells.size());
    m_steps += cells.size() / 4;
    for (auto cell = cells.begin(); sum.clusters > 0; ++cell) {
        if (cell->kind() == PackedCell::Kind::cluster) {
            --sum.clusters;
            const std::u32string& scalars = arena.grapheme(cell->content());
            m_steps += 4 + scalars.size();
            for (const char32_t scalar : scalars) {
                sum.scalars += scalar;
            }
        }
    }
    return sum.scalars;
}

std::uint32_t RectangleMemory::sumOf(const CellArena& arena, int row, const BufferLine& line, ColumnRange columns) {
    if (const std::uint32_t* const sum = m_sums.find(line, columns)) {
        return *sum;
    }
    if (!m_sums.knows(line)) {
        return m_sums.keep(row, line, columns, sumOfCells(arena, usedIn(line, columns)));
    }
    // The same cells in other columns: there may come more of them.
    const std::span<const PackedCell> used = line.usedCells();
    const std::vector<std::uint32_t>* before = m_sumsBefore.find(line, {});
    if (before == nullptr) {
        std::vector<std::uint32_t> sums(used.size() / blockColumns + 1);
        for (std::size_t i = 0; i + 1 < sums.size(); ++i) {
            sums[i + 1] = sums[i] + sumOfCells(arena, used.subspan(i * blockColumns, blockColumns));
        }
        before = &m_sumsBefore.keep(row, line, {}, std::move(sums));
    }
    const auto until = [&](int column) {
        const std::size_t end = std::min(static_cast<std::size_t>(column), used.size());
        const std::size_t begin = end / blockColumns;
        return (*before)[begin] + sumOfCells(arena, used.first(end).subspan(begin * blockColumns));
    };
    return until(columns.end) - until(columns.first);
}

void RectangleMemory::addCells(CommonAttribute& common, const CellArena& arena, std::span<const PackedCell> cells) {
    m_steps += cells.size() / 4 + common.add(arena, cells);
}

CommonAttribute RectangleMemory::commonOf(
    const CellArena& arena, int row, const BufferLine& line, ColumnRange columns) {
    if (const CommonAttribute* const common = m_common.find(line, columns)) {
        return *common;
    }
    const std::span<const PackedCell> used = line.usedCells();
    CommonAttribute common;
    if (columns.end > line.usedLength()) {
        addCells(common, arena, std::array{line.tailBlankCell()});
    }
    if (!m_common.knows(line)) {
        addCells(common, arena, usedIn(line, columns));
        return m_common.keep(row, line, columns, common);
    }
    // The same cells in other columns: there may come more of them.
    const std::vector<CommonAttribute>* blocks = m_commonBlocks.find(line, {});
    if (blocks == nullptr) {
        std::vector<CommonAttribute> made(used.size() / blockColumns);
        for (std::size_t i = 0; i < made.size(); ++i) {
            addCells(made[i], arena, used.subspan(i * blockColumns, blockColumns));
        }
        blocks = &m_commonBlocks.keep(row, line, {}, std::move(made));
    }
    const std::size_t end = std::min(used.size(), static_cast<std::size_t>(columns.end));
    for (auto at = static_cast<std::size_t>(columns.first); at < end;) {
        const bool isBlock = at % blockColumns == 0 && at + blockColumns <= end;
        if (isBlock) {
            common.add((*blocks)[at / blockColumns]);
        } else {
            addCells(common, arena, used.subspan(at, 1));
        }
        at += isBlock ? blockColumns : 1;
    }
    return common;
}

AttributeChange& RectangleMemory::change(CellArena& arena, const AttributeChange::Kind& kind) {
    constexpr std::size_t mostChanges = 4;
    const auto found = std::ranges::find(m_changes, kind, &AttributeChange::kind);
    if (found != m_changes.end()) {
        std::rotate(found, found + 1, m_changes.end());
    } else {
        if (m_changes.size() == mostChanges) {
            m_changes.erase(m_changes.begin());
        }
        m_changes.emplace_back(arena, kind);
    }
    return m_changes.back();
}

void CommonAttribute::add(const CommonAttribute& other) {
    if (m_isEmpty || other.m_isEmpty) {
        *this = m_isEmpty ? other : *this;
        return;
    }
    m_differences.word0 |= other.m_differences.word0 | (m_first.word0 ^ other.m_first.word0);
    m_differences.word1 |= other.m_differences.word1 | (m_first.word1 ^ other.m_first.word1);
}

std::size_t CommonAttribute::add(const CellArena& arena, std::span<const PackedCell> cells) {
    if (cells.empty()) {
        return 0;
    }
    add(CommonAttribute(keyOf(arena, cells.front())));
    std::uint64_t last = cells.front().rawValue;
    std::size_t looks = 0;
    while (!cells.empty()) {
        const std::span<const PackedCell> some = cells.first(std::min(cells.size(), cellsAtOnce));
        cells = cells.subspan(some.size());
        std::uint64_t others = 0;
        std::uint64_t kinds = last;
        for (const PackedCell cell : some) {
            others |= cell.rawValue ^ last;
            kinds |= cell.rawValue;
        }
        // Of text only its attribute counts, of cells that are empty their colour too.
        if ((others & ((kinds & 2) == 0 ? PackedCell::attributeMask : ofBlanks)) == 0) {
            continue;
        }
        PackedAttributeKey differences{0, 0};
        for (const PackedCell cell : some) {
            const PackedAttributeKey key = keyOf(arena, cell);
            differences.word0 |= key.word0 ^ m_first.word0;
            differences.word1 |= key.word1 ^ m_first.word1;
        }
        m_differences.word0 |= differences.word0;
        m_differences.word1 |= differences.word1;
        last = some.back().rawValue;
        looks += some.size();
    }
    return looks;
}

Attribute CommonAttribute::attribute() const {
    Attribute common = Attribute::unpacked(m_first);
    const Attribute different = [this] {
        Attribute all;
        all.style = CharacterStyle(static_cast<std::uint8_t>(m_differences.word1));
        return all;
    }();
    common.fg = static_cast<std::uint32_t>(m_differences.word0) == 0 ? common.fg : Color();
    common.bg = static_cast<std::uint32_t>(m_differences.word0 >> 32) == 0 ? common.bg : Color();
    common.style = CharacterStyle(static_cast<std::uint8_t>(common.style.raw() & ~different.style.raw()));
    if ((m_differences.word1 >> 8 & 0xFF) != 0) {
        common.underlineStyle = common.style.has(StyleBit::underline) ? UnderlineStyle::single : UnderlineStyle::none;
    }
    if (static_cast<std::uint32_t>(m_differences.word1 >> 16) != 0) {
        common.underlineColor.reset();
    }
    common.overline = common.overline && (m_differences.word1 >> 48) == 0;
    return common;
}

Attribute AttributeChange::changed(Attribute attribute) const {
    if (m_kind.reversed == 0) {
        return Attribute::unpacked(m_kind.patch.applied(attribute.packed()));
    }
    attribute.style = CharacterStyle(attribute.style.raw() ^ m_kind.reversed);
    if (CharacterStyle(m_kind.reversed).has(StyleBit::underline)) {
        attribute.underlineStyle =
            attribute.style.has(StyleBit::underline) ? UnderlineStyle::single : UnderlineStyle::none;
    }
    return attribute;
}

/// A sweep takes identifiers back that no cell has any more.
void AttributeChange::forgetSwept() {
    if (m_sweeps != m_arena->sweepCount()) {
        m_identifiers.clear();
        m_blanks.fill({});
        m_sweeps = m_arena->sweepCount();
    }
}

/// That of the changed attribute of a cell with text.
std::uint16_t AttributeChange::identifierOf(PackedCell cell) {
    const std::size_t before = cell.attributeId();
    forgetSwept();
    if (before < m_identifiers.size() && m_identifiers[before] >= 0) {
        return static_cast<std::uint16_t>(m_identifiers[before]);
    }
    m_steps += stepsOfLookup;
    const std::uint16_t after = m_arena->intern(changed(m_arena->attributeOf(cell)));
    if (m_sweeps == m_arena->sweepCount()) {
        m_identifiers.resize(std::max(m_identifiers.size(), before + 1), -1);
        m_identifiers[before] = after;
    }
    return after;
}

/// Those at the front, in blocks, that have text and the same attribute; how many.
std::size_t AttributeChange::changeRun(std::span<PackedCell> cells) {
    const std::uint64_t before = cells.front().rawValue;
    if (cells.size() < 2 || ((cells[1].rawValue ^ before) & PackedCell::attributeMask) != 0) {
        return 0;
    }
    const std::uint64_t change =
        (before ^ std::uint64_t{identifierOf(cells.front())} << PackedCell::attributeShift) & PackedCell::attributeMask;
    const auto changeAll = [=](auto some) {
        if (!isTextLike(before, some)) {
            return false;
        }
        for (std::size_t i = 0; i < some.size(); ++i) {
            some[i].rawValue ^= change;
        }
        return true;
    };
    std::span<PackedCell> left = cells;
    while (left.size() >= cellsAtOnce && changeAll(left.first<cellsAtOnce>())) {
        left = left.subspan(cellsAtOnce);
    }
    if (left.size() < cellsAtOnce && changeAll(left)) {
        left = {};
    }
    return cells.size() - left.size();
}

std::size_t AttributeChange::placeOf(PackedCell blank) {
    return (blank.rawValue & ofBlanks) * 0x9E3779B97F4A7C15U >> 58U;
}

/// Those at the front, at most a block, of which it is known what becomes of them.
std::size_t AttributeChange::changeKnown(std::span<PackedCell> cells) {
    forgetSwept();
    std::size_t count = 0;
    for (PackedCell& cell : cells.first(std::min(cells.size(), cellsAtOnce))) {
        if (cell.isEmpty()) {
            const Blank& blank = m_blanks[placeOf(cell)];
            if (blank.before != (cell.rawValue & ofBlanks)) {
                break;
            }
            cell.rawValue ^= blank.before ^ blank.after;
        } else {
            const std::size_t before = cell.attributeId();
            if (before >= m_identifiers.size() || m_identifiers[before] < 0) {
                break;
            }
            cell = withIdentifier(cell, static_cast<std::uint16_t>(m_identifiers[before]));
        }
        ++count;
    }
    m_steps += count;
    return count;
}

PackedCell AttributeChange::changedBlank(PackedCell blank) {
    const std::uint64_t before = blank.rawValue & ofBlanks;
    Blank& known = m_blanks[placeOf(blank)];
    forgetSwept();
    if (known.before == before) {
        return PackedCell(blank.rawValue ^ before ^ known.after);
    }
    m_steps += stepsOfLookup;
    const PackedCell after = m_arena->withAttribute(blank, changed(m_arena->attributeOf(blank)));
    if (m_sweeps == m_arena->sweepCount()) {
        known = {before, after.rawValue & ofBlanks};
    }
    return after;
}

/// Those at the front that are empty in the same way.
std::size_t AttributeChange::changeBlanks(std::span<PackedCell> cells) {
    const std::uint64_t before = cells.front().rawValue;
    const std::uint64_t change = (before ^ changedBlank(cells.front()).rawValue) & ofBlanks;
    std::size_t count = 0;
    while (count < cells.size() && ((cells[count].rawValue ^ before) & ofBlanks) == 0) {
        cells[count++].rawValue ^= change;
    }
    m_steps += count + 1;
    return count;
}

void AttributeChange::change(std::span<PackedCell> cells) {
    while (!cells.empty()) {
        PackedCell& first = cells.front();
        const bool isRun = cells.size() > 1 && ((first.rawValue ^ cells[1].rawValue) & ofBlanks) == 0;
        std::size_t count = !first.isEmpty() ? changeRun(cells) : isRun ? changeBlanks(cells) : 0;
        count = count == 0 ? changeKnown(cells) : count;
        if (count == 0) {
            first = first.isEmpty() ? changedBlank(first) : withIdentifier(first, identifierOf(first));
            count = 1;
        }
        cells = cells.subspan(count);
    }
}

} // namespace term
