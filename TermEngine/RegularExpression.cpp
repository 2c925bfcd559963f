#include "TermEngine/RegularExpression_p.h"
#include "TermEngine/Unicode.h"
#include "TermEngine/UnicodeTables_p.h"

#include <algorithm>

namespace term {
namespace {

constexpr char32_t lastScalar = 0x10FFFF;
/// That are passed over because no match begins with them.
constexpr std::size_t scalarsAStep = 4;

bool isWordScalar(char32_t scalar) {
    return (scalar >= U'0' && scalar <= U'9') || (scalar >= U'a' && scalar <= U'z') ||
           (scalar >= U'A' && scalar <= U'Z') || scalar == U'_';
}

bool isWordEdge(std::u32string_view text, std::size_t at) {
    const bool before = at > 0 && isWordScalar(text[at - 1]);
    return before != (at < text.size() && isWordScalar(text[at]));
}

} // namespace

bool isWithinWord(std::u32string_view text, std::size_t at) {
    const auto classAt = [text](std::size_t index) {
        return text[index] == U'_' ? unicode::WordClass::joining : unicode::wordClass(text[index]);
    };
    return at > 0 && at < text.size() && areOneWord(classAt(at - 1), classAt(at));
}

/// Recursive descent; each part is a piece of program whose jumps are relative, so that it can be moved and repeated.
class RegularExpressionParser {
public:
    using Expression = RegularExpression;
    using Op = Expression::Op;
    using Set = Expression::Set;
    using Piece = std::vector<Expression::Instruction>;

    RegularExpressionParser(std::u32string_view pattern, CaseMatching matching)
        : m_pattern(pattern), m_folds(matching == CaseMatching::folded) {}

    std::optional<Expression> parse(WordMatching words) {
        Piece program;
        const bool isOfWords = words == WordMatching::wholeWords;
        if (isOfWords) {
            program.push_back({.op = Op::outsideWord});
        }
        append(program, alternatives());
        if (m_failed || m_at < m_pattern.size()) {
            return {};
        }
        if (isOfWords) {
            program.push_back({.op = Op::outsideWord});
        }
        program.push_back({});
        Expression made;
        made.m_program = std::move(program);
        made.m_sets = std::move(m_sets);
        made.m_now.seen.resize(made.m_program.size());
        made.m_next.seen.resize(made.m_program.size());
        made.findStarts();
        return made;
    }

private:
    static constexpr int deepestGroup = 100;
    static constexpr int mostRepeats = 1000;

    struct Repeats {
        int least = 0;
        int most = 0; ///< negative: without end
        bool isLazy = false;
    };

    [[nodiscard]] bool has(char32_t scalar) const { return m_at < m_pattern.size() && m_pattern[m_at] == scalar; }
    bool take(std::u32string_view text) {
        const bool found = m_pattern.substr(m_at).starts_with(text);
        m_at += found ? text.size() : 0;
        return found;
    }
    Piece fail() {
        m_failed = true;
        m_at = m_pattern.size();
        return {};
    }
    static int size(const Piece& piece) { return static_cast<int>(piece.size()); }
    void append(Piece& piece, const Piece& more) {
        if (piece.size() + more.size() > Expression::largestProgram) {
            fail();
            return;
        }
        piece.insert(piece.end(), more.begin(), more.end());
    }

    Piece alternatives() {
        Piece first = sequence();
        if (!take(U"|")) {
            return first;
        }
        const Piece second = alternatives();
        Piece made{{.op = Op::split, .first = 1, .second = size(first) + 2}};
        append(made, first);
        made.push_back({.op = Op::jump, .first = size(second) + 1});
        append(made, second);
        return made;
    }

    Piece sequence() {
        Piece made;
        while (m_at < m_pattern.size() && !has(U'|') && !has(U')')) {
            append(made, repeated(atom()));
        }
        return made;
    }

    Piece repeated(Piece part) {
        const std::optional<Repeats> repeats = quantifier();
        if (!repeats) {
            return part;
        }
        if (has(U'*') || has(U'+') || has(U'?')) {
            return fail();
        }
        Piece made;
        for (int i = 0; i < repeats->least && !m_failed; ++i) {
            append(made, part);
        }
        if (repeats->most < 0) {
            Piece loop{fork(size(part) + 2, repeats->isLazy)};
            append(loop, part);
            loop.push_back({.op = Op::jump, .first = -size(part) - 1});
            append(made, loop);
            return made;
        }
        Piece optional;
        for (int i = repeats->least; i < repeats->most && !m_failed; ++i) {
            Piece body = part;
            append(body, optional);
            optional = {fork(size(body) + 1, repeats->isLazy)};
            append(optional, body);
        }
        append(made, optional);
        return made;
    }

