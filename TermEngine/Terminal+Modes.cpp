#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>
#include <utility>

namespace term {
namespace {

/// Not a state, but a saving and a restoring.
constexpr int savedCursorMode = 1048;

template <typename Value>
struct ModeOf {
    int mode;
    Value value;
};

/// The DEC private modes that are a flag and nothing else.
constexpr std::array flags = std::to_array<ModeOf<bool TerminalModes::*>>({
    {1, &TerminalModes::applicationCursor},
    {5, &TerminalModes::reverseVideo},
    {8, &TerminalModes::autoRepeat},
    {40, &TerminalModes::allowsColumnMode},
    {41, &TerminalModes::moreFix},
    {42, &TerminalModes::nationalReplacement},
    {66, &TerminalModes::applicationKeypad},
    {67, &TerminalModes::backarrowSendsBackspace},
    {80, &TerminalModes::sixelDisplay},
    {95, &TerminalModes::keepsScreenOnColumnMode},
    {1004, &TerminalModes::focusEvents},
    {1007, &TerminalModes::alternateScroll},
    {1034, &TerminalModes::eightBitMeta},
    {1035, &TerminalModes::numLockOverridesKeypad},
    {1036, &TerminalModes::metaSendsEscape},
    {1037, &TerminalModes::deleteSendsDel},
    {1039, &TerminalModes::altSendsEscape},
    {1042, &TerminalModes::urgentBell},
    {1243, &TerminalModes::bidiArrowKeySwap},
    {2004, &TerminalModes::bracketedPaste},
    {2027, &TerminalModes::graphemeClusters},
    {2031, &TerminalModes::colorSchemeUpdates},
    {2500, &TerminalModes::bidiBoxMirroring},
    {2501, &TerminalModes::bidiAutodetection},
    {5522, &TerminalModes::pasteEvents},
    {8452, &TerminalModes::sixelCursorRight},
});

constexpr std::array trackings = std::to_array<ModeOf<MouseTracking>>({
    {9, MouseTracking::x10},
    {1000, MouseTracking::normal},
    {1002, MouseTracking::buttonEvent},
    {1003, MouseTracking::anyEvent},
});

constexpr std::array encodings = std::to_array<ModeOf<MouseEncoding>>({
    {1005, MouseEncoding::utf8},
    {1006, MouseEncoding::sgr},
    {1015, MouseEncoding::urxvt},
    {1016, MouseEncoding::sgrPixels},
});

template <typename Table>
const auto* entryOf(const Table& table, int mode) {
    const auto found = std::ranges::find(table, mode, [](const auto& entry) { return entry.mode; });
    return found == table.end() ? nullptr : &*found;
}

} // namespace

std::optional<bool> Terminal::decPrivateMode(int mode) const {
    if (const auto* entry = entryOf(flags, mode)) {
        return m_modes.*(entry->value);
    }
    if (const auto* entry = entryOf(trackings, mode)) {
        return m_modes.mouseTracking == entry->value;
    }
    if (const auto* entry = entryOf(encodings, mode)) {
        return m_modes.mouseEncoding == entry->value;
    }
    switch (mode) {
    case 2:
        return m_modes.ansi;
    case 3:
        return m_modes.columns132;
    case 6:
        return m_modes.origin;
    case 7:
        return m_buffer->wraparound;
    case 12:
        return m_modes.cursorBlink;
    case 25:
        return m_modes.cursorVisible;
    case 45:
        return m_buffer->reverseWraparound;
    case 47:
    case 1047:
    case 1049:
        return isAlternateActive();
    case 69:
        return m_buffer->marginMode;
    case 1045:
        return m_buffer->extendedReverseWraparound;
    case 1046:
        return m_modes.allowsAlternateScreen;
    case savedCursorMode:
        return true;
    case 2026:
        return m_modes.synchronizedOutput;
    case 2048:
        return m_modes.inBandResize;
    default:
        return {};
    }
}

bool Terminal::applyTabledMode(int mode, bool on) {
    if (const auto* entry = entryOf(flags, mode)) {
        m_modes.*(entry->value) = on;
        return true;
    }
    if (const auto* entry = entryOf(trackings, mode)) {
        setMouseTracking(on ? entry->value : MouseTracking::none);
        return true;
    }
    const auto* entry = entryOf(encodings, mode);
    // Unlike a tracking, an encoding is ended by its own reset alone, as in xterm.
    if (entry != nullptr && (on || m_modes.mouseEncoding == entry->value)) {
        m_modes.mouseEncoding = on ? entry->value : MouseEncoding::standard;
        m_delegate.mouseModeChanged(*this);
    }
    return entry != nullptr;
}

void Terminal::applyDECPrivateMode(int mode, bool on) {
    if (mode == 25) {
        // What programs change most, around all that they draw.
        setCursorVisible(on);
        return;
    }
    if (applyTabledMode(mode, on)) {
        return;
    }
    switch (mode) {
    case 2:
        setAnsi(on);
        break;
    case 3:
        setColumnMode(on);
        break;
    case 6:
        m_modes.origin = on;
        cmdCursorPosition(0, 0);
        break;
    case 7:
        m_buffer->wraparound = on;
        break;
    case 12:
        setCursorBlink(on);
        break;
    case 45:
        m_buffer->reverseWraparound = on;
        break;
    case 69:
        m_buffer->marginMode = on;
        m_buffer->setMargins(0, cols() - 1);
        // Between margins there are no lines of double width.
        for (int row = 0; on && row < rows(); ++row) {
            m_buffer->line(row).setRenderMode(RenderLineMode::single);
        }
        break;
    case 1045:
        m_buffer->extendedReverseWraparound = on;
        break;
    case 2026:
        setSynchronizedOutput(on);
        break;
    case 2048:
        m_modes.inBandResize = on;
        if (on) {
            reportSize();
        }
        break;
    default:
        chooseScreen(mode, on);
        break;
    }
}

/// The alternate screen and the cursor that is saved with it.
void Terminal::chooseScreen(int mode, bool on) {
    switch (mode) {
    case 47:
    case 1047:
        if (on) {
            activateAlternate(false);
        } else {
            activateNormal(mode == 1047);
        }
        break;
    case savedCursorMode:
        if (on) {
            cmdSaveCursor();
        } else {
            cmdRestoreCursor();
        }
        break;
    case 1049:
        // Also where the screen is the wanted one already, as in xterm: a program that was stopped left it so.
        if (m_modes.allowsAlternateScreen) {
            if (on) {
                cmdSaveCursor();
                activateAlternate(true);
            } else {
                activateNormal(false);
                cmdRestoreCursor();
            }
        }
        break;
    case 1046:
        m_modes.allowsAlternateScreen = on;
        if (!on) {
            activateNormal(false);
        }
        break;
    default:
        break;
    }
}

std::optional<bool> Terminal::ansiMode(int mode) const {
    switch (mode) {
    case 2:
        return m_modes.keyboardLocked;
    case 4:
        return m_buffer->insertMode;
    case 12:
        return m_modes.sendReceive;
    case 20:
        return m_modes.newline;
    default:
        return {};
    }
}

void Terminal::applyAnsiMode(int mode, bool on) {
    switch (mode) {
    case 2:
        m_modes.keyboardLocked = on;
        break;
    case 4:
        m_buffer->insertMode = on;
        break;
    case 12:
        m_modes.sendReceive = on;
        break;
    case 20:
        m_modes.newline = on;
        break;
    default:
        break;
    }
}

void Terminal::applyMode(ModeKind kind, int mode, bool on) {
    kind == ModeKind::ansi ? applyAnsiMode(mode, on) : applyDECPrivateMode(mode, on);
}

void Terminal::cmdSetMode(ModeKind kind, const CsiParameters& parameters) {
    for (int i = 0; i < parameters.count; ++i) {
        applyMode(kind, parameters.at(i), true);
    }
}

void Terminal::cmdResetMode(ModeKind kind, const CsiParameters& parameters) {
    for (int i = 0; i < parameters.count; ++i) {
        applyMode(kind, parameters.at(i), false);
    }
}

void Terminal::cmdSavePrivateModes(const CsiParameters& parameters) {
    for (int i = 0; i < parameters.count; ++i) {
        const int mode = parameters.at(i);
        if (mode == savedCursorMode) {
            cmdSaveCursor();
        } else if (const std::optional<bool> state = decPrivateMode(mode)) {
            m_savedModes[mode] = *state;
        }
    }
}

void Terminal::restorePrivateModes(const CsiParameters& parameters) {
    for (int i = 0; i < parameters.count; ++i) {
        const int mode = parameters.at(i);
        if (mode == savedCursorMode) {
            cmdRestoreCursor();
        } else if (mode == 2500) {
            m_modes.bidiBoxMirroring = m_options.initialBidiState.mirrorsBoxDrawing;
        } else if (mode == 2501) {
            m_modes.bidiAutodetection = m_options.initialBidiState.autodetectsDirection;
        } else if (const auto saved = m_savedModes.find(mode); saved != m_savedModes.end()) {
            // Of trackings that were saved together one was on at most, and the others must not end it.
            const bool endsAnother =
                !saved->second && entryOf(trackings, mode) != nullptr && !decPrivateMode(mode).value_or(false);
            if (!endsAnother) {
                applyDECPrivateMode(mode, saved->second);
            }
        }
    }
}

/// DECANM. A VT52 has its own characters, and what was designated before is there again afterwards.
void Terminal::setAnsi(bool on) {
    if (m_modes.ansi != on) {
        m_modes.ansi = on;
        m_parser.setVt52(!on);
        m_charsetOfAnsi = std::exchange(m_charset, on ? m_charsetOfAnsi : CharsetState());
    }
}

void Terminal::setMouseTracking(MouseTracking tracking) {
    m_modes.mouseTracking = tracking;
    m_delegate.mouseModeChanged(*this);
}

void Terminal::setColumnMode(bool wide) {
    if (!m_modes.allowsColumnMode) {
        return;
    }
    if (m_delegate.allowsResize(*this, wide ? 132 : 80, rows())) {
        m_modes.columns132 = wide;
        resize(wide ? 132 : 80, rows());
    }
    m_buffer->resetMargins();
    m_buffer->marginMode = false;
    if (!m_modes.keepsScreenOnColumnMode) {
        cmdEraseInDisplay(2, EraseKind::all);
    }
    m_buffer->setCursor(0, 0);
}

void Terminal::setCursorVisible(bool visible) {
    if (m_modes.cursorVisible == visible) {
        return;
    }
    m_modes.cursorVisible = visible;
    if (visible) {
        m_delegate.showCursor(*this);
    } else {
        m_delegate.hideCursor(*this);
    }
}

/// DECSCUSR; 0 is the style of the options.
void Terminal::cmdSetCursorStyle(int parameter) {
    if (parameter > 6) {
        return;
    }
    m_cursorStyle = parameter == 0 ? m_options.cursorStyle : static_cast<CursorStyle>(parameter - 1);
    m_modes.cursorBlink = static_cast<int>(m_cursorStyle) % 2 == 0;
    m_delegate.cursorStyleChanged(*this, m_cursorStyle);
}

void Terminal::setCursorBlink(bool blink) {
    m_modes.cursorBlink = blink;
    // The blinking styles are the even ones, each before its steady one.
    m_cursorStyle = static_cast<CursorStyle>(static_cast<int>(m_cursorStyle) / 2 * 2 + (blink ? 0 : 1));
    m_delegate.cursorStyleChanged(*this, m_cursorStyle);
}

void Terminal::setSynchronizedOutput(bool on) {
    // A second beginning begins nothing: the time would never be over.
    if (m_modes.synchronizedOutput == on) {
        return;
    }
    m_modes.synchronizedOutput = on;
    if (on) {
        m_delegate.scheduleSynchronizedOutputTimeout(*this, synchronizedOutputTimeout);
    }
    if (m_modes.synchronizedOutput == on) {
        m_delegate.synchronizedOutputChanged(*this, on);
    }
}

void Terminal::activateAlternate(bool clears) {
    if (!m_modes.allowsAlternateScreen) {
        return;
    }
    if (!isAlternateActive()) {
        switchTo(*m_alternate);
    }
    if (clears) {
        clearAlternate();
    }
}

void Terminal::clearAlternate() {
    clearImages(ScreenId::alternate);
    for (int row = 0; row < rows(); ++row) {
        m_alternate->eraseCells(row, 0, cols(), pen().blank);
        m_alternate->line(row).setRenderMode(RenderLineMode::single);
        m_alternate->line(row).forgetPrompt();
    }
}

void Terminal::activateNormal(bool clears) {
    if (!isAlternateActive()) {
        return;
    }
    if (clears) {
        clearAlternate();
    }
    switchTo(*m_normal);
}

/// Cursor, margins, tab stops and modes are those of the terminal; each screen has its lines and its saved cursor.
void Terminal::switchTo(Buffer& buffer) {
    const Buffer& from = *m_buffer;
    buffer.insertMode = from.insertMode;
    buffer.marginMode = from.marginMode;
    buffer.wraparound = from.wraparound;
    buffer.reverseWraparound = from.reverseWraparound;
    buffer.extendedReverseWraparound = from.extendedReverseWraparound;
    buffer.setScrollRegion(from.scrollTop(), from.scrollBottom());
    buffer.setMargins(from.marginLeft(), from.marginRight());
    buffer.copyTabStops(from);
    buffer.setCursor(from.x(), from.y());
    buffer.setPendingWrap(from.pendingWrap());
    m_buffer = &buffer;
    m_isPenStale = true;
    dropSelection();
    m_delegate.bufferActivated(*this);
}

/// SCP and SPD (ECMA-48): of the line of the cursor and those after it, and of the whole screen; of what comes in both
/// cases.
void Terminal::selectDirection(BidiDirection direction, int firstRow) {
    m_buffer->defaultBidiState = static_cast<std::uint8_t>(direction);
    for (int row = firstRow; row < rows(); ++row) {
        m_buffer->line(row).setBidiState(m_buffer->defaultBidiState);
    }
}

BidiPresentationState Terminal::bidiState(int row) const {
    BidiPresentationState state = m_options.initialBidiState;
    while (row > -m_buffer->yBase() && m_buffer->line(row).isWrapped()) {
        --row;
    }
    state.paragraph = static_cast<BidiDirection>(m_buffer->line(row).bidiState());
    state.autodetectsDirection = m_modes.bidiAutodetection;
    state.mirrorsBoxDrawing = m_modes.bidiBoxMirroring;
    return state;
}

PresentedRow Terminal::presentedRow(int row) const {
    return term::presentedRow(*m_buffer, m_buffer->yBase() + row, bidiState(row), m_options.maximumBidiParagraphRows);
}

/// DECSCL. It resets, as DECSTR does.
void Terminal::setConformanceLevel(const CsiParameters& parameters) {
    const int level = parameters.at(0);
    if (level < 61 || level > 65) {
        return;
    }
    softReset();
    m_conformance = level;
    m_modes.eightBitControls = level > 61 && parameters.at(1) != 1;
}

} // namespace term
