#include "TermEngine/Terminal.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace term {
namespace {

/// Where the cursor of a shell can stand in the input that it shows: before each character, and behind each line.
struct InputPlaces {
    std::vector<TextPlace> places{};
    std::vector<int> lines{};          ///< of each place, which of the input's lines it is in
    std::vector<std::size_t> begins{}; ///< of each line, its first place

    /// The last place that is not behind `wanted`, on its row where there is one.
    [[nodiscard]] std::size_t indexOf(TextPlace wanted) const {
        const auto behind = std::ranges::upper_bound(places, wanted);
        auto index = static_cast<std::size_t>(std::max<std::ptrdiff_t>(behind - places.begin() - 1, 0));
        if (places[index].line < wanted.line && behind != places.end() && behind->line == wanted.line) {
            ++index;
        }
        return index;
    }
    [[nodiscard]] std::size_t lengthOf(int line) const {
        const auto next = static_cast<std::size_t>(line) + 1;
        const std::size_t end = next < begins.size() ? begins[next] : places.size();
        return end - begins[static_cast<std::size_t>(line)] - 1;
    }
    [[nodiscard]] std::size_t columnOf(std::size_t index) const {
        return index - begins[static_cast<std::size_t>(lines[index])];
    }
};

bool flowsOver(const Buffer& buffer, int index) {
    return index + 1 < buffer.lineCount() && buffer.lineAt(index + 1).isWrapped();
}

/// The lines around the cursor that belong to its prompt.
InputPlaces inputPlaces(const Buffer& buffer) {
    const std::uint32_t group = buffer.semantic.activeGroup();
    const auto goesOn = [&](int index) {
        const BufferLine& line = buffer.lineAt(index);
        return line.isWrapped() || (group != 0 && line.semanticHardContinuationGroup() == group);
    };
    const int cursor = buffer.yBase() + buffer.y();
    int first = cursor;
    while (first > 0 && goesOn(first)) {
        --first;
    }
    int end = cursor + 1;
    while (end < buffer.lineCount() && goesOn(end)) {
        ++end;
    }
    const auto oldest = static_cast<std::int64_t>(buffer.trimmedCount());
    InputPlaces made;
    for (int index = first; index < end; ++index) {
        if (index == first || !buffer.lineAt(index).isWrapped()) {
            made.begins.push_back(made.places.size());
        }
        const auto put = [&](int col) {
            made.places.push_back({oldest + index, col});
            made.lines.push_back(static_cast<int>(made.begins.size()) - 1);
        };
        const BufferLine& line = buffer.lineAt(index);
        int behind = -1;
        for (int col = 0; col < line.getTrimmedLength(); ++col) {
            const PackedCell cell = line[col];
            if (cell.semanticCode() == static_cast<int>(SemanticContent::input)) {
                behind = col + 1;
                if (!cell.isSpacer()) {
                    put(col);
                }
            }
        }
        if (!flowsOver(buffer, index)) {
            behind = index == cursor ? std::max(behind, buffer.x()) : behind;
            put(behind < 0 ? line.getTrimmedLength() : behind);
        }
    }
    return made;
}

/// The keys that move a shell's cursor between two of the places.
std::vector<std::pair<Key, std::size_t>> wayBetween(
    const InputPlaces& input, SemanticClickMode mode, std::size_t from, std::size_t to) {
    const auto along = [](std::size_t start, std::size_t end) {
        return std::pair(end < start ? Key::left : Key::right, end < start ? start - end : end - start);
    };
    const int lines = input.lines[to] - input.lines[from];
    const bool isVertical = mode == SemanticClickMode::conservativeVertical || mode == SemanticClickMode::smartVertical;
    if (lines == 0 || mode == SemanticClickMode::multipleLines) {
        return {along(from, to)};
    }
    if (!isVertical) {
        return {};
    }
    const std::pair down{lines < 0 ? Key::up : Key::down, static_cast<std::size_t>(std::abs(lines))};
    const std::size_t column = input.columnOf(from);
    if (mode == SemanticClickMode::conservativeVertical) {
        return {{Key::left, column}, down, {Key::right, input.columnOf(to)}};
    }
    return {down, along(std::min(column, input.lengthOf(input.lines[to])), input.columnOf(to))};
}

} // namespace

