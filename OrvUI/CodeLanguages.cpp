#include "OrvUI/CodeHighlighter.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using Block = CodeLanguage::Block;
constexpr auto several = Block::Lines::several;
constexpr auto one = Block::Lines::one;
constexpr auto word = Block::Place::word;
constexpr auto line = Block::Place::line;

// Of two that begin alike, the longer one stands first.
constexpr Block cBlocks[] = {
    {"/*", "*/", CodeToken::comment, several},
    {"//", "", CodeToken::comment},
    {"\"", "\"", CodeToken::text, one, true},
    {"'", "'", CodeToken::text, one, true}};
constexpr Block goBlocks[] = {
    {"/*", "*/", CodeToken::comment, several},
    {"//", "", CodeToken::comment},
    {"`", "`", CodeToken::text, several},
    {"\"", "\"", CodeToken::text, one, true},
    {"'", "'", CodeToken::text, one, true}};
constexpr Block scriptBlocks[] = {
    {"/*", "*/", CodeToken::comment, several},
    {"//", "", CodeToken::comment},
    {"`", "`", CodeToken::text, several, true},
    {"\"", "\"", CodeToken::text, one, true},
    {"'", "'", CodeToken::text, one, true}};
// A quote alone begins a lifetime more often than a letter.
constexpr Block rustBlocks[] = {
    {"/*", "*/", CodeToken::comment, several},
    {"//", "", CodeToken::comment},
    {"r#\"", "\"#", CodeToken::text, several},
    {"'\"", "'", CodeToken::text},
    {"\"", "\"", CodeToken::text, several, true}};
constexpr Block jvmBlocks[] = {{"/*", "*/", CodeToken::comment, several},      {"//", "", CodeToken::comment},
                               {"\"\"\"", "\"\"\"", CodeToken::text, several}, {"'''", "'''", CodeToken::text, several},
                               {"\"", "\"", CodeToken::text, one, true},       {"'", "'", CodeToken::text, one, true}};
// A text that stands alone in three quotes is what the thing is for, so it has the colour of a comment.
constexpr Block pythonBlocks[] = {
    {"\"\"\"", "\"\"\"", CodeToken::comment, several, false, line},
    {"'''", "'''", CodeToken::comment, several, false, line},
    {"\"\"\"", "\"\"\"", CodeToken::text, several, true},
    {"'''", "'''", CodeToken::text, several, true},
    {"#", "", CodeToken::comment},
    {"\"", "\"", CodeToken::text, one, true},
    {"'", "'", CodeToken::text, one, true}};
constexpr Block phpBlocks[] = {
    {"/*", "*/", CodeToken::comment, several},
    {"//", "", CodeToken::comment},
    {"#[", "]", CodeToken::keyword},
    {"#", "", CodeToken::comment, one, false, word},
    {"\"", "\"", CodeToken::text, several, true},
    {"'", "'", CodeToken::text, several, true}};
constexpr Block hashBlocks[] = {
    {"#", "", CodeToken::comment, one, false, word},
    {"\"", "\"", CodeToken::text, one, true},
    {"'", "'", CodeToken::text, one, true}};
constexpr Block rubyBlocks[] = {
    {"=begin", "=end", CodeToken::comment, several, false, line},
    {"#", "", CodeToken::comment, one, false, word},
    {"\"", "\"", CodeToken::text, several, true},
    {"'", "'", CodeToken::text, several, true}};
constexpr Block shellBlocks[] = {
    {"#", "", CodeToken::comment, one, false, word},
    {"\"", "\"", CodeToken::text, several, true},
    {"'", "'", CodeToken::text, several}};
constexpr Block tomlBlocks[] = {
    {"#", "", CodeToken::comment, one, false, word},
    {"\"\"\"", "\"\"\"", CodeToken::text, several, true},
    {"'''", "'''", CodeToken::text, several},
    {"\"", "\"", CodeToken::text, one, true},
    {"'", "'", CodeToken::text, one}};
constexpr Block jsonBlocks[] = {
    {"/*", "*/", CodeToken::comment, several},
    {"//", "", CodeToken::comment},
    {"\"", "\"", CodeToken::text, one, true}};
constexpr Block sqlBlocks[] = {
    {"/*", "*/", CodeToken::comment, several}, {"--", "", CodeToken::comment}, {"'", "'", CodeToken::text, several}};
constexpr Block cssBlocks[] = {
    {"/*", "*/", CodeToken::comment, several},
    {"\"", "\"", CodeToken::text, one, true},
    {"'", "'", CodeToken::text, one, true}};
constexpr Block markupBlocks[] = {{"<!--", "-->", CodeToken::comment, several}};

using Grammar = CodeLanguage::Grammar;
using Types = CodeLanguage::Types;

