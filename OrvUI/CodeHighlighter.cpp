#include "OrvUI/CodeHighlighter.h"

#include <QHash>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

struct Words {
    QSet<QString> keywords;
    QSet<QString> constants;
    QSet<QString> types;
};

const Words& wordsOf(const CodeLanguage& language) {
    static const QHash<const CodeLanguage*, Words> known = [] {
        QHash<const CodeLanguage*, Words> table;
        const auto set = [](const char* words) {
            const QStringList list = QString::fromLatin1(words).split(u' ', Qt::SkipEmptyParts);
            return QSet<QString>(list.begin(), list.end());
        };
        for (const CodeLanguage& each : CodeLanguage::all()) {
            table.insert(&each, {set(each.keywords), set(each.constants), set(each.types)});
        }
        return table;
    }();
    static const Words none;
    const auto found = known.find(&language);
    return found == known.end() ? none : *found;
}

bool isIn(QChar letter, const char* letters) {
    return letter.unicode() < 0x80 && !letter.isNull() && QLatin1StringView(letters).contains(letter);
}

/// Names that a word makes: what comes right behind it is declared there.
bool declaresFunction(QStringView word) {
    return word == u"def" || word == u"function" || word == u"fn" || word == u"func" || word == u"fun";
}
bool declaresType(QStringView word) {
    return word == u"class" || word == u"struct" || word == u"interface" || word == u"enum" || word == u"trait" ||
           word == u"protocol" || word == u"module" || word == u"mixin";
}

class Scanner {
public:
    Scanner(const CodeLanguage& language, QStringView line, CodeState& state)
        : m_language(language), m_words(wordsOf(language)), m_line(line), m_state(state) {}

    QList<CodeSpan> run() {
        switch (m_language.grammar) {
        case CodeLanguage::Grammar::program:
            program();
            break;
        case CodeLanguage::Grammar::markup:
            markup();
            break;
        case CodeLanguage::Grammar::markdown:
            markdown();
            break;
        }
        return m_spans;
    }

private:
    using Block = CodeLanguage::Block;

    [[nodiscard]] qsizetype size() const { return m_line.size(); }
    [[nodiscard]] QChar letter(qsizetype at) const { return at >= 0 && at < size() ? m_line[at] : QChar(); }
    [[nodiscard]] bool isWordLetter(qsizetype at) const {
        const QChar c = letter(at);
        return c.isLetterOrNumber() || isIn(c, m_language.wordLetters);
    }
    [[nodiscard]] qsizetype afterSpaces(qsizetype at) const {
        while (at < size() && m_line[at].isSpace()) {
            ++at;
        }
        return at;
    }
    [[nodiscard]] qsizetype beforeSpaces(qsizetype at) const {
        while (at >= 0 && m_line[at].isSpace()) {
            --at;
        }
        return at;
    }

    void add(qsizetype start, qsizetype end, CodeToken token) {
        if (end > start) {
            m_spans.append({static_cast<int>(start), static_cast<int>(end - start), token});
        }
    }

    /// Where the block that is open at `from` ends, its end included; -1 when that is not on this line.
    [[nodiscard]] qsizetype endOfBlock(const Block& block, qsizetype from) const {
        const QLatin1StringView close(block.close);
        for (qsizetype at = from; at < size(); ++at) {
            if (block.hasEscapes && m_line[at] == u'\\') {
                ++at;
            } else if (m_line.sliced(at).startsWith(close)) {
                return at + close.size();
            }
        }
        return -1;
    }

    /// Goes over a block whose inside begins at `inside`.
    void takeBlock(int index, qsizetype start, qsizetype inside) {
        const Block& block = m_language.blocks[static_cast<size_t>(index)];
        const qsizetype end = block.close[0] == '\0' ? size() : endOfBlock(block, inside);
        m_at = end < 0 ? size() : end;
        m_state = end < 0 && block.lines == Block::Lines::several ? index + 1 : 0;
        add(start, m_at, block.token);
    }

    [[nodiscard]] bool isPlaceOf(const Block& block) const {
        switch (block.place) {
        case Block::Place::anywhere:
            return true;
        case Block::Place::word:
            return m_at == 0 || m_line[m_at - 1].isSpace();
        case Block::Place::line:
            return beforeSpaces(m_at - 1) < 0;
        }
        Q_UNREACHABLE();
    }

    /// Whether a block began here, and was gone over.
    bool opensBlock() {
        for (int index = 0; index < static_cast<int>(m_language.blocks.size()); ++index) {
            const Block& block = m_language.blocks[static_cast<size_t>(index)];
            const QLatin1StringView open(block.open);
            if (isPlaceOf(block) && m_line.sliced(m_at).startsWith(open)) {
                const qsizetype start = m_at;
                takeBlock(index, start, m_at + open.size());
                if (block.token == CodeToken::text && m_state == 0 && isKeyBefore(m_at)) {
                    m_spans.last().token = CodeToken::type;
                }
                return true;
            }
        }
        return false;
    }

