#include "LogPane.h"

#include "OrvUI/Screens/Theme.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QStyleHints>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Eighths of a degree, of which a notch of a wheel has 120.
constexpr qreal notch = 120;

bool isModifierOfLinks(int key) {
    return key == Qt::Key_Control || key == Qt::Key_Meta;
}

TextLink linkOf(const LinkRun& named) {
    return {named.start, named.start + named.length, named.url};
}

} // namespace

LogPane::LogPane(QQuickItem* parent) : QQuickItem(parent) {
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAcceptHoverEvents(true);
    setCursor(Qt::IBeamCursor);
    m_dragTimer.setInterval(40ms);
    connect(&m_dragTimer, &QTimer::timeout, this, [this] {
        const qreal beyond = m_pointer.y() < 0 ? m_pointer.y() : m_pointer.y() - height();
        Q_EMIT scrollAsked(beyond);
        drag(m_pointer);
    });
}

/// Those in view, from above.
QList<LogLine*> LogPane::lines() const {
    const auto* content = m_view != nullptr ? m_view->property("contentItem").value<QQuickItem*>() : nullptr;
    QList<LogLine*> found;
    for (QQuickItem* child : content != nullptr ? content->childItems() : QList<QQuickItem*>()) {
        // One that waits to be used again is not visible.
        auto* line = qobject_cast<LogLine*>(child);
        const qreal top = line != nullptr ? mapFromItem(line, {}).y() : 0;
        if (line != nullptr && line->isVisible() && top < height() && top + line->height() > 0) {
            found.append(line);
        }
    }
    std::ranges::sort(found, {}, &QQuickItem::y);
    return found;
}

LogLine* LogPane::lineAt(QPointF place) const {
    for (LogLine* line : lines()) {
        const qreal y = mapToItem(line, place).y();
        if (y >= 0 && y < line->height()) {
            return line;
        }
    }
    return nullptr;
}

/// In the nearest line.
std::optional<LogSelection::Place> LogPane::placeAt(QPointF place) const {
    const QList<LogLine*> shown = lines();
    if (shown.isEmpty()) {
        return {};
    }
    const QPointF inside(place.x(), std::clamp(place.y(), 0.0, height() - 1));
    const LogLine* line = lineAt(inside);
    if (line == nullptr) {
        const LogText& last = shown.last()->line();
        return LogSelection::Place{last.line, last.text.size()};
    }
    const QPointF local = line->inText(mapToItem(line, inside));
    return LogSelection::Place{line->line().line, line->layout().offsetAt(local)};
}

QString LogPane::target(const TextLink& link) {
    const QString path = link.line > 0 ? u"%1:%2"_s.arg(link.path).arg(link.line) : link.path;
    return link.url.isEmpty() ? path : link.url;
}

/// Nothing for what looks like a file and is none.
std::optional<TextLink> LogPane::existing(TextLink link) const {
    if (!link.url.isEmpty()) {
        return link;
    }
    const QString path = link.path.startsWith(u"~/") ? QDir::homePath() + link.path.sliced(1) : link.path;
    for (const QString& folder : m_folders) {
        const QFileInfo file(QDir(folder), path);
        if (file.exists()) {
            link.path = file.absoluteFilePath();
            return link;
        }
    }
    return {};
}

TextLink LogPane::linkUnder(QPointF place) const {
    const LogLine* line = lineAt(place);
    if (line == nullptr) {
        return {};
    }
    const qsizetype character = line->layout().characterAt(line->inText(mapToItem(line, place)));
    for (const LinkRun& named : line->line().links) {
        if (character >= named.start && character < named.start + named.length) {
            return linkOf(named);
        }
    }
    const auto link = character >= 0 ? linkAt(line->line().text, character) : std::nullopt;
    return link ? existing(*link).value_or(TextLink()) : TextLink();
}

void LogPane::activate(const TextLink& link) {
    if (!link.url.isEmpty()) {
        Q_EMIT linkActivated(QUrl(link.url));
    } else if (!link.path.isEmpty()) {
        Q_EMIT fileActivated(link.path, link.line, link.column);
    }
}

void LogPane::hover(QPointF place) {
    m_pointer = place;
    const LogLine* line = lineAt(place);
    const TextLink link = line != nullptr ? linkUnder(place) : TextLink();
    setHovered(link == TextLink() ? Hovered() : Hovered{line->line().line, link});
}

void LogPane::setHovered(const Hovered& hovered) {
    if (hovered == m_hovered) {
        return;
    }
    m_hovered = hovered;
    for (LogLine* line : lines()) {
        const bool isIt = hovered.line >= 0 && line->line().line == hovered.line;
        line->setLink(isIt ? LogLayout::Mark{hovered.link.first, hovered.link.end} : LogLayout::Mark());
    }
    showPointer();
}