    /// On with the next instruction, or past so many; a lazy one passes rather.
    static Expression::Instruction fork(int past, bool isLazy) {
        return {.op = Op::split, .first = isLazy ? past : 1, .second = isLazy ? 1 : past};
    }

    std::optional<Repeats> quantifier() {
        Repeats made;
        if (take(U"*")) {
            made = {0, -1};
        } else if (take(U"+")) {
            made = {1, -1};
        } else if (take(U"?")) {
            made = {0, 1};
        } else if (take(U"{")) {
            const std::optional<int> least = number();
            made.least = least.value_or(0);
            made.most = made.least;
            if (take(U",")) {
                made.most = has(U'}') ? -1 : number().value_or(0);
            }
            if (!least || !take(U"}") || (made.most >= 0 && made.most < made.least)) {
                fail();
            }
        } else {
            return {};
        }
        made.isLazy = take(U"?");
        return made;
    }

    std::optional<int> number() {
        std::optional<int> value;
        for (; m_at < m_pattern.size() && m_pattern[m_at] >= U'0' && m_pattern[m_at] <= U'9'; ++m_at) {
            value = value.value_or(0) * 10 + static_cast<int>(m_pattern[m_at] - U'0');
            if (*value > mostRepeats) {
                fail();
                return {};
            }
        }
        return value;
    }

    Piece atom() {
        const char32_t scalar = m_pattern[m_at++];
        switch (scalar) {
        case U'(':
            return group();
        case U'[':
            return characterClass();
        case U'.':
            return ofSet({.ranges = {{U'\n', U'\n'}, {U'\r', U'\r'}, {0x2028, 0x2029}}, .isNegated = true});
        case U'^':
            return {{.op = Op::textStart}};
        case U'$':
            return {{.op = Op::textEnd}};
        case U'*':
        case U'+':
        case U'?':
        case U'{':
            return fail();
        case U'\\':
            break;
        default:
            return ofScalar(scalar);
        }
        if (take(U"b")) {
            return {{.op = Op::wordEdge}};
        }
        if (take(U"B")) {
            return {{.op = Op::noWordEdge}};
        }
        if (std::optional<Set> set = classEscape()) {
            return ofSet(std::move(*set));
        }
        const std::optional<char32_t> escaped = scalarEscape();
        return escaped ? ofScalar(*escaped) : fail();
    }

    Piece group() {
        if (++m_depth > deepestGroup || (take(U"?") && !take(U":"))) {
            return fail();
        }
        Piece made = alternatives();
        --m_depth;
        if (!take(U")")) {
            return fail();
        }
        return made;
    }

    Piece ofScalar(char32_t scalar) {
        return {{.op = Op::scalar, .value = m_folds ? unicode::foldCase(scalar) : scalar}};
    }

    Piece ofSet(Set set) {
        set.normalize();
        if (m_folds) {
            addFolded(set);
            set.normalize();
        }
        m_sets.push_back(std::move(set));
        return {{.op = Op::set, .value = static_cast<char32_t>(m_sets.size() - 1)}};
    }

    /// The text is folded: what a set holds stands there in its folded form. Nobody who writes a range beyond ASCII
    /// means the s and the k, to which the long s and the Kelvin sign fold.
    static void addFolded(Set& set) {
        const auto given = set.ranges;
        for (const auto& [first, last] : given) {
            for (const unicode::FoldingRun& run : unicode::foldingRuns) {
                const auto step = static_cast<char32_t>(run.step);
                const char32_t skipped = first > run.first ? (first - run.first + step - 1) / step : 0;
                for (char32_t scalar = run.first + skipped * step; scalar <= std::min(last, run.last); scalar += step) {
                    const auto folded = static_cast<char32_t>(static_cast<std::int32_t>(scalar) + run.distance);
                    if (folded >= 0x80 || scalar < 0x80 || first == last) {
                        set.ranges.emplace_back(folded, folded);
                    }
                }
            }
        }
    }

    /// \d, \w, \s and their opposites.
    std::optional<Set> classEscape() {
        if (m_at == m_pattern.size()) {
            return {};
        }
        Set set;
        const char32_t letter = m_pattern[m_at];
        switch (letter | 0x20U) {
        case U'd':
            set.ranges = {{U'0', U'9'}};
            break;
        case U'w':
            set.ranges = {{U'0', U'9'}, {U'A', U'Z'}, {U'_', U'_'}, {U'a', U'z'}};
            break;
        case U's':
            set.ranges = {{0x09, 0x0D},     {U' ', U' '},     {0xA0, 0xA0},     {0x1680, 0x1680}, {0x2000, 0x200A},
                          {0x2028, 0x2029}, {0x202F, 0x202F}, {0x205F, 0x205F}, {0x3000, 0x3000}, {0xFEFF, 0xFEFF}};
            break;
        default:
            return {};
        }
        ++m_at;
        set.isNegated = letter < U'a';
        return set;
    }