    /// Whether what ends at `end` is a key.
    [[nodiscard]] bool isKeyBefore(qsizetype end) {
        const qsizetype sign = afterSpaces(end);
        const QChar behind = letter(sign + 1);
        const bool isKey = m_keyMayCome && isIn(letter(sign), m_language.keySigns) &&
                           (m_line[sign] == u'=' || behind.isNull() || behind.isSpace());
        m_keyMayCome = false;
        return isKey;
    }

    void program() {
        if (m_state > 0 && m_state <= static_cast<int>(m_language.blocks.size())) {
            takeBlock(m_state - 1, 0, 0);
        }
        while (m_at < size()) {
            const QChar c = m_line[m_at];
            if (opensBlock()) {
                continue;
            }
            if (c.isDigit() && !isWordLetter(m_at - 1)) {
                takeNumber();
            } else if (isIn(c, m_language.sigils) && isWordLetter(m_at + 1) && letter(m_at - 1) != c) {
                takeWordAs(CodeToken::constant);
            } else if (c == u'@' && letter(m_at + 1).isLetter() && !isWordLetter(m_at - 1)) {
                takeAnnotation();
            } else if (c.isLetter() || (isIn(c, "_$#") && isIn(c, m_language.wordLetters))) {
                takeWord();
            } else {
                m_keyMayCome = m_keyMayCome || c == u'{' || c == u',' || c == u';';
                ++m_at;
            }
        }
    }

    void takeNumber() {
        const qsizetype start = m_at;
        while (m_at < size() && (m_line[m_at].isLetterOrNumber() || m_line[m_at] == u'_' ||
                                 (m_line[m_at] == u'.' && letter(m_at + 1).isDigit()))) {
            ++m_at;
        }
        m_keyMayCome = false;
        add(start, m_at, CodeToken::constant);
    }

    void takeWordAs(CodeToken token) {
        const qsizetype start = m_at++;
        while (m_at < size() && isWordLetter(m_at)) {
            ++m_at;
        }
        add(start, m_at, token);
    }

    void takeAnnotation() {
        const qsizetype start = m_at++;
        while (m_at < size() && (isWordLetter(m_at) || (m_line[m_at] == u'.' && letter(m_at + 1).isLetter()))) {
            ++m_at;
        }
        add(start, m_at, CodeToken::keyword);
    }

    void takeWord() {
        const qsizetype start = m_at;
        while (m_at < size() && isWordLetter(m_at)) {
            ++m_at;
        }
        const QStringView view = m_line.sliced(start, m_at - start);
        const QString word = m_language.ignoresCase ? view.toString().toLower() : view.toString();
        const QString declaredBy = std::exchange(m_declaring, {});
        const bool isBehind =
            !declaredBy.isEmpty() && m_line.sliced(m_declaringEnd, start - m_declaringEnd).trimmed().isEmpty();
        const bool isMember = letter(start - 1) == u'.' && letter(start - 2) != u'.';
        if (isKeyBefore(m_at)) {
            add(start, m_at, CodeToken::type);
        } else if (isBehind && declaresFunction(declaredBy)) {
            add(start, m_at, CodeToken::function);
        } else if (isBehind && declaresType(declaredBy) && !m_words.keywords.contains(word)) {
            add(start, m_at, CodeToken::constant);
        } else if (m_words.keywords.contains(word) && !isMember) {
            add(start, m_at, CodeToken::keyword);
            m_declaring = word;
            m_declaringEnd = m_at;
        } else if (m_words.constants.contains(word)) {
            add(start, m_at, CodeToken::constant);
        } else if ((m_words.types.contains(word) && !isMember) || isType(start, view)) {
            add(start, m_at, CodeToken::type);
        }
    }

    [[nodiscard]] bool isType(qsizetype start, QStringView word) const {
        const bool isCalled = letter(m_at) == u'(';
        switch (m_language.typeRule) {
        case CodeLanguage::Types::none:
            return false;
        case CodeLanguage::Types::capitalized:
            return !isCalled && word.front().isUpper() &&
                   (word.size() == 1 || std::ranges::any_of(word, [](QChar c) { return c.isLower(); }));
        case CodeLanguage::Types::annotated:
            return !isCalled && isAnnotated(start);
        }
        Q_UNREACHABLE();
    }

    /// Behind "name: ", behind an arrow, or going on with a type: "int | str", "list[int]".
    [[nodiscard]] bool isAnnotated(qsizetype start) const {
        const qsizetype sign = beforeSpaces(start - 1);
        if (letter(sign) == u'>' && letter(sign - 1) == u'-') {
            return true;
        }
        if ((letter(sign) == u'|' || letter(sign) == u'[') && !m_spans.isEmpty()) {
            const CodeSpan& last = m_spans.last();
            return last.token == CodeToken::type && last.start + last.length == beforeSpaces(sign - 1) + 1;
        }
        if (letter(sign) != u':') {
            return false;
        }
        const qsizetype nameEnd = sign;
        qsizetype name = sign;
        while (name > 0 && isWordLetter(name - 1)) {
            --name;
        }
        const bool isKeyword = !m_spans.isEmpty() && m_spans.last().token == CodeToken::keyword &&
                               m_spans.last().start == static_cast<int>(name);
        return name < nameEnd && !m_line[name].isDigit() && !isKeyword && letter(beforeSpaces(name - 1)) != u'[';
    }

