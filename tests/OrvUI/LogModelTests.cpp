#include "OrvUI/LogModel.h"
#include "OrvUI/LogSelection.h"
#include "tests/support/TestSupport.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

#include <random>

using namespace Qt::StringLiterals;
using namespace orv;

namespace {

/// "0-3 fg1 b; 5-2 bg#00ff10": each run with what is set.
QString text(const QList<TextRun>& runs) {
    const auto colour = [](const QString& name, int32_t value) {
        return value == TextPen::defaultColour ? QString()
               : value >= TextPen::direct
                   ? u" %1#%2"_s.arg(name, QString::number(value - TextPen::direct, 16).rightJustified(6, u'0'))
                   : u" %1%2"_s.arg(name).arg(value);
    };
    QStringList found;
    for (const TextRun& run : runs) {
        QString attributes;
        for (int bit = 0; bit < 7; ++bit) {
            attributes += (run.pen.attributes >> bit & 1) != 0 ? QStringView(u"bfiuvhs")[bit] : QChar(u'-');
        }
        attributes.remove(u'-');
        found.append(
            u"%1-%2"_s.arg(run.start).arg(run.length) + colour(u"fg"_s, run.pen.foreground) +
            colour(u"bg"_s, run.pen.background) + (attributes.isEmpty() ? QString() : u' ' + attributes));
    }
    return found.join(u"; "_s);
}

QString numbersAndTexts(const QAbstractItemModel& model) {
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row, 0);
        rows.append(index.data(LogModel::NumberRole).toString() + u' ' + index.data(LogModel::TextRole).toString());
    }
    return rows.join(u'\n');
}

LogText contentOf(const LogModel& model, int row) {
    return model.index(row).data(LogModel::ContentRole).value<LogText>();
}

/// A log with a model on it, and what the model is to show.
struct Watched {
    static constexpr qsizetype capacity = 20;
    LogBuffer log{capacity};
    LogModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    qint64 printed = 0;     ///< lines of the log and before it
    qint64 clearedUpTo = 0; ///< by number

    Watched() {
        QObject::connect(&model, &QAbstractItemModel::modelReset, &model, [] { ADD_FAILURE() << "reset"; });
        model.setLog(&log);
    }
    void append(const QStringList& lines) {
        qsizetype dropped = 0;
        for (const QString& line : lines) {
            dropped += log.append(line);
        }
        printed += lines.size();
        model.noteAppended(dropped);
    }
    [[nodiscard]] QString expected() const {
        QStringList rows;
        for (qsizetype i = 0; i < log.size(); ++i) {
            const qint64 number = printed - log.size() + i + 1;
            const QString& line = log.at(i);
            const bool isError = line.startsWith(u"error");
            if (number > clearedUpTo && line.contains(model.filterText(), Qt::CaseInsensitive) &&
                (!model.onlyErrors() || isError)) {
                rows.append(QString::number(number) + u' ' + line);
            }
        }
        return rows.join(u'\n');
    }
    [[nodiscard]] int expectedMatches() const {
        return model.searchText().isEmpty()
                   ? 0
                   : static_cast<int>(model.allText().count(model.searchText(), Qt::CaseInsensitive));
    }
};

