#pragma once

#include "TermEngine/PackedCell.h"
#include "TermEngine/SecretHash.h"
#include "TermEngine/SharedTable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace term {

/// Which line it is, wherever it stands (`BufferLine::renderIdentity`).
using RenderIdentity = std::uint64_t;

/// Values with numbers from 1 on; those that nothing uses any more give their numbers back.
template <typename Value>
class NumberedSet {
public:
    explicit NumberedSet(std::uint32_t limit) : m_limit(limit) {}
    /// For a snapshot: the values without the way to find them, so that none can be added.
    [[nodiscard]] NumberedSet readable() const { return NumberedSet(m_values); }
    [[nodiscard]] bool hasValuesOf(const NumberedSet& snapshot) const {
        return m_values.hasBlocksOf(snapshot.m_values);
    }

    /// Nothing when all numbers are taken.
    std::optional<std::uint32_t> intern(const Value& value) {
        if (const auto found = m_numbers.find(value); found != m_numbers.end()) {
            return found->second;
        }
        std::uint32_t number = 0;
        if (!m_free.empty()) {
            number = m_free.back();
            m_free.pop_back();
            m_values.replace(number - 1, value);
        } else if (m_values.size() < m_limit) {
            m_values.add(value);
            number = static_cast<std::uint32_t>(m_values.size());
        } else {
            return {};
        }
        m_numbers.emplace(value, number);
        return number;
    }
    /// The number must have been given, and not taken back.
    [[nodiscard]] const Value& operator[](std::uint32_t number) const { return m_values[number - 1]; }
    [[nodiscard]] std::size_t size() const { return m_numbers.size(); }
    [[nodiscard]] bool isFull() const { return m_free.empty() && m_values.size() == m_limit; }
    [[nodiscard]] std::size_t highestNumber() const { return m_values.size(); }
    void keepOnly(const std::vector<bool>& used) {
        std::erase_if(m_numbers, [&](const auto& entry) {
            if (used[entry.second]) {
                return false;
            }
            m_free.push_back(entry.second);
            m_values.replace(entry.second - 1, Value());
            return true;
        });
    }

private:
    explicit NumberedSet(const SharedTable<Value>& values) : m_limit(0), m_values(values) {}

    std::uint32_t m_limit;
    SharedTable<Value> m_values;
    std::unordered_map<Value, std::uint32_t, SecretHash> m_numbers;
    std::vector<std::uint32_t> m_free;
};

/// What cells refer to by number: attributes, clusters of several scalars, links. The buffers of a terminal share one.
///
/// Numbers that no cell uses any more are found by a sweep over all cells, which runs when as many values have come as
/// there are clusters, links and a quarter of the cells, or earlier when a table is full: its cost is a constant for
/// each new value, and the tables stay small enough for the processor's caches. Where all attributes are in use, the
/// oldest lines give theirs up for coarser ones (`Coarsening`); links and clusters are taken from them (`Releasing`).
class CellArena {
public:
    static constexpr std::size_t attributeCapacity = 0xFFFF;
    static constexpr std::uint32_t graphemeCapacity = 1U << 17;
    static constexpr std::uint32_t linkCapacity = 0xFFFF;
    static constexpr std::size_t maximumClusterScalars = 32;

    CellArena();
    CellArena& operator=(const CellArena&) = delete;
    /// What a thread that draws needs of an arena, for the cells that there are now: no sweep and no new value changes
    /// it. It shares the values with the arena, and is `before`, a snapshot of the same arena, where that still has the
    /// meaning of all cells.
    [[nodiscard]] static std::shared_ptr<const CellArena> snapshotOf(
        const CellArena& arena, std::shared_ptr<const CellArena> before = nullptr);
    /// Whether the cells that are in this arena, of which `snapshot` is one, mean the same in the snapshot.
    [[nodiscard]] bool preservesEncoding(const CellArena& snapshot) const;
    /// No two lines of the buffers have the same one.
    [[nodiscard]] RenderIdentity nextLineIdentity() { return ++m_lineIdentities; }

