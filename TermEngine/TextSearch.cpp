#include "TermEngine/RegularExpression_p.h"
#include "TermEngine/TextRange_p.h"
#include "TermEngine/Unicode.h"

#include <algorithm>

namespace term {
namespace {

using Match = RegularExpression::Match;

/// A plain text (Knuth, Morris, Pratt: the time is that of reading both once, whatever they are).
class PlainText {
public:
    explicit PlainText(std::u32string text) : m_text(std::move(text)), m_border(m_text.size() + 1) {
        std::size_t border = 0;
        for (std::size_t i = 1; i < m_text.size(); ++i) {
            border = extended(border, m_text[i]);
            m_border[i + 1] = border;
        }
    }
    [[nodiscard]] std::optional<Match> find(std::u32string_view text, std::size_t from) const {
        std::size_t matched = 0;
        for (std::size_t at = from; at < text.size(); ++at) {
            matched = extended(matched, text[at]);
            if (matched == m_text.size()) {
                return Match{at + 1 - matched, at + 1};
            }
        }
        return {};
    }

private:
    /// How much of the text stands at the end of what was read, after one scalar more.
    [[nodiscard]] std::size_t extended(std::size_t matched, char32_t scalar) const {
        while (matched > 0 && m_text[matched] != scalar) {
            matched = m_border[matched];
        }
        return matched + (m_text[matched] == scalar ? 1 : 0);
    }

    std::u32string m_text;
    std::vector<std::size_t> m_border; ///< of each beginning: how long an end of it is a beginning too
};

/// A line with all that soft wraps join to it, by scalars.
class ScalarLine {
public:
    ScalarLine(const Buffer& buffer, CaseMatching matching) : m_buffer(buffer), m_matching(matching) {}

    /// The line that has its first row, or what is left of it, at an index.
    void read(int first) {
        m_first = first;
        m_end = first;
        m_text.clear();
        m_cells.clear();
        const bool folds = m_matching == CaseMatching::folded;
        do {
            const BufferLine& line = m_buffer.lineAt(m_end);
            m_length = textLength(m_buffer, m_end);
            for (int col = 0; col < m_length; ++col) {
                if (line[col].isSpacer()) {
                    continue;
                }
                char32_t memory = 0;
                std::u32string_view scalars = m_buffer.cellArena().scalarValues(line[col], memory);
                for (const char32_t scalar : scalars.empty() ? std::u32string_view(U" ") : scalars) {
                    m_text.push_back(folds ? unicode::foldCase(scalar) : scalar);
                    m_cells.push_back(static_cast<std::uint32_t>((m_end - m_first) * m_buffer.cols() + col));
                }
            }
        } while (++m_end < m_buffer.lineCount() && m_buffer.lineAt(m_end).isWrapped());
    }
    [[nodiscard]] const std::u32string& text() const { return m_text; }
    [[nodiscard]] int endIndex() const { return m_end; }
    /// The cells that a match touches.
    [[nodiscard]] TextRange range(Match match) const {
        while (match.end < m_cells.size() && m_cells[match.end] == m_cells[match.end - 1]) {
            ++match.end;
        }
        return {placeOf(match.first), placeOf(match.end)};
    }

private:
    [[nodiscard]] TextPlace placeOf(std::size_t index) const {
        const auto line = static_cast<std::int64_t>(m_buffer.trimmedCount());
        if (index == m_cells.size()) {
            return {line + m_end - 1, m_length};
        }
        const int cell = static_cast<int>(m_cells[index]);
        return {line + m_first + cell / m_buffer.cols(), cell % m_buffer.cols()};
    }

    const Buffer& m_buffer;
    const CaseMatching m_matching;
    int m_first = 0;
    int m_end = 0;
    int m_length = 0; ///< of the last row
    std::u32string m_text;
    std::vector<std::uint32_t> m_cells; ///< of each scalar, from the first of the line on
};

bool isWordScalar(char32_t scalar) {
    return scalar >= 0x80 || scalar == U'_' || (scalar >= U'0' && scalar <= U'9') ||
           (unicode::foldCase(scalar) >= U'a' && unicode::foldCase(scalar) <= U'z');
}

bool isWholeWord(std::u32string_view text, const Match& match) {
    return (match.first == 0 || !isWordScalar(text[match.first - 1])) &&
           (match.end == text.size() || !isWordScalar(text[match.end]));
}

} // namespace

std::optional<std::vector<TextRange>> search(
    const Buffer& buffer, std::string_view pattern, const SearchOptions& options) {
    std::vector<TextRange> found;
    if (pattern.empty()) {
        return found;
    }
    const CaseMatching matching = options.ignoresCase ? CaseMatching::folded : CaseMatching::exact;
    std::u32string wanted = unicode::fromUtf8(pattern);
    std::optional<RegularExpression> expression;
    std::optional<PlainText> plain;
    if (options.isRegularExpression) {
        expression = RegularExpression::compile(wanted, matching);
        if (!expression) {
            return {};
        }
    } else {
        if (options.ignoresCase) {
            std::ranges::transform(wanted, wanted.begin(), unicode::foldCase);
        }
        plain.emplace(std::move(wanted));
    }
    std::uint64_t steps = options.mostSteps;
    ScalarLine line(buffer, matching);
    for (int index = 0; index < buffer.lineCount() && steps > 0;) {
        line.read(index);
        index = line.endIndex();
        for (std::size_t from = 0; from < line.text().size();) {
            const std::optional<Match> match =
                plain ? plain->find(line.text(), from) : expression->find(line.text(), from, steps);
            if (!match) {
                break;
            }
            from = match->end;
            if (!options.wholeWords || isWholeWord(line.text(), *match)) {
                found.push_back(line.range(*match));
            }
            if (found.size() == options.limit) {
                return found;
            }
        }
    }
    return found;
}

} // namespace term