TEST(LogModel, SaysWhenALineCameAndSavesWhatIsShown) {
    LogBuffer log(3);
    LogModel model;
    model.setLog(&log);
    const QDateTime noon(QDate(2026, 3, 1), QTime(12, 0, 0, 250));
    for (const auto& [line, seconds] : {std::pair{u"gone"_s, 0}, {u"a \x1b[31mred\x1b[0m"_s, 1}, {u"b"_s, 2}}) {
        model.noteAppended(log.append(line, noon.addSecs(seconds).toMSecsSinceEpoch()));
    }
    model.noteAppended(log.append(u"nobody knows"_s));
    QStringList times;
    for (int row = 0; row < model.rowCount(); ++row) {
        times.append(model.index(row).data(LogModel::TimeRole).toString());
    }
    EXPECT_EQ(times, (QStringList{u"12:00:01.250"_s, u"12:00:02.250"_s, QString()}));
    const test::TemporaryTree tree;
    EXPECT_EQ(model.save(tree.path(u"out.log"_s)), QString());
    EXPECT_EQ(test::readFile(tree.path(u"out.log"_s)), "12:00:01.250 a red\n12:00:02.250 b\nnobody knows\n");
    model.setFilterText(u"red"_s);
    EXPECT_EQ(model.save(tree.path(u"out.log"_s)), QString());
    EXPECT_EQ(test::readFile(tree.path(u"out.log"_s)), "12:00:01.250 a red\n");
    EXPECT_NE(model.save(tree.path(u"no/such/folder.log"_s)), QString());
}

} // namespace

TEST(StyledText, PartsTextFromItsLook) {
    const struct {
        QString line, text, runs;
    } cases[] = {
        {u"plain"_s, u"plain"_s, u""_s},
        {u"a\x1b[31mred\x1b[0mb"_s, u"aredb"_s, u"1-3 fg1"_s},
        {u"\x1b[1;4;92mx\x1b[22;39my\x1b[mz"_s, u"xyz"_s, u"0-1 fg10 bu; 1-1 u"_s},
        {u"\x1b[38;5;208mx\x1b[48;2;0;255;16my"_s, u"xy"_s, u"0-1 fg208; 1-1 fg208 bg#00ff10"_s},
        {u"\x1b[38:2::1:2:3mx\x1b[38:5:9my\x1b[38:2:1:2:3mz"_s, u"xyz"_s, u"0-1 fg#010203; 1-1 fg9; 2-1 fg#010203"_s},
        {u"\x1b[4:3;7mx\x1b[4:0my"_s, u"xy"_s, u"0-1 uv; 1-1 v"_s},
        {u"\x1b[38;5mx\x1b[38;2;1mx\x1b[38;5;999mx"_s, u"xxx"_s, u""_s},
        {u"\x1b[>4;2mx\x1b[2Ky\x1b[31"_s, u"xy"_s, u""_s},
        {u"\x1b[31ma\x1b[31mb\x1b[1mc"_s, u"abc"_s, u"0-2 fg1; 2-1 fg1 b"_s},
        {u"\x1b[99999999999;3mx\x1b[9;29;107my"_s, u"xy"_s, u"0-1 i; 1-1 bg15 i"_s},
    };
    for (const auto& [line, plain, runs] : cases) {
        const StyledText::Line parsed = StyledText::parse(line, {});
        EXPECT_EQ(parsed.text, plain) << line.toStdString();
        EXPECT_EQ(text(parsed.runs), runs) << line.toStdString();
        TextPen end;
        EXPECT_EQ(StyledText::plain(line, end), plain);
        EXPECT_EQ(end, parsed.end) << line.toStdString();
    }
    const QString linked = u"a\x1b]8;;http://x\x1b\\b\x1b[1mc\x1b]8;;http://y\x1b\\d\x1b]8;;\x1b\\e"_s;
    EXPECT_EQ(StyledText::plain(linked), u"abcde"_s);
    EXPECT_EQ(StyledText::parse(linked, {}).links, (QList<LinkRun>{{1, 2, u"http://x"_s}, {3, 1, u"http://y"_s}}));
    TextPen green;
    green.foreground = 2;
    EXPECT_EQ(text(StyledText::parse(u"on\x1b[m off"_s, green).runs), u"0-2 fg2"_s) << "goes on from the line before";
}