void LogPane::setCtrlHeld(bool isHeld) {
    if (isHeld != m_isCtrlHeld) {
        m_isCtrlHeld = isHeld;
        showPointer();
    }
}

void LogPane::showPointer() {
    setCursor(opensLink() ? Qt::PointingHandCursor : Qt::IBeamCursor);
    Q_EMIT hoveredLinkChanged();
}

void LogPane::hoverEnterEvent(QHoverEvent* event) {
    // The keyboard is elsewhere, and Ctrl may be pressed while the mouse rests.
    if (window() != nullptr) {
        window()->installEventFilter(this);
    }
    hoverMoveEvent(event);
}

void LogPane::hoverMoveEvent(QHoverEvent* event) {
    // Qt may tell of a move late, and of a mouse that rests after each frame, with the keys as they were before the
    // last one changed.
    if (!m_knowsCtrl && event->position() != m_pointer) {
        setCtrlHeld(event->modifiers().testFlag(Qt::ControlModifier));
    }
    hover(event->position());
}

void LogPane::hoverLeaveEvent(QHoverEvent* /*event*/) {
    if (window() != nullptr) {
        window()->removeEventFilter(this);
    }
    m_knowsCtrl = false;
    setCtrlHeld(false);
    setHovered({});
}

bool LogPane::eventFilter(QObject* watched, QEvent* event) {
    const bool isPress = event->type() == QEvent::KeyPress;
    if ((isPress || event->type() == QEvent::KeyRelease) && isModifierOfLinks(static_cast<QKeyEvent*>(event)->key())) {
        m_knowsCtrl = true;
        setCtrlHeld(isPress);
    } else if (event->type() == QEvent::FocusOut) {
        m_knowsCtrl = false;
        setCtrlHeld(false);
    }
    return QQuickItem::eventFilter(watched, event);
}

void LogPane::mousePressEvent(QMouseEvent* event) {
    const bool isTouch = event->device() != nullptr && event->device()->type() == QInputDevice::DeviceType::TouchScreen;
    if (isTouch || m_view == nullptr || m_selection == nullptr) {
        event->ignore(); // a finger moves the list
        return;
    }
    m_view->forceActiveFocus(Qt::MouseFocusReason);
    const QPointF place = event->position();
    if (event->button() == Qt::RightButton) {
        if (const LogLine* line = lineAt(place)) {
            askMenuOf(*line, linkUnder(place), place);
        }
        return;
    }
    setCtrlHeld(event->modifiers().testFlag(Qt::ControlModifier));
    hover(place);
    m_pressed = opensLink() ? std::optional(m_hovered) : std::nullopt;
    if (!m_pressed) {
        setHovered({});
        press(*event);
    }
}

