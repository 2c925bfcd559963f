#include "TermEngine/InputEncoder.h"
#include "TermEngine/Terminal.h"

namespace term {

KeyModes Terminal::keyModes() const {
    return {
        .applicationCursorKeys = m_modes.applicationCursor,
        .applicationKeypad = m_modes.applicationKeypad,
        .numLockOverridesKeypad = m_modes.numLockOverridesKeypad,
        .backarrowSendsBackspace = m_modes.backarrowSendsBackspace,
        .enterSendsLineFeed = m_modes.newline,
        .altSendsEscape = m_modes.metaSendsEscape, // alt is meta, as on nearly every keyboard
        .eightBitMeta = m_modes.eightBitMeta,
        .deleteSendsDel = m_modes.deleteSendsDel,
        .eightBitControls = m_modes.eightBitControls,
        .vt52 = !m_modes.ansi,
        .modifyOtherKeys = m_modes.modifyOtherKeys,
        .kitty = kittyKeyboardFlags()};
}

/// What the user does, which is no answer.
void Terminal::send(std::string_view text) {
    m_delegate.send(*this, Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

bool Terminal::sendInput(const std::string& bytes) {
    if (bytes.empty() || m_modes.keyboardLocked) {
        return false;
    }
    send(bytes);
    return true;
}

/// With local echo (SRM) it is shown as well, after what is being fed.
bool Terminal::sendTyped(const std::string& bytes) {
    const bool isSent = sendInput(bytes);
    if (isSent && !m_modes.sendReceive && !m_isEchoing) {
        m_echo += bytes;
        feed(Bytes());
    }
    return isSent;
}

/// The one that was asked for, unless the text decides.
BidiDirection Terminal::paragraphDirection(int row) const {
    const BidiPresentationState state = bidiState(row);
    return state.isImplicit && state.autodetectsDirection ? presentedRow(row).paragraph : state.paragraph;
}

bool Terminal::sendKey(const KeyEvent& event) {
    if (event.type == KeyEventType::repeat && !m_modes.autoRepeat) {
        return false;
    }
    KeyEvent sent = event;
    const bool isSideways = event.key == Key::left || event.key == Key::right;
    if (isSideways && m_modes.bidiArrowKeySwap && paragraphDirection(m_buffer->y()) == BidiDirection::rightToLeft) {
        sent.key = event.key == Key::left ? Key::right : Key::left;
    }
    return sendTyped(encodeKey(sent, keyModes()));
}

bool Terminal::sendMouse(const MouseEvent& event, int wheelLines) {
    if (m_modes.mouseTracking != MouseTracking::none) {
        return sendInput(encodeMouse(event, m_modes.mouseTracking, m_modes.mouseEncoding, controlBits()));
    }
    const bool isWheel = event.button == MouseButton::wheelUp || event.button == MouseButton::wheelDown;
    if (!isWheel || event.type != MouseEventType::press || !isAlternateActive() || !m_modes.alternateScroll) {
        return false;
    }
    const auto direction = event.button == MouseButton::wheelUp ? ScrollDirection::up : ScrollDirection::down;
    return sendInput(encodeAlternateScroll(direction, wheelLines, keyModes()));
}

bool Terminal::sendFocus(FocusChange change) {
    if (m_modes.focusEvents) {
        send(encodeFocus(change, controlBits()));
    }
    return m_modes.focusEvents;
}

bool Terminal::paste(std::string_view text, ClipboardLocation location) {
    if (announcePaste(location)) {
        return true;
    }
    const auto mode = m_modes.bracketedPaste ? PasteMode::bracketed : PasteMode::plain;
    return !text.empty() &&
           sendTyped(
               encodePaste(text, mode, m_delegate.terminalControlBytesForPaste(*this).value_or(PasteControlBytes{})));
}

void Terminal::notificationActivated(const NotificationRequest& request) {
    if (request.reports) {
        send(oscString("99;i=" + request.identifier + ";", StringEnd::stringTerminator));
    }
}

} // namespace term
