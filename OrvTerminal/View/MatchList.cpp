#include "OrvTerminal/View/MatchList.h"

#include <algorithm>

namespace orv {
namespace {

/// For `TextSearch::advance`: some 0.1 ms.
constexpr std::uint64_t stepsAtOnce = 20'000;

/// Where the screen begins, with all of its first line.
std::int64_t topOfScreen(const term::Buffer& buffer) {
    return lineAt(buffer, {static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yBase(), 0}).start.line;
}

} // namespace

bool MatchList::start(const term::Buffer& buffer, const std::string& pattern, term::SearchOptions options) {
    clear();
    options.limit = mostMatches;
    m_older = term::TextSearch::of(pattern, options);
    m_newer = term::TextSearch::of(pattern, options);
    if (!m_older) {
        return false;
    }
    m_buffer = &buffer;
    m_settled = topOfScreen(buffer);
    m_older->start(buffer);
    return true;
}

void MatchList::clear() {
    *this = {};
}

void MatchList::update(const term::Buffer& buffer) {
    const auto kept = firstFrom({static_cast<std::int64_t>(buffer.trimmedCount()), 0});
    if (kept != m_matches.begin()) {
        m_matches.erase(m_matches.begin(), kept);
        m_isCut = false; // what was left out was older still
    }
    // The screen is searched again once it has been searched at all.
    if (m_isStale && !m_isRefreshing && (m_older->searchedTo() <= m_settled || hasAllOlder())) {
        m_isStale = false;
        m_isRefreshing = true;
        m_nextSettled = topOfScreen(buffer);
        m_newer->start(buffer, m_settled);
    }
}

void MatchList::advance(const term::Buffer& buffer) {
    if (m_isRefreshing) {
        const std::vector<term::TextRange> found = m_newer->advance(buffer, stepsAtOnce);
        m_fresh.insert(m_fresh.end(), found.begin(), found.end());
        if (m_newer->isDone()) {
            finishRefresh();
        }
    } else if (!hasAllOlder()) {
        const std::vector<term::TextRange> found = m_older->advance(buffer, stepsAtOnce);
        m_matches.insert(m_matches.begin(), found.rbegin(), found.rend());
        m_isCut = m_older->isDone() && !m_older->isComplete();
    }
}

void MatchList::finishRefresh() {
    m_matches.erase(firstFrom({m_settled, 0}), m_matches.end());
    m_matches.insert(m_matches.end(), m_fresh.rbegin(), m_fresh.rend());
    m_fresh.clear();
    m_isRefreshing = false;
    m_settled = m_nextSettled;
    if (m_matches.size() > mostMatches) {
        m_matches.erase(m_matches.begin(), m_matches.end() - mostMatches);
        m_isCut = true;
    }
}

bool MatchList::isDone() const {
    return !isActive() || (!m_isRefreshing && hasAllOlder());
}

MatchList::Matches::const_iterator MatchList::firstFrom(term::TextPlace place) const {
    return std::ranges::lower_bound(m_matches, place, {}, &term::TextRange::start);
}

} // namespace orv