    /// 0, the default attribute, when the table is full and nothing can be made coarse.
    [[nodiscard]] std::uint16_t intern(PackedAttributeKey key) {
        // Programs go to and fro between an attribute and the default one.
        return key == PackedAttributeKey{} ? std::uint16_t{0} : internOther(key);
    }
    [[nodiscard]] std::uint16_t intern(const Attribute& attribute) { return intern(attribute.packed()); }
    /// Hints that the attribute comes next.
    void willIntern(PackedAttributeKey key) const {
        __builtin_prefetch(m_attributeIdentifiers.data() + firstSlotOf(hashOf(key)));
    }
    /// Of a cluster of at least one scalar; 0 when the table is full and nothing can be released.
    [[nodiscard]] std::uint32_t intern(std::u32string_view scalars);
    /// 0 when the table is full and nothing can be released.
    [[nodiscard]] TinyAtom internLink(const std::string& link);

    [[nodiscard]] const PackedAttributeKey& keyOf(std::uint16_t id) const { return m_attributes[id]; }
    [[nodiscard]] Attribute attribute(std::uint16_t id) const { return Attribute::unpacked(m_attributes[id]); }
    [[nodiscard]] const std::u32string& grapheme(std::uint32_t id) const { return m_graphemes[id]; }
    [[nodiscard]] const std::string& link(TinyAtom atom) const { return m_links[atom]; }
    [[nodiscard]] std::size_t attributeCount() const { return m_attributeCount; }
    /// How many attributes can be in use at once, beside the default one.
    [[nodiscard]] static constexpr std::size_t styleCapacity() { return attributeCapacity; }
    [[nodiscard]] std::size_t graphemeCount() const { return m_graphemes.size(); }
    [[nodiscard]] std::size_t linkCount() const { return m_links.size(); }

    /// Nothing when the fields of the cell have no encoding.
    [[nodiscard]] std::optional<PackedCell> pack(const CharData& cell);
    [[nodiscard]] CharData unpack(PackedCell cell) const;
    /// The empty cell that an erase with this attribute leaves.
    [[nodiscard]] PackedCell blank(PackedAttributeKey key) {
        const Color background = key.background();
        if (background.kind() == Color::Kind::defaultInvertedColor) [[unlikely]] {
            return blankOfInverted(background);
        }
        // By the kind of the colour, without a branch; the content of the default one is 0.
        static constexpr std::array kinds = {
            PackedCell::Kind::paletteBlank, PackedCell::Kind::trueColorBlank, PackedCell::Kind::scalar};
        return PackedCell::make(kinds[static_cast<std::size_t>(background.kind())], background.value());
    }
    [[nodiscard]] PackedCell blank(const Attribute& attribute) { return blank(attribute.packed()); }
    [[nodiscard]] Attribute attributeOf(PackedCell cell) const;
    /// All scalars of a cell, none of an empty one.
    [[nodiscard]] std::u32string_view scalarValues(PackedCell cell, char32_t& memory) const;
    void appendText(std::string& utf8, PackedCell cell) const;
    /// Whether the cell shows a part of an image (ImagePlaceholders.h), which its attribute names.
    [[nodiscard]] bool isPlaceholder(PackedCell cell) const {
        return (cell.kind() == PackedCell::Kind::scalar && cell.content() == unicode::imagePlaceholder) ||
               (cell.kind() == PackedCell::Kind::cluster &&
                grapheme(cell.content()).front() == unicode::imagePlaceholder);
    }
    /// The cell as it is in this arena, of one that is in another.
    [[nodiscard]] PackedCell adopt(PackedCell cell, const CellArena& from);
    [[nodiscard]] PackedCell withAttribute(PackedCell cell, const Attribute& attribute);
    /// The cell with another text, and all else as it was. No scalars: an empty cell.
    [[nodiscard]] PackedCell replacingContent(PackedCell cell, std::u32string_view scalars);

    /// Marks the numbers that cells use.
    class Marker {
    public:
        explicit Marker(const CellArena& arena);
        void mark(std::span<const PackedCell> cells);
        void markPen(std::uint64_t bits) { mark(std::span(reinterpret_cast<const PackedCell*>(&bits), 1)); }

