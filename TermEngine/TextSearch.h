#pragma once

#include "TermEngine/TextRange.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace term {

struct SearchOptions {
    bool ignoresCase = true;          ///< by Unicode's simple case folding
    bool isRegularExpression = false; ///< ECMAScript, without references to groups and looking ahead or behind
    bool wholeWords = false;
    std::size_t limit = 10'000; ///< matches
};

/// A search through screen and history in slices, from the newest line up; soft wraps are joined. Between slices lines
/// may come below and be trimmed above. When they are reflowed, or another buffer is shown, it has to be started anew.
class TextSearch {
public:
    /// Nothing for a regular expression that is none.
    [[nodiscard]] static std::optional<TextSearch> of(std::string_view pattern, const SearchOptions& options = {});
    TextSearch(TextSearch&&) noexcept;
    TextSearch& operator=(TextSearch&&) noexcept;
    ~TextSearch();

    /// Looks from the last line of the buffer up to `oldest`.
    void start(const Buffer& buffer, std::int64_t oldest = 0);
    /// Goes on for about so many steps: cells that are read, instructions of an expression. The matches that were
    /// found, the newest first.
    [[nodiscard]] std::vector<TextRange> advance(const Buffer& buffer, std::uint64_t steps);
    [[nodiscard]] bool isDone() const;
    /// Done, and not only because there are more matches than the limit.
    [[nodiscard]] bool isComplete() const;
    /// From this line on all matches have been found.
    [[nodiscard]] std::int64_t searchedTo() const;

private:
    class Searcher;
    explicit TextSearch(std::unique_ptr<Searcher> searcher);

    std::unique_ptr<Searcher> m_searcher;
};

} // namespace term
