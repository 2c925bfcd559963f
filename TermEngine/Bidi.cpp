#include "TermEngine/Bidi.h"

#include "TermEngine/Buffer.h"
#include "TermEngine/TextRange_p.h"
#include "TermEngine/UnicodeBidi_p.h"

#include <algorithm>
#include <numeric>

namespace term {
namespace bidi {
namespace {

using enum Class;

constexpr int deepestLevel = 125;
constexpr std::size_t mostOpenBrackets = 63;
constexpr std::size_t none = ~std::size_t{0};

Class classOf(char32_t scalar) {
    return (std::ranges::upper_bound(classRuns, scalar, {}, &ClassRun::first) - 1)->value;
}

const Mirror* mirrorOf(char32_t scalar) {
    const auto* const found = std::ranges::lower_bound(mirrors, scalar, {}, &Mirror::scalar);
    return found != mirrors.end() && found->scalar == scalar ? found : nullptr;
}

bool isInitiator(Class value) {
    return value == lri || value == rli || value == fsi;
}
bool isIsolate(Class value) {
    return isInitiator(value) || value == pdi;
}
/// What X9 takes out of the text.
bool isRemoved(Class value) {
    return value == bn || (value >= lre && value <= pdf);
}
bool isNeutral(Class value) {
    return value == b || value == s || value == ws || value == on || isIsolate(value);
}
Class directionOf(int level) {
    return level % 2 == 0 ? l : r;
}
/// The direction that a class has for brackets and neutrals; `on` for none.
Class strongOf(Class value) {
    return value == en || value == an || value == r ? r : value == l ? l : on;
}

/// Characters of one level that follow each other when isolates between them are passed over (BD13).
struct Sequence {
    std::vector<std::size_t> at;
    int level = 0;
    Class before = l; ///< sos
    Class after = l;  ///< eos
};

class Resolver {
public:
    explicit Resolver(std::u32string_view text)
        : m_text(text), m_original(text.size()), m_levels(text.size()), m_match(text.size(), none) {
        std::ranges::transform(text, m_original.begin(), classOf);
        m_classes = m_original;
        matchIsolates();
    }

    Levels resolve(std::optional<BidiDirection> direction) {
        m_paragraph = direction ? static_cast<int>(*direction) : firstStrong(0, m_text.size()).value_or(l) != l;
        setExplicitLevels();
        for (const Sequence& sequence : sequences()) {
            resolveWeak(sequence);
            resolveBrackets(sequence);
            resolveNeutral(sequence);
            for (const std::size_t i : sequence.at) {
                const Class value = m_classes[i];
                const int up = sequence.level % 2 == 0 ? (value == r ? 1 : value == l ? 0 : 2) : (value == r ? 0 : 1);
                m_levels[i] = static_cast<std::uint8_t>(sequence.level + up);
            }
        }
        return {static_cast<std::uint8_t>(m_paragraph), std::move(m_levels)};
    }

private:
    /// BD9: of an initiator its end, of an end its initiator.
    void matchIsolates() {
        std::vector<std::size_t> open;
        for (std::size_t i = 0; i < m_original.size(); ++i) {
            if (isInitiator(m_original[i])) {
                open.push_back(i);
            } else if (m_original[i] == pdi && !open.empty()) {
                m_match[i] = open.back();
                m_match[open.back()] = i;
                open.pop_back();
            }
        }
    }

    /// P2: without what stands in isolates. AL counts as R.
    std::optional<Class> firstStrong(std::size_t from, std::size_t end) const {
        for (std::size_t i = from; i < end; ++i) {
            if (m_original[i] == l || m_original[i] == r || m_original[i] == al) {
                return m_original[i] == l ? l : r;
            }
            if (isInitiator(m_original[i])) {
                if (m_match[i] == none) {
                    break;
                }
                i = m_match[i];
            }
        }
        return {};
    }