void Terminal::semanticPrompt(std::string_view payload) {
    using Kind = SemanticReport::Kind;
    const std::optional<SemanticReport> report = parseSemanticPrompt(payload);
    if (!report) {
        return;
    }
    SemanticState& state = m_buffer->semantic;
    const Kind kind = report->kind;
    const bool isNew = kind == Kind::prompt || kind == Kind::promptAfterEnd;
    if (kind == Kind::end && !state.end(report->applicationId)) {
        return;
    }
    const bool endsOutput =
        kind == Kind::end || (kind == Kind::promptAfterEnd && state.content != SemanticContent::none &&
                              state.content != SemanticContent::prompt);
    if (endsOutput) {
        BufferLine& line = m_buffer->line(m_buffer->y());
        SemanticMarks marks = line.semanticMarks();
        marks.commandEnd = true;
        marks.exitCode = kind == Kind::end ? report->exitCode : std::nullopt;
        line.setSemanticMark(marks);
        state.content = SemanticContent::none;
        m_isPenStale = true;
    }
    if ((isNew || kind == Kind::freshLine) && m_buffer->x() > 0) {
        nextLine();
    }
    BufferLine& line = m_buffer->line(m_buffer->y());
    SemanticMarks marks = line.semanticMarks();
    if (isNew) {
        if (!report->continuesPrompt) {
            state.begin(report->applicationId.value_or(std::string()));
            line.setSemanticHardContinuationGroup(0);
        }
        state.clickMode = report->clickMode.value_or(SemanticClickMode::none);
        state.usesSpecialCursorKeys = report->usesSpecialCursorKeys.value_or(false);
    } else {
        state.clickMode = report->clickMode.value_or(state.clickMode);
        state.usesSpecialCursorKeys = report->usesSpecialCursorKeys.value_or(state.usesSpecialCursorKeys);
    }
    if (isNew || kind == Kind::promptPart) {
        state.content = SemanticContent::prompt;
        marks.promptStart = marks.promptStart || !report->continuesPrompt;
    } else if (kind == Kind::input || kind == Kind::inputLine) {
        state.content = SemanticContent::input;
        state.input = kind == Kind::input ? SemanticInput::untilMark : SemanticInput::untilLineEnd;
        marks.inputStart = true;
    } else if (kind == Kind::output) {
        state.content = SemanticContent::output;
        line.setSemanticHardContinuationGroup(0);
        marks.outputStart = true;
    } else {
        return;
    }
    m_isPenStale = true;
    line.setSemanticMark(marks);
}

/// The cursor has come to a new line within a prompt or its input.
void Terminal::continuePrompt() {
    SemanticState& state = m_buffer->semantic;
    BufferLine& line = m_buffer->line(m_buffer->y());
    if (state.content == SemanticContent::input && state.input == SemanticInput::untilLineEnd) {
        state.content = SemanticContent::output;
        m_isPenStale = true;
        SemanticMarks marks = line.semanticMarks();
        marks.outputStart = true;
        line.setSemanticMark(marks);
    } else if (state.content != SemanticContent::output) {
        line.setSemanticHardContinuationGroup(state.activeGroup());
    }
}

bool Terminal::clickPrompt(TextPlace place) {
    const SemanticState& state = m_buffer->semantic;
    if (state.content != SemanticContent::input || state.clickMode == SemanticClickMode::none ||
        m_modes.mouseTracking != MouseTracking::none) {
        return false;
    }
    const InputPlaces input = inputPlaces(*m_buffer);
    if (place.line < input.places.front().line || place.line > input.places.back().line) {
        return false;
    }
    if (state.clickMode == SemanticClickMode::events) {
        const std::int64_t row = place.line - lineNumber(0);
        const std::string body = "<0;" + std::to_string(place.col + 1) + ";" + std::to_string(row + 1) + "M";
        return row >= 0 && sendInput((m_modes.eightBitControls ? "\x9B" : "\x1B[") + body);
    }
    if (state.usesSpecialCursorKeys) {
        return false;
    }
    const std::size_t from = input.indexOf({lineNumber(m_buffer->y()), m_buffer->x()});
    std::string keys;
    const std::size_t most = static_cast<std::size_t>(cols()) * static_cast<std::size_t>(rows());
    for (const auto& [key, count] : wayBetween(input, state.clickMode, from, input.indexOf(place))) {
        const std::string once = encodeKey({.key = key}, keyModes());
        for (std::size_t i = 0; i < std::min(count, most); ++i) {
            keys += once;
        }
    }
    return sendInput(keys);
}

} // namespace term
