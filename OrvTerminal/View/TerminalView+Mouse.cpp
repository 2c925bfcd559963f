#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalView.h"
#include "TermEngine/Bidi.h"

#include <QClipboard>
#include <QCursor>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr qreal wheelNotch = 120; ///< eighths of a degree
constexpr int linesANotch = 3;

/// Of several that are held, the one that movements are told of.
Qt::MouseButton firstOf(Qt::MouseButtons held) {
    return static_cast<Qt::MouseButton>(held.toInt() & -held.toInt());
}

term::MouseButton buttonOf(Qt::MouseButton button) {
    switch (button) {
    case Qt::LeftButton:
        return term::MouseButton::left;
    case Qt::MiddleButton:
        return term::MouseButton::middle;
    case Qt::RightButton:
        return term::MouseButton::right;
    case Qt::BackButton:
        return term::MouseButton::button8;
    case Qt::ForwardButton:
        return term::MouseButton::button9;
    case Qt::ExtraButton3:
        return term::MouseButton::button10;
    case Qt::ExtraButton4:
        return term::MouseButton::button11;
    default:
        return term::MouseButton::none;
    }
}

} // namespace

TerminalView::Cell TerminalView::cellAt(QPointF place) const {
    const term::Terminal& terminal = m_session.terminal();
    Cell found;
    found.pixels = (place * cell().devicePixelRatio).toPoint() - corner();
    const int row = static_cast<int>(std::floor(static_cast<qreal>(found.pixels.y()) / cell().height));
    found.row = std::clamp(row, 0, terminal.rows() - 1);
    const term::Buffer& buffer = terminal.buffer();
    const int index = buffer.yDisp() + found.row;
    const term::BufferLine& line = buffer.lineAt(index);
    const int width = cell().width * (line.renderMode() == term::RenderLineMode::single ? 1 : 2);
    found.isRightHalf = found.pixels.x() >= 0 && found.pixels.x() % width * 2 >= width;
    found.column = std::clamp(found.pixels.x() / width, 0, buffer.lastColumn(line));
    if (found.pixels.x() / width > found.column) {
        found.isRightHalf = true;
    }
    const term::PresentedRow order = term::presentedRow(
        buffer, index, terminal.bidiState(index - buffer.yBase()), terminal.options().maximumBidiParagraphRows);
    if (!order.columns.empty()) {
        found.column = order.columns[static_cast<size_t>(found.column)];
    }
    return found;
}

term::TextPlace TerminalView::placeAt(const Cell& cell) const {
    return {firstLine() + cell.row, cell.column};
}

bool TerminalView::programWantsMouse(Qt::KeyboardModifiers modifiers) const {
    const term::TerminalModes& modes = m_session.terminal().modes();
    return modes.mouseTracking != term::MouseTracking::none && m_session.isAlive() &&
           (!modifiers.testFlag(Qt::ShiftModifier) || modes.programGetsShift) && topLine() == historyLines();
}

bool TerminalView::report(
    term::MouseEventType type, term::MouseButton button, QPointF place, Qt::KeyboardModifiers modifiers) {
    const Cell cell = cellAt(place);
    term::MouseEvent event;
    event.type = type;
    event.button = button;
    event.column = cell.column;
    event.row = cell.row;
    event.x = std::clamp(cell.pixels.x(), 0, m_session.terminal().cols() * this->cell().width - 1);
    event.y = std::clamp(cell.pixels.y(), 0, m_session.terminal().rows() * this->cell().height - 1);
    event.modifiers = KeyTranslator::modifiersOf(modifiers);
    if (type == term::MouseEventType::motion) {
        const bool tellsPixels = m_session.terminal().modes().mouseEncoding == term::MouseEncoding::sgrPixels;
        const bool isSame =
            m_reported && (tellsPixels ? m_reported->pixels == cell.pixels
                                       : m_reported->column == cell.column && m_reported->row == cell.row);
        if (isSame) {
            return true;
        }
    }
    m_reported = cell;
    return m_session.terminal().sendMouse(event, linesANotch);
}