    /// X1 to X8.
    void setExplicitLevels() {
        struct Status {
            int level;
            Class override;
            bool isIsolate;
        };
        std::vector<Status> stack{{m_paragraph, on, false}};
        int overflowIsolates = 0;
        int overflowEmbeddings = 0;
        int validIsolates = 0;
        const auto next = [&stack](bool isRight) {
            const int level = stack.back().level;
            return isRight ? (level + 1) | 1 : (level + 2) & ~1;
        };
        for (std::size_t i = 0; i < m_original.size(); ++i) {
            const Class value = m_original[i];
            if (value == pdi) {
                if (overflowIsolates > 0) {
                    --overflowIsolates;
                } else if (validIsolates > 0) {
                    overflowEmbeddings = 0;
                    while (!stack.back().isIsolate) {
                        stack.pop_back();
                    }
                    stack.pop_back();
                    --validIsolates;
                }
            }
            m_levels[i] = static_cast<std::uint8_t>(value == b ? m_paragraph : stack.back().level);
            if (isRemoved(value)) {
                m_classes[i] = bn;
            } else if (stack.back().override != on && value != b) {
                m_classes[i] = stack.back().override;
            }
            if (value == pdf) {
                if (overflowIsolates == 0 && overflowEmbeddings > 0) {
                    --overflowEmbeddings;
                } else if (overflowIsolates == 0 && !stack.back().isIsolate && stack.size() > 1) {
                    stack.pop_back();
                }
            } else if (value >= lre && value <= rlo) {
                const int level = next(value == rle || value == rlo);
                if (level <= deepestLevel && overflowIsolates == 0 && overflowEmbeddings == 0) {
                    stack.push_back({level, value == rlo ? r : value == lro ? l : on, false});
                } else if (overflowIsolates == 0) {
                    ++overflowEmbeddings;
                }
            } else if (isInitiator(value)) {
                const std::size_t end = m_match[i] == none ? m_text.size() : m_match[i];
                const bool isRight = value == rli || (value == fsi && firstStrong(i + 1, end).value_or(l) == r);
                const int level = next(isRight);
                if (level <= deepestLevel && overflowIsolates == 0 && overflowEmbeddings == 0) {
                    ++validIsolates;
                    stack.push_back({level, on, true});
                } else {
                    ++overflowIsolates;
                }
            }
        }
    }

    /// X10
    std::vector<Sequence> sequences() const {
        std::vector<std::size_t> kept;
        for (std::size_t i = 0; i < m_original.size(); ++i) {
            if (!isRemoved(m_original[i])) {
                kept.push_back(i);
            }
        }
        std::vector<Sequence> made;
        std::vector<std::size_t> sequenceOf(m_text.size(), none);
        for (std::size_t k = 0; k < kept.size(); ++k) {
            const std::size_t i = kept[k];
            const bool begins = k == 0 || m_levels[kept[k - 1]] != m_levels[i];
            std::size_t in = begins ? none : sequenceOf[kept[k - 1]];
            if (begins && m_original[i] == pdi && m_match[i] != none) {
                in = sequenceOf[m_match[i]];
            }
            if (in == none) {
                in = made.size();
                made.push_back({.at = {}, .level = m_levels[i]});
                made.back().before =
                    directionOf(std::max<int>(m_levels[i], k == 0 ? m_paragraph : m_levels[kept[k - 1]]));
            }
            sequenceOf[i] = in;
            made[in].at.push_back(i);
            const bool isOpen = isInitiator(m_original[i]) && m_match[i] == none;
            made[in].after = directionOf(
                std::max<int>(m_levels[i], k + 1 == kept.size() || isOpen ? m_paragraph : m_levels[kept[k + 1]]));
        }
        return made;
    }

    /// W1 to W7
    void resolveWeak(const Sequence& sequence) {
        const std::vector<std::size_t>& at = sequence.at;
        const auto cls = [&](std::size_t k) -> Class& { return m_classes[at[k]]; };
        Class previous = sequence.before;
        Class strong = sequence.before;
        for (std::size_t k = 0; k < at.size(); ++k) {
            if (cls(k) == nsm) {
                cls(k) = isIsolate(previous) ? on : previous;
            }
            previous = cls(k);
            if (previous == l || previous == r || previous == al) {
                strong = previous;
            } else if (previous == en && strong == al) {
                cls(k) = an;
            }
        }
        for (std::size_t k = 0; k < at.size(); ++k) {
            if (cls(k) == al) {
                cls(k) = r;
            }
        }
        for (std::size_t k = 1; k + 1 < at.size(); ++k) {
            const Class number = cls(k - 1);
            if (number == cls(k + 1) &&
                ((number == en && (cls(k) == es || cls(k) == cs)) || (number == an && cls(k) == cs))) {
                cls(k) = number;
            }
        }
        for (std::size_t k = 0; k < at.size();) {
            std::size_t end = k;
            while (end < at.size() && cls(end) == et) {
                ++end;
            }
            if (end == k) {
                ++k;
                continue;
            }
            const bool isNumber = (k > 0 && cls(k - 1) == en) || (end < at.size() && cls(end) == en);
            for (; k < end; ++k) {
                cls(k) = isNumber ? en : on;
            }
        }
        strong = sequence.before;
        for (std::size_t k = 0; k < at.size(); ++k) {
            if (cls(k) == es || cls(k) == cs) {
                cls(k) = on;
            } else if (cls(k) == l || cls(k) == r) {
                strong = cls(k);
            } else if (cls(k) == en && strong == l) {
                cls(k) = l;
            }
        }
    }

