#include "OrvTerminal/View/TerminalView.h"

#include "OrvCore/Async.h"
#include "OrvTerminal/TerminalSession.h"

#include <QQuickWindow>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

/// Output that keeps coming is shown this often, and less often where frames take long: else the main thread would wait
/// for them all the time, and take in nothing.
constexpr auto frameInterval = 16ms;
constexpr auto longestFrameInterval = 200ms;

} // namespace

TerminalView::TerminalView(TerminalSession& session, TerminalStyle& style, QQuickItem* parent)
    : QQuickItem(parent),
      m_session(session),
      m_style(style),
      m_find(new TerminalFind(session, this)),
      m_keyboardSelection(new KeyboardSelection(session, this)) {
    ORV_ASSERT_MAIN_THREAD();
    setFlags(ItemHasContents | ItemAcceptsInputMethod | ItemAcceptsDrops);
    setAcceptedMouseButtons(Qt::AllButtons);
    setAcceptHoverEvents(true);
    setActiveFocusOnTab(true);
    setSize(QSizeF(1200, 420));

    for (QTimer* timer : {&m_frameTimer, &m_bell, &m_animation}) {
        timer->setSingleShot(true);
    }
    connect(&m_frameTimer, &QTimer::timeout, this, &TerminalView::draw);
    connect(&m_bell, &QTimer::timeout, this, &TerminalView::update);
    connect(&m_animation, &QTimer::timeout, this, &TerminalView::advanceAnimations);
    connect(&m_blinkTimer, &QTimer::timeout, this, &TerminalView::blink);
    connect(&m_textBlinkTimer, &QTimer::timeout, this, [this] {
        m_isTextOn = !m_isTextOn;
        update();
    });
    m_dragTimer.setInterval(40);
    connect(&m_dragTimer, &QTimer::timeout, this, &TerminalView::scrollByDrag);

    connect(&session, &TerminalSession::outputReceived, this, [this] {
        m_isStale = true;
        requestFrame();
        if (m_keyboardSelection->isActive()) {
            followKeyboardSelection();
        }
    });
    connect(m_keyboardSelection, &KeyboardSelection::moved, this, &TerminalView::followKeyboardSelection);
    connect(m_keyboardSelection, &KeyboardSelection::activeChanged, this, [this] {
        changed();
        restartBlinking();
        updateInputMethod(Qt::ImEnabled);
    });
    connect(&session, &TerminalSession::synchronizedOutputBegan, this, [this] {
        if (m_isStale && isShown()) {
            refresh();
        }
    });
    connect(&session, &TerminalSession::isAliveChanged, this, &TerminalView::changed);
    connect(&session, &TerminalSession::bellRang, this, &TerminalView::ring);
    connect(&session, &TerminalSession::selectionChanged, this, [this] {
        changed();
        Q_EMIT selectionChanged();
    });
    connect(&session, &TerminalSession::pointerShapeRequested, this, [this](const QString& name) {
        m_pointerShape = name;
        updatePointer();
    });
    connect(&session, &TerminalSession::programsCopyChanged, this, &TerminalView::programsCopyChanged);
    connect(m_find, &TerminalFind::resultChanged, this, &TerminalView::changed);
    connect(m_find, &TerminalFind::lineWanted, this, [this](std::int64_t line) {
        const std::int64_t row = line - firstLine();
        if (row < 0 || row >= rows()) {
            scrollTo(
                static_cast<int>(line - static_cast<std::int64_t>(m_session.terminal().buffer().trimmedCount())) -
                rows() / 2);
        }
    });
    connect(&style, &TerminalStyle::fontChanged, this, &TerminalView::applyFont);
    connect(&style, &TerminalStyle::colorsChanged, this, &TerminalView::applyColors);
    connect(&style, &TerminalStyle::blinksTextChanged, this, &TerminalView::followBlinkingText);
    applyFont();
    applyColors();
    updatePointer();
}

TerminalView::~TerminalView() = default;

