#pragma once

#include "TermEngine/CellArena.h"
#include "TermEngine/RowMemo.h"
#include "TermEngine/VectorOps.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace term {

/// Columns of a row, the end excluded.
struct ColumnRange {
    int first = 0;
    int end = 0;
    bool operator==(const ColumnRange&) const = default;
};

/// What the attributes of cells have in common.
class CommonAttribute {
public:
    CommonAttribute() = default;
    void add(const CommonAttribute& other);
    /// How many cells were looked at one by one.
    std::size_t add(const CellArena& arena, std::span<const PackedCell> cells);
    /// The default one where there were no cells.
    [[nodiscard]] Attribute attribute() const;

private:
    explicit CommonAttribute(const PackedAttributeKey& key) : m_first(key), m_isEmpty(false) {}
    PackedAttributeKey m_first;
    PackedAttributeKey m_differences{0, 0}; ///< bits in which one differs from the first
    bool m_isEmpty = true;
};

/// A change of all attributes, DECCARA's or DECRARA's, with the identifiers that it has given so far.
class AttributeChange {
public:
    struct Kind {
        AttributePatch patch{};
        std::uint8_t reversed = 0; ///< styles that it turns round instead
        bool operator==(const Kind&) const = default;
    };
    AttributeChange(CellArena& arena, const Kind& kind) : m_arena(&arena), m_kind(kind) {}

    [[nodiscard]] const Kind& kind() const { return m_kind; }
    void change(std::span<PackedCell> cells);
    /// What it has cost since the last call: 1 for each cell that was changed by itself, and more where an attribute
    /// had to be looked for.
    [[nodiscard]] std::size_t takeSteps() { return std::exchange(m_steps, 0); }

private:
    static constexpr std::size_t stepsOfLookup = 48;
    [[nodiscard]] Attribute changed(Attribute attribute) const;
    [[nodiscard]] std::uint16_t identifierOf(PackedCell cell);
    [[nodiscard]] PackedCell changedBlank(PackedCell blank);
    [[nodiscard]] static std::size_t placeOf(PackedCell blank);
    void forgetSwept();
    std::size_t changeRun(std::span<PackedCell> cells);
    std::size_t changeKnown(std::span<PackedCell> cells);
    std::size_t changeBlanks(std::span<PackedCell> cells);

    CellArena* m_arena;
    Kind m_kind;
    std::size_t m_steps = 0;
    std::uint64_t m_sweeps = 0;              ///< of the arena, since which the identifiers are good
    std::vector<std::int32_t> m_identifiers; ///< by those before; negative: not known
    struct Blank {
        std::uint64_t before = ~std::uint64_t{0}; ///< no empty cell is that
        std::uint64_t after = 0;
    };
    std::array<Blank, 64> m_blanks; ///< empty cells that came of late, by what their attribute makes of them
};

/// What a terminal remembers of rectangles: programs ask about them and change them over and over, and a few bytes may
/// name the whole screen.
class RectangleMemory {
public:
    explicit RectangleMemory(const VectorOps& ops) : m_ops(ops) {}

    /// What the rectangles of one feed may cost, some 1 ns each. Changes that come afterwards do nothing, and questions
    /// have no answer: they had the whole of a large screen changed or looked at a thousand times, or dozens of times
    /// in ever new colours.
    static constexpr std::size_t mostSteps = std::size_t{48} << 20;
    void renewSteps() { m_steps = 0; }
    void addSteps(std::size_t count) { m_steps += count; }
    [[nodiscard]] bool hasSteps() const { return m_steps < mostSteps; }

    /// The sum of all scalars in the columns of a row.
    [[nodiscard]] std::uint32_t sumOf(const CellArena& arena, int row, const BufferLine& line, ColumnRange columns);
    /// Says what `sumOf` would find.
    void noteSum(int row, const BufferLine& line, ColumnRange columns, std::uint32_t sum) {
        m_sums.keep(row, line, columns, sum);
    }
    [[nodiscard]] CommonAttribute commonOf(
        const CellArena& arena, int row, const BufferLine& line, ColumnRange columns);
    /// The one that was used of late, or a new one.
    [[nodiscard]] AttributeChange& change(CellArena& arena, const AttributeChange::Kind& kind);

    using Filling = std::pair<ColumnRange, PackedCell>;
    /// Whether the row is as it was left by the same filling (`noteFilled`).
    [[nodiscard]] bool isFilled(const BufferLine& line, const Filling& filling) const {
        return m_fillings.find(line, filling) != nullptr;
    }
    void noteFilled(int row, const BufferLine& line, const Filling& filling) {
        m_fillings.keep(row, line, filling, {});
    }

    using Changing = std::pair<ColumnRange, AttributeChange::Kind>;
    /// The same of a change of attributes, which has to be one that changes nothing the second time.
    [[nodiscard]] bool isChanged(const BufferLine& line, const Changing& changing) const {
        return m_changings.find(line, changing) != nullptr;
    }
    void noteChanged(int row, const BufferLine& line, const Changing& changing) {
        m_changings.keep(row, line, changing, {});
    }

private:
    struct Nothing {
        bool operator==(const Nothing&) const = default;
    };
    [[nodiscard]] std::uint32_t sumOfCells(const CellArena& arena, std::span<const PackedCell> cells);
    void addCells(CommonAttribute& common, const CellArena& arena, std::span<const PackedCell> cells);

    const VectorOps& m_ops;
    std::size_t m_steps = 0;
    RowMemo<ColumnRange, std::uint32_t> m_sums;
    RowMemo<Nothing, std::vector<std::uint32_t>> m_sumsBefore; ///< of all cells before each block
    RowMemo<ColumnRange, CommonAttribute> m_common;
    RowMemo<Nothing, std::vector<CommonAttribute>> m_commonBlocks; ///< of all cells, a few columns each
    RowMemo<Changing, Nothing> m_changings;
    RowMemo<Filling, Nothing> m_fillings;
    std::vector<AttributeChange> m_changes; ///< the newest last
};

} // namespace term
