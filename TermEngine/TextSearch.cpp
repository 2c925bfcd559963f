#include "TermEngine/TextSearch.h"

#include "TermEngine/RegularExpression_p.h"
#include "TermEngine/TextRange_p.h"
#include "TermEngine/Unicode.h"

#include <algorithm>
#include <deque>
#include <variant>

namespace term {
namespace {

using Match = RegularExpression::Match;

/// A plain text (Knuth, Morris, Pratt: the time is that of reading both once, whatever they are).
class PlainText {
public:
    PlainText(std::u32string text, WordMatching words)
        : m_text(std::move(text)), m_words(words), m_border(m_text.size() + 1) {
        std::size_t border = 0;
        for (std::size_t i = 1; i < m_text.size(); ++i) {
            border = extended(border, m_text[i]);
            m_border[i + 1] = border;
        }
    }
    /// As `RegularExpression` has them.
    [[nodiscard]] std::optional<Match> find(std::u32string_view text, std::size_t from, std::uint64_t& budget) {
        m_at = from;
        m_matched = 0;
        return resume(text, budget);
    }
    [[nodiscard]] std::optional<Match> resume(std::u32string_view text, std::uint64_t& budget) {
        m_isUnfinished = false;
        for (; m_at < text.size() && !m_text.empty(); --budget) {
            if (budget == 0) {
                m_isUnfinished = true;
                break;
            }
            for (const std::size_t end = std::min(text.size(), m_at + scalarsAStep); m_at < end;) {
                m_matched = extended(m_matched, text[m_at++]);
                if (m_matched < m_text.size()) {
                    continue;
                }
                const Match match{m_at - m_matched, m_at};
                if (m_words == WordMatching::anywhere ||
                    (!isWithinWord(text, match.first) && !isWithinWord(text, match.end))) {
                    --budget;
                    return match;
                }
                // The next one may begin within this one.
                m_matched = m_border[m_matched];
            }
        }
        return {};
    }
    [[nodiscard]] bool isUnfinished() const { return m_isUnfinished; }

private:
    static constexpr std::size_t scalarsAStep = 4;

    /// How much of the text stands at the end of what was read, after one scalar more.
    [[nodiscard]] std::size_t extended(std::size_t matched, char32_t scalar) const {
        while (matched > 0 && m_text[matched] != scalar) {
            matched = m_border[matched];
        }
        return matched + (m_text[matched] == scalar ? 1 : 0);
    }

    std::u32string m_text;
    WordMatching m_words;
    std::vector<std::size_t> m_border; ///< of each beginning: how long an end of it is a beginning too
    std::size_t m_at = 0;
    std::size_t m_matched = 0; ///< of the text, at the end of what was read
    bool m_isUnfinished = false;
};

/// A line with all that soft wraps join to it, by scalars.
class ScalarLine {
public:
    explicit ScalarLine(CaseMatching matching) : m_folds(matching == CaseMatching::folded) {}

    /// The line that begins at `first`, or what is left of it there; `end` is not a part of it.
    void begin(const Buffer& buffer, std::int64_t first, std::int64_t end) {
        m_cols = buffer.cols();
        m_first = first;
        m_next = first;
        m_end = end;
        m_isWhole = false;
        m_text.clear();
        m_cells.clear();
    }
    /// Takes rows until the steps are used up.
    void read(const Buffer& buffer, std::uint64_t& steps) {
        const auto trimmed = static_cast<std::int64_t>(buffer.trimmedCount());
        if (m_next < trimmed) {
            // Rows that have left the history in between; what is left of the line begins behind them.
            begin(buffer, std::min(trimmed, m_end), m_end);
        }
        const auto isThere = [&] {
            return m_next >= trimmed && m_next < std::min(m_end, trimmed + buffer.lineCount());
        };
        m_isWhole = !isThere();
        while (!m_isWhole && steps > 0) {
            const auto index = static_cast<int>(m_next - trimmed);
            readRow(buffer, index);
            steps -= std::min(steps, static_cast<std::uint64_t>(m_length) + 1);
            ++m_next;
            m_isWhole = !isThere() || !buffer.lineAt(index + 1).isWrapped();
        }
    }
    [[nodiscard]] bool isWhole() const { return m_isWhole; }
    [[nodiscard]] std::int64_t first() const { return m_first; }
    [[nodiscard]] const std::u32string& text() const { return m_text; }
    /// The cells that a match touches.
    [[nodiscard]] TextRange range(Match match) const {
        while (match.end < m_cells.size() && m_cells[match.end] == m_cells[match.end - 1]) {
            ++match.end;
        }
        return {placeOf(match.first), placeOf(match.end)};
    }

private:
    void readRow(const Buffer& buffer, int index) {
        const BufferLine& line = buffer.lineAt(index);
        m_length = std::min(textLength(buffer, index), m_cols);
        for (int col = 0; col < m_length; ++col) {
            if (line[col].isSpacer()) {
                continue;
            }
            char32_t memory = 0;
            const std::u32string_view scalars = buffer.cellArena().scalarValues(line[col], memory);
            for (const char32_t scalar : scalars.empty() ? std::u32string_view(U" ") : scalars) {
                m_text.push_back(m_folds ? unicode::foldCase(scalar) : scalar);
                m_cells.push_back(
                    static_cast<std::uint32_t>(m_next - m_first) * static_cast<std::uint32_t>(m_cols) +
                    static_cast<std::uint32_t>(col));
            }
        }
    }
    [[nodiscard]] TextPlace placeOf(std::size_t index) const {
        if (index == m_cells.size()) {
            return {m_next - 1, m_length};
        }
        const auto cols = static_cast<std::uint32_t>(m_cols);
        return {m_first + m_cells[index] / cols, static_cast<int>(m_cells[index] % cols)};
    }

