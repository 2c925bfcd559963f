#include "TermEngine/Terminal.h"
#include "TermEngine/TextFields_p.h"

#include <algorithm>
#include <array>
#include <string>

namespace term {

using detail::cutAt;
using detail::numberOf;

namespace {

constexpr std::size_t colorStackLimit = 10;

// VT420 Programmer Reference Manual, Cursor Information Report: each of these fields is a character, with its bits in
// the four lowest ones.
constexpr char bitField = '@';

struct StyleField {
    StyleBit style;
    unsigned bit;
};
constexpr std::array styleFields = std::to_array<StyleField>(
    {{StyleBit::bold, 1}, {StyleBit::underline, 2}, {StyleBit::blink, 4}, {StyleBit::inverse, 8}});
enum Flag : unsigned { originMode = 1, singleShift2 = 2, singleShift3 = 4, pendingWrap = 8 };

char bitsAsCharacter(unsigned bits) {
    return static_cast<char>(static_cast<unsigned>(bitField) | bits);
}

/// Nothing where a field is no such character.
std::optional<unsigned> bitsOf(std::string_view field) {
    if (field.size() != 1 || field[0] < bitField || field[0] > bitField + 15) {
        return {};
    }
    return static_cast<unsigned>(field[0] - bitField);
}

} // namespace

/// DECRQPSR
void Terminal::reportPresentationState(int what) {
    if (what == 1) {
        reportCursorInformation();
    } else if (what == 2) {
        std::string stops;
        for (int col = 0; col < cols(); ++col) {
            if (m_buffer->isTabStop(col)) {
                stops += (stops.empty() ? "" : "/") + std::to_string(col + 1);
            }
        }
        sendDcs("2$u" + stops);
    }
}

/// DECCIR. The place counts from the corner of the screen, in origin mode too.
void Terminal::reportCursorInformation() {
    const Buffer& b = *m_buffer;
    const CharacterStyle style = attribute().style;
    unsigned rendition = 0;
    for (const StyleField& field : styleFields) {
        rendition |= style.has(field.style) ? field.bit : 0;
    }
    const unsigned flags = (m_modes.origin ? originMode : 0U) | (m_charset.single == 2 ? singleShift2 : 0U) |
                           (m_charset.single == 3 ? singleShift3 : 0U) | (b.pendingWrap() ? pendingWrap : 0U);
    unsigned sizes = 0;
    std::string sets;
    for (std::size_t slot = 0; slot < m_charset.designated.size(); ++slot) {
        sizes |= has96Characters(m_charset.designated[slot]) ? 1U << slot : 0;
        sets += designationOf(m_charset.designated[slot]);
    }
    std::string body = "1$u" + std::to_string(b.y() + 1) + ";" + std::to_string(b.x() + 1) + ";1";
    for (const unsigned bits : {rendition, unsigned{m_isProtected}, flags}) {
        body += std::string(";") + bitsAsCharacter(bits);
    }
    body += ";" + std::to_string(m_charset.left) + ";" + std::to_string(m_charset.right) + ";";
    sendDcs(body + bitsAsCharacter(sizes) + ";" + sets);
}

/// DECRSPS of a DECCIR, up to the first field that can't be read.
void Terminal::restoreCursorInformation(const std::string& report) {
    std::string_view rest = report;
    const std::optional<int> row = numberOf(cutAt(rest, ';'));
    const std::optional<int> col = numberOf(cutAt(rest, ';'));
    if (!row || !col || *row < 1 || *col < 1) {
        return;
    }
    m_buffer->setCursor(*col - 1, *row - 1);
    cutAt(rest, ';'); // the page
    const std::optional<unsigned> rendition = bitsOf(cutAt(rest, ';'));
    const std::optional<unsigned> protection = bitsOf(cutAt(rest, ';'));
    const std::optional<unsigned> flags = bitsOf(cutAt(rest, ';'));
    if (!rendition || !protection || !flags) {
        return;
    }
    Attribute made = attribute();
    for (const StyleField& field : styleFields) {
        made.style.set(field.style, (*rendition & field.bit) != 0);
    }
    made.underlineStyle = made.style.has(StyleBit::underline) ? UnderlineStyle::single : UnderlineStyle::none;
    m_attribute = made.packed();
    m_isProtected = (*protection & 1) != 0;
    m_isPenStale = true;
    m_modes.origin = (*flags & originMode) != 0;
    m_buffer->setPendingWrap((*flags & pendingWrap) != 0 && m_buffer->x() == m_buffer->lastColumn(m_buffer->y()));
    m_charset.single = (*flags & singleShift2) != 0 ? 2 : (*flags & singleShift3) != 0 ? 3 : -1;
    const std::optional<int> left = numberOf(cutAt(rest, ';'));
    const std::optional<int> right = numberOf(cutAt(rest, ';'));
    const std::optional<unsigned> sizes = bitsOf(cutAt(rest, ';'));
    if (!left || !right || !sizes || *left < 0 || *left > 3 || *right < 0 || *right > 3) {
        return;
    }
    m_charset.left = *left;
    m_charset.right = *right;
    for (std::size_t slot = 0; slot < m_charset.designated.size() && !rest.empty(); ++slot) {
        const std::size_t size = std::min(rest.find_first_not_of(" !\"#$%&'()*+,-./"), rest.size() - 1) + 1;
        if (const auto set = charsetOf(rest.substr(0, size), (*sizes >> slot & 1) != 0)) {
            m_charset.designated[slot] = *set;
        }
        rest.remove_prefix(size);
    }
}

/// DECRSPS of a DECTABSR.
void Terminal::restoreTabStops(const std::string& report) {
    m_buffer->clearAllTabStops();
    for (std::string_view rest = report; !rest.empty();) {
        if (const std::optional<int> col = numberOf(cutAt(rest, '/')); col && *col >= 1 && *col <= cols()) {
            m_buffer->setTabStop(*col - 1);
        }
    }
}

/// XTREPORTSGR
void Terminal::reportRendition(const CsiParameters& parameters) {
    if (!m_rectangles.hasSteps()) {
        return;
    }
    const Rectangle area = rectangle(parameters, 0);
    CommonAttribute common;
    for (int row = area.top; row < area.bottom && !area.isEmpty(); ++row) {
        common.add(m_rectangles.commonOf(*m_arena, row, m_buffer->line(row), {area.left, area.right}));
    }
    sendCsi(common.attribute().toSgr() + "m");
}

/// XTPUSHCOLORS: onto the top, or into one of the ten places, which is the top then.
void Terminal::pushColors(const CsiParameters& parameters) {
    const std::size_t place = parameters.at(0) == 0 ? m_colorTop + 1 : static_cast<std::size_t>(parameters.at(0));
    if (place > colorStackLimit) {
        return;
    }
    m_colorStack.resize(std::max(m_colorStack.size(), place));
    m_colorStack[place - 1] = m_colors.ownColors();
    m_colorTop = place;
}

/// XTPOPCOLORS: from the top, or from one of the places, and what is below it is the top then.
void Terminal::popColors(const CsiParameters& parameters) {
    const std::size_t place = parameters.at(0) == 0 ? m_colorTop : static_cast<std::size_t>(parameters.at(0));
    if (place == 0 || place > m_colorStack.size()) {
        return;
    }
    const ColorTable::OwnColors before = m_colors.ownColors();
    m_colors.setOwnColors(m_colorStack[place - 1]);
    m_colorTop = place - 1;
    m_delegate.colorChanged(*this, {});
    for (const auto which : {DynamicColor::foreground, DynamicColor::background, DynamicColor::cursor}) {
        const auto index = static_cast<std::size_t>(which);
        if (before.dynamic[index] != m_colors.ownColors().dynamic[index]) {
            dynamicColorChanged(which);
        }
    }
}

/// XTREPORTCOLORS, in the form that xterm has
void Terminal::reportColors() {
    sendCsi("?" + std::to_string(m_colorTop) + ";" + std::to_string(m_colorStack.size()) + "#Q");
}

} // namespace term
