#include "OrvUI/CodeHighlighter.h"

#include <gtest/gtest.h>

#include <random>

using namespace Qt::StringLiterals;
using namespace orv;

namespace {

/// Each line with its pieces in brackets, behind the first letter of what they are: "k[from] x".
QString highlighted(const QString& file, const QString& text) {
    constexpr char letters[] = "ksftnc"; // keyword, text, function, type, constant, comment
    const CodeLanguage* language = CodeLanguage::ofFile(file);
    if (language == nullptr) {
        return text;
    }
    QStringList lines;
    CodeState state = 0;
    for (const QString& line : text.split(u'\n')) {
        QString out;
        int at = 0;
        for (const CodeSpan& span : highlightLine(*language, line, state)) {
            out += line.sliced(at, span.start - at) + QChar::fromLatin1(letters[static_cast<size_t>(span.token)]) +
                   u'[' + line.sliced(span.start, span.length) + u']';
            at = span.start + span.length;
        }
        lines.append(out + line.sliced(at));
    }
    return lines.join(u'\n');
}

} // namespace

TEST(CodeHighlighter, KnowsTheLanguagesOfTheStacks) {
    struct Case {
        const char* file;
        const char* text;
        const char* expected;
    };
    const Case cases[] = {
        {"api/coupon.py", "from decimal import Decimal, ROUND", "k[from] decimal k[import] Decimal, ROUND"},
        {"a.py", "class Coupon(BaseModel):  # why", "k[class] n[Coupon](BaseModel):  c[# why]"},
        {"a.py", "    \"\"\"A discount\n    of two lines.\"\"\"\nx = \"\"\"a",
         "    c[\"\"\"A discount]\nc[    of two lines.\"\"\"]\nx = s[\"\"\"a]"},
        {"a.py", "    code: str = Field(min=3, x=\"a\\\"b\")", "    code: t[str] = Field(min=n[3], x=s[\"a\\\"b\"])"},
        {"a.py", "async def f(c: Cart | None = d) -> list[int]:",
         "k[async] k[def] f[f](c: t[Cart] | n[None] = d) -> t[list][t[int]]:"},
        {"a.py", "@router.get(\"/total\")", "k[@router.get](s[\"/total\"])"},
        {"a.py", "x = {\"a\": b, 'c': d[1:e]}", "x = {s[\"a\"]: b, s['c']: d[n[1]:e]}"},
        {"a.tsx", "const x: Map<string, T> = `a\n${b}` + y.default; // z",
         "k[const] x: t[Map]<t[string], t[T]> = s[`a]\ns[${b}`] + y.default; c[// z]"},
        {"a.go", "func main() { s := `raw\\` /* c */ + \"a\\n\" }",
         "k[func] f[main]() { s := s[`raw\\`] c[/* c */] + s[\"a\\n\"] }"},
        {"a.rs", "pub fn f<'a>(s: &'a str) -> Option<u8> { Some(0x1f) }",
         "k[pub] k[fn] f[f]<'a>(s: &'a t[str]) -> t[Option]<t[u8]> { n[Some](n[0x1f]) }"},
        {"a.php", "public function f($x) { return 'a'; } // b",
         "k[public] k[function] f[f]($x) { k[return] s['a']; } c[// b]"},
        {"a.rb", "def name; @x = :sym # c", "k[def] f[name]; n[@x] = n[:sym] c[# c]"},
        {"A.kt", "class Foo : Bar() { val s = \"\"\"x\ny\"\"\" }",
         "k[class] n[Foo] : Bar() { k[val] s = s[\"\"\"x]\ns[y\"\"\"] }"},
        {"a.dart", "final List<int> a = const []; /* b\nc */",
         "k[final] t[List]<t[int]> a = k[const] []; c[/* b]\nc[c */]"},
        {"a.cpp", "#include <map>\nstd::map m; // 'x", "k[#include] <map>\nstd::map m; c[// 'x]"},
        {"a.json", "{\"a\": \"b:\", \"c\": [1.5, true]}", "{t[\"a\"]: s[\"b:\"], t[\"c\"]: [n[1.5], n[true]]}"},
        {"docker-compose.yml", "- image: a:b # c#d\n  url: http://x#y",
         "- t[image]: a:b c[# c#d]\n  t[url]: http://x#y"},
        {"Cargo.toml", "name = \"a\" # b", "t[name] = s[\"a\"] c[# b]"},
        {".env.local", "KEY=value", "t[KEY]=value"},
        {"Dockerfile.dev", "FROM node:20 # c", "k[FROM] node:n[20] c[# c]"},
        {"a.sh", "if [ \"$a#\" ]; then echo $b # c", "k[if] [ s[\"$a#\"] ]; k[then] k[echo] n[$b] c[# c]"},
        {"a.css", "a { color: #fff; } /* b */", "a { t[color]: n[#fff]; } c[/* b */]"},
        {"a.html", "<a href=\"x\ny\" b>t &amp; <!-- c\n--></a>",
         "k[<a] f[href]=s[\"x]\ns[y\"] f[b]k[>]t n[&amp;] c[<!-- c]\nc[-->]k[</a]k[>]"},
        {"README.md", "# T\n- a `b` [c](d)\n```sh\nx # y\n```\nz",
         "k[# T]\nn[-] a s[`b`] f[[c]](d)\nc[```sh]\ns[x # y]\nc[```]\nz"},
        {"a.sql", "SELECT a FROM b -- c", "k[SELECT] a k[FROM] b c[-- c]"},
        {"photo.png", "from x", "from x"},
    };
    for (const Case& it : cases) {
        EXPECT_EQ(highlighted(QString::fromUtf8(it.file), QString::fromUtf8(it.text)), QString::fromUtf8(it.expected))
            << it.file;
    }
}

TEST(CodeHighlighter, KeepsItsPiecesInOrderWhateverTheText) {
    std::mt19937 random(11);
    const QString alphabet = u"ab 01_.\"'`#/*<>-=:@$&;{}[]()\\|\t\u00e9\u0130"_s;
    for (const CodeLanguage& language : CodeLanguage::all()) {
        CodeState state = 0;
        for (int round = 0; round < 300; ++round) {
            QString line;
            for (auto length = random() % 40; length > 0; --length) {
                line += alphabet[static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size()))];
            }
            int end = 0;
            for (const CodeSpan& span : highlightLine(language, line, state)) {
                ASSERT_GE(span.start, end) << language.name << ": " << line.toStdString();
                ASSERT_GT(span.length, 0) << language.name << ": " << line.toStdString();
                end = span.start + span.length;
            }
            ASSERT_LE(end, line.size()) << language.name << ": " << line.toStdString();
        }
    }
}