    const bool m_folds;
    int m_cols = 1;
    std::int64_t m_first = 0;
    std::int64_t m_next = 0; ///< the row that is read next
    std::int64_t m_end = 0;
    bool m_isWhole = false;
    int m_length = 0; ///< of the last row
    std::u32string m_text;
    std::vector<std::uint32_t> m_cells; ///< of each scalar, from the first of the line on
};

} // namespace

class TextSearch::Searcher {
public:
    using Pattern = std::variant<PlainText, RegularExpression>;

    Searcher(Pattern pattern, CaseMatching matching, const SearchOptions& options)
        : m_pattern(std::move(pattern)), m_options(options), m_line(matching) {}

    void start(const Buffer& buffer, std::int64_t oldest) {
        m_oldest = oldest;
        m_isDone = false;
        m_isCut = false;
        m_found = 0;
        begin(buffer, static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.lineCount());
    }

    std::vector<TextRange> advance(const Buffer& buffer, std::uint64_t steps) {
        std::vector<TextRange> found;
        while (!m_isDone && steps > 0) {
            if (!m_line.isWhole()) {
                m_line.read(buffer, steps);
            } else if (lookOnLine(steps)) {
                found.insert(found.end(), m_onLine.rbegin(), m_onLine.rend());
                m_found += m_onLine.size();
                begin(buffer, m_line.first());
            }
        }
        return found;
    }

    [[nodiscard]] bool isDone() const { return m_isDone; }
    [[nodiscard]] bool isComplete() const { return m_isDone && !m_isCut; }
    [[nodiscard]] std::int64_t searchedTo() const { return m_searchedTo; }

private:
    /// The line above `end`.
    void begin(const Buffer& buffer, std::int64_t end) {
        const auto trimmed = static_cast<std::int64_t>(buffer.trimmedCount());
        m_searchedTo = end;
        m_onLine.clear();
        m_isUnderWay = false;
        m_from = 0;
        if (end <= std::max(trimmed, m_oldest)) {
            m_isDone = true;
            return;
        }
        if (m_isCut) {
            m_isDone = true;
            return;
        }
        const int first = firstOfWrapped(buffer, indexOf(buffer, end - 1));
        m_line.begin(buffer, trimmed + first, end);
    }

    /// Whether the line has been looked at to its end, and not only the steps to theirs.
    bool lookOnLine(std::uint64_t& steps) {
        const std::u32string& text = m_line.text();
        while (steps > 0) {
            if (!m_isUnderWay && m_from >= text.size()) {
                return true;
            }
            const std::optional<Match> match = std::visit(
                [&](auto& pattern) {
                    auto found = m_isUnderWay ? pattern.resume(text, steps) : pattern.find(text, m_from, steps);
                    m_isUnderWay = pattern.isUnfinished();
                    return found;
                },
                m_pattern);
            if (m_isUnderWay) {
                return false;
            }
            if (!match) {
                return true;
            }
            m_from = match->end;
            add(m_line.range(*match));
        }
        return false;
    }

    void add(const TextRange& range) {
        m_onLine.push_back(range);
        if (m_found + m_onLine.size() > m_options.limit) {
            m_onLine.pop_front();
            m_isCut = true;
        }
    }

    Pattern m_pattern;
    SearchOptions m_options;
    ScalarLine m_line;
    std::size_t m_from = 0;    ///< of the text of the line
    bool m_isUnderWay = false; ///< the pattern is somewhere on the line
    std::deque<TextRange> m_onLine;
    std::size_t m_found = 0; ///< on the lines below
    std::int64_t m_oldest = 0;
    std::int64_t m_searchedTo = 0;
    bool m_isDone = true;
    bool m_isCut = false;
};

TextSearch::TextSearch(std::unique_ptr<Searcher> searcher) : m_searcher(std::move(searcher)) {}
TextSearch::TextSearch(TextSearch&&) noexcept = default;
TextSearch& TextSearch::operator=(TextSearch&&) noexcept = default;
TextSearch::~TextSearch() = default;

std::optional<TextSearch> TextSearch::of(std::string_view pattern, const SearchOptions& options) {
    const WordMatching words = options.wholeWords ? WordMatching::wholeWords : WordMatching::anywhere;
    const CaseMatching matching = options.ignoresCase ? CaseMatching::folded : CaseMatching::exact;
    std::u32string wanted = unicode::fromUtf8(pattern);
    if (options.isRegularExpression) {
        std::optional<RegularExpression> expression = RegularExpression::compile(wanted, matching, words);
        return expression
                   ? std::optional(TextSearch(std::make_unique<Searcher>(*std::move(expression), matching, options)))
                   : std::nullopt;
    }
    if (options.ignoresCase) {
        std::ranges::transform(wanted, wanted.begin(), unicode::foldCase);
    }
    return TextSearch(std::make_unique<Searcher>(PlainText(std::move(wanted), words), matching, options));
}

void TextSearch::start(const Buffer& buffer, std::int64_t oldest) {
    m_searcher->start(buffer, oldest);
}

std::vector<TextRange> TextSearch::advance(const Buffer& buffer, std::uint64_t steps) {
    return m_searcher->advance(buffer, steps);
}

bool TextSearch::isDone() const {
    return m_searcher->isDone();
}

bool TextSearch::isComplete() const {
    return m_searcher->isComplete();
}

std::int64_t TextSearch::searchedTo() const {
    return m_searcher->searchedTo();
}

} // namespace term
