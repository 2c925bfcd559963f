#pragma once

#include <QList>
#include <QString>

#include <span>

namespace orv {

/// What a piece of a source text is; what is none of these is plain.
enum class CodeToken { keyword, text, function, type, constant, comment };

struct CodeSpan {
    int start = 0;
    int length = 0;
    CodeToken token = CodeToken::keyword;

    bool operator==(const CodeSpan&) const = default;
};

/// A language as far as colours need it. Words are separated by spaces.
struct CodeLanguage {
    enum class Grammar { program, markup, markdown };
    /// From `open` to `close`. An empty close is the end of the line.
    struct Block {
        const char* open;
        const char* close;
        CodeToken token;
        enum class Lines { one, several } lines = Lines::one;
        bool hasEscapes = false;
        enum class Place {
            anywhere,
            word, ///< where a word could begin: a "#" of a shell
            line, ///< where the line's text begins
        } place = Place::anywhere;
    };
    enum class Types {
        none,
        capitalized, ///< every word that begins with a capital letter, unless it is called or all in capitals
        annotated,   ///< what follows a colon behind a name, or an arrow
    };

    const char* name;
    const char* files; ///< endings (".py") and whole names ("makefile"), in lower case
    Grammar grammar = Grammar::program;
    std::span<const Block> blocks = {};
    const char* keywords = "";
    const char* constants = "";
    const char* types = "";
    Types typeRule = Types::none;
    const char* keySigns = "";     ///< a word or string before one of these at its line's begin is a key: ":" of YAML
    const char* wordLetters = "_"; ///< what belongs to words besides letters and digits
    bool ignoresCase = false;      ///< of keywords and types, which stand here in lower case
    const char* sigils = "";       ///< what a word that is coloured as a constant begins with: "$" of PHP

    /// Null when none is known for such a file.
    [[nodiscard]] static const CodeLanguage* ofFile(const QString& path);
    [[nodiscard]] static std::span<const CodeLanguage> all();
};

/// What is open at the end of a line: 0 for nothing. Handed from line to line of one text.
using CodeState = int;

/// The coloured pieces of a line, in order and apart from each other; `state` goes from its beginning to its end. Any
/// thread.
[[nodiscard]] QList<CodeSpan> highlightLine(const CodeLanguage& language, QStringView line, CodeState& state);

} // namespace orv
