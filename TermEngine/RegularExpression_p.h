#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace term {

enum class CaseMatching : std::uint8_t { exact, folded };
enum class WordMatching : std::uint8_t { anywhere, wholeWords };

/// Whether the scalars on both sides of a place are of one word.
[[nodiscard]] bool isWithinWord(std::u32string_view text, std::size_t at);

/// A regular expression in the grammar of ECMAScript, without what needs a text to be tried again: references to groups
/// and looking ahead or behind. All ways are followed at once, so that the time is at most the length of the text by
/// that of the expression, whatever the two are.
///
/// Of expressions that are compiled for folded texts, the text has to be folded (unicode::foldCase) by the caller.
class RegularExpression {
public:
    /// Instructions: a repeat is written out as often as it says.
    static constexpr std::size_t largestProgram = 4000;

    struct Match {
        std::size_t first = 0;
        std::size_t end = 0;
        bool operator==(const Match&) const = default;
    };

    /// Nothing where the text is no expression, or too large a one. With whole words, no match begins or ends within
    /// one.
    [[nodiscard]] static std::optional<RegularExpression> compile(
        std::u32string_view pattern, CaseMatching matching = CaseMatching::exact,
        WordMatching words = WordMatching::anywhere);

    /// The first match from a place on that is not empty: of those that begin there, the one that the order of the
    /// alternatives prefers. What stands before `from` counts for ^ and \b. Each step takes one from `budget`; when it
    /// is used up, nothing is found yet, and `resume` goes on in the same text.
    [[nodiscard]] std::optional<Match> find(std::u32string_view text, std::size_t from, std::uint64_t& budget);
    [[nodiscard]] std::optional<Match> resume(std::u32string_view text, std::uint64_t& budget);
    /// The budget ended the search, and not the text or a match.
    [[nodiscard]] bool isUnfinished() const { return m_isUnfinished; }

private:
    friend class RegularExpressionParser;
    enum class Op : std::uint8_t {
        scalar,
        set,
        split,
        jump,
        textStart,
        textEnd,
        wordEdge,
        noWordEdge,
        outsideWord,
        match
    };
    struct Instruction {
        Op op = Op::match;
        char32_t value = 0; ///< the scalar, or the number of the set
        int first = 0;      ///< how far on; of a split, the preferred way
        int second = 0;
    };
    struct Set {
        std::vector<std::pair<char32_t, char32_t>> ranges{};
        bool isNegated = false;
        /// Sorts and joins the ranges, as `contains` needs them.
        void normalize();
        [[nodiscard]] bool contains(char32_t scalar) const;
    };
    struct Thread {
        int instruction = 0;
        std::size_t start = 0;
    };
    struct Threads {
        std::vector<Thread> list{};
        std::vector<std::uint64_t> seen{}; ///< by instruction: the round in which it came into the list
        std::uint64_t round = 0;
    };

    [[nodiscard]] bool accepts(const Instruction& instruction, char32_t scalar) const;
    [[nodiscard]] static bool isMet(Op condition, std::u32string_view text, std::size_t at);
    void follow(Threads& threads, Thread thread, std::u32string_view text, std::size_t at);
    void takeScalar(std::u32string_view text);
    void findStarts();

    std::vector<Instruction> m_program;
    std::vector<Set> m_sets;
    std::array<bool, 128> m_asciiStarts{}; ///< what a match can begin with
    Threads m_now;
    Threads m_next;
    std::vector<int> m_stack;
    std::uint64_t m_round = 0;
    // Of the search that is under way.
    std::size_t m_at = 0;
    std::optional<Match> m_found;
    bool m_isUnfinished = false;
    std::uint64_t m_steps = 0; ///< for one scalar
};

} // namespace term
