#include "TermEngine/LogicalLine_p.h"
#include "TermEngine/TextRange.h"

#include <algorithm>
#include <functional>
#include <regex>

namespace term {
namespace {

using Match = std::pair<std::size_t, std::size_t>;
/// The first match from a byte on: its first byte and its end.
using Matcher = std::function<std::optional<Match>(const std::string& text, std::size_t from)>;

/// The library's regular expressions go as deep into the stack as a text is long, so a long one is looked through in
/// windows that overlap by half: matches of up to half a window are found in any case.
constexpr std::size_t expressionWindow = 512;

char folded(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

Matcher plainMatcher(std::string_view pattern, bool ignoresCase) {
    return [wanted = std::string(pattern), ignoresCase](const std::string& text, std::size_t from) {
        const auto equal = [ignoresCase](char a, char b) { return ignoresCase ? folded(a) == folded(b) : a == b; };
        const auto begin = text.begin() + static_cast<std::ptrdiff_t>(from);
        const auto found = std::search(begin, text.end(), wanted.begin(), wanted.end(), equal);
        const auto at = static_cast<std::size_t>(found - text.begin());
        return found == text.end() ? std::nullopt : std::optional(Match{at, at + wanted.size()});
    };
}

std::optional<Matcher> expressionMatcher(std::string_view pattern, bool ignoresCase) {
    try {
        auto flags = std::regex::ECMAScript | std::regex::optimize;
        if (ignoresCase) {
            flags |= std::regex::icase;
        }
        return [expression = std::regex(std::string(pattern), flags)](
                   const std::string& text, std::size_t from) -> std::optional<Match> {
            namespace flag = std::regex_constants;
            for (;; from += expressionWindow / 2) {
                const std::size_t last = std::min(text.size(), from + expressionWindow);
                auto rules = flag::match_not_null | (from > 0 ? flag::match_prev_avail : flag::match_default);
                if (last < text.size()) {
                    rules |= flag::match_not_eol;
                }
                std::cmatch match;
                if (std::regex_search(text.data() + from, text.data() + last, match, expression, rules)) {
                    const std::size_t at = from + static_cast<std::size_t>(match.position());
                    return Match{at, at + static_cast<std::size_t>(match.length())};
                }
                if (last == text.size()) {
                    return {};
                }
            }
        };
    } catch (const std::regex_error&) {
        return {};
    }
}

bool isWordByte(char c) {
    return (c & 0x80) != 0 || c == '_' || (c >= '0' && c <= '9') || (folded(c) >= 'a' && folded(c) <= 'z');
}

bool isWholeWord(const std::string& text, const Match& match) {
    return (match.first == 0 || !isWordByte(text[match.first - 1])) &&
           (match.second == text.size() || !isWordByte(text[match.second]));
}

} // namespace

std::optional<std::vector<TextRange>> search(
    const Buffer& buffer, std::string_view pattern, const SearchOptions& options) {
    std::vector<TextRange> found;
    if (pattern.empty()) {
        return found;
    }
    const std::optional<Matcher> next = options.isRegularExpression
                                            ? expressionMatcher(pattern, options.ignoresCase)
                                            : std::optional(plainMatcher(pattern, options.ignoresCase));
    if (!next) {
        return {};
    }
    for (int index = 0; index < buffer.lineCount();) {
        const LogicalLine line = LogicalLine::at(buffer, index);
        // The first line of the history may go on with one that is gone.
        index = std::max(line.endIndex, index + 1);
        for (std::size_t from = 0; from < line.text.size();) {
            const std::optional<Match> match = (*next)(line.text, from);
            if (!match) {
                break;
            }
            from = match->second;
            if (!options.wholeWords || isWholeWord(line.text, *match)) {
                found.push_back({line.places[match->first], line.places[match->second]});
            }
            if (found.size() == options.limit) {
                return found;
            }
        }
    }
    return found;
}

} // namespace term