void TerminalView::setPadding(QSizeF padding) {
    if (padding != m_padding) {
        m_padding = padding;
        m_isSizeStale = true;
        changed();
    }
}

QPoint TerminalView::corner() const {
    const qreal ratio = cell().devicePixelRatio;
    return {qRound(m_padding.width() * ratio), qRound(m_padding.height() * ratio)};
}

QPointF TerminalView::placeOf(int column, int row) const {
    const QPoint pixels = corner() + QPoint(column * cell().width, row * cell().height);
    return QPointF(pixels) / cell().devicePixelRatio;
}

bool TerminalView::isShown() const {
    return window() != nullptr && isVisible() && window()->isVisible() && window()->visibility() != QWindow::Minimized;
}

/// What a program draws as a whole is not shown in parts.
bool TerminalView::isHeld() const {
    return m_session.terminal().modes().synchronizedOutput && !m_picture.rows().empty();
}

bool TerminalView::isWaiting() const {
    return (m_isStale && !isHeld()) || m_isSizeStale || m_frameTimer.isActive();
}

bool TerminalView::isIdle() const {
    return !m_blinkTimer.isActive() && !m_textBlinkTimer.isActive() && !m_frameTimer.isActive() &&
           !m_animation.isActive() && !m_dragTimer.isActive() && !m_bell.isActive();
}

/// Something that the person did: shown with the next frame.
void TerminalView::changed() {
    m_isStale = true;
    if (isShown()) {
        draw();
    }
}

/// An update that is only asked for while a frame is made would ask for another one behind it.
void TerminalView::draw() {
    polish();
    update();
}

void TerminalView::requestFrame() {
    if (!isShown()) {
        return;
    }
    const bool isEcho = std::exchange(m_awaitsEcho, false);
    if (m_frameTimer.isActive() && !isEcho) {
        return;
    }
    const auto since = std::chrono::milliseconds(m_sinceFrame.isValid() ? m_sinceFrame.elapsed() : 1000);
    const auto interval = std::min(frameInterval + 2 * m_frameCost, longestFrameInterval);
    if (since >= interval || isEcho) {
        m_frameTimer.stop();
        draw();
    } else {
        m_frameTimer.start(interval - since);
    }
}

void TerminalView::updatePolish() {
    if (!isShown()) {
        return;
    }
    if (m_isSizeStale) {
        applySize();
    }
    if (m_isStale && !isHeld()) {
        refresh();
    }
}

void TerminalView::refresh() {
    m_isStale = false;
    m_isPictureNew = true;
    m_sinceFrame.start();
    const QRect before = m_picture.cursor().cells;
    const std::int64_t firstBefore = m_picture.firstLine();
    m_picture.refresh(
        m_session.terminal(), *m_glyphs, resolvedColors(), [this](std::int64_t line) { return marksOn(line); },
        m_keyboardSelection->isActive() ? std::optional(m_keyboardSelection->cursor()) : std::nullopt);
    m_gutter = gutter();
    const term::CursorStyle style = m_session.terminal().cursorStyle();
    const bool hasOtherStyle = std::exchange(m_cursorStyle, style) != style;
    if (m_picture.cursor().cells != before || hasOtherStyle) {
        restartBlinking();
        updateInputMethod(Qt::ImCursorRectangle);
    }
    if (!m_animation.isActive()) {
        advanceAnimations();
    }
    followBlinkingText();
    followScroll();
    if (m_choosesLink && m_picture.firstLine() != firstBefore) {
        Q_EMIT linkHintsChanged();
    }
    if (m_picture.background() != m_background) {
        m_background = m_picture.background();
        Q_EMIT backgroundChanged();
    }
    update();
}

void TerminalView::followScroll() {
    if (topLine() != m_shownTop || historyLines() != m_shownHistory || rows() != m_shownRows) {
        m_shownTop = topLine();
        m_shownHistory = historyLines();
        m_shownRows = rows();
        Q_EMIT scrollChanged();
    }
}

void TerminalView::fit() {
    if (m_isSizeStale && window() != nullptr && !size().isEmpty()) {
        applySize();
    }
}