void LogPane::press(const QMouseEvent& event) {
    const QPointF place = event.position();
    const bool isNear = (place - m_clickPlace).manhattanLength() < LogLayout::advance();
    const auto interval = static_cast<quint64>(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    const bool isSoon = event.timestamp() - m_clickTime < interval;
    m_clicks = isNear && isSoon ? m_clicks % 3 + 1 : 1;
    m_clickTime = event.timestamp();
    m_clickPlace = place;
    const auto text = placeAt(place);
    if (!text) {
        return;
    }
    m_isSelecting = true;
    if (event.modifiers().testFlag(Qt::ShiftModifier) && m_clicks == 1) {
        m_selection->extend(*text);
        return;
    }
    using Unit = LogSelection::Unit;
    constexpr std::array units{Unit::character, Unit::word, Unit::line};
    m_selection->begin(*text, units[static_cast<size_t>(m_clicks - 1)]);
}

void LogPane::mouseDoubleClickEvent(QMouseEvent* event) {
    // Clicks are counted here, three of them too.
    event->accept();
}

void LogPane::mouseMoveEvent(QMouseEvent* event) {
    if (m_isSelecting) {
        drag(event->position());
    }
}

void LogPane::drag(QPointF place) {
    m_pointer = place;
    const bool wasEmpty = m_selection->isEmpty();
    if (const auto text = placeAt(place)) {
        m_selection->extend(*text);
    }
    if (wasEmpty && !m_selection->isEmpty()) {
        Q_EMIT held();
    }
    const bool isOutside = place.y() < 0 || place.y() >= height();
    if (!isOutside) {
        m_dragTimer.stop();
    } else if (!m_dragTimer.isActive()) {
        m_dragTimer.start();
    }
}

void LogPane::mouseReleaseEvent(QMouseEvent* event) {
    if (m_pressed && m_pressed == m_hovered) {
        activate(m_pressed->link);
    }
    const bool wasSelecting = m_isSelecting;
    mouseUngrabEvent();
    if (event->button() == Qt::LeftButton && wasSelecting && !m_selection->isEmpty()) {
        if (m_clicks > 1) {
            Q_EMIT held();
        }
        if (QGuiApplication::clipboard()->supportsSelection()) {
            QGuiApplication::clipboard()->setText(m_selection->text(), QClipboard::Selection);
        }
    }
}

void LogPane::mouseUngrabEvent() {
    m_pressed.reset();
    m_isSelecting = false;
    m_dragTimer.stop();
}

void LogPane::wheelEvent(QWheelEvent* event) {
    const QPointF turned = event->pixelDelta().isNull() ? QPointF(event->angleDelta()) / notch * Theme::space40
                                                        : QPointF(event->pixelDelta());
    // Some systems turn it with Shift by themselves.
    const bool isShift = event->modifiers().testFlag(Qt::ShiftModifier);
    const qreal sideways = isShift && turned.x() == 0 ? turned.y() : turned.x();
    if (sideways == 0 || (!isShift && std::abs(turned.x()) < std::abs(turned.y()))) {
        event->ignore();
        return;
    }
    setOffset(m_offset - static_cast<int>(sideways));
}

void LogPane::keyPressEvent(QKeyEvent* event) {
    const bool isShift = event->modifiers() == Qt::ShiftModifier;
    const bool isPlain = event->modifiers() == Qt::NoModifier || event->modifiers() == Qt::KeypadModifier;
    const int key = event->key();
    if (m_selection == nullptr) {
        event->ignore();
        return;
    }
    if (isShift && (key == Qt::Key_Up || key == Qt::Key_Down)) {
        const auto last = placeAt({0, height()});
        m_selection->extendByLines(key == Qt::Key_Up ? -1 : 1, last ? m_selection->rowOf(last->line) : -1);
        Q_EMIT held();
        Q_EMIT rowReached(m_selection->reachedRow());
    } else if (isPlain && (key == Qt::Key_Left || key == Qt::Key_Right)) {
        setOffset(m_offset + (key == Qt::Key_Left ? -Theme::space40 : Theme::space40));
    } else if (isPlain && key == Qt::Key_Escape && !m_selection->isEmpty()) {
        m_selection->clear();
    } else {
        event->ignore();
    }
}

void LogPane::setOffset(int offset) {
    qreal most = 0;
    for (const LogLine* line : lines()) {
        most = std::max(most, line->layout().width() - line->room());
    }
    offset = std::clamp(offset, 0, std::max(static_cast<int>(std::ceil(most)), std::min(m_offset, offset)));
    if (offset != m_offset) {
        m_offset = offset;
        Q_EMIT offsetChanged();
    }
}

void LogPane::revealMatch() {
    for (const LogLine* line : lines()) {
        for (const LogText::Hit& hit : line->line().hits) {
            if (hit.isCurrent) {
                reveal(*line, hit.start, hit.start + hit.length);
                return;
            }
        }
    }
}

void LogPane::reveal(const LogLine& line, qsizetype start, qsizetype end) {
    const qreal room = line.room();
    QList<QRectF> areas = line.layout().areas(start, end);
    if (areas.isEmpty()) {
        // Too far to the right to be laid out before one is about there.
        setOffset(static_cast<int>(static_cast<qreal>(start) * LogLayout::advance() - room / 2));
        areas = line.layout().areas(start, end);
    }
    if (!areas.isEmpty() && (areas.first().left() < m_offset || areas.first().right() > m_offset + room)) {
        setOffset(static_cast<int>(areas.first().center().x() - room / 2));
    }
}

void LogPane::askMenu() {
    const QList<LogLine*> shown = lines();
    if (shown.isEmpty() || m_selection == nullptr) {
        return;
    }
    const LogLine* line = shown.first();
    for (const LogLine* each : shown) {
        if (m_selection->rowOf(each->line().line) == m_selection->reachedRow()) {
            line = each;
        }
    }
    const QList<LinkRun>& named = line->line().links;
    TextLink first = named.isEmpty() ? TextLink() : linkOf(named.first());
    for (const TextLink& link : linksIn(line->line().text)) {
        const auto found = existing(link);
        if (found && (named.isEmpty() || found->first < first.first)) {
            first = *found;
            break;
        }
    }
    askMenuOf(*line, first, mapFromItem(line, QPointF(line->inset(), LogLayout::rowHeight())));
}

void LogPane::askMenuOf(const LogLine& line, const TextLink& link, QPointF place) {
    m_menuLink = link;
    m_menuLine = line.text();
    Q_EMIT menuAsked(place);
}

} // namespace orv