TEST(ErrorLines, KnowReportsAndWhatBelongsToThem) {
    // "!" the first line of a report, "|" below it.
    const QStringList lines{
        u"- GET / 200 in 12 ms"_s,
        u"- 0 errors, 3 warnings"_s,
        u"- Compiled ErrorBoundary.tsx"_s,
        u"!  ✕ TypeError: Cannot read properties"_s,
        u"|     at CartTotal (web/CartTotal.tsx:24:31)"_s,
        u"|   22 |   const lines = useCart();"_s,
        u"| > 24 |   return lines"_s,
        u"-  GET /checkout 500"_s,
        u"! Traceback (most recent call last):"_s,
        u"|   File \"app.py\", line 3"_s,
        u"| ModuleNotFoundError: No module named 'flask'"_s,
        u"- "_s,
        u"! 10:42:17 [ERROR] lost the database"_s,
        u"! error[E0308]: mismatched types"_s,
        u"|    --> src/main.rs:4:5"_s,
        u"! panic: runtime error"_s,
        u"- TERROR and ERRORS and ERROR_CODE"_s,
        u"! java.lang.IllegalStateException: closed"_s,
    };
    ErrorLines errors;
    for (const QString& line : lines) {
        const auto place = errors.take(QStringView(line).sliced(2));
        const QChar shown = u"-!|"_s[static_cast<int>(place)];
        // Two reports in a row stand as one.
        EXPECT_EQ(shown == u'-', line[0] == u'-') << line.toStdString();
        if (line == lines[3] || line == lines[8]) {
            EXPECT_EQ(place, ErrorLines::Place::first) << line.toStdString();
        }
    }
}

TEST(LogModel, ShowsWhatTheLogHoldsWhateverComesAndGoes) {
    std::mt19937 random(7);
    const auto upTo = [&random](int most) { return std::uniform_int_distribution(0, most)(random); };
    const QStringList words{u"GET cart"_s, u"error: Cart"_s, u"ready"_s, u"cart cart"_s};
    for (int round = 0; round < 60; ++round) {
        Watched watched;
        for (int step = 0; step < 40; ++step) {
            switch (upTo(9)) {
            case 0:
                watched.model.setFilterText(upTo(1) == 0 ? QString() : u"CART"_s);
                break;
            case 1:
                watched.model.setOnlyErrors(upTo(1) == 0);
                break;
            case 2:
                watched.model.setSearchText(upTo(1) == 0 ? QString() : u"cart"_s);
                break;
            case 3:
                watched.model.clear();
                watched.clearedUpTo = watched.printed;
                break;
            case 4:
                watched.printed += 100;
                watched.clearedUpTo += 100; // the same lines, under other numbers
                watched.model.noteSkipped(100);
                break;
            case 5:
                watched.model.nextMatch();
                break;
            case 6:
                watched.model.setLog(&watched.log, watched.printed - watched.log.size());
                watched.clearedUpTo = 0;
                break;
            default: {
                QStringList lines;
                for (int count = upTo(upTo(3) == 0 ? 50 : 5); count > 0; --count) {
                    lines.append(words[upTo(3)]);
                }
                watched.append(lines);
            }
            }
            ASSERT_EQ(numbersAndTexts(watched.model), watched.expected()) << round << '/' << step;
            ASSERT_EQ(watched.model.matchCount(), watched.expectedMatches()) << round << '/' << step;
            const int current = watched.model.currentMatch();
            ASSERT_EQ(current > 0, watched.model.matchCount() > 0);
            ASSERT_LE(current, watched.model.matchCount());
            if (current > 0) {
                const auto hits = contentOf(watched.model, watched.model.currentMatchRow()).hits;
                ASSERT_EQ(std::ranges::count(hits, true, &LogText::Hit::isCurrent), 1);
            }
        }
        watched.model.setLog(nullptr);
        ASSERT_EQ(watched.model.rowCount(), 0);
    }
}

