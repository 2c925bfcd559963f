#pragma once

#include "OrvTerminal/View/CellGeometry.h"

#include <QFont>
#include <QImage>
#include <QRawFont>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orv {

/// The faces of a terminal's font, and what they and the fonts behind them draw: each cluster once, as it is blended
/// onto a line. Main thread.
class GlyphCache {
public:
    enum Face : std::uint8_t { regular = 0, bold = 1, italic = 2 };
    /// What a glyph fills: cells, each stretched by whole numbers in lines of double width or height.
    struct Box {
        std::uint8_t columns = 1;
        std::uint8_t stretchX = 1;
        std::uint8_t stretchY = 1;
        bool operator==(const Box&) const = default;
    };
    struct Glyph {
        int left = 0; ///< from the corner of the box; may be negative
        int top = 0;
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> mask;   ///< how much of the text's colour each pixel gets
        std::vector<std::uint32_t> color; ///< in place of it: pixels of its own, premultiplied, as an emoji has them
    };

    GlyphCache(
        const QString& family, qreal logicalSize, qreal devicePixelRatio,
        QFont::HintingPreference hinting = QFont::PreferVerticalHinting);

    [[nodiscard]] const CellGeometry& cell() const { return m_cell; }
    /// The reference holds until the next call.
    [[nodiscard]] const Glyph& glyph(std::u32string_view cluster, unsigned face, Box box);
    /// How many glyphs were made so far.
    [[nodiscard]] std::size_t madeCount() const { return m_made; }

private:
    /// Of what a screen shows at most at a time, several fold; beyond that all start anew.
    static constexpr std::size_t most = 16384;
    static constexpr std::size_t asciiCount = 128;

    struct Key {
        std::u32string cluster;
        std::uint32_t form = 0;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const {
            return std::hash<std::u32string>()(key.cluster) ^ (std::size_t{key.form} * 0x9E3779B97F4A7C15U);
        }
    };

    void measure();
    [[nodiscard]] Glyph make(std::u32string_view cluster, unsigned face, Box box);
    [[nodiscard]] bool drawFromFace(QPainter& painter, char32_t scalar, unsigned face) const;
    void drawLaidOut(QPainter& painter, std::u32string_view cluster, unsigned face, int width) const;

    std::array<QFont, 4> m_fonts;
    std::array<QFont, 4> m_emojiFonts;
    std::array<QRawFont, 4> m_faces;
    CellGeometry m_cell;
    std::unordered_map<Key, Glyph, KeyHash> m_glyphs;
    std::array<std::array<Glyph*, asciiCount>, 4> m_ascii{};
    std::size_t m_made = 0;
};

} // namespace orv
