#include "OrvTerminal/View/ArabicForms.h"
#include "OrvTerminal/View/DrawnGlyphs.h"
#include "OrvTerminal/View/GlyphCache.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QImage drawn(char32_t scalar, QSize cell, int thickness) {
    QImage image(cell, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawGlyph(painter, scalar, cell, thickness);
    return image;
}

enum class Side { left, right, top, bottom };

/// Which pixels of a side are painted, as a row of digits.
std::string edge(const QImage& image, Side side) {
    std::string pixels;
    const bool isRow = side == Side::top || side == Side::bottom;
    for (int at = 0; at < (isRow ? image.width() : image.height()); ++at) {
        const int x = isRow ? at : side == Side::left ? 0 : image.width() - 1;
        const int y = !isRow ? at : side == Side::top ? 0 : image.height() - 1;
        pixels += qAlpha(image.pixel(x, y)) > 127 ? '1' : '0';
    }
    return pixels;
}

/// Each line leaves its cell where the lines of its kind enter the next one, at whatever size.
TEST(BoxDrawing, JoinsWithoutASeam) {
    struct Family {
        const char* label;
        char32_t horizontal;
        char32_t vertical;
        std::u32string_view all;
    };
    const std::array families{
        Family{"light", U'─', U'│', U"┌┐└┘├┤┬┴┼╭╮╯╰"},
        Family{"heavy", U'━', U'┃', U"┏┓┗┛┣┫┳┻╋"},
        Family{"double", U'═', U'║', U"╔╗╚╝╠╣╦╩╬"},
    };
    struct Size {
        QSize cell;
        int thickness;
    };
    for (const Size size :
         {Size{{8, 20}, 1}, Size{{10, 25}, 1}, Size{{16, 40}, 2}, Size{{7, 17}, 1}, Size{{31, 64}, 5}}) {
        for (const Family& family : families) {
            const QImage horizontal = drawn(family.horizontal, size.cell, size.thickness);
            const QImage vertical = drawn(family.vertical, size.cell, size.thickness);
            ASSERT_EQ(edge(horizontal, Side::left), edge(horizontal, Side::right)) << family.label;
            ASSERT_EQ(edge(vertical, Side::top), edge(vertical, Side::bottom)) << family.label;
            for (const char32_t scalar : family.all) {
                const QImage image = drawn(scalar, size.cell, size.thickness);
                int arms = 0;
                for (const Side side : {Side::left, Side::right, Side::top, Side::bottom}) {
                    const std::string pixels = edge(image, side);
                    const bool isEmpty = pixels.find('1') == std::string::npos;
                    arms += isEmpty ? 0 : 1;
                    const QImage& model = side == Side::left || side == Side::right ? horizontal : vertical;
                    EXPECT_TRUE(isEmpty || pixels == edge(model, side))
                        << family.label << " U+" << std::hex << static_cast<unsigned>(scalar) << " " << pixels << " at "
                        << std::dec << size.cell.width();
                }
                EXPECT_GE(arms, 2) << family.label << " U+" << std::hex << static_cast<unsigned>(scalar);
            }
        }
    }
}

TEST(DrawnGlyphs, FillTheirPartOfTheCell) {
    const QSize cell(16, 48);
    const auto share = [&](char32_t scalar) {
        const QImage image = drawn(scalar, cell, 1);
        int alpha = 0;
        for (int y = 0; y < cell.height(); ++y) {
            for (int x = 0; x < cell.width(); ++x) {
                alpha += qAlpha(image.pixel(x, y));
            }
        }
        return alpha / 255.0 / (cell.width() * cell.height());
    };
    struct Case {
        const char* label;
        char32_t scalar;
        double expected;
    };
    const std::array cases{
        Case{"full block", 0x2588, 1},
        Case{"upper half", 0x2580, 0.5},
        Case{"lower eighth", 0x2581, 0.125},
        Case{"left 3/8", 0x258D, 0.375},
        Case{"right half", 0x2590, 0.5},
        Case{"light shade", 0x2591, 0.25},
        Case{"dark shade", 0x2593, 0.75},
        Case{"quadrant lower left", 0x2596, 0.25},
        Case{"three quadrants", 0x259F, 0.75},
        Case{"no braille dot", 0x2800, 0},
        Case{"first sextant", 0x1FB00, 1 / 6.},
        Case{"last sextant", 0x1FB3B, 5 / 6.},
        Case{"sextant behind the left half", 0x1FB14, 0.5},
        Case{"second eighth from the left", 0x1FB70, 0.125},
        Case{"upper quarter", 0x1FB82, 0.25},
        Case{"right 7/8", 0x1FB8B, 0.875},
        Case{"separator", 0xE0B0, 0.5},
        Case{"lower left triangle", 0xE0B8, 0.5},
    };
    for (const Case& it : cases) {
        EXPECT_NEAR(share(it.scalar), it.expected, 0.03) << it.label;
    }
    // All of them draw something, but for a braille pattern without dots.
    for (char32_t scalar = 0x2500; scalar < 0x1FC00; ++scalar) {
        if (isDrawnGlyph(scalar) && scalar != 0x2800) {
            EXPECT_GT(share(scalar), 0.005) << "U+" << std::hex << static_cast<unsigned>(scalar);
        }
    }
}

