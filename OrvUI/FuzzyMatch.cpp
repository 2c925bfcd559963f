#include "OrvUI/FuzzyMatch.h"

#include <algorithm>
#include <array>

namespace orv {

namespace {

constexpr qsizetype longestText = FuzzyPattern::longestText;
constexpr qsizetype longestWord = 24; ///< what lies beyond is not looked at

constexpr int perLetter = 4;
constexpr int atWordStart = 8;
constexpr int inRun = 10; ///< directly behind the letter before
constexpr int atTextStart = 4;
constexpr int wholeText = 12;
constexpr qsizetype shortText = 24; ///< as names and titles are
constexpr int perLooseWord = -24;   ///< an abbreviation comes last
constexpr int forCoverage = 16;     ///< of a text that is nothing else; of a longer one its part
constexpr int none = -10'000;

quint64 bit(char16_t letter) {
    if (letter >= u'a' && letter <= u'z') {
        return 1ULL << (letter - u'a');
    }
    if (letter >= u'0' && letter <= u'9') {
        return 1ULL << (26 + letter - u'0');
    }
    return 1ULL << (36 + letter % 28);
}

/// Without regard to case; the usual letters without a look into the tables.
QChar fold(QChar letter) {
    const char16_t code = letter.unicode();
    if (code >= 0x80) {
        return letter.toCaseFolded();
    }
    return code >= u'A' && code <= u'Z' ? QChar(static_cast<char16_t>(code + (u'a' - u'A'))) : letter;
}

quint64 lettersOf(QStringView folded) {
    quint64 letters = 0;
    for (const QChar letter : folded) {
        letters |= bit(letter.unicode());
    }
    return letters;
}

QString folded(const QString& text) {
    QString result = text;
    for (QChar& letter : result) {
        letter = fold(letter);
    }
    return result;
}

/// For each letter of a word and each place of a text: the best that can be had when the letter stands there and those
/// before it somewhere in front.
class Placement {
public:
    Placement(QStringView word, const FuzzyText& text)
        : m_word(word.first(std::min(word.size(), longestWord))),
          m_text(text),
          m_length(std::min(text.folded.size(), longestText)) {
        for (qsizetype letter = 0; letter < m_word.size(); ++letter) {
            fill(letter);
        }
    }

    /// The best place of the last letter; -1 when the word is not in the text.
    [[nodiscard]] qsizetype end() const {
        qsizetype best = -1;
        for (qsizetype place = 0; place < m_length; ++place) {
            if (at(m_word.size() - 1, place) > (best < 0 ? none : at(m_word.size() - 1, best))) {
                best = place;
            }
        }
        return best;
    }

    [[nodiscard]] int score(qsizetype end) const {
        const bool isPrefix = m_text.folded.startsWith(m_word);
        const bool isWhole = isPrefix && m_word.size() == m_text.folded.size();
        return at(m_word.size() - 1, end) + (isPrefix ? atTextStart : 0) + (isWhole ? wholeText : 0);
    }

    /// Marks where each letter stands when the last one stands at `end`.
    void mark(qsizetype end, std::array<bool, longestText>& marks) const {
        qsizetype place = end;
        for (qsizetype letter = m_word.size() - 1; letter >= 0; --letter) {
            marks[static_cast<size_t>(place)] = true;
            place = letter > 0 ? before(letter, place) : place;
        }
    }

    /// More letters stand here and there than somebody means who leaves letters out.
    [[nodiscard]] bool isScattered(qsizetype end) const {
        return looseLetters(end) > std::max<qsizetype>(1, m_word.size() / 3);
    }

    /// As people shorten a name: "bknd" for "backend".
    [[nodiscard]] bool isAbbreviation(qsizetype end) const {
        if (m_text.folded.size() > shortText) {
            return false;
        }
        qsizetype place = end;
        for (qsizetype letter = m_word.size() - 1; letter > 0; --letter) {
            place = before(letter, place);
        }
        return m_text.starts[place] != 0;
    }

private:
    /// Those that neither follow another one nor begin a word.
    [[nodiscard]] qsizetype looseLetters(qsizetype end) const {
        qsizetype loose = 0;
        qsizetype place = end;
        for (qsizetype letter = m_word.size() - 1; letter >= 0; --letter) {
            const qsizetype previous = letter > 0 ? before(letter, place) : -2;
            loose += previous + 1 != place && m_text.starts[place] == 0 ? 1 : 0;
            place = previous;
        }
        return loose;
    }

    using Row = std::array<short, longestText>;

    [[nodiscard]] int at(qsizetype letter, qsizetype place) const {
        return m_best[static_cast<size_t>(letter)][static_cast<size_t>(place)];
    }
    [[nodiscard]] int worth(qsizetype place) const { return perLetter + (m_text.starts[place] != 0 ? atWordStart : 0); }

