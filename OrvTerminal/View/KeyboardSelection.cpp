#include "OrvTerminal/View/KeyboardSelection.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/TerminalSession.h"

#include <QKeyEvent>

#include <algorithm>
#include <array>
#include <utility>

namespace orv {

using term::TextPlace;
using Unit = term::TextSelection::Unit;

namespace {
constexpr qsizetype longestSpoken = 300;
}

struct KeyboardSelection::Key {
    int key = 0;
    Qt::KeyboardModifiers modifiers{}; ///< Shift with a move is not among them: it selects
    Move move = nullptr;
    int direction = 0;
    Outcome outcome = Outcome::done;
    void (KeyboardSelection::*act)(Unit unit) = nullptr;
    Unit unit = Unit::character;
};

const KeyboardSelection::Key* KeyboardSelection::keyOf(const QKeyEvent& event) {
    using Self = KeyboardSelection;
#ifdef Q_OS_MACOS
    constexpr Qt::KeyboardModifiers word = Qt::AltModifier;
#else
    constexpr Qt::KeyboardModifiers word = Qt::ControlModifier;
#endif
    constexpr Qt::KeyboardModifiers none{}, shift = Qt::ShiftModifier, ctrl = Qt::ControlModifier;
    static const std::array keys{
        Key{Qt::Key_Left, none, &Self::byCharacter, -1},
        Key{Qt::Key_Right, none, &Self::byCharacter, 1},
        Key{Qt::Key_Up, none, &Self::byLine, -1},
        Key{Qt::Key_Down, none, &Self::byLine, 1},
        Key{Qt::Key_Left, word, &Self::byWord, -1},
        Key{Qt::Key_Right, word, &Self::byWord, 1},
        Key{Qt::Key_Up, ctrl, &Self::toPrompt, -1},
        Key{Qt::Key_Down, ctrl, &Self::toPrompt, 1},
        Key{Qt::Key_PageUp, none, &Self::byPage, -1},
        Key{Qt::Key_PageDown, none, &Self::byPage, 1},
        Key{Qt::Key_Home, none, &Self::toEndOfLine, -1},
        Key{Qt::Key_End, none, &Self::toEndOfLine, 1},
        Key{Qt::Key_Home, ctrl, &Self::toEndOfText, -1},
        Key{Qt::Key_End, ctrl, &Self::toEndOfText, 1},
        // As in vi.
        Key{Qt::Key_H, none, &Self::byCharacter, -1},
        Key{Qt::Key_L, none, &Self::byCharacter, 1},
        Key{Qt::Key_K, none, &Self::byLine, -1},
        Key{Qt::Key_J, none, &Self::byLine, 1},
        Key{Qt::Key_B, none, &Self::byWord, -1},
        Key{Qt::Key_W, none, &Self::byWord, 1},
        Key{Qt::Key_0, none, &Self::toEndOfLine, -1},
        Key{Qt::Key_Dollar, shift, &Self::toEndOfLine, 1},
        Key{Qt::Key_G, none, &Self::toEndOfText, -1},
        Key{Qt::Key_G, shift, &Self::toEndOfText, 1},
        Key{Qt::Key_Space, none, nullptr, 0, Outcome::done, &Self::mark, Unit::character},
        Key{Qt::Key_V, none, nullptr, 0, Outcome::done, &Self::mark, Unit::character},
        Key{Qt::Key_V, shift, nullptr, 0, Outcome::done, &Self::mark, Unit::line},
        Key{Qt::Key_V, ctrl, nullptr, 0, Outcome::done, &Self::mark, Unit::rectangle},
        Key{Qt::Key_O, none, nullptr, 0, Outcome::done, &Self::swapEnds},
        Key{Qt::Key_Return, none, nullptr, 0, Outcome::copy},
        Key{Qt::Key_Enter, none, nullptr, 0, Outcome::copy},
        Key{Qt::Key_Y, none, nullptr, 0, Outcome::copy},
        Key{Qt::Key_C, ctrl, nullptr, 0, Outcome::copy},
        Key{Qt::Key_Escape, none, nullptr, 0, Outcome::leave},
        Key{Qt::Key_Q, none, nullptr, 0, Outcome::leave},
    };
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const auto finds = [&](Qt::KeyboardModifiers wanted) {
        return std::ranges::find_if(
            keys, [&](const Key& key) { return key.key == event.key() && key.modifiers == wanted; });
    };
    const auto* found = finds(modifiers);
    if (found == keys.end() && modifiers.testFlag(Qt::ShiftModifier)) {
        found = finds(modifiers & ~shift);
        // Only a move is the same with Shift, and letters are other commands then.
        const bool isLetter = event.key() >= Qt::Key_Space && event.key() <= Qt::Key_AsciiTilde;
        found = found != keys.end() && (found->move == nullptr || isLetter) ? keys.end() : found;
    }
    return found == keys.end() ? nullptr : found;
}

KeyboardSelection::KeyboardSelection(TerminalSession& session, QObject* parent) : QObject(parent), m_session(session) {
    // Lines may be gone, or narrower.
    const auto follow = [this] {
        if (m_isActive && onCell(m_cursor) != m_cursor) {
            m_cursor = onCell(m_cursor);
            Q_EMIT moved();
        }
    };
    connect(&session, &TerminalSession::resized, this, follow);
    connect(&session, &TerminalSession::outputReceived, this, follow);
}

void KeyboardSelection::start() {
    ORV_ASSERT_MAIN_THREAD();
    const term::Buffer& buffer = m_session.terminal().buffer();
    const int row = buffer.yBase() + buffer.y() - buffer.yDisp();
    const std::int64_t top = firstLine() + buffer.yDisp();
    m_anchor.reset();
    m_isMarked = false;
    m_isActive = true;
    m_session.terminal().clearSelection();
    moveTo(row < buffer.rows() ? TextPlace{top + row, buffer.x()} : TextPlace{top + buffer.rows() / 2, 0});
    Q_EMIT activeChanged();
}

void KeyboardSelection::stop(Keep keep) {
    if (!std::exchange(m_isActive, false)) {
        return;
    }
    if (keep == Keep::no) {
        m_session.terminal().clearSelection();
    }
    Q_EMIT activeChanged();
}

QString KeyboardSelection::spoken() const {
    if (!m_isActive) {
        return {};
    }
    const term::Terminal& terminal = m_session.terminal();
    const std::string text = m_anchor ? terminal.selection().text(terminal.buffer())
                                      : textIn(terminal.buffer(), lineAt(terminal.buffer(), m_cursor));
    return QString::fromStdString(text).left(longestSpoken);
}

bool KeyboardSelection::knows(const QKeyEvent& event) {
    return keyOf(event) != nullptr;
}

KeyboardSelection::Outcome KeyboardSelection::press(const QKeyEvent& event) {
    ORV_ASSERT_MAIN_THREAD();
    const Key* key = keyOf(event);
    if (key == nullptr) {
        return Outcome::unknown;
    }
    m_cursor = onCell(m_cursor); // the history may be gone
    if (key->act != nullptr) {
        (this->*key->act)(key->unit);
    } else if (key->move != nullptr) {
        const bool selects =
            event.modifiers().testFlag(Qt::ShiftModifier) && !key->modifiers.testFlag(Qt::ShiftModifier);
        if (selects && !m_anchor) {
            m_unit = Unit::character;
            m_anchor = m_cursor;
        } else if (!selects && !m_isMarked) {
            m_anchor.reset();
        }
        moveTo((this->*key->move)(key->direction));
    }
    return key->outcome;
}

/// The same once more takes the mark away.
void KeyboardSelection::mark(Unit unit) {
    const bool ends = m_isMarked && m_unit == unit;
    m_isMarked = !ends;
    m_unit = unit;
    m_anchor = ends ? std::nullopt : std::optional(m_anchor.value_or(m_cursor));
    moveTo(m_cursor);
}

void KeyboardSelection::swapEnds(Unit /*unit*/) {
    if (m_anchor) {
        moveTo(std::exchange(*m_anchor, m_cursor));
    }
}

void KeyboardSelection::moveTo(TextPlace place) {
    m_cursor = onCell(place);
    select();
    Q_EMIT moved();
}

/// Both the cell where it began and that of the cursor belong to it.
void KeyboardSelection::select() {
    term::Terminal& terminal = m_session.terminal();
    if (!m_anchor) {
        terminal.clearSelection();
        return;
    }
    const auto behind = [&](TextPlace place) {
        const term::PackedCell cell = terminal.buffer().lineAt(static_cast<int>(place.line - firstLine()))[place.col];
        return TextPlace{place.line, place.col + (cell.isWide() ? 2 : 1)};
    };
    m_anchor = onCell(*m_anchor);
    TextPlace from = *m_anchor;
    TextPlace to = m_cursor;
    if (m_unit == Unit::rectangle ? from.col <= to.col : from <= to) {
        to = behind(to);
    } else {
        from = behind(from);
    }
    terminal.startSelection(from, m_unit);
    terminal.extendSelection(to);
}

std::int64_t KeyboardSelection::firstLine() const {
    return static_cast<std::int64_t>(m_session.terminal().buffer().trimmedCount());
}

std::int64_t KeyboardSelection::lastLine() const {
    return firstLine() + m_session.terminal().buffer().lineCount() - 1;
}

int KeyboardSelection::lengthOf(std::int64_t line) const {
    return m_session.terminal().buffer().lineAt(static_cast<int>(line - firstLine())).getTrimmedLength();
}

bool KeyboardSelection::isBlank(TextPlace place) const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    char32_t memory = 0;
    const std::u32string_view scalars =
        buffer.cellArena().scalarValues(buffer.lineAt(static_cast<int>(place.line - firstLine()))[place.col], memory);
    return scalars.empty() || scalars.front() == U'\0' ||
           term::unicode::wordClass(scalars.front()) == term::unicode::WordClass::blank;
}

