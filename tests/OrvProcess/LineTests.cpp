#include "OrvProcess/LineAssembler.h"
#include "OrvProcess/LineQueue.h"
#include "OrvProcess/TerminalLine.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>

namespace orv {
namespace {

using namespace Qt::StringLiterals;

/// Puts the bytes where a line assembler or queue wants them, at the front of more room than they need.
auto feed(auto& lines, QByteArrayView bytes) {
    std::ranges::copy(bytes, lines.room(bytes.size() + 100).begin());
    return lines.append(bytes.size());
}

/// The lines of an output that comes in pieces of `step` bytes.
QStringList linesOf(QByteArrayView output, qsizetype step) {
    LineAssembler assembler;
    QByteArray raw;
    for (qsizetype at = 0; at < output.size(); at += step) {
        raw += feed(assembler, output.sliced(at, qMin(step, output.size() - at)));
    }
    raw += assembler.finish();
    QStringList lines;
    for (const QByteArray& line : raw.isEmpty() ? QByteArrayList() : raw.chopped(1).split('\n')) {
        EXPECT_LT(line.size(), LineAssembler::limitBytes * 11 / 10);
        lines.append(TerminalLine::text(line));
    }
    return lines;
}

constexpr std::array<qsizetype, 4> steps{3, 101, 8192, 1'000'000};

LineQueue::Taken takeAll(LineQueue& queue, const LineQueue::Slice& slice = {}) {
    LineQueue::Taken all;
    for (bool more = true; more;) {
        const LineQueue::Taken taken = queue.take(slice);
        all.lines += taken.lines;
        all.port = all.port ? all.port : taken.port;
        all.dropped += taken.dropped;
        more = taken.more;
    }
    return all;
}

} // namespace

TEST(TerminalLine, ShowsALineAsATerminalWould) {
    struct Row {
        const char* label;
        QByteArray raw;
        QString expected;
    };
    const std::array rows{
        Row{"plain", "abc", u"abc"_s},
        Row{"carriage return before the line feed", "abc\r", u"abc"_s},
        Row{"rewritten", "abcdef\rxy", u"xycdef"_s},
        Row{"a progress bar", "10%\r 50%\r100% done", u"100% done"_s},
        Row{"erased to the end", "abcdef\rxy\x1b[K", u"xy"_s},
        Row{"erased to the beginning", "abcdef\x1b[3G\x1b[1Kx", u"  xdef"_s},
        Row{"erased whole", "abcdef\r\x1b[2Kxy", u"xy"_s},
        Row{"backspace", "|\b/\b-", u"-"_s},
        Row{"backspace at the margin", "\b\bab", u"ab"_s},
        Row{"blanked out", "working\r       \rok", u"ok"_s},
        Row{"moved left and right", "abc\x1b[2Dx\x1b[Cy", u"axcy"_s},
        Row{"moved beyond the end", "a\x1b[3Cb", u"a   b"_s},
        Row{"colours stay as they came", "\x1b[1;31merror\x1b[0m: x", u"\x1b[1;31merror\x1b[0m: x"_s},
        Row{"colours move with their characters", "\x1b[31mred\x1b[0m\rB", u"B\x1b[31med\x1b[m"_s},
        Row{"the last colour goes on", "abc\x1b[32m\rX", u"\x1b[32mX\x1b[mbc"_s},
        Row{"attributes add up and go", "\x1b[1m\x1b[38;5;9mA\x1b[22mB\x1b[39mC\b",
            u"\x1b[1;38;5;9mA\x1b[m\x1b[38;5;9mB\x1b[mC"_s},
        Row{"true colour, underline style", "\x1b[38;2;1;2;3;4:3mA\x1b[4:0m\b\bB", u"\x1b[38;2;1;2;3mB\x1b[m"_s},
        Row{"a hidden cursor", "\x1b[?25labc", u"abc"_s},
        Row{"a title",
            "\x1b]0;title\x07"
            "abc\x1b]8;;http://x\x1b\\link",
            u"abclink"_s},
        Row{"a title without an end", "\x1b]0;abc", u"0;abc"_s},
        Row{"a cut sequence", "abc\x1b[3", u"abc"_s},
        Row{"character sets", "\x1b(Babc", u"abc"_s},
        Row{"other controls",
            QByteArray(
                "a\0b\x01"
                "c\x7f",
                6),
            u"abc"_s},
        Row{"tab", "a\tb", u"a\tb"_s},
        Row{"tab in a rewritten line", "a\tb\rxyz", u"xyz     b"_s},
        Row{"not UTF-8",
            "a\xff"
            "b\xc3",
            u"a\ufffd"
            "b\ufffd"_s},
        Row{"not UTF-8, rewritten", "..\xff\xe4\rab", u"ab\ufffd\ufffd"_s},
        Row{"characters take one column", "\xc3\xa4\xf0\x9f\x98\x80z\rx", u"x\U0001f600z"_s},
        Row{"combining marks join", "e\xcc\x81z\rx", u"xz"_s},
        Row{"a cursor sent to the far right", "a\x1b[99999Cb", u"a"_s + QString(999, u' ') + u'b'},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TerminalLine::text(row.raw), row.expected) << row.label;
    }
    const QByteArray far = "\x1b]8;;http://" + QByteArray(2000, 'x') + "\x1b\\";
    const QString farLink = QString::fromLatin1(far), end = u"\x1b]8;;\x1b\\"_s;
    const std::array links{
        Row{"a link", "a\x1b]8;id=1;http://x/y\x07the\x1b[1m words\x1b[m\x1b]8;;\x07.",
            u"a\x1b]8;;http://x/y\x1b\\the\x1b[1m words"_s + end + u"\x1b[m."_s},
        Row{"no end before the line's", "\x1b]8;;mailto:a@b\x1b\\mail", u"\x1b]8;;mailto:a@b\x1b\\mail"_s + end},
        Row{"another behind it",
            "\x1b]8;;HTTPS://x\x07"
            "a\x1b]8;;file:///y\x07"
            "b",
            u"\x1b]8;;HTTPS://x\x1b\\a\x1b]8;;file:///y\x1b\\b"_s + end},
        Row{"of a kind that nobody opens",
            "\x1b]8;;javascript:x\x07"
            "a\x1b]8;;http://\x07"
            "b",
            u"ab"_s},
        Row{"no address",
            "\x1b]8;;http://x y\x07"
            "a\x1b]8;http://x\x07"
            "b",
            u"ab"_s},
        Row{"moves with its words",
            "\x1b]8;;http://x\x07"
            "abc\x1b]8;;\x07\rX",
            u"X\x1b]8;;http://x\x1b\\bc"_s + end},
        Row{"is not written more often than it came", far + "abcde\x1b]8;;\x07\x1b[2GX\x1b[4GX",
            farLink + u"a"_s + end + u"XcXe"_s},
    };
    for (const Row& row : links) {
        EXPECT_EQ(TerminalLine::text(row.raw, TerminalLine::Links::keep), row.expected) << row.label;
    }
}

