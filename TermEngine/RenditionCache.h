#pragma once

#include "TermEngine/CharData.h"
#include "TermEngine/EscapeSequenceParser.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace term {

/// What short SGR sequences of late do, by their text: programs use few, and what a sequence does never changes.
class RenditionCache {
public:
    /// Null for one that is not known; then `add` may follow.
    [[nodiscard]] const AttributePatch* find(const SequenceText& text) {
        if (!m_entries) {
            m_entries = std::make_unique<Entry[]>(std::size_t{1} << sizeBits);
        }
        const std::size_t slot = slotOf(text);
        // Which of the two it is nobody can foretell: no branch.
        const Entry& entry = m_entries[slot ^ static_cast<std::size_t>(difference(m_entries[slot].text, text) != 0)];
        const bool isKnown = difference(entry.text, text) == 0 && text.low != 0; // free entries have an empty text
        m_wanted = isKnown ? SequenceText{} : text;
        return isKnown ? &entry.patch : nullptr;
    }
    /// What the text does that was looked for in vain; without effect when there was none.
    void add(const AttributePatch& patch) {
        if (m_wanted != SequenceText{}) {
            // Of a pair the older one goes.
            const std::size_t slot = slotOf(m_wanted);
            m_entries[slot ^ 1] = m_entries[slot];
            m_entries[slot] = {m_wanted, patch};
            m_wanted = {};
        }
    }

private:
    struct Entry {
        SequenceText text{};
        AttributePatch patch{};
    };
    static constexpr int sizeBits = 10;
    /// 0 when they are equal.
    [[nodiscard]] static std::uint64_t difference(const SequenceText& a, const SequenceText& b) {
        return (a.low ^ b.low) | (a.high ^ b.high);
    }
    /// The first of a pair.
    [[nodiscard]] static std::size_t slotOf(const SequenceText& text) {
        const std::uint64_t hash = (text.low ^ text.high * 0x9E3779B97F4A7C15ULL) * 0xD6E8FEB86659FD93ULL;
        return (hash >> (64 - sizeBits)) & ~std::size_t{1};
    }

    std::unique_ptr<Entry[]> m_entries; ///< from the first use on
    SequenceText m_wanted;
};

} // namespace term
