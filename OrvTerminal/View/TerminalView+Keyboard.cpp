#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

#include <array>

namespace orv {
namespace {

#ifdef Q_OS_MACOS
constexpr Qt::KeyboardModifiers commandKeys = Qt::ControlModifier; // what Qt calls the command key there
constexpr Qt::KeyboardModifiers selectionKeys = Qt::MetaModifier | Qt::ShiftModifier;
constexpr int previousPrompt = Qt::Key_PageUp, nextPrompt = Qt::Key_PageDown;
#else
constexpr Qt::KeyboardModifiers commandKeys = Qt::ControlModifier | Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers selectionKeys = commandKeys;
constexpr int previousPrompt = Qt::Key_Z, nextPrompt = Qt::Key_X;
#endif

#ifdef Q_OS_LINUX
constexpr quint32 zeroKey = 19; ///< X and Wayland count from 8 above the kernel's KEY_0
#endif

enum class Where { anywhere, normalScreen };

/// What a key of the terminal's own does.
struct Binding {
    Qt::KeyboardModifiers modifiers;
    int key;
    Where where;
    void (*act)(TerminalView& view);
};

void pastePrimary(TerminalView& view) {
    const QClipboard* clipboard = QGuiApplication::clipboard();
    view.paste(clipboard->text(clipboard->supportsSelection() ? QClipboard::Selection : QClipboard::Clipboard));
}

void scrollBy(TerminalView& view, int lines) {
    view.scrollTo(view.topLine() + lines);
}

const std::array bindings{
    Binding{
        selectionKeys, Qt::Key_Space, Where::anywhere, [](TerminalView& view) { view.keyboardSelection()->start(); }},
    Binding{
        Qt::ControlModifier | Qt::ShiftModifier, Qt::Key_E, Where::anywhere,
        [](TerminalView& view) { view.chooseLink(); }},
    Binding{commandKeys, Qt::Key_C, Where::anywhere, [](TerminalView& view) { view.copy(); }},
    Binding{commandKeys, Qt::Key_V, Where::anywhere, [](TerminalView& view) { view.paste(); }},
    Binding{Qt::ShiftModifier, Qt::Key_Insert, Where::anywhere, pastePrimary},
    Binding{commandKeys, Qt::Key_A, Where::anywhere, [](TerminalView& view) { view.selectAll(); }},
    Binding{commandKeys, Qt::Key_O, Where::anywhere, [](TerminalView& view) { view.selectOutput(); }},
    Binding{commandKeys, Qt::Key_Plus, Where::anywhere, [](TerminalView& view) { view.zoom(1); }},
    Binding{commandKeys, Qt::Key_Equal, Where::anywhere, [](TerminalView& view) { view.zoom(1); }},
    Binding{commandKeys, Qt::Key_Minus, Where::anywhere, [](TerminalView& view) { view.zoom(-1); }},
    Binding{commandKeys, Qt::Key_Underscore, Where::anywhere, [](TerminalView& view) { view.zoom(-1); }},
    Binding{commandKeys, Qt::Key_0, Where::anywhere, [](TerminalView& view) { view.zoom(0); }},
    Binding{commandKeys, Qt::Key_ParenRight, Where::anywhere, [](TerminalView& view) { view.zoom(0); }},
    Binding{commandKeys, Qt::Key_Up, Where::normalScreen, [](TerminalView& view) { scrollBy(view, -1); }},
    Binding{commandKeys, Qt::Key_Down, Where::normalScreen, [](TerminalView& view) { scrollBy(view, 1); }},
    Binding{commandKeys, previousPrompt, Where::normalScreen, [](TerminalView& view) { view.scrollToPrompt(-1); }},
    Binding{commandKeys, nextPrompt, Where::normalScreen, [](TerminalView& view) { view.scrollToPrompt(1); }},
    Binding{
        Qt::ShiftModifier, Qt::Key_PageUp, Where::normalScreen,
        [](TerminalView& view) { scrollBy(view, 1 - view.rows()); }},
    Binding{
        Qt::ShiftModifier, Qt::Key_PageDown, Where::normalScreen,
        [](TerminalView& view) { scrollBy(view, view.rows() - 1); }},
    Binding{Qt::ShiftModifier, Qt::Key_Home, Where::normalScreen, [](TerminalView& view) { view.scrollTo(0); }},
    Binding{
        Qt::ShiftModifier, Qt::Key_End, Where::normalScreen,
        [](TerminalView& view) { view.scrollTo(view.historyLines()); }},
};

/// Many layouts have the equals sign above the zero: what enlarges on one would keep another from the usual size.
int keyOf(const QKeyEvent& event) {
#ifdef Q_OS_LINUX
    if (event.key() == Qt::Key_Equal && event.nativeScanCode() == zeroKey) {
        return Qt::Key_0;
    }
#endif
    return event.key();
}

const Binding* bindingOf(const QKeyEvent& event, bool isAlternate) {
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const int key = keyOf(event);
    for (const Binding& binding : bindings) {
        if (binding.key == key && binding.modifiers == modifiers &&
            (binding.where == Where::anywhere || !isAlternate)) {
            return &binding;
        }
    }
    return nullptr;
}

/// The same when a key goes up as when it went down, whatever modifiers came meanwhile.
quint32 identityOf(const QKeyEvent& event) {
#ifdef Q_OS_MACOS
    return event.nativeVirtualKey();
#else
    return event.nativeScanCode() != 0 ? event.nativeScanCode() : static_cast<quint32>(event.key());
#endif
}

bool isModifierKey(int key) {
    return (key >= Qt::Key_Shift && key <= Qt::Key_ScrollLock) || (key >= Qt::Key_Super_L && key <= Qt::Key_Hyper_R) ||
           key == Qt::Key_AltGr;
}

} // namespace

/// Keys that the window's shortcuts get first.
bool TerminalView::isForApplication(const QKeyEvent& event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
#ifdef Q_OS_MACOS
    return modifiers.testFlag(Qt::ControlModifier);
#else
    const bool isTab = event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
    const bool leaves = event.key() == Qt::Key_F6 && modifiers == Qt::ShiftModifier;
    return leaves || (modifiers.testFlag(Qt::ControlModifier) && (isTab || modifiers.testFlag(Qt::ShiftModifier)));
#endif
}

bool TerminalView::runShortcut(const QKeyEvent& event) {
    const Binding* binding = bindingOf(event, m_session.terminal().isAlternateActive());
    if (binding != nullptr) {
        binding->act(*this);
    }
    return binding != nullptr;
}

bool TerminalView::runSelectionKey(const QKeyEvent& event) {
    switch (m_keyboardSelection->press(event)) {
    case KeyboardSelection::Outcome::unknown:
        return false;
    case KeyboardSelection::Outcome::done:
        return true;
    case KeyboardSelection::Outcome::copy:
        copy();
        finishSelecting();
        break;
    case KeyboardSelection::Outcome::leave:
        break;
    }
    m_keyboardSelection->stop(KeyboardSelection::Keep::no);
    return true;
}

/// Its cursor is to be seen.
void TerminalView::followKeyboardSelection() {
    const std::int64_t row = m_keyboardSelection->cursor().line - firstLine();
    if (row < 0 || row >= rows()) {
        scrollTo(topLine() + static_cast<int>(row < 0 ? row : row - rows() + 1));
    }
    changed();
}

bool TerminalView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        const bool isOwn = bindingOf(key, m_session.terminal().isAlternateActive()) != nullptr;
        const bool isTaken = (keepsKeys() && KeyboardSelection::knows(key)) || !isForApplication(key);
        if (isOwn || ((m_session.isAlive() || keepsKeys()) && isTaken)) {
            event->accept();
            return true;
        }
    }
    return QQuickItem::event(event);
}