TEST(LineAssembler, MakesTheSameLinesHoweverTheOutputIsCut) {
    const QByteArray limit(LineAssembler::limitBytes, 'a');
    const QString full = QString::fromLatin1(limit);
    QByteArray bar;
    for (int i = 0; i < 8'000; ++i) {
        bar += "\r" + QByteArray::number(i) + " of 8000 \x1b[32m##########\x1b[0m\x1b[K";
    }
    const QString barEnd = u"7999 of 8000 \x1b[32m##########\x1b[m"_s;
    struct Row {
        const char* label;
        QByteArray output;
        QStringList expected;
    };
    const std::array rows{
        Row{"nothing", "", {}},
        Row{"two lines", "a\nb\n", {u"a"_s, u"b"_s}},
        Row{"empty lines", "\n\na\r\n", {u""_s, u""_s, u"a"_s}},
        Row{"a last line without an end", "a\nb", {u"a"_s, u"b"_s}},
        Row{"a character in pieces", "\xe2\x82\xac\n\xf0\x9f\x98\x80", {u"\u20ac"_s, u"\U0001f600"_s}},
        Row{"exactly as long as may be", limit + "\nb\n", {full, u"b"_s}},
        Row{"one byte longer", limit + "b\nc", {full, u"b"_s, u"c"_s}},
        Row{"longer by far", limit + limit + limit + "b", {full, full, full, u"b"_s}},
        Row{"a character over the limit", limit.chopped(1) + "\xc3\xa4z\n", {full.chopped(1), u"\u00e4z"_s}},
        Row{"a progress bar without end", "a\n" + bar, {u"a"_s, barEnd}},
        Row{"a progress bar with an end", bar + "\rdone\x1b[K\nb\n", {u"done"_s, u"b"_s}},
        Row{"a colour over the limit", limit.chopped(2) + "\x1b[31mb\n", {full.chopped(2), u"\x1b[31mb\x1b[m"_s}},
        Row{"rewritten and long", "x\r" + limit + limit + "b\n", {full, full, u"b"_s}},
        Row{"a long line behind a progress bar",
            bar + "\n\t" + limit + "b\n",
            {barEnd, u'\t' + full.chopped(1), u"ab"_s}},
    };
    for (const Row& row : rows) {
        for (const qsizetype step : steps) {
            const QStringList lines = linesOf(row.output, step);
            EXPECT_TRUE(lines == row.expected)
                << row.label << " in pieces of " << step << ": " << lines.size() << " lines, the last "
                << (lines.isEmpty() ? "" : lines.last().right(100).toStdString());
        }
    }
}

