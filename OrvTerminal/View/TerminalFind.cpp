#include "OrvTerminal/View/TerminalFind.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/TerminalSession.h"

#include <algorithm>
#include <limits>

namespace orv {
namespace {

using namespace std::chrono_literals;

/// Output that keeps coming is searched this often.
constexpr auto searchInterval = 250ms;
/// A bound for the time that a regular expression takes: some 50 ms.
constexpr std::uint64_t mostSteps = 10'000'000;
constexpr int mostMarks = 400;

} // namespace

TerminalFind::TerminalFind(TerminalSession& session, QObject* parent) : QObject(parent), m_session(session) {
    ORV_ASSERT_MAIN_THREAD();
    m_outputCame.setSingleShot(true);
    m_outputCame.setInterval(searchInterval);
    connect(&m_outputCame, &QTimer::timeout, this, &TerminalFind::search);
    for (const auto signal : {&TerminalSession::outputReceived, &TerminalSession::resized}) {
        connect(&session, signal, this, [this] {
            if (m_isActive && !m_text.isEmpty() && !m_outputCame.isActive()) {
                m_outputCame.start();
            }
        });
    }
}

void TerminalFind::setActive(bool active) {
    if (active != m_isActive) {
        m_isActive = active;
        Q_EMIT activeChanged();
        searchAnew();
    }
}

void TerminalFind::setText(const QString& text) {
    if (text != m_text) {
        m_text = text;
        Q_EMIT queryChanged();
        searchAnew();
    }
}

void TerminalFind::setMatchesCase(bool matches) {
    if (matches != m_matchesCase) {
        m_matchesCase = matches;
        Q_EMIT queryChanged();
        searchAnew();
    }
}

void TerminalFind::setExpression(bool isExpression) {
    if (isExpression != m_isExpression) {
        m_isExpression = isExpression;
        Q_EMIT queryChanged();
        searchAnew();
    }
}

/// With another query the newest match in view is the current one, or the newest of all.
void TerminalFind::searchAnew() {
    m_current = 0;
    search();
    if (m_matches.empty()) {
        return;
    }
    const term::Buffer& buffer = m_session.terminal().buffer();
    const auto end = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yDisp() + buffer.rows();
    const auto past =
        std::ranges::lower_bound(m_matches, end, {}, [](const term::TextRange& range) { return range.start.line; });
    m_current = past == m_matches.begin() ? count() : static_cast<int>(past - m_matches.begin());
    Q_EMIT resultChanged();
    Q_EMIT lineWanted(m_matches[static_cast<size_t>(m_current - 1)].start.line);
}

/// The current match stays the one that it is, as long as it is there.
void TerminalFind::search() {
    m_outputCame.stop();
    const std::optional<term::TextRange> before =
        m_current > 0 ? std::optional(m_matches[static_cast<size_t>(m_current - 1)]) : std::nullopt;
    m_matches.clear();
    m_isValid = true;
    if (m_isActive && !m_text.isEmpty()) {
        term::SearchOptions options;
        options.ignoresCase = !m_matchesCase;
        options.isRegularExpression = m_isExpression;
        options.limit = std::numeric_limits<std::size_t>::max(); // the newest come last, and are wanted most
        options.mostSteps = mostSteps;
        auto found = term::search(m_session.terminal().buffer(), m_text.toStdString(), options);
        m_isValid = found.has_value();
        m_matches = std::move(found).value_or(std::vector<term::TextRange>());
    }
    m_current = 0;
    if (before && !m_matches.empty()) {
        const auto same = std::ranges::lower_bound(m_matches, before->start, {}, &term::TextRange::start);
        m_current = same == m_matches.end() ? count() : static_cast<int>(same - m_matches.begin()) + 1;
    }
    Q_EMIT resultChanged();
}

void TerminalFind::step(int direction) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_outputCame.isActive()) {
        search();
    }
    if (m_matches.empty()) {
        return;
    }
    m_current = (m_current - 1 + direction + count()) % count() + 1;
    Q_EMIT resultChanged();
    Q_EMIT lineWanted(m_matches[static_cast<size_t>(m_current - 1)].start.line);
}

QList<qreal> TerminalFind::marks() const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    const auto first = static_cast<std::int64_t>(buffer.trimmedCount());
    QList<qreal> places;
    int last = -1;
    for (const term::TextRange& match : m_matches) {
        const qreal place = static_cast<qreal>(match.start.line - first) / buffer.lineCount();
        const int slot = static_cast<int>(place * mostMarks);
        if (slot != last) {
            last = slot;
            places.append(place);
        }
    }
    return places;
}

std::vector<LineMark> TerminalFind::marksOn(std::int64_t line) const {
    std::vector<LineMark> marks;
    auto match =
        std::ranges::lower_bound(m_matches, line, {}, [](const term::TextRange& range) { return range.end.line; });
    for (; match != m_matches.end() && match->start.line <= line; ++match) {
        const int first = match->start.line == line ? match->start.col : 0;
        const int end = match->end.line == line ? match->end.col : m_session.terminal().cols();
        const bool isCurrent = match - m_matches.begin() == m_current - 1;
        if (end > first) {
            marks.push_back({first, end, isCurrent ? LineMark::Kind::currentMatch : LineMark::Kind::match});
        }
    }
    return marks;
}

} // namespace orv