    private:
        friend class CellArena;
        std::vector<std::uint8_t> m_attributes;
        std::vector<bool> m_graphemes;
        std::vector<bool> m_links;
        std::size_t m_cells = 0;
    };
    /// Called with a marker when a sweep is due; has to mark all that is in use.
    void setRoots(std::function<void(Marker&)> roots) { m_roots = std::move(roots); }
    void sweep();
    /// After another one, or when attributes were made coarse, a number that was got before may be that of another
    /// value, unless a cell has it.
    [[nodiscard]] std::uint64_t sweepCount() const { return m_sweepCount; }

    /// Takes attributes from the lines of longest ago when all are in use: their cells get coarser colours, of which
    /// there are few. What is shown or written is kept first; then come the lines of the history from the newest to the
    /// oldest, which are kept while there is room, and made coarse from there on. A coarse line need not be looked at
    /// again: its attributes stay in use until a sweep.
    class Coarsening {
    public:
        explicit Coarsening(CellArena& arena);
        void keep(std::span<const PackedCell> cells);
        void keepPen(std::uint64_t bits) { keep(std::span(reinterpret_cast<const PackedCell*>(&bits), 1)); }
        /// Whether a further line can be kept. About five of eight attributes are, so that a quarter becomes free.
        [[nodiscard]] bool hasRoom() const { return m_kept < attributeCapacity / 8 * 5; }
        /// To be told of all lines that will be coarse before any of them is: the attributes of cells that show images
        /// are kept while there are not too many. Beyond that, such cells become blank.
        void keepPlaceholders(std::span<const PackedCell> cells);
        /// Whether the cells of a line will look otherwise, or have other numbers.
        [[nodiscard]] bool changes(std::span<const PackedCell> cells);
        void coarsen(std::span<PackedCell> cells);
        /// Of a coarse line, what stays as it is.
        void spare(PackedCell cell) { m_arena.m_coarse[cell.attributeId()] = 1; }

    private:
        friend class CellArena;
        /// How many attributes coarse lines may have, and to how many may be added that take the finer of two steps.
        static constexpr std::size_t mostCoarse = attributeCapacity / 8;
        static constexpr std::size_t mostFine = mostCoarse / 4 * 3;
        static constexpr std::size_t mostOfPlaceholders = mostCoarse / 2;
        static constexpr std::int32_t unknown = -1;
        [[nodiscard]] std::uint16_t substituteOf(std::uint16_t id);
        [[nodiscard]] std::uint16_t findSubstitute(std::uint16_t id);
        [[nodiscard]] bool takesIn(std::uint16_t id, std::size_t limit);

        CellArena& m_arena;
        std::vector<std::uint8_t> m_isKept;
        std::vector<std::uint8_t> m_isReplaced;  ///< what stood for another attribute before
        std::vector<std::int32_t> m_substitutes; ///< of attributes in coarse lines, by identifier
        std::size_t m_kept = 0;
        std::size_t m_coarseCount = 0;
        std::size_t m_cells = 0;
    };
    /// Called when all attributes are in use, with what has to be done above.
    void setCoarsening(std::function<void(Coarsening&)> coarsening) { m_coarsening = std::move(coarsening); }

    enum class Numbered : std::uint8_t { links, clusters };
    /// Takes links, or clusters, from the lines of longest ago when all are in use: their cells have none then, or the
    /// first scalar of theirs. Here too, what is shown or written is kept first, then the lines from the newest on.
    class Releasing {
    public:
        Releasing(const CellArena& arena, Numbered what);
        void keep(std::span<const PackedCell> cells);
        void keepPen(std::uint64_t bits) { keep(std::span(reinterpret_cast<const PackedCell*>(&bits), 1)); }
        /// Whether all of a further line can be kept. About five of eight are, so that a quarter becomes free.
        [[nodiscard]] bool hasRoom() const { return m_kept < m_capacity / 8 * 5; }
        /// Whether a line has some that are not kept.
        [[nodiscard]] bool changes(std::span<const PackedCell> cells);
        void release(std::span<PackedCell> cells) const;