TEST(LineAssembler, LosesNothingOfAnUnreasonableLine) {
    const QByteArray exclamations(200'000, '!');
    const QByteArray digits(200'000, '1');
    const QByteArray marks = QByteArray("\xcc\x81").repeated(70'000);
    struct Row {
        const char* label;
        QByteArray output;
        QByteArray expected; ///< of all lines together
    };
    const std::array rows{
        Row{"parameters without end", "a\x1b[" + digits + "b", "a" + digits + "b"},
        Row{"parameters of a colour", "\x1b[" + digits.first(40'000) + "mred\rb",
            "b" + digits.sliced(160'001) + "mred"},
        Row{"a parameter longer than any colour", "\x1b[48:" + digits.first(200) + ";31ma\rb", "\x1b[31mb\x1b[m"},
        Row{"intermediates of a control sequence", "a\x1b[" + exclamations + "b", "a" + exclamations + "b"},
        Row{"intermediates of an escape sequence", "a\x1b" + exclamations + "b", "a" + exclamations + "b"},
        Row{"a string without end", "a\x1b]" + digits + "b", "a" + digits + "b"},
        Row{"strings without end", QByteArray("\x1b]").repeated(100'000) + "b", "b"},
        Row{"combining marks without end", "x\re" + marks, "e" + marks},
    };
    for (const Row& row : rows) {
        for (const qsizetype step : steps) {
            const QString all = linesOf(row.output + '\n', step).join(QString());
            EXPECT_TRUE(all == QString::fromUtf8(row.expected))
                << row.label << " in pieces of " << step << ": " << all.size() << " of " << row.expected.size();
        }
    }
}

TEST(LineAssembler, TakesAnyBytes) {
    const std::array<QByteArray, 6> begins{"\x1b[", "\x1b", "\x1b]", "\r", "\x1b[999C", "\x1b[K\xf0\x9f"};
    const std::array<QByteArray, 6> runs{"1;", " ", "\xcc\x81", "m", "\x1b[1;38;2;1;2;3ma", "\x1b[3D"};
    std::mt19937 random(7);
    for (const size_t longestRun : {1, 60, 100'000}) {
        QByteArray output;
        while (output.size() < 300'000) {
            output += begins.at(random() % begins.size());
            output += runs.at(random() % runs.size()).repeated(static_cast<qsizetype>(random() % longestRun));
            output += static_cast<char>(random());
        }
        const QStringList lines = linesOf(output, output.size());
        for (const qsizetype step : steps) {
            EXPECT_TRUE(linesOf(output, step) == lines) << "runs of " << longestRun << " in pieces of " << step;
        }
    }
}

TEST(LineQueue, KeepsTheNewestAndThePortOfWhatItDrops) {
    constexpr int count = 30'000;
    LineQueue queue({.keptLines = 5000});
    for (int i = 1; i <= count; ++i) {
        feed(queue, i == 7 ? "on port 4321\n" : i == 9 ? "on port 1234\n" : QByteArray::number(i) + '\n');
    }
    feed(queue, "last");
    queue.finish();
    const LineQueue::Taken taken = takeAll(queue, {.lines = 700});
    ASSERT_EQ(taken.lines.size(), 5000);
    EXPECT_EQ(taken.lines.first(), QString::number(count - 4998));
    EXPECT_EQ(taken.lines.last(), u"last"_s);
    EXPECT_EQ(taken.dropped, count + 1 - 5000);
    EXPECT_EQ(taken.port, 4321) << "the first announcement counts";

    queue.setPortWanted(false);
    for (int i = 0; i < count; ++i) {
        feed(queue, "on port 4321\n");
    }
    EXPECT_EQ(takeAll(queue).port, std::nullopt);
}

TEST(LineQueue, CountsEveryLineThatItDrops) {
    // Lengths around those at which a count goes on in another way; many ends of line, and few.
    for (const qsizetype size : {1, 15, 16, 17, 255 * 16, 255 * 16 + 1, 30'001}) {
        for (const qsizetype width : {1, 2, 16, 17}) {
            QByteArray bytes(size, 'x');
            qsizetype count = 0;
            for (qsizetype at = width - 1; at < size; at += width, ++count) {
                bytes[at] = '\n';
            }
            LineQueue queue({.keptLines = 3});
            feed(queue, bytes);
            feed(queue, "1\n2\n3\n");
            const LineQueue::Taken taken = takeAll(queue);
            EXPECT_EQ(taken.dropped + taken.lines.size(), count + 3) << size << " bytes, lines of " << width;
        }
    }
}

TEST(LineQueue, LetsTheReaderWaitWhenFewLinesAreMuch) {
    constexpr int count = 300;
    constexpr qsizetype width = 5000;
    LineQueue queue({.keptLines = 5000, .waitingBytes = 100'000});
    std::atomic<int> appended = 0;
    std::thread reader([&] {
        for (int i = 0; i < count; ++i) {
            feed(queue, QByteArray::number(i).leftJustified(width - 1, 'x') + '\n');
            ++appended;
        }
    });
    QStringList lines;
    EXPECT_TRUE(test::waitFor([&] {
        EXPECT_LE((appended - lines.size()) * width, 105'000) << "no more than may wait, and the line that waits to";
        const LineQueue::Taken taken = queue.take({});
        EXPECT_EQ(taken.dropped, 0);
        lines += taken.lines;
        return lines.size() == count;
    }));
    EXPECT_TRUE(lines.last().startsWith(QString::number(count - 1)));
    queue.close();
    reader.join();
}

} // namespace orv
