#pragma once

#include "TermEngine/TextSearch.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace orv {

/// The matches of a search in a buffer, found in slices from the newest line up, and kept true while output comes. What
/// was history when it was searched is not searched again: output changes what is below.
class MatchList {
public:
    using Matches = std::deque<term::TextRange>;
    /// Then the newest are kept.
    static constexpr std::size_t mostMatches = 1'000'000;

    /// False for a regular expression that is none.
    bool start(const term::Buffer& buffer, const std::string& pattern, term::SearchOptions options);
    void clear();
    /// Something is searched.
    [[nodiscard]] bool isActive() const { return m_older.has_value(); }

    /// The lines were reflowed, so that only a new search knows where things are.
    void invalidate() { m_buffer = nullptr; }
    /// Not for another buffer than that of the start, nor after `invalidate`.
    [[nodiscard]] bool isValidFor(const term::Buffer& buffer) const { return m_buffer == &buffer; }
    void noteOutput() { m_isStale = true; }
    /// Before `advance` in a turn of the event loop: takes note of the lines that came and went.
    void update(const term::Buffer& buffer);
    /// Goes on by some 0.1 ms.
    void advance(const term::Buffer& buffer);
    /// All is searched, but for output that came in the meantime (`isStale`).
    [[nodiscard]] bool isDone() const;
    [[nodiscard]] bool isStale() const { return m_isStale; }
    [[nodiscard]] bool isComplete() const { return isDone() && !m_isCut; }

    /// The oldest first.
    [[nodiscard]] const Matches& matches() const { return m_matches; }
    /// The first that begins at a place or behind it.
    [[nodiscard]] Matches::const_iterator firstFrom(term::TextPlace place) const;

private:
    [[nodiscard]] bool hasAllOlder() const { return m_older->isDone() || m_isCut; }
    void finishRefresh();

    const term::Buffer* m_buffer = nullptr;  ///< only compared
    std::optional<term::TextSearch> m_older; ///< goes up from the end, once
    std::optional<term::TextSearch> m_newer; ///< from the end to `m_settled`, after output
    bool m_isRefreshing = false;             ///< `m_newer` is under way
    std::vector<term::TextRange> m_fresh;    ///< what it has found, the newest first
    std::int64_t m_settled = 0;              ///< the lines above it were history when they were searched
    std::int64_t m_nextSettled = 0;          ///< once `m_newer` is done
    bool m_isStale = false;
    bool m_isCut = false; ///< older matches are left out
    Matches m_matches;
};

} // namespace orv