    private:
        friend class CellArena;
        /// 0 where the cell has none.
        [[nodiscard]] std::uint32_t numberOf(PackedCell cell) const;

        const CellArena& m_arena;
        Numbered m_what;
        std::vector<bool> m_isKept;
        std::size_t m_capacity;
        std::size_t m_kept = 0;
        std::size_t m_cells = 0;
    };
    /// Called when all links or clusters are in use.
    void setReleasing(std::function<void(Releasing&)> releasing) { m_releasing = std::move(releasing); }

private:
    struct Snapshot {};
    CellArena(Snapshot, const CellArena& arena);
    /// Of the table by which attributes are found: an identifier, 0 in a free slot, and 16 bits of its attribute's
    /// hash, so that a look at another attribute is rare.
    struct Slot {
        std::uint16_t id = 0;
        std::uint16_t tag = 0;
    };
    static constexpr int initialSlotBits = 8;
    /// The last attribute that was interned.
    struct AttributeCacheEntry {
        PackedAttributeKey key;
        std::uint16_t id = 0;
    };
    [[nodiscard]] static std::uint64_t hashOf(PackedAttributeKey key) { return mixedHash(key.word0, key.word1); }
    [[nodiscard]] std::size_t firstSlotOf(std::uint64_t hash) const { return hash >> m_slotShift; }
    [[nodiscard]] std::size_t slotOf(PackedAttributeKey key, std::uint64_t hash) const;
    [[nodiscard]] std::uint16_t known(const PackedAttributeKey& key) const;
    void addToSlots(std::uint16_t id);
    void growSlots();
    [[nodiscard]] bool isFullOfAttributes() const {
        return m_freeAttributes.empty() && m_attributes.size() > attributeCapacity;
    }
    [[nodiscard]] std::uint16_t addAttribute(PackedAttributeKey key, std::uint64_t hash, std::size_t slot);
    [[nodiscard]] std::uint16_t internOther(PackedAttributeKey key);
    [[nodiscard]] PackedCell blankOfInverted(Color background);
    enum class Room : std::uint8_t { none, some };
    bool sweepWhenDue(Room room);
    bool coarsenWhenDue();
    bool releaseWhenDue(Numbered what);
    void keepAttributes(const std::vector<std::uint8_t>& used);

    SharedTable<PackedAttributeKey> m_attributes;
    std::vector<std::uint16_t> m_freeAttributes;
    std::vector<Slot> m_attributeIdentifiers; ///< open addressing
    int m_slotShift = 64 - initialSlotBits;   ///< from a hash to its first place there
    std::size_t m_attributeCount = 0;
    AttributeCacheEntry m_attributeCache;

    NumberedSet<std::u32string> m_graphemes{graphemeCapacity};
    static constexpr int recentGraphemeBits = 8;
    /// By a hash of their scalars, those that were interned last: a program's clusters are mostly few. 0: none.
    std::array<std::uint32_t, std::size_t{1} << recentGraphemeBits> m_recentGraphemes{};
    NumberedSet<std::string> m_links{linkCapacity};

    std::function<void(Marker&)> m_roots;
    RenderIdentity m_lineIdentities = 0;
    std::uint64_t m_sweepCount = 0;
    std::size_t m_newSinceSweep = 0;
    static constexpr std::size_t leastBetweenSweeps = 4096;
    std::size_t m_nextSweep = leastBetweenSweeps;
    std::size_t m_earliestSweep = 1024;

    std::function<void(Coarsening&)> m_coarsening;
    std::vector<std::uint8_t> m_coarse; ///< by identifier: lines that were made coarse may have it; empty at first
    std::size_t m_newSinceCoarsening = 0;
    std::size_t m_earliestCoarsening = 0;

    std::function<void(Releasing&)> m_releasing;
    std::size_t m_lostSinceReleasing = 0;
    std::size_t m_earliestReleasing = 0;
};

} // namespace term