TEST(LogModel, WalksThroughMatchesAndCarriesColours) {
    Watched watched;
    watched.append({u"\x1b[32mcart"_s, u"still green, see (http://localhost:3000/a?b=1)."_s, u"\x1b[0mCart cart"_s});
    LogModel& model = watched.model;
    EXPECT_EQ(text(contentOf(model, 1).runs), u"0-47 fg2"_s);
    EXPECT_EQ(text(contentOf(model, 2).runs), QString());

    model.setSearchText(u"cart"_s);
    QList<int> rows;
    for (int i = 0; i < 4; ++i, model.nextMatch()) {
        rows.append(model.currentMatchRow());
    }
    EXPECT_EQ(rows, (QList{0, 2, 2, 0})) << "round in a circle";
    model.previousMatch();
    EXPECT_EQ(model.currentMatch(), 1);
    int asked = 0;
    QObject::connect(&model, &LogModel::matchAsked, &model, [&asked] { ++asked; });
    watched.append({u"a cart more"_s});
    EXPECT_EQ(asked, 0) << "nobody wants to look elsewhere";
    EXPECT_EQ(model.matchCount(), 4);
    model.setSearchText({});
    model.searchFrom(u"car"_s, 1);
    EXPECT_EQ(model.currentMatch(), 2) << "from what is in view on";
    model.searchFrom(u"cart"_s, 0);
    EXPECT_EQ(model.currentMatch(), 2) << "stays while one types";
    model.setSearchText(u"nowhere"_s);
    EXPECT_EQ(model.currentMatch(), 0);
    model.nextMatch();
    EXPECT_EQ(model.currentMatchRow(), -1);
    EXPECT_EQ(model.allText(), u"cart\nstill green, see (http://localhost:3000/a?b=1).\nCart cart\na cart more\n"_s);
}

TEST(LogSelection, StaysWithItsLines) {
    using Unit = LogSelection::Unit;
    Watched watched;
    LogModel& model = watched.model;
    LogSelection selection(model);
    watched.append({u"one"_s, u"at run (src/app.js:3:1)"_s, u"\x1b[31mthree\x1b[0m"_s, u"four"_s});
    const auto place = [&](int row, qsizetype offset) { return LogSelection::Place{model.serialOf(row), offset}; };
    const struct {
        const char* label;
        LogSelection::Place from, to;
        Unit unit;
        QString text;
    } cases[] = {
        {"within a line", place(1, 3), place(1, 6), Unit::character, u"run"_s},
        {"backwards over lines", place(2, 2), place(0, 1), Unit::character, u"ne\nat run (src/app.js:3:1)\nth"_s},
        {"a path is a word", place(1, 10), place(1, 10), Unit::word, u"src/app.js:3:1"_s},
        {"words, backwards", place(1, 12), place(1, 4), Unit::word, u"run (src/app.js:3:1"_s},
        {"lines", place(1, 5), place(2, 0), Unit::line, u"at run (src/app.js:3:1)\nthree"_s},
        {"a click alone", place(1, 5), place(1, 5), Unit::character, QString()},
    };
    for (const auto& it : cases) {
        selection.begin(it.from, it.unit);
        selection.extend(it.to);
        EXPECT_EQ(selection.text(), it.text) << it.label;
        EXPECT_EQ(selection.isEmpty(), it.text.isEmpty()) << it.label;
    }
    EXPECT_EQ(selection.reachedRow(), -1);
    selection.extendByLines(-1, 3);
    selection.extendByLines(-1, 3);
    EXPECT_EQ(selection.text(), u"three\nfour"_s) << "by keys, from the last row";
    EXPECT_EQ(selection.within(model.serialOf(2), 5), (LogSelection::Range{0, 6})) << "goes on in the next line";

    selection.selectAll();
    model.setFilterText(u"o"_s);
    EXPECT_EQ(selection.text(), u"one\nfour"_s) << "without what is filtered out";
    model.setFilterText({});
    watched.append(QStringList(18, u"more"_s));
    EXPECT_EQ(selection.text(), u"three\nfour"_s) << "without what the log has dropped";
    model.clear();
    EXPECT_TRUE(selection.isEmpty());
    EXPECT_EQ(selection.text(), QString());
}
