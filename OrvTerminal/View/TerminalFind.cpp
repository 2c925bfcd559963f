#include "OrvTerminal/View/TerminalFind.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/TerminalSession.h"

#include <algorithm>
#include <cmath>

namespace orv {
namespace {

using namespace std::chrono_literals;

/// Output that keeps coming is searched this often.
constexpr auto searchInterval = 250ms;
/// What a slice takes of the main thread, and what it leaves to others before the next one.
constexpr auto sliceTime = 5ms;
constexpr auto sliceGap = 10ms;
/// While more is found, it is told this often.
constexpr auto tellInterval = 100ms;
constexpr int mostMarks = 400;

} // namespace

TerminalFind::TerminalFind(TerminalSession& session, QObject* parent) : QObject(parent), m_session(session) {
    ORV_ASSERT_MAIN_THREAD();
    m_outputCame.setSingleShot(true);
    m_outputCame.setInterval(searchInterval);
    connect(&m_outputCame, &QTimer::timeout, this, &TerminalFind::takeOutput);
    m_nextSlice.setSingleShot(true);
    m_nextSlice.setInterval(sliceGap);
    connect(&m_nextSlice, &QTimer::timeout, this, &TerminalFind::slice);
    connect(&session, &TerminalSession::outputReceived, this, [this] {
        if (m_found.isActive() && !m_outputCame.isActive()) {
            m_outputCame.start();
        }
    });
    connect(&session, &TerminalSession::resized, this, [this] {
        if (m_found.isActive()) {
            m_found.invalidate();
            m_nextSlice.stop();
            m_outputCame.start();
        }
    });
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
    m_current.reset();
    m_viewEnd = static_cast<std::int64_t>(buffer().trimmedCount()) + buffer().yDisp() + buffer().rows();
    restart();
}

void TerminalFind::restart() {
    m_outputCame.stop();
    m_nextSlice.stop();
    m_found.clear();
    m_isValid = true;
    m_quiet = {};
    if (m_isActive && !m_text.isEmpty()) {
        m_isValid = m_found.start(
            buffer(), m_text.toStdString(), {.ignoresCase = !m_matchesCase, .isRegularExpression = m_isExpression});
    }
    slice();
}

void TerminalFind::takeOutput() {
    if (!m_found.isValidFor(buffer())) {
        restart();
        return;
    }
    m_outputCame.stop();
    m_found.noteOutput();
    slice();
}

void TerminalFind::slice() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_found.isActive()) {
        if (!m_found.isValidFor(buffer())) {
            restart();
            return;
        }
        m_found.update(buffer());
        const QDeadlineTimer end(sliceTime);
        do {
            m_found.advance(buffer());
        } while (!m_found.isDone() && !end.hasExpired());
        if (!m_found.isDone()) {
            m_nextSlice.start();
        } else if (m_found.isStale()) {
            m_outputCame.start();
        }
    }
    const bool isNew = chooseCurrent();
    if (isNew || m_found.isDone() || m_quiet.hasExpired()) {
        m_quiet = QDeadlineTimer(tellInterval);
        Q_EMIT resultChanged();
    }
    if (isNew) {
        Q_EMIT lineWanted(m_current->line);
    }
}

/// The current match stays the one that it is, as long as it is there. Whether it is that of a new search.
bool TerminalFind::chooseCurrent() {
    const MatchList::Matches& matches = m_found.matches();
    const bool isDone = m_found.isDone();
    bool isNew = false;
    if (m_viewEnd && !matches.empty() && (isDone || matches.front().start.line < *m_viewEnd)) {
        const auto past = m_found.firstFrom({*m_viewEnd, 0});
        m_current = (past == matches.begin() ? matches.back() : *(past - 1)).start;
        isNew = true;
    } else if (isDone && !matches.empty()) {
        const auto same = m_current ? m_found.firstFrom(*m_current) : matches.end();
        m_current = (same == matches.end() ? matches.back() : *same).start;
    }
    if (isNew || isDone) {
        m_viewEnd.reset();
    }
    return isNew;
}

int TerminalFind::current() const {
    if (!m_current || count() == 0) {
        return 0;
    }
    return std::min(static_cast<int>(m_found.firstFrom(*m_current) - m_found.matches().begin()) + 1, count());
}

void TerminalFind::step(int direction) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_outputCame.isActive()) {
        takeOutput();
    }
    if (count() == 0) {
        return;
    }
    const int wanted = m_current ? current() + direction : count();
    // What is beyond the oldest match is not known before the search has come there.
    if ((wanted < 1 || wanted > count()) && !m_found.isDone()) {
        return;
    }
    m_viewEnd.reset();
    m_current = m_found.matches()[static_cast<size_t>((wanted - 1 + count()) % count())].start;
    Q_EMIT resultChanged();
    Q_EMIT lineWanted(m_current->line);
}

const term::Buffer& TerminalFind::buffer() const {
    return m_session.terminal().buffer();
}

QList<qreal> TerminalFind::marks() const {
    const auto first = static_cast<std::int64_t>(buffer().trimmedCount());
    const qreal linesAMark = static_cast<qreal>(buffer().lineCount()) / mostMarks;
    QList<qreal> places;
    for (auto match = m_found.matches().begin(); match != m_found.matches().end();) {
        const std::int64_t line = match->start.line;
        places.append(static_cast<qreal>(line - first) / buffer().lineCount());
        const qreal next = std::ceil((std::floor(static_cast<qreal>(line - first) / linesAMark) + 1) * linesAMark);
        match = m_found.firstFrom({std::max(first + static_cast<std::int64_t>(next), line + 1), 0});
    }
    return places;
}

std::vector<LineMark> TerminalFind::marksOn(std::int64_t line) const {
    std::vector<LineMark> marks;
    const MatchList::Matches& matches = m_found.matches();
    auto match =
        std::ranges::lower_bound(matches, line, {}, [](const term::TextRange& range) { return range.end.line; });
    for (; match != matches.end() && match->start.line <= line; ++match) {
        const int first = match->start.line == line ? match->start.col : 0;
        const int end = match->end.line == line ? match->end.col : m_session.terminal().cols();
        const bool isCurrent = match->start == m_current;
        if (end > first) {
            marks.push_back({first, end, isCurrent ? LineMark::Kind::currentMatch : LineMark::Kind::match});
        }
    }
    return marks;
}

} // namespace orv