    void fill(qsizetype letter) {
        Row& row = m_best[static_cast<size_t>(letter)];
        int farther = none; ///< of the letter before, at least one place away, less the gap
        for (qsizetype place = 0; place < m_length; ++place) {
            int before = none;
            if (letter == 0) {
                before = -static_cast<int>(std::min<qsizetype>(place, 4) / 2);
            } else if (place > 0) {
                before = std::max(farther, at(letter - 1, place - 1) + inRun);
                farther = std::max(farther, at(letter - 1, place - 1)) - 1;
            }
            const bool isHere = before > none / 2 && m_text.folded[place] == m_word[letter];
            row[static_cast<size_t>(place)] = static_cast<short>(isHere ? before + worth(place) : none);
        }
    }

    /// Where the letter before stands when this one stands at `place`.
    [[nodiscard]] qsizetype before(qsizetype letter, qsizetype place) const {
        const int wanted = at(letter, place) - worth(place);
        if (at(letter - 1, place - 1) + inRun == wanted) {
            return place - 1;
        }
        qsizetype found = place - 2;
        while (found > 0 && at(letter - 1, found) - static_cast<int>(place - 1 - found) != wanted) {
            --found;
        }
        return found;
    }

    QStringView m_word;
    const FuzzyText& m_text;
    qsizetype m_length;
    std::array<Row, longestWord> m_best;
};

} // namespace

void FuzzyText::assign(QStringView wanted) {
    clear();
    text.append(wanted);
    folded.resize(wanted.size());
    starts.resize(wanted.size());
    for (qsizetype place = 0; place < wanted.size(); ++place) {
        const QChar here = wanted[place];
        const QChar before = place > 0 ? wanted[place - 1] : QChar(u' ');
        const QChar plain = fold(here);
        folded[place] = plain;
        letters |= bit(plain.unicode());
        const bool isHump = here.isUpper() && before.isLower();
        const bool isNumber = here.isDigit() && !before.isDigit();
        starts[place] = here.isLetterOrNumber() && (!before.isLetterOrNumber() || isHump || isNumber) ? '\1' : '\0';
    }
}

void FuzzyText::append(const FuzzyText& other) {
    text += other.text;
    folded += other.folded;
    starts += other.starts;
    letters |= other.letters;
}

void FuzzyText::clear() {
    text.resize(0);
    folded.resize(0);
    starts.resize(0);
    letters = 0;
}

FuzzyPattern::FuzzyPattern(const QString& typed)
    : m_typed(folded(typed.normalized(QString::NormalizationForm_C)).simplified()),
      m_words(m_typed.split(u' ', Qt::SkipEmptyParts)) {
    for (const QString& word : std::as_const(m_words)) {
        m_letters |= lettersOf(word);
    }
}

bool FuzzyPattern::mayBeIn(QStringView text) const {
    quint64 letters = 0;
    for (const QChar letter : text) {
        letters |= bit(fold(letter).unicode());
    }
    return mayBeIn(letters);
}

std::optional<int> FuzzyPattern::score(const FuzzyText& text) const {
    if (!mayBeIn(text.letters)) {
        return {};
    }
    int sum = 0;
    qsizetype found = 0;
    for (const QString& word : m_words) {
        const Placement placement(word, text);
        const qsizetype end = placement.end();
        const bool isScattered = end >= 0 && placement.isScattered(end);
        if (end < 0 || (isScattered && !placement.isAbbreviation(end))) {
            return {};
        }
        sum += placement.score(end) + (isScattered ? perLooseWord : 0);
        found += word.size();
    }
    // Of two that fit, the one of which more was typed.
    return text.folded.isEmpty()
               ? sum
               : sum + static_cast<int>(std::min<qsizetype>(forCoverage, forCoverage * found / text.folded.size()));
}

FuzzyFit FuzzyPattern::fit(const FuzzyText& text) const {
    if (text.folded.startsWith(m_typed)) {
        return text.folded.size() == m_typed.size() ? FuzzyFit::whole : FuzzyFit::beginning;
    }
    const bool areWords = std::ranges::all_of(m_words, [&](const QString& word) {
        qsizetype place = text.folded.indexOf(word);
        while (place >= 0 && text.starts[place] == 0) {
            place = text.folded.indexOf(word, place + 1);
        }
        return place >= 0;
    });
    return areWords ? FuzzyFit::words : FuzzyFit::letters;
}

QList<FuzzyRun> FuzzyPattern::hits(const FuzzyText& text) const {
    std::array<bool, longestText> marks{};
    for (const QString& word : m_words) {
        const Placement placement(word, text);
        if (const qsizetype end = placement.end(); end >= 0) {
            placement.mark(end, marks);
        }
    }
    QList<FuzzyRun> runs;
    for (int place = 0; place < static_cast<int>(marks.size()); ++place) {
        if (!marks[static_cast<size_t>(place)]) {
            continue;
        }
        if (!runs.isEmpty() && runs.last().start + runs.last().length == place) {
            ++runs.last().length;
        } else {
            runs.append({place, 1});
        }
    }
    return runs;
}

} // namespace orv
