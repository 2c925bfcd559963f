#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// A text that is searched as one types. Made once, so that a look at it costs no allocation.
struct FuzzyText {
    FuzzyText() = default;
    explicit FuzzyText(QStringView wanted) { assign(wanted); }

    void assign(QStringView wanted); ///< keeps the room that it has
    /// In a row, as one text.
    void append(const FuzzyText& other);
    void clear(); ///< keeps the room that it has

    QString text;
    QString folded;      ///< without regard to case, letter by letter as long as `text`
    QByteArray starts;   ///< 1 at each letter that begins a word, 0 elsewhere
    quint64 letters = 0; ///< a set of the letters that are in it
};

struct FuzzyRun {
    int start = 0;
    int length = 0;

    bool operator==(const FuzzyRun&) const = default;
};

/// How well a text fits, coarsely: what is chosen often comes first among those that fit alike, not before better ones.
enum class FuzzyFit {
    letters,   ///< here and there
    words,     ///< each word that was typed begins one of the text
    beginning, ///< the text begins with all that was typed
    whole,     ///< and is nothing else
};

/// What somebody typed to find one of many texts: words, each of whose letters stand in the text in that order. The
/// words may stand in any order.
///
/// Letters that follow each other count most, then those that begin a word of the text; gaps cost a little. A text does
/// not fit where more than a third of a word's letters, and more than one, neither follow another one nor begin a word:
/// in a long text most words can be found so. In a short one, as a name is, a word whose first letter begins one fits
/// even then, for less.
class FuzzyPattern {
public:
    explicit FuzzyPattern(const QString& typed);

    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }
    /// Quick, and never wrong when it says no.
    [[nodiscard]] bool mayBeIn(quint64 letters) const { return (m_letters & ~letters) == 0; }
    [[nodiscard]] bool mayBeIn(QStringView text) const;
    /// The higher the better the text fits; absent when it does not.
    [[nodiscard]] std::optional<int> score(const FuzzyText& text) const;
    /// Of a text that fits.
    [[nodiscard]] FuzzyFit fit(const FuzzyText& text) const;
    /// What of a longer text is not looked at lies behind this many letters.
    static constexpr qsizetype longestText = 160;
    /// Where its letters stand in a text that fits, in order.
    [[nodiscard]] QList<FuzzyRun> hits(const FuzzyText& text) const;

private:
    QString m_typed; ///< folded, with single spaces
    QStringList m_words;
    quint64 m_letters = 0;
};

} // namespace orv