    std::optional<char32_t> scalarEscape() {
        if (m_at == m_pattern.size()) {
            return {};
        }
        const char32_t letter = m_pattern[m_at++];
        constexpr std::u32string_view controls = U"tnvfr";
        if (const std::size_t at = controls.find(letter); at != std::u32string_view::npos) {
            return U'\t' + static_cast<char32_t>(at);
        }
        if (letter == U'0') {
            return char32_t{0};
        }
        if (letter == U'x') {
            return hexadecimal(2);
        }
        if (letter == U'u') {
            if (!take(U"{")) {
                return hexadecimal(4);
            }
            const std::size_t end = m_pattern.find(U'}', m_at);
            const auto value = end == m_pattern.npos ? std::nullopt : hexadecimal(end - m_at);
            return take(U"}") ? value : std::nullopt;
        }
        const bool isName =
            (letter >= U'1' && letter <= U'9') || ((letter | 0x20U) >= U'a' && (letter | 0x20U) <= U'z');
        return isName ? std::nullopt : std::optional(letter);
    }

    std::optional<char32_t> hexadecimal(std::size_t digits) {
        char32_t value = 0;
        if (digits == 0 || digits > 6 || m_pattern.size() - m_at < digits) {
            return {};
        }
        for (; digits > 0; --digits) {
            constexpr std::u32string_view known = U"0123456789abcdef";
            const std::size_t digit = known.find(unicode::foldCase(m_pattern[m_at++]));
            if (digit == known.npos) {
                return {};
            }
            value = value * 16 + static_cast<char32_t>(digit);
        }
        return value <= lastScalar ? std::optional(value) : std::nullopt;
    }

    Piece characterClass() {
        Set set;
        set.isNegated = take(U"^");
        while (!take(U"]")) {
            std::optional<Set> whole;
            const std::optional<char32_t> first = classScalar(whole);
            if (whole) {
                addTo(set, *whole);
                continue;
            }
            if (!first) {
                return fail();
            }
            char32_t last = *first;
            if (has(U'-') && m_at + 1 < m_pattern.size() && m_pattern[m_at + 1] != U']') {
                ++m_at;
                std::optional<Set> end;
                last = classScalar(end).value_or(0);
                if (end || last < *first) {
                    return fail();
                }
            }
            set.ranges.emplace_back(*first, last);
        }
        return ofSet(std::move(set));
    }

    /// One scalar of a class, or the class that an escape stands for.
    std::optional<char32_t> classScalar(std::optional<Set>& whole) {
        if (m_at == m_pattern.size()) {
            return {};
        }
        if (!take(U"\\")) {
            return m_pattern[m_at++];
        }
        whole = classEscape();
        if (whole) {
            return {};
        }
        return take(U"b") ? std::optional<char32_t>(0x08) : scalarEscape();
    }

    static void addTo(Set& set, Set more) {
        if (!more.isNegated) {
            set.ranges.insert(set.ranges.end(), more.ranges.begin(), more.ranges.end());
            return;
        }
        char32_t next = 0;
        for (const auto& [first, last] : more.ranges) {
            if (first > next) {
                set.ranges.emplace_back(next, first - 1);
            }
            next = last + 1;
        }
        set.ranges.emplace_back(next, lastScalar);
    }