TextPlace KeyboardSelection::onCell(TextPlace place) const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    place.line = std::clamp(place.line, firstLine(), lastLine());
    const term::BufferLine& line = buffer.lineAt(static_cast<int>(place.line - firstLine()));
    place.col = std::clamp(place.col, 0, buffer.lastColumn(line));
    if (place.col > 0 && line[place.col].isSpacer()) {
        --place.col;
    }
    return place;
}

TextPlace KeyboardSelection::byCharacter(int direction) const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    const term::BufferLine& line = buffer.lineAt(static_cast<int>(m_cursor.line - firstLine()));
    if (direction < 0) {
        const bool goesUp = m_cursor.col == 0 && m_cursor.line > firstLine();
        return goesUp ? TextPlace{m_cursor.line - 1, lengthOf(m_cursor.line - 1) - 1}
                      : TextPlace{m_cursor.line, m_cursor.col - 1};
    }
    const int next = m_cursor.col + (line[m_cursor.col].isWide() ? 2 : 1);
    const bool goesDown = next > buffer.lastColumn(line) && m_cursor.line < lastLine();
    return goesDown ? TextPlace{m_cursor.line + 1, 0} : TextPlace{m_cursor.line, next};
}

TextPlace KeyboardSelection::byLine(int direction) const {
    return {m_cursor.line + direction, m_cursor.col};
}

