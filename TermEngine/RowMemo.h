#pragma once

#include "TermEngine/BufferLine.h"

#include <cstdint>
#include <vector>

namespace term {

/// What was last found out of each row of a screen. It holds as long as the row has the same line, no cell of which
/// has changed, and the question is the same.
template <typename Question, typename Answer>
class RowMemo {
public:
    /// Null where it is not known.
    [[nodiscard]] const Answer* find(int row, const BufferLine& line, const Question& question) const {
        const Entry* const entry = entryOf(row, line);
        return entry != nullptr && entry->question == question ? &entry->answer : nullptr;
    }
    /// Whether something is known, though another question may have been asked.
    [[nodiscard]] bool knows(int row, const BufferLine& line) const { return entryOf(row, line) != nullptr; }
    const Answer& keep(int row, const BufferLine& line, const Question& question, Answer answer) {
        const auto index = static_cast<std::size_t>(row);
        if (index >= m_entries.size()) {
            m_entries.resize(index + 1);
        }
        m_entries[index] = {line.renderIdentity(), line.generation(), question, std::move(answer)};
        return m_entries[index].answer;
    }

private:
    struct Entry {
        std::uint64_t identity = 0; ///< no line has this one
        std::uint64_t generation = 0;
        Question question{};
        Answer answer{};
    };
    [[nodiscard]] const Entry* entryOf(int row, const BufferLine& line) const {
        const auto index = static_cast<std::size_t>(row);
        const bool isSame = index < m_entries.size() && m_entries[index].identity == line.renderIdentity() &&
                            m_entries[index].generation == line.generation();
        return isSame ? &m_entries[index] : nullptr;
    }

    std::vector<Entry> m_entries;
};

} // namespace term
