#include "OrvTerminal/View/DrawnGlyphs.h"
#include "tests/OrvTerminal/ViewFixture.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QRawFont>
#include <QScreen>
#include <QStyleHints>

#include <array>
#include <cmath>
#include <functional>
#include <string>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// How far the most different cell of two pictures is apart: the mean of its pixels' greatest difference in a part.
struct Difference {
    double worst = 0;
    int column = -1;
    int row = -1;
};

Difference difference(const QImage& one, const QImage& other, QSize cell) {
    if (one.size() != other.size()) {
        return {255, -1, -1};
    }
    Difference found;
    for (int row = 0; row * cell.height() < one.height(); ++row) {
        for (int column = 0; column * cell.width() < one.width(); ++column) {
            const QRect part = QRect(QPoint(column * cell.width(), row * cell.height()), cell) & one.rect();
            int sum = 0;
            for (int y = part.top(); y <= part.bottom(); ++y) {
                for (int x = part.left(); x <= part.right(); ++x) {
                    const QRgb a = one.pixel(x, y);
                    const QRgb b = other.pixel(x, y);
                    sum += std::max(
                        {std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
                }
            }
            const double mean = static_cast<double>(sum) / (part.width() * part.height());
            if (mean > found.worst) {
                found = {mean, column, row};
            }
        }
    }
    return found;
}

/// What FreeType's releases and the order of additions change; a full stop that is a comma is twice as much.
constexpr double tolerance = 1.5;

/// What a person sees of recorded bytes, with the font that is shipped and without hinting.
class TerminalPictures : public TerminalViews {
protected:
    TerminalPictures() {
        style.setHinting(QFont::PreferNoHinting);
        QGuiApplication::styleHints()->setCursorFlashTime(0);
        shown();
    }
    ~TerminalPictures() override { QGuiApplication::styleHints()->setCursorFlashTime(1000); }

    static QString pathOf(const char* name, const char* suffix) {
        return test::sourcePath(u"tests/OrvTerminal/pictures/"_s + QLatin1StringView(name) + QLatin1StringView(suffix));
    }
    static QByteArray recording(const char* name) {
        QFile file(pathOf(name, ".bytes"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
        return file.readAll();
    }
    QImage draw(const QByteArray& bytes) {
        feed("\x1b"
             "c");
        feed({bytes.constData(), static_cast<size_t>(bytes.size())});
        return shown();
    }
    /// Shows what a program wrote as it did, in the sizes that the terminal had meanwhile.
    void replay(const char* name) {
        const auto read = [&](const char* suffix) {
            QFile file(
                test::sourcePath(u"tests/TermEngine/recordings/"_s + QLatin1StringView(name) + QLatin1String(suffix)));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
            return file.readAll();
        };
        const QByteArray bytes = read(".bytes");
        const QByteArray screen = read(".screen");
        // "size 80x24 5100 100x30"
        const QByteArrayList words = screen.first(screen.indexOf('\n')).split(' ');
        session = std::make_unique<TerminalSession>(QUrl::fromLocalFile(home.path()), queue);
        host.setSession(session.get());
        qsizetype fed = 0;
        for (qsizetype word = 1; word < words.size(); word += 2) {
            const QByteArrayList size = words.at(word).split('x');
            window.resize(size.at(0).toInt() * view().cell().width, size.at(1).toInt() * view().cell().height);
            host.setSize(window.size());
            shown();
            ASSERT_EQ(terminal().cols(), size.at(0).toInt()) << name;
            ASSERT_EQ(terminal().rows(), size.at(1).toInt()) << name;
            const qsizetype end = word + 1 < words.size() ? words.at(word + 1).toInt() : bytes.size();
            feed({bytes.constData() + fed, static_cast<size_t>(end - fed)});
            fed = end;
        }
    }
    /// Covers what neither the shipped font has nor we draw, and the room beside it, into which a wider letter goes:
    /// each machine has another font for it. Returns how many cells these are.
    int coverForeign(QImage& picture) {
        const QRawFont font = QRawFont::fromFont(QFont(style.family()));
        const term::Buffer& buffer = terminal().buffer();
        int covered = 0;
        for (int row = 0; row < terminal().rows(); ++row) {
            const term::BufferLine& line = buffer.line(row);
            for (int column = 0; column < terminal().cols(); ++column) {
                char32_t memory = 0;
                const std::u32string_view scalars = buffer.cellArena().scalarValues(line[column], memory);
                const auto isForeign = [&](char32_t scalar) {
                    return scalar > 0 && !font.supportsCharacter(scalar) && !isDrawnGlyph(scalar);
                };
                if (!line[column].isSpacer() && std::ranges::any_of(scalars, isForeign)) {
                    QPainter(&picture).fillRect(cellRect(column, row, 2), Qt::gray);
                    ++covered;
                }
            }
        }
        return covered;
    }
    /// Compares with what is stored; or stores it, where that is asked for.
    void compare(const char* name, const QImage& picture) const {
        const QString path = pathOf(name, ".png");
        if (qEnvironmentVariableIsSet("ORV_UPDATE_PICTURES")) {
            ASSERT_TRUE(picture.save(path, "PNG", 0)) << name;
            return;
        }
        const QImage stored(path);
        const Difference found = difference(picture, stored, view().cell().size());
        if (found.worst > tolerance) {
            const QString seen = QDir::temp().filePath(QLatin1StringView(name) + u"-seen.png"_s);
            picture.save(seen);
            ADD_FAILURE() << name << ": column " << found.column << ", row " << found.row << ", by " << found.worst
                          << "; see " << seen.toStdString();
        }
    }
};

TEST_F(TerminalPictures, ShowWhatIsStoredAndNotOneCellMore) {
    struct Change {
        const char* from;
        const char* to;
    };
    struct Row {
        const char* recording;
        std::vector<Change> changes; ///< each of one cell, and to be seen
    };
    const std::array rows{
        Row{"attributes",
            {{"none\x1b[m.", "none\x1b[m,"},
             {"\x1b[3mitalic", "i\x1b[3mtalic"},
             {"\x1b[2mdim", "d\x1b[2mim"},
             {"\x1b[4:3mcurly", "\x1b[4:4mc\x1b[4:3murly"},
             {"\x1b[4:4mdotted", "\x1b[4:5md\x1b[4:4motted"},
             {"58:5:2mdouble", "58:5:3md\x1b[58:5:2mouble"},
             {"\x1b[53mo", "o\x1b[53m"},
             {"0123456789 !", "O123456789 !"},
             {"\x1b[48:5:21m  ", "\x1b[48:5:22m \x1b[48:5:21m "}}},
        Row{"drawn", {{"┌─┬┐ ┏", "┌─┬╮ ┏"}, {"⠿⣿⡇", "⠿⣷⡇"}, {"▁▂▃", "▁▃▃"}, {"░▒▓", "▒▒▓"}, {"╌╌╌", "╌─╌"}}},
        Row{"doubled",
            {{"\x1b#3double height", "\x1b#3dauble height"},
             {"\x1b#4double height \x1b[4:3m", "\x1b#4double height \x1b[4:4m"},
             {"between", "betweem"},
             {"bold: ", "bold; "}}},
        Row{"wide", {{"a\x1b[8;44m漢", "o\x1b[8;44m漢"}, {"e\xCC\x81 a", "e a"}, {"\x1b[8;43m漢漢", "\x1b[8;43m漢x"}}},
        Row{"screen", {{"sleep -x", "sleep _x"}, {"selected", "se1ected"}, {"43.2%", "43,2%"}}},
    };
    for (const Row& row : rows) {
        const QByteArray bytes = recording(row.recording);
        const QImage picture = draw(bytes);
        compare(row.recording, picture);
        EXPECT_EQ(difference(draw(bytes), picture, view().cell().size()).worst, 0) << row.recording << ", once more";
        for (const Change& change : row.changes) {
            QByteArray changed = bytes;
            const qsizetype at = changed.indexOf(change.from);
            ASSERT_GE(at, 0) << row.recording << ": " << change.from;
            changed.replace(at, static_cast<qsizetype>(qstrlen(change.from)), change.to);
            EXPECT_GT(difference(draw(changed), picture, view().cell().size()).worst, tolerance)
                << row.recording << ": " << change.from;
        }
    }
}

TEST_F(TerminalPictures, ShowTheSameAtEachScale) {
    for (const char* scale : {"1.25", "2"}) {
        const QList<QScreen*> screens = QGuiApplication::screens();
        const auto named = [scale](const QScreen* screen) { return screen->name() == QLatin1StringView(scale); };
        const auto screen = std::ranges::find_if(screens, named);
        ASSERT_NE(screen, screens.end()) << scale;
        window.hide();
        window.destroy();
        window.setScreen(*screen);
        window.setPosition((*screen)->geometry().topLeft());
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        ASSERT_EQ(window.effectiveDevicePixelRatio(), QByteArray(scale).toDouble());
        for (const char* name : {"attributes", "drawn", "wide", "screen"}) {
            compare((std::string(name) + '-' + scale).c_str(), draw(recording(name)));
        }
    }
}

TEST_F(TerminalPictures, ShowWhatRealProgramsDraw) {
    struct Row {
        const char* recording;
        int covered; ///< cells with characters that the font lacks
    };
    const std::array rows{
        Row{"vim", 5},           Row{"vim-resized", 6},   Row{"tmux", 3},           Row{"htop", 0},
        Row{"less", 40},         Row{"top", 0},           Row{"nano", 0},           Row{"mc", 0},
        Row{"emacs", 0},         Row{"emacs-windows", 2}, Row{"python", 11},        Row{"ls", 6},
        Row{"zsh", 4},           Row{"git-diff", 7},      Row{"unicode", 34},       Row{"cat-resized", 28},
        Row{"less-resized", 58}, Row{"tmux-resized", 3},  Row{"htop-resized", 0},   Row{"nano-resized", 3},
        Row{"mc-resized", 3},    Row{"top-resized", 0},   Row{"python-resized", 3},
    };
    style.setFontSize(10);
    for (const Row& row : rows) {
        replay(row.recording);
        ASSERT_TRUE(test::waitFor([this] { return view().isIdle(); })) << row.recording << ": no bell flashes any more";
        QImage picture = shown();
        EXPECT_EQ(coverForeign(picture), row.covered) << row.recording;
        compare(row.recording, picture);
        // A single point somewhere is seen.
        feed("\x1b[m\x1b[6;7H.");
        QImage changed = shown();
        coverForeign(changed);
        EXPECT_GT(difference(changed, picture, view().cell().size()).worst, tolerance) << row.recording;
    }
}

TEST_F(TerminalPictures, ShowMarksAndCursors) {
    draw(recording("marks"));
    view().find()->setText(u"needle"_s);
    view().find()->setActive(true);
    const auto first = static_cast<std::int64_t>(terminal().buffer().trimmedCount());
    terminal().startSelection({first, 10}, term::TextSelection::Unit::character);
    terminal().extendSelection({first + 1, 3});
    ASSERT_TRUE(test::waitFor([this] { return view().isWaiting(); })) << "it hears of the selection";
    const QImage marked = shown();
    compare("marks", marked);
    terminal().extendSelection({first + 1, 4});
    EXPECT_TRUE(test::waitFor([&] { return difference(shown(), marked, view().cell().size()).worst > tolerance; }))
        << "one cell more";
    view().find()->setActive(false);

    startShell();
    struct Row {
        const char* bytes;
        bool hasFocus;
    };
    const std::array rows{
        Row{"\x1b[2 qblock\b", true},          Row{"\x1b[4 qunderline\b", true},    Row{"\x1b[6 qbar\b", true},
        Row{"\x1b[2 qno focus\b", false},      Row{"\x1b[2 q\x1b[8;41m漢\r", true}, Row{"\x1b[2 q\x1b#6double\b", true},
        Row{"\x1b[2 q\x1b[7minverse\b", true},
    };
    const QSize strip(view().cell().width * 16, view().cell().height);
    QImage cursors(strip.width(), strip.height() * static_cast<int>(rows.size()), QImage::Format_RGB32);
    for (size_t row = 0; row < rows.size(); ++row) {
        host.setFocus(rows[row].hasFocus);
        const QImage seen = draw(rows[row].bytes);
        QPainter(&cursors).drawImage(
            0, static_cast<int>(row) * strip.height(), seen, 0, 0, strip.width(), strip.height());
    }
    compare("cursors", cursors);
}

} // namespace
} // namespace orv