void TerminalView::typed() {
    m_awaitsEcho = true;
    m_session.terminal().clearSelection();
    scrollToBottom();
    restartBlinking();
}

void TerminalView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control || event->key() == Qt::Key_Meta) {
        m_isLinkKeyDown = true;
        hover(m_pointer);
    }
    if (m_choosesLink && !isForApplication(*event)) {
        typeLetter(*event);
        return;
    }
    if ((m_keyboardSelection->isActive() && runSelectionKey(*event)) || runShortcut(*event)) {
        return;
    }
    if (keepsKeys()) {
        event->setAccepted(!isForApplication(*event));
        return;
    }
    if (!m_session.isAlive()) {
        const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        if (isReturn && !event->isAutoRepeat()) {
            Q_EMIT renewRequested();
        }
        event->setAccepted(isReturn);
        return;
    }
    term::KeyEvent key;
    QByteArray text;
    if (!m_keys.translate(*event, key, text)) {
        event->ignore();
        return;
    }
    m_sentKeys.insert(identityOf(*event));
    if (m_session.terminal().sendKey(key) && !isModifierKey(event->key())) {
        typed();
    }
}

void TerminalView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control || event->key() == Qt::Key_Meta) {
        m_isLinkKeyDown = false;
        hover(m_pointer);
    }
    term::KeyEvent key;
    QByteArray text;
    // While a key is held, X11 lets it go and presses it again.
    if (event->isAutoRepeat() || !m_keys.translate(*event, key, text)) {
        return;
    }
    // Of a key that did something here, the program knows nothing.
    if (m_sentKeys.remove(identityOf(*event)) && m_session.isAlive()) {
        m_session.terminal().sendKey(key);
    }
}

