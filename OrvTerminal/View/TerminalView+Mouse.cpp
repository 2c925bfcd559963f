#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalView.h"
#include "TermEngine/Bidi.h"
#include "TermEngine/OscPayloads.h"

#include <QClipboard>
#include <QCursor>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>

#include <algorithm>
#include <array>
#include <cmath>

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

/// A line with all that soft wraps join to it, and where each of its characters stands.
struct WrappedText {
    QString text;
    std::vector<term::TextPlace> places; ///< one a UTF-16 unit, and one for the end
};

WrappedText wrappedText(const term::Buffer& buffer, int index) {
    const auto firstLine = static_cast<std::int64_t>(buffer.trimmedCount());
    constexpr int mostRows = 50;
    int first = index;
    while (first > 0 && index - first < mostRows && buffer.lineAt(first).isWrapped()) {
        --first;
    }
    WrappedText wrapped;
    int at = first;
    do {
        const term::BufferLine& line = buffer.lineAt(at);
        for (int column = 0; column < line.size(); ++column) {
            if (line[column].isSpacer()) {
                continue;
            }
            char32_t memory = 0;
            const std::u32string_view scalars = buffer.cellArena().scalarValues(line[column], memory);
            const QString character =
                scalars.empty() ? u" "_s : QString::fromUcs4(scalars.data(), static_cast<qsizetype>(scalars.size()));
            wrapped.text += character;
            wrapped.places.insert(
                wrapped.places.end(), static_cast<size_t>(character.size()), term::TextPlace{firstLine + at, column});
        }
        ++at;
    } while (at < buffer.lineCount() && at - first < mostRows && buffer.lineAt(at).isWrapped());
    wrapped.places.push_back({firstLine + at - 1, buffer.cols()});
    return wrapped;
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
    const QPointF place = event->position();
    const bool isNear = (place - m_clickPlace).manhattanLength() < cell().logicalWidth();
    const bool isSoon =
        m_sinceClick.isValid() && m_sinceClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval();
    m_clicks = event->button() == Qt::LeftButton && isNear && isSoon ? m_clicks % 3 + 1 : 1;
    m_sinceClick.start();
    m_clickPlace = place;

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
    m_isPointerInside = true;
    hover(event->position(), event->modifiers());
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

void TerminalView::hover(QPointF place, Qt::KeyboardModifiers modifiers) {
    m_pointer = place;
    const bool looks = m_isPointerInside && modifiers.testFlag(Qt::ControlModifier);
    setHovered(looks ? linkUnder(cellAt(place)) : std::nullopt);
}

std::optional<TerminalView::Hovered> TerminalView::linkUnder(const Cell& cell) const {
    const term::Terminal& terminal = m_session.terminal();
    const term::Buffer& buffer = terminal.buffer();
    const term::TextPlace place = placeAt(cell);
    const term::BufferLine& line = buffer.lineAt(buffer.yDisp() + cell.row);
    if (const term::TinyAtom atom = line[cell.column].payload(); atom != 0) {
        int first = cell.column;
        while (first > 0 && line[first - 1].payload() == atom) {
            --first;
        }
        int end = cell.column + 1;
        while (end < line.size() && line[end].payload() == atom) {
            ++end;
        }
        const std::string_view url = terminal.linkUrl(atom);
        TextLink link;
        link.url = QString::fromUtf8(url.data(), static_cast<qsizetype>(url.size()));
        return Hovered{link, place.line, first, place.line, end};
    }
    const WrappedText wrapped = wrappedText(buffer, buffer.yDisp() + cell.row);
    const auto at = std::ranges::find(wrapped.places, place);
    std::optional<TextLink> link = linkAt(wrapped.text, at - wrapped.places.begin());
    if (!link) {
        return {};
    }
    if (link->url.isEmpty()) {
        QString path = link->path;
        if (path.startsWith(u"~/")) {
            path = QDir::homePath() + path.sliced(1);
        }
        const auto report = term::parseDirectoryReport(terminal.hostCurrentDirectory());
        const QString folder = report ? QString::fromStdString(report->path) : m_session.directory().toLocalFile();
        const QFileInfo file(QDir(folder), path);
        if (!file.exists()) {
            return {};
        }
        link->path = file.absoluteFilePath();
    }
    const term::TextPlace first = wrapped.places[static_cast<size_t>(link->first)];
    const term::TextPlace last = wrapped.places[static_cast<size_t>(link->end - 1)];
    return Hovered{*link, first.line, first.col, last.line, last.col + 1};
}

void TerminalView::setHovered(const std::optional<Hovered>& hovered) {
    if (hovered == m_hovered) {
        return;
    }
    m_hovered = hovered;
    m_hoveredText = !hovered ? QString() : hovered->link.url.isEmpty() ? hovered->link.path : hovered->link.url;
    updatePointer();
    changed();
    Q_EMIT hoveredLinkChanged();
}

void TerminalView::activate(const TextLink& link) {
    if (link.url.isEmpty()) {
        Q_EMIT fileActivated(link.path, link.line, link.column);
    } else {
        Q_EMIT linkActivated(QUrl(link.url));
    }
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