    /// BD16, as places in the sequence, in the order of the opening ones.
    std::vector<std::pair<std::size_t, std::size_t>> bracketPairs(const Sequence& sequence) const {
        struct Open {
            char32_t closing;
            std::size_t at;
        };
        // The two that are canonically equivalent to others.
        const auto canonical = [](char32_t c) {
            return c == 0x2329 ? char32_t{0x3008} : c == 0x232A ? char32_t{0x3009} : c;
        };
        std::vector<Open> open;
        std::vector<std::pair<std::size_t, std::size_t>> pairs;
        for (std::size_t k = 0; k < sequence.at.size(); ++k) {
            const std::size_t i = sequence.at[k];
            const Mirror* mirror = m_classes[i] == on ? mirrorOf(m_text[i]) : nullptr;
            if (mirror == nullptr || mirror->bracket == Bracket::none) {
                continue;
            }
            if (mirror->bracket == Bracket::opening) {
                if (open.size() == mostOpenBrackets) {
                    break;
                }
                open.push_back({canonical(mirror->mirrored), k});
                continue;
            }
            const auto found = std::find_if(
                open.rbegin(), open.rend(), [&](const Open& o) { return o.closing == canonical(m_text[i]); });
            if (found != open.rend()) {
                pairs.emplace_back(found->at, k);
                open.erase(found.base() - 1, open.end());
            }
        }
        std::ranges::sort(pairs);
        return pairs;
    }

    /// N0
    void resolveBrackets(const Sequence& sequence) {
        const std::vector<std::size_t>& at = sequence.at;
        const Class embedding = directionOf(sequence.level);
        for (const auto& [first, last] : bracketPairs(sequence)) {
            bool hasOther = false;
            bool hasSame = false;
            for (std::size_t k = first + 1; k < last && !hasSame; ++k) {
                const Class strong = strongOf(m_classes[at[k]]);
                hasSame = strong == embedding;
                hasOther = hasOther || (strong != on && strong != embedding);
            }
            if (!hasSame && !hasOther) {
                continue;
            }
            Class given = embedding;
            if (!hasSame) {
                Class context = sequence.before;
                for (std::size_t k = first; k > 0; --k) {
                    if (const Class strong = strongOf(m_classes[at[k - 1]]); strong != on) {
                        context = strong;
                        break;
                    }
                }
                given = context;
            }
            for (std::size_t k : {first, last}) {
                do {
                    m_classes[at[k++]] = given;
                } while (k < at.size() && m_original[at[k]] == nsm);
            }
        }
    }

    /// N1 and N2
    void resolveNeutral(const Sequence& sequence) {
        const std::vector<std::size_t>& at = sequence.at;
        Class before = sequence.before;
        for (std::size_t k = 0; k < at.size();) {
            if (!isNeutral(m_classes[at[k]])) {
                before = strongOf(m_classes[at[k++]]);
                continue;
            }
            std::size_t end = k;
            while (end < at.size() && isNeutral(m_classes[at[end]])) {
                ++end;
            }
            const Class after = end == at.size() ? sequence.after : strongOf(m_classes[at[end]]);
            for (; k < end; ++k) {
                m_classes[at[k]] = before == after ? before : directionOf(sequence.level);
            }
        }
    }

