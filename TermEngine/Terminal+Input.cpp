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
        .altSendsEscape = m_modes.metaSendsEscape || m_modes.altSendsEscape,
        .eightBitMeta = m_modes.eightBitMeta,
        .deleteSendsDel = m_modes.deleteSendsDel,
        .eightBitControls = m_modes.eightBitControls,
        .modifyOtherKeys = m_modes.modifyOtherKeys,
        .kitty = kittyKeyboardFlags()};
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

bool Terminal::sendKey(const KeyEvent& event) {
    if (event.type == KeyEventType::repeat && !m_modes.autoRepeat) {
        return false;
    }
    KeyEvent sent = event;
    const bool isRightToLeft = bidiState(m_buffer->y()).paragraph == BidiDirection::rightToLeft;
    if (m_modes.bidiArrowKeySwap && isRightToLeft && (event.key == Key::left || event.key == Key::right)) {
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
        sendOsc("99;i=" + request.identifier + ";", StringEnd::stringTerminator);
    }
}

} // namespace term
