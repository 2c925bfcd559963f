#pragma once

#include "TermEngine/BufferLine.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace term {

/// What was last found out of each line of a screen, in whichever row it stands. It holds as long as no cell of the
/// line has changed, and the question is the same.
template <typename Question, typename Answer>
class RowMemo {
public:
    /// Null where it is not known.
    [[nodiscard]] const Answer* find(const BufferLine& line, const Question& question) const {
        const Entry* const entry = entryOf(line);
        return entry != nullptr && entry->question == question ? &entry->answer : nullptr;
    }
    /// Whether something is known, though another question may have been asked.
    [[nodiscard]] bool knows(const BufferLine& line) const { return entryOf(line) != nullptr; }
    /// `row` says how many lines there are.
    const Answer& keep(int row, const BufferLine& line, const Question& question, Answer answer) {
        const auto rows = static_cast<std::size_t>(row) + 1;
        if (rows * entriesOfRow > m_entries.size()) {
            m_entries.resize(std::bit_ceil(rows) * entriesOfRow);
        }
        Entry& entry = m_entries[placeOf(line)];
        entry = {line.renderIdentity(), line.generation(), question, std::move(answer)};
        return entry.answer;
    }

private:
    struct Entry {
        std::uint64_t identity = 0; ///< no line has this one
        std::uint64_t generation = 0;
        Question question{};
        Answer answer{};
    };
    /// Most lines of a screen have numbers that follow each other.
    [[nodiscard]] std::size_t placeOf(const BufferLine& line) const {
        return static_cast<std::size_t>(line.renderIdentity()) & (m_entries.size() - 1);
    }
    [[nodiscard]] const Entry* entryOf(const BufferLine& line) const {
        if (m_entries.empty()) {
            return nullptr;
        }
        const Entry& entry = m_entries[placeOf(line)];
        const bool isSame = entry.identity == line.renderIdentity() && entry.generation == line.generation();
        return isSame ? &entry : nullptr;
    }

    static constexpr std::size_t entriesOfRow = 2;
    std::vector<Entry> m_entries; ///< their number is a power of two
};

} // namespace term