/// To the next beginning of a word, or to the one before.
TextPlace KeyboardSelection::byWord(int direction) const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    TextPlace place = m_cursor;
    if (direction > 0) {
        place = wordAt(buffer, place).end;
        while (place.line < lastLine() || place.col < lengthOf(place.line)) {
            if (place.col >= lengthOf(place.line)) {
                place = {place.line + 1, 0};
            } else if (isBlank(place)) {
                place = wordAt(buffer, place).end;
            } else {
                return place;
            }
        }
        return {lastLine(), lengthOf(lastLine()) - 1};
    }
    do {
        while (place.col == 0) {
            if (place.line == firstLine()) {
                return place;
            }
            place = {place.line - 1, lengthOf(place.line - 1)};
        }
        place = onCell({place.line, std::min(place.col, lengthOf(place.line)) - 1});
    } while (isBlank(place));
    return wordAt(buffer, place).start;
}

TextPlace KeyboardSelection::byPage(int direction) const {
    return {m_cursor.line + direction * std::max(1, m_session.terminal().rows() - 1), m_cursor.col};
}

TextPlace KeyboardSelection::toEndOfLine(int direction) const {
    return {m_cursor.line, direction < 0 ? 0 : lengthOf(m_cursor.line) - 1};
}

TextPlace KeyboardSelection::toEndOfText(int direction) const {
    std::int64_t last = lastLine();
    while (last > firstLine() && lengthOf(last) == 0) {
        --last;
    }
    return direction < 0 ? TextPlace{firstLine(), 0} : TextPlace{last, lengthOf(last) - 1};
}

TextPlace KeyboardSelection::toPrompt(int direction) const {
    const auto line = promptFrom(m_session.terminal().buffer(), m_cursor.line, direction);
    return line ? TextPlace{*line, 0} : m_cursor;
}

} // namespace orv