    // Of markup, beside a comment that is open: inside a tag, and inside one of its texts.
    static constexpr CodeState inTag = 100;
    static constexpr CodeState inDoubleQuotes = 101;
    static constexpr CodeState inSingleQuotes = 102;

    void markup() {
        if (m_state == 1) {
            takeBlock(0, 0, 0);
        }
        while (m_at < size()) {
            if (m_state == inDoubleQuotes || m_state == inSingleQuotes) {
                takeAttributeText(m_at);
            } else if (m_state == inTag) {
                attribute();
            } else if (!opensBlock()) {
                textOfMarkup();
            }
        }
    }

    void textOfMarkup() {
        const QChar next = letter(m_at + 1);
        if (m_line[m_at] == u'<' && (next.isLetter() || next == u'/' || next == u'!' || next == u'?')) {
            const qsizetype start = m_at++;
            while (m_at < size() && (m_line[m_at].isLetterOrNumber() || isIn(m_line[m_at], "/!?-:_."))) {
                ++m_at;
            }
            add(start, m_at, CodeToken::keyword);
            m_state = inTag;
        } else if (m_line[m_at] == u'&' && m_line.indexOf(u';', m_at) - m_at < 10 && m_line.indexOf(u';', m_at) > 0) {
            const qsizetype end = m_line.indexOf(u';', m_at) + 1;
            add(m_at, end, CodeToken::constant);
            m_at = end;
        } else {
            ++m_at;
        }
    }

    void attribute() {
        const QChar c = m_line[m_at];
        const qsizetype start = m_at;
        if (c == u'"' || c == u'\'') {
            m_state = c == u'"' ? inDoubleQuotes : inSingleQuotes;
            ++m_at;
            takeAttributeText(start);
        } else if (c == u'>' || (c == u'/' && letter(m_at + 1) == u'>') || (c == u'?' && letter(m_at + 1) == u'>')) {
            m_at += c == u'>' ? 1 : 2;
            add(start, m_at, CodeToken::keyword);
            m_state = 0;
        } else if (c.isLetter() || isIn(c, "@:_#")) {
            while (m_at < size() && (m_line[m_at].isLetterOrNumber() || isIn(m_line[m_at], "-_:.@#"))) {
                ++m_at;
            }
            add(start, m_at, CodeToken::function);
        } else {
            ++m_at;
        }
    }

    void takeAttributeText(qsizetype start) {
        const qsizetype end = m_line.indexOf(m_state == inDoubleQuotes ? u'"' : u'\'', m_at);
        m_at = end < 0 ? size() : end + 1;
        m_state = end < 0 ? m_state : inTag;
        add(start, m_at, CodeToken::text);
    }

    void markdown() {
        const qsizetype first = afterSpaces(0);
        const QStringView body = m_line.sliced(first);
        if (body.startsWith(u"```") || body.startsWith(u"~~~")) {
            m_state = m_state == 0 ? 1 : 0;
            add(first, size(), CodeToken::comment);
            return;
        }
        if (m_state != 0) {
            add(0, size(), CodeToken::text);
            return;
        }
        if (body.startsWith(u'#')) {
            add(first, size(), CodeToken::keyword);
            return;
        }
        if (body.startsWith(u'>')) {
            add(first, size(), CodeToken::comment);
            return;
        }
        m_at = first;
        if (isIn(letter(first), "-*+") && letter(first + 1).isSpace()) {
            add(first, first + 1, CodeToken::constant);
            ++m_at;
        }
        while (m_at < size()) {
            const qsizetype end = m_line[m_at] == u'`'   ? m_line.indexOf(u'`', m_at + 1)
                                  : m_line[m_at] == u'[' ? m_line.indexOf(u']', m_at + 1)
                                                         : -1;
            if (end > 0) {
                add(m_at, end + 1, m_line[m_at] == u'`' ? CodeToken::text : CodeToken::function);
                m_at = end;
            }
            ++m_at;
        }
    }

    const CodeLanguage& m_language;
    const Words& m_words;
    QStringView m_line;
    CodeState& m_state;
    qsizetype m_at = 0;
    bool m_keyMayCome = true;
    QString m_declaring; ///< the keyword right before
    qsizetype m_declaringEnd = 0;
    QList<CodeSpan> m_spans;
};

} // namespace

QList<CodeSpan> highlightLine(const CodeLanguage& language, QStringView line, CodeState& state) {
    return Scanner(language, line, state).run();
}

} // namespace orv