void TerminalView::mousePressEvent(QMouseEvent* event) {
    forceActiveFocus(Qt::MouseFocusReason);
    stopChoosing();
    m_keyboardSelection->stop(KeyboardSelection::Keep::yes);
    const QPointF place = event->position();
    const bool isNear = (place - m_clickPlace).manhattanLength() < cell().logicalWidth();
    const bool isSoon =
        m_sinceClick.isValid() && m_sinceClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval();
    m_clicks = event->button() == Qt::LeftButton && isNear && isSoon ? m_clicks % 3 + 1 : 1;
    m_sinceClick.start();
    m_clickPlace = place;

    m_isLinkKeyDown = event->modifiers().testFlag(Qt::ControlModifier);
    hover(place);
    m_pressedLink = event->button() == Qt::LeftButton ? m_hovered : std::nullopt;
    if (m_pressedLink) {
        return;
    }
    if (programWantsMouse(event->modifiers())) {
        m_held |= event->button();
        report(term::MouseEventType::press, buttonOf(event->button()), place, event->modifiers());
        return;
    }
    if (event->button() == Qt::MiddleButton && QGuiApplication::clipboard()->supportsSelection()) {
        paste(QGuiApplication::clipboard()->text(QClipboard::Selection));
        return;
    }
    if (event->button() == Qt::RightButton) {
        Q_EMIT contextMenuRequested(place);
        return;
    }
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    using Unit = term::TextSelection::Unit;
    const Cell cell = cellAt(place);
    term::TextPlace text = placeAt(cell);
    term::Terminal& terminal = m_session.terminal();
    m_isSelecting = true;
    m_dragPlace = place;
    if (m_clicks == 1) {
        text.col += cell.isRightHalf ? 1 : 0;
    }
    // Where Shift is what takes the mouse from a program, it can't mean that too.
    const bool isProgramsMouse = programWantsMouse(event->modifiers() & ~Qt::ShiftModifier);
    if (event->modifiers().testFlag(Qt::ShiftModifier) && hasSelection() && !isProgramsMouse) {
        terminal.extendSelection(text);
        return;
    }
    constexpr std::array units{Unit::character, Unit::word, Unit::line};
    const bool isRectangle = m_clicks == 1 && event->modifiers().testFlag(Qt::AltModifier);
    terminal.startSelection(text, isRectangle ? Unit::rectangle : units[static_cast<size_t>(m_clicks - 1)]);
}

void TerminalView::mouseDoubleClickEvent(QMouseEvent* event) {
    // Clicks are counted here, three of them too.
    event->accept();
}

void TerminalView::mouseMoveEvent(QMouseEvent* event) {
    if (m_held != Qt::NoButton) {
        report(term::MouseEventType::motion, buttonOf(firstOf(m_held)), event->position(), event->modifiers());
    } else if (m_isSelecting) {
        drag(event->position());
    }
}

void TerminalView::drag(QPointF place) {
    m_dragPlace = place;
    const Cell cell = cellAt(place);
    term::TextPlace text = placeAt(cell);
    if (m_clicks == 1) {
        text.col += cell.isRightHalf ? 1 : 0;
    }
    m_session.terminal().extendSelection(text);
    const bool isOutside = place.y() < 0 || place.y() >= height();
    if (!isOutside) {
        m_dragTimer.stop();
    } else if (!m_dragTimer.isActive()) {
        m_dragTimer.start();
    }
}

/// Beyond the edge: the further, the faster.
void TerminalView::scrollByDrag() {
    const qreal beyond = m_dragPlace.y() < 0 ? m_dragPlace.y() : m_dragPlace.y() - height();
    const int lines = static_cast<int>(beyond / cell().logicalHeight());
    scrollTo(topLine() + lines + (beyond < 0 ? -1 : 1));
    drag(m_dragPlace);
}

void TerminalView::mouseReleaseEvent(QMouseEvent* event) {
    if (m_held.testFlag(event->button())) {
        report(term::MouseEventType::release, buttonOf(event->button()), event->position(), event->modifiers());
        m_held &= ~Qt::MouseButtons(event->button());
    }
    if (m_pressedLink && m_pressedLink == m_hovered) {
        activate(m_pressedLink->link);
    }
    m_pressedLink.reset();
    if (event->button() == Qt::LeftButton && m_isSelecting) {
        finishSelecting();
    }
}

void TerminalView::mouseUngrabEvent() {
    m_isSelecting = false;
    m_held = Qt::NoButton;
    m_dragTimer.stop();
}