TEST(ArabicForms, JoinLettersToTheirNeighbours) {
    struct Case {
        const char* label;
        std::u32string_view text;
        std::u32string_view shown;
    };
    const std::vector<Case> cases{
        {"a word", U"\u0645\u0631\u062D\u0628\u0627", U"\uFEE3\uFEAE\uFEA3\uFE92\uFE8E"},
        {"a Persian letter", U"\u06AF\u0644", U"\uFB94\uFEDE"},
        {"apart", U"\u0628 \u0628", U"\u0628 \u0628"},
        {"drawn out", U"\u0628\u0640", U"\uFE91\u0640"},
        {"beside Latin", U"\u0628a\u0628", U"\u0628a\u0628"},
        {"held apart by a non-joiner", U"\u0628\u200C\u0628", U"\u0628\u200C\u0628"},
        {"Hebrew", U"\u05E9\u05DC", U"\u05E9\u05DC"},
    };
    for (const Case& it : cases) {
        std::u32string shown;
        for (size_t at = 0; at < it.text.size(); ++at) {
            shown +=
                joinedForm(it.text[at], at > 0 ? it.text[at - 1] : 0, at + 1 < it.text.size() ? it.text[at + 1] : 0);
        }
        EXPECT_EQ(shown, it.shown) << it.label;
    }
}

TEST(GlyphCache, MakesEachGlyphOnceAndKeepsItInItsCells) {
    for (const qreal ratio : {1.0, 1.25, 2.0}) {
        GlyphCache glyphs(u"JetBrains Mono"_s, 13, ratio);
        const CellGeometry cell = glyphs.cell();
        EXPECT_EQ(cell.size(), QSize(qRound(7.8 * ratio), qRound(20 * ratio)));
        const auto& plain = glyphs.glyph(U"M", GlyphCache::regular, {});
        EXPECT_FALSE(plain.mask.empty());
        EXPECT_GE(plain.left, 0);
        EXPECT_LE(plain.left + plain.width, cell.width);
        EXPECT_EQ(plain.top + plain.height, cell.baseline) << "stands on its line";
        const auto bold = glyphs.glyph(U"M", GlyphCache::bold, {}).mask;
        EXPECT_NE(bold, glyphs.glyph(U"M", GlyphCache::regular, {}).mask);
        EXPECT_TRUE(glyphs.glyph(U"M", GlyphCache::regular, {}).color.empty());
        const std::size_t made = glyphs.madeCount();
        EXPECT_EQ(glyphs.glyph(U"M", GlyphCache::bold, {}).mask, bold);
        EXPECT_EQ(glyphs.madeCount(), made);
        // Twice as wide: about twice the width in ink.
        const int width = glyphs.glyph(U"M", GlyphCache::regular, {}).width;
        EXPECT_NEAR(glyphs.glyph(U"M", GlyphCache::regular, {1, 2, 1}).width, 2 * width, 2);
        // What another font has must not reach into the cells beside it.
        for (const std::u32string_view wide : {U"漢", U"⇶", U"👩‍🚀", U"1️⃣"}) {
            const auto columns = static_cast<std::uint8_t>(wide == U"⇶" ? 1 : 2);
            const auto& glyph = glyphs.glyph(wide, GlyphCache::regular, {columns, 1, 1});
            EXPECT_LE(glyph.left + glyph.width, columns * cell.width + 1);
        }
    }
}

} // namespace
} // namespace orv