    std::u32string_view m_pattern;
    const bool m_folds;
    std::size_t m_at = 0;
    int m_depth = 0;
    bool m_failed = false;
    std::vector<Set> m_sets;
};

void RegularExpression::Set::normalize() {
    std::ranges::sort(ranges);
    std::vector<std::pair<char32_t, char32_t>> joined;
    for (const auto& [first, last] : ranges) {
        if (!joined.empty() && first <= joined.back().second + 1) {
            joined.back().second = std::max(joined.back().second, last);
        } else {
            joined.emplace_back(first, last);
        }
    }
    ranges = std::move(joined);
}

bool RegularExpression::Set::contains(char32_t scalar) const {
    const auto behind = std::ranges::upper_bound(ranges, scalar, {}, &std::pair<char32_t, char32_t>::first);
    const bool found = behind != ranges.begin() && scalar <= (behind - 1)->second;
    return found != isNegated;
}

std::optional<RegularExpression> RegularExpression::compile(
    std::u32string_view pattern, CaseMatching matching, WordMatching words) {
    if (pattern.size() > largestProgram) {
        return {};
    }
    return RegularExpressionParser(pattern, matching).parse(words);
}

bool RegularExpression::accepts(const Instruction& instruction, char32_t scalar) const {
    return instruction.op == Op::scalar ? instruction.value == scalar
                                        : instruction.op == Op::set && m_sets[instruction.value].contains(scalar);
}

bool RegularExpression::isMet(Op condition, std::u32string_view text, std::size_t at) {
    switch (condition) {
    case Op::textStart:
        return at == 0;
    case Op::textEnd:
        return at == text.size();
    case Op::wordEdge:
        return isWordEdge(text, at);
    case Op::noWordEdge:
        return !isWordEdge(text, at);
    default:
        return !isWithinWord(text, at);
    }
}

/// Adds what a way comes to without taking a scalar, the preferred first.
void RegularExpression::follow(Threads& threads, Thread thread, std::u32string_view text, std::size_t at) {
    m_stack.assign(1, thread.instruction);
    for (; !m_stack.empty(); ++m_steps) {
        const int here = m_stack.back();
        m_stack.pop_back();
        if (std::exchange(threads.seen[static_cast<std::size_t>(here)], threads.round) == threads.round) {
            continue;
        }
        const Instruction& instruction = m_program[static_cast<std::size_t>(here)];
        switch (instruction.op) {
        case Op::split:
            m_stack.push_back(here + instruction.second);
            m_stack.push_back(here + instruction.first);
            break;
        case Op::jump:
            m_stack.push_back(here + instruction.first);
            break;
        case Op::textStart:
        case Op::textEnd:
        case Op::wordEdge:
        case Op::noWordEdge:
        case Op::outsideWord:
            if (isMet(instruction.op, text, at)) {
                m_stack.push_back(here + 1);
            }
            break;
        case Op::scalar:
        case Op::set:
        case Op::match:
            threads.list.push_back({here, thread.start});
            break;
        }
    }
}

/// What can stand at the front of a match, when conditions are taken as fulfilled.
void RegularExpression::findStarts() {
    std::vector<bool> seen(m_program.size());
    m_stack.assign(1, 0);
    while (!m_stack.empty()) {
        const auto here = static_cast<std::size_t>(m_stack.back());
        m_stack.pop_back();
        if (seen[here]) {
            continue;
        }
        seen[here] = true;
        const Instruction& instruction = m_program[here];
        const int next = static_cast<int>(here);
        if (instruction.op == Op::split || instruction.op == Op::jump) {
            m_stack.push_back(next + instruction.first);
            m_stack.push_back(next + (instruction.op == Op::split ? instruction.second : instruction.first));
        } else if (instruction.op == Op::scalar || instruction.op == Op::set) {
            for (char32_t scalar = 0; scalar < 128; ++scalar) {
                m_asciiStarts[scalar] = m_asciiStarts[scalar] || accepts(instruction, scalar);
            }
        } else if (instruction.op != Op::match) {
            m_stack.push_back(next + 1);
        }
    }
}

std::optional<RegularExpression::Match> RegularExpression::find(
    std::u32string_view text, std::size_t from, std::uint64_t& budget) {
    m_at = from;
    m_found.reset();
    m_now.list.clear();
    m_now.round = ++m_round;
    return resume(text, budget);
}

std::optional<RegularExpression::Match> RegularExpression::resume(std::u32string_view text, std::uint64_t& budget) {
    m_isUnfinished = false;
    for (; m_at <= text.size(); ++m_at) {
        if (budget == 0) {
            m_isUnfinished = true;
            return {};
        }
        m_steps = 1;
        if (m_now.list.empty()) {
            if (m_found) {
                break;
            }
            const std::size_t before = m_at;
            const std::size_t end =
                before + std::min<std::uint64_t>(
                             text.size() - before, scalarsAStep * std::min<std::uint64_t>(budget, text.size()));
            while (m_at < end && text[m_at] < 128 && !m_asciiStarts[text[m_at]]) {
                ++m_at;
            }
            m_steps += (m_at - before) / scalarsAStep;
        }
        if (!m_found) {
            follow(m_now, {0, m_at}, text, m_at);
        }
        takeScalar(text);
        budget -= std::min(budget, m_steps);
    }
    return m_found;
}

/// Goes on with all ways that can take the scalar at `m_at`.
void RegularExpression::takeScalar(std::u32string_view text) {
    m_steps += m_now.list.size();
    m_next.list.clear();
    m_next.round = ++m_round;
    for (const Thread& thread : m_now.list) {
        const Instruction& instruction = m_program[static_cast<std::size_t>(thread.instruction)];
        if (instruction.op == Op::match) {
            if (thread.start < m_at) {
                m_found = Match{thread.start, m_at};
                break;
            }
        } else if (m_at < text.size() && accepts(instruction, text[m_at])) {
            follow(m_next, {thread.instruction + 1, thread.start}, text, m_at + 1);
        }
    }
    std::swap(m_now, m_next);
}

} // namespace term
