#include "TermEngine/Terminal.h"

#include <algorithm>

namespace term {

void Terminal::startSelection(TextPlace place, TextSelection::Unit unit) {
    changeSelection([&] { m_selection.start(*m_buffer, place, unit); });
    tellOfChanges();
}

void Terminal::extendSelection(TextPlace place) {
    changeSelection([&] { m_selection.extend(*m_buffer, place); });
    tellOfChanges();
}

void Terminal::clearSelection() {
    dropSelection();
    tellOfChanges();
}

void Terminal::dropSelection() {
    changeSelection([&] { m_selection.clear(); });
}

template <typename Change>
void Terminal::changeSelection(const Change& change) {
    const std::optional<TextRange> before = m_selection.range();
    change();
    m_selectionHasChanged = m_selectionHasChanged || m_selection.range() != before;
}

void Terminal::moveSelectionTo(std::span<const TextPlace> places) {
    changeSelection([&] { m_selection.setPlaces(places); });
    dropSelectionWithin(0, static_cast<std::int64_t>(m_buffer->trimmedCount()) - 1);
}

/// The text from line to line is not what was selected any more.
void Terminal::dropSelectionWithin(std::int64_t first, std::int64_t last) {
    const std::optional<TextRange> range = m_selection.range();
    if (!range) {
        return;
    }
    // A rectangle may have been drawn upwards.
    const auto [top, bottom] = std::minmax(range->start.line, range->end.line);
    if (top <= last && bottom >= first) {
        dropSelection();
    }
}

} // namespace term