void TerminalView::applySize() {
    m_isSizeStale = false;
    const qreal ratio = window()->effectiveDevicePixelRatio();
    if (ratio != cell().devicePixelRatio) {
        applyFont();
    }
    const QSizeF room = (size() - QSizeF(2 * m_padding.width(), m_padding.height())) * ratio;
    const int columns = std::max(2, static_cast<int>(room.width()) / cell().width);
    const int lines = std::max(1, static_cast<int>(room.height()) / cell().height);
    const term::Terminal& terminal = m_session.terminal();
    if (columns != terminal.cols() || lines != terminal.rows() || cell().size() != m_session.cellPixels()) {
        m_session.resize(columns, lines, cell().size());
        m_isStale = true;
    }
}

void TerminalView::applyFont() {
    const qreal ratio = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
    m_glyphs = std::make_unique<GlyphCache>(m_style.family(), m_style.fontSize(), ratio, m_style.hinting());
    m_picture.forget();
    m_isSizeStale = true;
    changed();
}

void TerminalView::applyColors() {
    m_session.setTheme(m_style.colors().base, m_style.colors().scheme);
    m_background = toRgb(m_style.colors().base.background);
    Q_EMIT backgroundChanged();
    changed();
}

std::int64_t TerminalView::firstLine() const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    return static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yDisp();
}

int TerminalView::historyLines() const {
    return m_session.terminal().buffer().yBase();
}

int TerminalView::topLine() const {
    return m_session.terminal().buffer().yDisp();
}

int TerminalView::rows() const {
    return m_session.terminal().rows();
}

void TerminalView::scrollTo(int topLine) {
    ORV_ASSERT_MAIN_THREAD();
    term::Buffer& buffer = m_session.terminal().buffer();
    topLine = std::clamp(topLine, 0, buffer.yBase());
    if (topLine != buffer.yDisp()) {
        buffer.setYDisp(topLine);
        changed();
    }
}

void TerminalView::scrollToBottom() {
    scrollTo(historyLines());
}

void TerminalView::scrollToPrompt(int direction) {
    const term::Buffer& buffer = m_session.terminal().buffer();
    if (const auto line = term::promptFrom(buffer, firstLine(), direction)) {
        scrollTo(static_cast<int>(*line - static_cast<std::int64_t>(buffer.trimmedCount())));
    } else if (direction > 0) {
        scrollToBottom();
    }
    tellOfMissingMarks();
}

void TerminalView::tellOfMissingMarks() {
    const term::Buffer& buffer = m_session.terminal().buffer();
    const std::int64_t end = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.lineCount();
    if (!term::promptFrom(buffer, end, -1) && !term::promptFrom(buffer, 0, 1)) {
        Q_EMIT marksMissed();
    }
}

void TerminalView::clear() {
    // As the shell would do it, so that it knows; the history goes with it.
    if (term::Buffer& buffer = m_session.terminal().buffer(); buffer.hasScrollback()) {
        buffer.clearHistory();
    }
    m_session.send(u"\f"_s);
    changed();
}

void TerminalView::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        m_isSizeStale = true;
        changed();
    } else if (now != before) {
        update();
    }
}

void TerminalView::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        m_isSizeStale = true;
    }
    if (change == ItemSceneChange && value.window != nullptr) {
        // Of the two, a platform may send only the one for a window that is minimized.
        connect(value.window, &QWindow::visibleChanged, this, &TerminalView::followShown, Qt::UniqueConnection);
        connect(value.window, &QWindow::visibilityChanged, this, &TerminalView::followShown, Qt::UniqueConnection);
    }
    if (change == ItemVisibleHasChanged || change == ItemSceneChange || change == ItemDevicePixelRatioHasChanged) {
        followShown();
    }
}

void TerminalView::followShown() {
    m_session.setShown(isShown());
    if (!isShown()) {
        m_frameTimer.stop();
        m_animation.stop();
        m_bell.stop();
    }
    changed();
    restartBlinking();
    followBlinkingText();
}

} // namespace orv