void TerminalView::inputMethodEvent(QInputMethodEvent* event) {
    m_preedit = event->preeditString();
    m_preeditCursor = static_cast<int>(m_preedit.size());
    if (!m_preedit.isEmpty()) {
        scrollToBottom();
    }
    for (const QInputMethodEvent::Attribute& attribute : event->attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor) {
            m_preeditCursor = attribute.start;
        }
    }
    const QList<uint> before = m_preedit.first(std::clamp<qsizetype>(m_preeditCursor, 0, m_preedit.size())).toUcs4();
    LinePainter painter(*m_glyphs, m_picture.colors());
    m_preeditPicture = painter.paintText(m_preedit.toStdU32String(), static_cast<int>(before.size()));
    if (const QByteArray text = event->commitString().toUtf8(); !text.isEmpty() && m_session.isAlive()) {
        term::KeyEvent key;
        key.text = std::string_view(text.constData(), static_cast<size_t>(text.size()));
        if (m_session.terminal().sendKey(key)) {
            typed();
        }
    }
    event->accept();
    changed();
}

QVariant TerminalView::inputMethodQuery(Qt::InputMethodQuery query) const {
    const QRect cursor = m_picture.cursor().cells;
    switch (query) {
    case Qt::ImEnabled:
        return m_session.isAlive() && !keepsKeys();
    case Qt::ImHints:
        return int(Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase | Qt::ImhSensitiveData);
    case Qt::ImCursorRectangle:
        return QRectF(
            placeOf(cursor.x(), cursor.y()), QSizeF(cursor.width() * cell().logicalWidth(), cell().logicalHeight()));
    default:
        return QQuickItem::inputMethodQuery(query);
    }
}

void TerminalView::focusInEvent(QFocusEvent* event) {
    QQuickItem::focusInEvent(event);
    m_session.terminal().sendFocus(term::FocusChange::gained);
    restartBlinking();
    update();
}

void TerminalView::focusOutEvent(QFocusEvent* event) {
    QQuickItem::focusOutEvent(event);
    m_session.terminal().sendFocus(term::FocusChange::lost);
    m_sentKeys.clear();
    m_isLinkKeyDown = false;
    hover(m_pointer);
    m_preedit.clear();
    m_preeditPicture = {};
    restartBlinking();
    update();
}

} // namespace orv