void TerminalView::finishSelecting() {
    m_isSelecting = false;
    m_dragTimer.stop();
    if (!hasSelection()) {
        m_session.terminal().clearSelection();
    } else if (QGuiApplication::clipboard()->supportsSelection()) {
        QGuiApplication::clipboard()->setText(selectedText(), QClipboard::Selection);
    }
}

void TerminalView::hoverMoveEvent(QHoverEvent* event) {
    // Qt sends one with the frames too, with the modifiers as they were before the last key.
    const bool hasMoved = !std::exchange(m_isPointerInside, true) || event->position() != m_pointer;
    if (hasMoved) {
        m_isLinkKeyDown = event->modifiers().testFlag(Qt::ControlModifier);
    }
    hover(event->position());
    const bool wantsMotion = m_session.terminal().modes().mouseTracking == term::MouseTracking::anyEvent;
    if (wantsMotion && programWantsMouse(event->modifiers())) {
        report(term::MouseEventType::motion, term::MouseButton::none, event->position(), event->modifiers());
    }
}

void TerminalView::hoverLeaveEvent(QHoverEvent* /*event*/) {
    m_isPointerInside = false;
    setHovered({});
}

void TerminalView::wheelEvent(QWheelEvent* event) {
    const QPointF turned = event->pixelDelta().isNull()
                               ? QPointF(event->angleDelta()) / wheelNotch
                               : QPointF(event->pixelDelta()) / (cell().logicalHeight() * linesANotch);
    m_wheelRest += turned;
    event->accept();
    const bool isReported = programWantsMouse(event->modifiers());
    if (isReported || m_session.terminal().isAlternateActive()) {
        const auto turn = [&](qreal& rest, term::MouseButton forward, term::MouseButton back) {
            for (; std::abs(rest) >= 1; rest -= std::copysign(1, rest)) {
                report(term::MouseEventType::press, rest > 0 ? forward : back, event->position(), event->modifiers());
            }
        };
        turn(m_wheelRest.ry(), term::MouseButton::wheelUp, term::MouseButton::wheelDown);
        if (isReported) {
            turn(m_wheelRest.rx(), term::MouseButton::wheelLeft, term::MouseButton::wheelRight);
        }
        return;
    }
    const int lines = static_cast<int>(m_wheelRest.y() * linesANotch);
    m_wheelRest.ry() -= static_cast<qreal>(lines) / linesANotch;
    m_wheelRest.setX(0);
    scrollTo(topLine() - lines);
}

void TerminalView::hover(QPointF place) {
    m_pointer = place;
    const bool looks = m_isPointerInside && m_isLinkKeyDown;
    setHovered(looks ? linkUnder(cellAt(place)) : std::nullopt);
}

void TerminalView::setHovered(const std::optional<Hovered>& hovered) {
    if (hovered == m_hovered) {
        return;
    }
    m_hovered = hovered;
    m_hoveredText = hovered ? hovered->target() : QString();
    updatePointer();
    changed();
    Q_EMIT hoveredLinkChanged();
}

void TerminalView::updatePointer() {
    struct Shape {
        QStringView name;
        Qt::CursorShape shape;
    };
    static constexpr std::array shapes{
        Shape{u"default", Qt::ArrowCursor},     Shape{u"pointer", Qt::PointingHandCursor},
        Shape{u"crosshair", Qt::CrossCursor},   Shape{u"wait", Qt::WaitCursor},
        Shape{u"progress", Qt::BusyCursor},     Shape{u"help", Qt::WhatsThisCursor},
        Shape{u"move", Qt::SizeAllCursor},      Shape{u"not-allowed", Qt::ForbiddenCursor},
        Shape{u"grab", Qt::OpenHandCursor},     Shape{u"grabbing", Qt::ClosedHandCursor},
        Shape{u"ew-resize", Qt::SizeHorCursor}, Shape{u"col-resize", Qt::SplitHCursor},
        Shape{u"ns-resize", Qt::SizeVerCursor}, Shape{u"row-resize", Qt::SplitVCursor},
    };
    if (m_hovered) {
        setCursor(QCursor(Qt::PointingHandCursor));
        return;
    }
    const auto* known = std::ranges::find(shapes, QStringView(m_pointerShape), &Shape::name);
    setCursor(QCursor(known == shapes.end() ? Qt::IBeamCursor : known->shape));
}

} // namespace orv