    std::u32string_view m_text;
    std::vector<Class> m_original;
    std::vector<Class> m_classes;
    std::vector<std::uint8_t> m_levels;
    std::vector<std::size_t> m_match;
    int m_paragraph = 0;
};

/// Those that look the other way round, in pairs.
constexpr std::u32string_view boxes = U"┌┐└┘├┤┍┑┎┒┏┓┕┙┖┚┗┛┝┥┞┦┟┧┠┨┡┩┢┪┣┫╒╕╓╖╔╗╘╛╙╜╚╝╞╡╟╢╠╣╭╮╰╯╱╲▌▐▏▕▖▗▘▝▙▟▛▜╴╶╸╺╼╾";

} // namespace

Levels levelsOf(std::u32string_view text, std::optional<BidiDirection> direction) {
    return Resolver(text).resolve(direction);
}

void resetTrailing(std::span<std::uint8_t> levels, std::u32string_view text, std::uint8_t paragraph) {
    bool isTrailing = true;
    for (std::size_t i = text.size(); i > 0; --i) {
        const Class value = classOf(text[i - 1]);
        const bool separates = value == b || value == s;
        isTrailing = separates || (isTrailing && (value == ws || isIsolate(value) || isRemoved(value)));
        if (isTrailing) {
            levels[i - 1] = paragraph;
        }
    }
}

std::vector<int> visualOrder(std::span<const std::uint8_t> levels) {
    std::vector<int> order(levels.size());
    std::iota(order.begin(), order.end(), 0);
    const int highest = levels.empty() ? 0 : *std::ranges::max_element(levels);
    for (int level = highest; level > 0; --level) {
        for (std::size_t i = 0; i < levels.size(); ++i) {
            const std::size_t first = i;
            while (i < levels.size() && levels[i] >= level) {
                ++i;
            }
            std::reverse(
                order.begin() + static_cast<std::ptrdiff_t>(first), order.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    return order;
}

char32_t mirrored(char32_t scalar, BoxDrawing boxDrawing) {
    if (const Mirror* mirror = mirrorOf(scalar)) {
        return mirror->mirrored;
    }
    const std::size_t box = boxDrawing == BoxDrawing::mirrored ? boxes.find(scalar) : boxes.npos;
    return box == boxes.npos ? scalar : boxes[box ^ 1];
}

} // namespace bidi

namespace {

struct Paragraph {
    std::u32string text{};
    std::size_t rowStart = 0;   ///< of the row that is presented
    std::vector<int> columns{}; ///< of its characters
};

/// Of each character the first scalar counts, and its second column is no text.
Paragraph paragraphOf(const Buffer& buffer, int first, int end, int row) {
    Paragraph made;
    for (int index = first; index < end; ++index) {
        const BufferLine& line = buffer.lineAt(index);
        made.rowStart = index == row ? made.text.size() : made.rowStart;
        const int length = index == row ? line.size() : textLength(buffer, index);
        for (int col = 0; col < length; ++col) {
            if (line[col].isSpacer()) {
                continue;
            }
            char32_t memory = 0;
            const std::u32string_view scalars = buffer.cellArena().scalarValues(line[col], memory);
            made.text.push_back(scalars.empty() ? U' ' : scalars.front());
            if (index == row) {
                made.columns.push_back(col);
            }
        }
    }
    return made;
}

} // namespace

PresentedRow presentedRow(const Buffer& buffer, int index, const BidiPresentationState& state, int mostRows) {
    if (!state.isImplicit) {
        return {};
    }
    int first = index;
    while (first > 0 && buffer.lineAt(first).isWrapped() && index - first < mostRows) {
        --first;
    }
    int end = index + 1;
    while (end < buffer.lineCount() && buffer.lineAt(end).isWrapped() && end - first <= mostRows) {
        ++end;
    }
    if (end - first > mostRows) {
        return {};
    }
    const Paragraph paragraph = paragraphOf(buffer, first, end, index);
    const bool isRight = state.paragraph == BidiDirection::rightToLeft && !state.autodetectsDirection;
    if (!isRight && std::ranges::all_of(paragraph.text, [](char32_t scalar) { return scalar < 0x590; })) {
        return {};
    }
    std::optional<BidiDirection> direction = state.paragraph;
    if (state.autodetectsDirection) {
        direction.reset();
    }
    bidi::Levels levels = bidi::levelsOf(paragraph.text, direction);
    const std::span<std::uint8_t> row = std::span(levels.scalars).subspan(paragraph.rowStart, paragraph.columns.size());
    const std::u32string_view rowText = std::u32string_view(paragraph.text).substr(paragraph.rowStart, row.size());
    bidi::resetTrailing(row, rowText, levels.paragraph);
    if (std::ranges::all_of(row, [](std::uint8_t level) { return level == 0; })) {
        return {};
    }
    PresentedRow made;
    made.paragraph = levels.paragraph % 2 != 0 ? BidiDirection::rightToLeft : BidiDirection::leftToRight;
    const BufferLine& line = buffer.lineAt(index);
    made.isRightToLeft.resize(static_cast<std::size_t>(line.size()));
    for (const int unit : bidi::visualOrder(row)) {
        const int col = paragraph.columns[static_cast<std::size_t>(unit)];
        const bool isOdd = row[static_cast<std::size_t>(unit)] % 2 != 0;
        for (int part = col; part < col + (line[col].isWide() ? 2 : 1) && part < line.size(); ++part) {
            made.columns.push_back(part);
            made.isRightToLeft[static_cast<std::size_t>(part)] = isOdd;
        }
    }
    return made;
}

} // namespace term
