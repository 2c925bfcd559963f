#include "TermEngine/Terminal.h"
#include "TermEngine/TextRange_p.h"

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
    rememberSelection();
    m_selectionHasChanged = m_selectionHasChanged || m_selection.range() != before;
}

void Terminal::moveSelectionTo(std::span<const TextPlace> places) {
    changeSelection([&] { m_selection.setPlaces(places); });
    dropSelectionWithin(0, static_cast<std::int64_t>(m_buffer->trimmedCount()) - 1);
}

Terminal::SelectedText::Line Terminal::selectedLine(std::int64_t line) const {
    const BufferLine& cells = m_buffer->lineAt(indexOf(*m_buffer, line));
    return {cells.renderIdentity(), cells.generation()};
}

std::string Terminal::selectedTextFrom(std::int64_t firstLine) const {
    TextRange part = m_selection.range().value_or(TextRange{});
    for (TextPlace* place : {&part.start, &part.end}) {
        if (place->line < firstLine) {
            *place = {firstLine, m_selection.shape() == RangeShape::rectangle ? place->col : 0};
        }
    }
    return textIn(*m_buffer, part, m_selection.shape());
}

void Terminal::rememberSelection() {
    m_selectedText = {};
    const std::optional<TextRange> range = m_selection.range();
    if (!range) {
        return;
    }
    // A rectangle may have been drawn upwards.
    const auto [top, bottom] = std::minmax(range->start.line, range->end.line);
    m_selectedText.firstLine = std::max(top, lineNumber(0));
    const std::int64_t last = std::min(bottom, lineNumber(rows() - 1));
    if (m_selectedText.firstLine > last) {
        return;
    }
    for (std::int64_t line = m_selectedText.firstLine; line <= last; ++line) {
        m_selectedText.lines.push_back(selectedLine(line));
    }
    m_selectedText.text = selectedTextFrom(m_selectedText.firstLine);
}

/// Ends the selection when it is other text that stands there now, or none.
void Terminal::checkSelection() {
    dropSelectionWithin(0, static_cast<std::int64_t>(m_buffer->trimmedCount()) - 1);
    std::int64_t line = m_selectedText.firstLine;
    const bool hasChanged = std::ranges::any_of(
        m_selectedText.lines, [&](const SelectedText::Line& before) { return selectedLine(line++) != before; });
    if (!hasChanged) {
        return;
    }
    if (selectedTextFrom(m_selectedText.firstLine) == m_selectedText.text) {
        rememberSelection();
    } else {
        dropSelection();
    }
}

/// The text from line to line is not what was selected any more.
void Terminal::dropSelectionWithin(std::int64_t first, std::int64_t last) {
    const std::optional<TextRange> range = m_selection.range();
    if (!range) {
        return;
    }
    const auto [top, bottom] = std::minmax(range->start.line, range->end.line);
    if (top <= last && bottom >= first) {
        dropSelection();
    }
}

} // namespace term