constexpr CodeLanguage languages[] = {
    {.name = "JavaScript",
     .files = ".js .jsx .mjs .cjs .ts .tsx .mts .cts",
     .blocks = scriptBlocks,
     .keywords =
         "abstract as async await break case catch class const continue debugger declare default delete do else "
         "enum export extends finally for from function get if implements import in instanceof interface is "
         "keyof let namespace new of private protected public readonly return satisfies set static super "
         "switch this throw try type typeof var void while with yield",
     .constants = "true false null undefined NaN Infinity",
     .types = "string number boolean any unknown never object bigint symbol",
     .typeRule = Types::capitalized,
     .wordLetters = "_$"},
    {.name = "Python",
     .files = ".py .pyi .pyw",
     .blocks = pythonBlocks,
     .keywords = "and as assert async await break case class continue def del elif else except finally for from global "
                 "if import in is lambda match nonlocal not or pass raise return try while with yield",
     .constants = "True False None Ellipsis NotImplemented",
     .typeRule = Types::annotated},
    {.name = "Go",
     .files = ".go",
     .blocks = goBlocks,
     .keywords = "break case chan const continue default defer else fallthrough for func go goto if import interface "
                 "map package range return select struct switch type var",
     .constants = "true false nil iota",
     .types = "any bool byte comparable complex64 complex128 error float32 float64 int int8 int16 int32 int64 rune "
              "string uint uint8 uint16 uint32 uint64 uintptr"},
    {.name = "Rust",
     .files = ".rs",
     .blocks = rustBlocks,
     .keywords = "as async await break const continue crate dyn else enum extern fn for if impl in let loop match mod "
                 "move mut pub ref return self static struct super trait type unsafe use where while",
     .constants = "true false None Some Ok Err",
     .types = "bool char f32 f64 i8 i16 i32 i64 i128 isize str u8 u16 u32 u64 u128 usize",
     .typeRule = Types::capitalized},
    {.name = "PHP",
     .files = ".php .phtml",
     .blocks = phpBlocks,
     .keywords =
         "abstract and array as break case catch class clone const continue declare default do echo else elseif "
         "enum extends final finally fn for foreach function global if implements include include_once "
         "instanceof interface match namespace new or print private protected public readonly require "
         "require_once return static switch throw trait try use var while yield",
     .constants = "true false null TRUE FALSE NULL",
     .types = "bool float int iterable mixed never object self string void",
     .typeRule = Types::capitalized,
     .wordLetters = "_$"},
    {.name = "Ruby",
     .files = ".rb .rake .gemspec gemfile rakefile",
     .blocks = rubyBlocks,
     .keywords =
         "alias and attr_accessor attr_reader attr_writer begin break case class def defined? do else elsif end "
         "ensure extend for if in include loop module next not or private protected public raise redo require "
         "require_relative rescue retry return self super then undef unless until when while yield",
     .constants = "true false nil",
     .typeRule = Types::capitalized,
     .wordLetters = "_?",
     .sigils = "@:"},
    {.name = "Java",
     .files = ".java .kt .kts .gradle .groovy .scala",
     .blocks = jvmBlocks,
     .keywords =
         "abstract as assert break by case catch class companion const constructor continue data default do else "
         "enum extends final finally for fun get if implements import in infix init inline instanceof interface "
         "internal is it lateinit native new object open operator out override package private protected public "
         "record return sealed set static super suspend switch synchronized this throw throws transient try "
         "typealias val var vararg volatile when where while yield",
     .constants = "true false null",
     .types = "boolean byte char double float int long short void",
     .typeRule = Types::capitalized},
    {.name = "Dart",
     .files = ".dart",
     .blocks = jvmBlocks,
     .keywords =
         "abstract as assert async await base break case catch class const continue covariant default deferred do "
         "else enum export extends extension external factory final finally for get hide if implements import "
         "in interface is late library mixin new of on operator part required rethrow return sealed set show "
         "static super switch sync this throw try typedef var when while with yield",
     .constants = "true false null",
     .types = "bool double dynamic int num void",
     .typeRule = Types::capitalized},
    {.name = "C++",
     .files = ".c .h .cc .cpp .cxx .hh .hpp .hxx .m .mm .ino",
     .blocks = cBlocks,
     .keywords = "alignas alignof auto break case catch class co_await co_return co_yield concept const const_cast "
                 "consteval constexpr constinit continue decltype default delete do dynamic_cast else enum explicit "
                 "export extern final for friend goto if inline mutable namespace new noexcept operator override "
                 "private protected public register reinterpret_cast requires return sizeof static static_assert "
                 "static_cast struct switch template this thread_local throw try typedef typeid typename union using "
                 "virtual volatile while #include #define #if #ifdef #ifndef #else #elif #endif #pragma #undef",
     .constants = "true false nullptr NULL YES NO nil",
     .types = "bool char char8_t char16_t char32_t double float int long short signed unsigned void wchar_t size_t "
              "int8_t int16_t int32_t int64_t uint8_t uint16_t uint32_t uint64_t",
     .typeRule = Types::capitalized,
     .wordLetters = "_#"},
    {.name = "C#",
     .files = ".cs .swift",
     .blocks = cBlocks,
     .keywords =
         "abstract as async await base break case catch class const continue default defer delegate do else enum "
         "event explicit extension extern fileprivate finally for foreach func get guard if implicit import in "
         "init interface internal is let lock mutating namespace new operator out override params private "
         "protocol protected public readonly record ref repeat return sealed self set sizeof static struct "
         "super switch this throw throws try typeof using var virtual where while yield",
     .constants = "true false null nil",
     .types = "bool byte char decimal double float int long object sbyte short string uint ulong ushort void",
     .typeRule = Types::capitalized},
    {.name = "JSON",
     .files = ".json .jsonc .json5 .webmanifest .arb composer.lock",
     .blocks = jsonBlocks,
     .constants = "true false null",
     .keySigns = ":"},
    {.name = "YAML",
     .files = ".yml .yaml",
     .blocks = hashBlocks,
     .constants = "true false null yes no on off",
     .keySigns = ":",
     .wordLetters = "_-./"},
    {.name = "TOML",
     .files = ".toml .ini .cfg .conf .properties .env .editorconfig .lock pipfile",
     .blocks = tomlBlocks,
     .constants = "true false",
     .keySigns = "=",
     .wordLetters = "_-."},
    {.name = "CSS",
     .files = ".css .scss .sass .less",
     .blocks = cssBlocks,
     .constants = "auto block flex grid inherit initial inline none solid transparent unset",
     .keySigns = ":",
     .wordLetters = "_-",
     .sigils = "#$"},
    {.name = "Shell",
     .files = ".sh .bash .zsh .fish .profile .bashrc .zshrc .envrc procfile",
     .blocks = shellBlocks,
     .keywords = "alias break case cd continue do done echo elif else esac eval exec exit export fi for function if in "
                 "local printf read readonly return select set shift source test then trap unset until while",
     .constants = "true false",
     .wordLetters = "_-",
     .sigils = "$"},
    {.name = "Makefile",
     .files = "makefile gnumakefile justfile .mk",
     .blocks = hashBlocks,
     .keywords = "define else endef endif export ifdef ifeq ifndef ifneq include override",
     .keySigns = ":=",
     .wordLetters = "_-.",
     .sigils = "$"},
    {.name = "Dockerfile",
     .files = "dockerfile containerfile .dockerfile",
     .blocks = hashBlocks,
     .keywords = "ADD ARG AS CMD COPY ENTRYPOINT ENV EXPOSE FROM HEALTHCHECK LABEL ONBUILD RUN SHELL STOPSIGNAL USER "
                 "VOLUME WORKDIR",
     .sigils = "$"},
    {.name = "SQL",
     .files = ".sql .psql",
     .blocks = sqlBlocks,
     .keywords = "add all alter and as asc begin by cascade case check column commit constraint create default delete "
                 "desc distinct drop else end exists foreign from full group having if in index inner insert into is "
                 "join key left like limit not offset on or order outer primary references returning right rollback "
                 "select set table then to union unique update using values view when where with",
     .constants = "true false null",
     .types = "bigint boolean bytea char date decimal float int integer json jsonb numeric real serial smallint text "
              "timestamp timestamptz uuid varchar",
     .ignoresCase = true},
    {.name = "HTML",
     .files = ".html .htm .xhtml .xml .svg .vue .svelte .astro .plist .xaml .csproj .erb .twig",
     .grammar = Grammar::markup,
     .blocks = markupBlocks},
    {.name = "Markdown", .files = ".md .markdown .mdx", .grammar = Grammar::markdown},
};

} // namespace

std::span<const CodeLanguage> CodeLanguage::all() {
    return languages;
}

const CodeLanguage* CodeLanguage::ofFile(const QString& path) {
    const QString name = path.section(u'/', -1).toLower();
    const QString ending = name.contains(u'.') ? name.sliced(name.lastIndexOf(u'.')) : QString();
    const auto isOf = [&](const CodeLanguage& language) {
        const QStringList files = QString::fromLatin1(language.files).split(u' ');
        // "Dockerfile.dev" and ".env.local" are what they begin with.
        return files.contains(name) || (!ending.isEmpty() && files.contains(ending)) ||
               std::ranges::any_of(files, [&](const QString& file) {
                   return (file == "dockerfile"_L1 || file == ".env"_L1) && name.startsWith(file + u'.');
               });
    };
    const auto found = std::ranges::find_if(languages, isOf);
    return found == std::end(languages) ? nullptr : &*found;
}

} // namespace orv
