#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace orv {

/// One line of output as a terminal would show it.
///
/// Carriage return, backspace, tab and the sequences that move the cursor within its line or erase parts of it (ECMA-48
/// CHA, CUF, CUB, EL and their like) are carried out; colours (SGR) stay with the characters that they apply to; links
/// (OSC 8) may, to a few kinds of addresses and to the end of the line at most; every other control is dropped. A
/// sequence of unreasonable length is none: what follows its first bytes is text. A code point takes one column, a
/// combining one joins the one before it.
class TerminalLine {
public:
    enum class Links { drop, keep };
    /// The text of a raw line that came without its line feed. Bytes that are not UTF-8 become U+FFFD.
    [[nodiscard]] static QString text(QByteArrayView raw, Links links = Links::drop);
    /// Whether a raw line is shown otherwise than it stands: it holds controls beside tabs and colours.
    [[nodiscard]] static bool isRewritten(QByteArrayView raw);

    enum class Input { whole, continues };
    /// Takes in `raw`, which must outlive the object. Of input that continues, a sequence or character which its end
    /// cuts in two is left over: the result is how many bytes were taken.
    explicit TerminalLine(QByteArrayView raw, Input input);
    [[nodiscard]] qsizetype consumed() const { return m_at; }

    /// The line as it stands, with colours, up to `limitBytes`; those cells leave the object. A link is written as
    /// "ESC ]8;;address ESC \", its end as one without an address.
    [[nodiscard]] QByteArray take(qsizetype limitBytes, Links links = Links::keep);
    [[nodiscard]] bool isEmpty() const { return m_first >= m_cells.size(); }
    /// What takes cursor and colours to where they are, put behind the piece that was taken last.
    [[nodiscard]] QByteArray position() const;

private:
    /// A piece of the raw line.
    struct Slice {
        uint32_t start = 0;
        uint32_t length = 0;

        bool operator==(const Slice&) const = default;
    };
    struct Cell {
        Slice text; ///< empty for a blank that nothing was written to
        uint32_t pen = 0;
        Slice link; ///< the address; empty: none
    };
    static constexpr size_t attributeCount = 12;
    using Pen = std::array<Slice, attributeCount>; ///< for each attribute the SGR parameter that set it

    void write(Slice text);
    void moveTo(qint64 column);
    [[nodiscard]] qsizetype escape(qsizetype at, Input input);
    void control(char final, QByteArrayView parameters, qsizetype at);
    void erase(int mode);
    void link(QByteArrayView parameters, qsizetype at);
    void colour(QByteArrayView parameters, qsizetype at);
    void appendPen(QByteArray& out, uint32_t pen) const;
    void appendLink(QByteArray& out, Slice address) const;

    QByteArrayView m_raw;
    qsizetype m_at = 0;
    std::vector<Cell> m_cells;
    std::vector<Pen> m_pens{Pen{}};
    uint32_t m_pen = 0;
    Slice m_link;
    size_t m_first = 0;     ///< the cells before it were taken
    size_t m_lastTaken = 0; ///< where the last piece began
    size_t m_column = 0;
};

} // namespace orv
