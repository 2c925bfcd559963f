#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalView.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QStyleHints>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <tuple>
#include <utility>

using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr auto bellLength = 120ms;
constexpr int bellOpacity = 26;
/// A cursor that nobody moves stops blinking after this many turns on and off.
constexpr int mostBlinks = 20;
/// Commands longer than this do not get a mark at their prompt.
constexpr int longestOutput = 5000;
constexpr int gutterWidth = 3;
constexpr int gutterGap = 6;

bool isBlank(const term::BufferLine& line) {
    return line.getTrimmedLength() == 0;
}

/// Where a prompt that begins in a line is to be seen: some begin with blank lines. None where other text was written
/// over it, which leaves the mark.
std::optional<int> promptOf(const term::Buffer& buffer, int index) {
    if (!buffer.lineAt(index).semanticMarks().promptStart) {
        return {};
    }
    while (isBlank(buffer.lineAt(index)) && index + 1 < buffer.lineCount() &&
           !buffer.lineAt(index + 1).semanticMarks().promptStart) {
        ++index;
    }
    constexpr auto prompt = static_cast<std::uint8_t>(term::SemanticContent::prompt);
    const auto cells = buffer.lineAt(index).usedCells();
    const bool isPrompt =
        std::ranges::any_of(cells, [](term::PackedCell cell) { return cell.semanticCode() == prompt; });
    return isPrompt ? std::optional(index) : std::nullopt;
}

/// The newest mark between a prompt and where the next one begins; null before there is a next one.
const term::SemanticMarks* endOfCommand(const term::Buffer& buffer, int prompt) {
    const term::SemanticMarks* end = nullptr;
    const int last = std::min(buffer.lineCount(), prompt + longestOutput);
    for (int index = prompt + 1; index < last; ++index) {
        const term::SemanticMarks& marks = buffer.lineAt(index).semanticMarks();
        end = marks.commandEnd ? &marks : end;
        if (promptOf(buffer, index)) {
            return end;
        }
    }
    return nullptr;
}

} // namespace

ResolvedColors TerminalView::resolvedColors() const {
    const term::Terminal& terminal = m_session.terminal();
    const term::ColorTable& table = terminal.colors();
    ResolvedColors colors;
    for (int index = 0; index < term::ColorTable::paletteSize; ++index) {
        colors.palette[static_cast<size_t>(index)] = toRgb(table.color(index).value_or(term::RgbColor()));
    }
    colors.foreground = toRgb(table.color(term::DynamicColor::foreground).value_or(term::RgbColor()));
    colors.background = toRgb(table.color(term::DynamicColor::background).value_or(term::RgbColor()));
    colors.theme = m_style.colors();
    if (const auto own = table.ownColor(term::DynamicColor::cursor)) {
        colors.theme.cursor = toRgb(*own);
    }
    if (const auto own = table.ownColor(term::DynamicColor::highlightBackground)) {
        colors.theme.selection = toRgb(*own);
    }
    if (terminal.modes().reverseVideo) {
        std::swap(colors.foreground, colors.background);
    }
    return colors;
}

std::vector<LineMark> TerminalView::marksOn(std::int64_t line) const {
    std::vector<LineMark> marks = m_find->marksOn(line);
    const int columns = m_session.terminal().cols();
    const term::TextSelection& selection = m_session.terminal().selection();
    if (const auto range = selection.range()) {
        const auto [top, bottom] = std::minmax(range->start.line, range->end.line);
        const bool isRectangle = selection.shape() == term::RangeShape::rectangle;
        if (line >= top && line <= bottom) {
            int first = line == range->start.line ? range->start.col : 0;
            int end = line == range->end.line ? range->end.col : columns;
            if (isRectangle) {
                std::tie(first, end) = std::minmax(range->start.col, range->end.col);
            }
            if (end > first) {
                marks.push_back({first, end, LineMark::Kind::selection});
            }
        }
    }
    const auto markLink = [&](const Hovered& link) {
        if (line >= link.line && line <= link.endLine) {
            const int first = line == link.line ? link.first : 0;
            const int end = line == link.endLine ? link.end : columns;
            marks.push_back({first, end, LineMark::Kind::link});
        }
    };
    std::ranges::for_each(m_links, markLink);
    if (m_hovered) {
        markLink(*m_hovered);
    }
    return marks;
}

/// Beside each prompt, how its command went: shells say so behind its output, at the latest where the next prompt
/// begins.
std::vector<ScreenNode::Patch> TerminalView::gutter() const {
    const term::Buffer& buffer = m_session.terminal().buffer();
    const qreal ratio = cell().devicePixelRatio;
    const int inset = qRound(3 * ratio);
    const int top = buffer.yDisp();
    int first = top;
    while (first > 0 && isBlank(buffer.lineAt(first - 1))) {
        --first;
    }
    std::vector<ScreenNode::Patch> patches;
    for (int index = first; index < top + buffer.rows(); ++index) {
        const std::optional<int> shown = promptOf(buffer, index);
        if (!shown || *shown < top || *shown >= top + buffer.rows()) {
            continue;
        }
        const auto* end = endOfCommand(buffer, *shown);
        if (end == nullptr) {
            continue;
        }
        const QRect rect(
            corner().x() - qRound((gutterGap + gutterWidth) * ratio),
            corner().y() + (*shown - top) * cell().height + inset, qRound(gutterWidth * ratio),
            cell().height - 2 * inset);
        const bool hasFailed = end->exitCode.value_or(0) != 0;
        patches.push_back({rect, QColor(hasFailed ? m_style.colors().failure : m_style.colors().mark)});
    }
    return patches;
}

ScreenNode::CursorShape TerminalView::cursorShape() const {
    const bool isOwn = m_keyboardSelection->isActive();
    if (!m_session.isAlive() && !isOwn) {
        return ScreenNode::CursorShape::none;
    }
    if (!hasActiveFocus()) {
        return ScreenNode::CursorShape::frame;
    }
    if (isOwn) {
        return ScreenNode::CursorShape::block;
    }
    if (!m_isCursorOn) {
        return ScreenNode::CursorShape::none;
    }
    switch (m_session.terminal().cursorStyle()) {
    case term::CursorStyle::blinkUnderline:
    case term::CursorStyle::steadyUnderline:
        return ScreenNode::CursorShape::underline;
    case term::CursorStyle::blinkBar:
    case term::CursorStyle::steadyBar:
        return ScreenNode::CursorShape::bar;
    case term::CursorStyle::blinkBlock:
    case term::CursorStyle::steadyBlock:
        break;
    }
    return ScreenNode::CursorShape::block;
}

void TerminalView::restartBlinking() {
    const term::CursorStyle style = m_session.terminal().cursorStyle();
    const bool blinks = style == term::CursorStyle::blinkBlock || style == term::CursorStyle::blinkUnderline ||
                        style == term::CursorStyle::blinkBar;
    const int length = QGuiApplication::styleHints()->cursorFlashTime();
    if (!std::exchange(m_isCursorOn, true)) {
        update();
    }
    const bool isInUse = hasActiveFocus() && m_session.isAlive() && !m_keyboardSelection->isActive();
    if (blinks && length > 0 && isInUse && isShown() && m_picture.cursor().isShown) {
        m_blinksLeft = mostBlinks;
        m_blinkTimer.start(length / 2);
    } else {
        m_blinkTimer.stop();
    }
}

void TerminalView::blink() {
    if (--m_blinksLeft <= 0) {
        m_blinkTimer.stop();
        m_isCursorOn = true;
    } else {
        m_isCursorOn = !m_isCursorOn;
    }
    update();
}

/// All of it at once, and as often as a cursor does.
void TerminalView::followBlinkingText() {
    const int length = QGuiApplication::styleHints()->cursorFlashTime();
    if (m_picture.blinks() && m_style.blinksText() && length > 0 && isShown()) {
        if (!m_textBlinkTimer.isActive()) {
            m_textBlinkTimer.start(length / 2);
        }
    } else if (m_textBlinkTimer.isActive()) {
        m_textBlinkTimer.stop();
        m_isTextOn = true;
        update();
    }
}

void TerminalView::ring() {
    if (isShown()) {
        m_bell.start(bellLength);
        update();
    }
}

void TerminalView::advanceAnimations() {
    if (m_picture.images().empty() || !isShown()) {
        return;
    }
    if (const auto wait = m_session.terminal().advanceAnimations(QDateTime::currentMSecsSinceEpoch())) {
        m_animation.start(std::chrono::milliseconds(std::max<std::int64_t>(*wait, 10)));
        m_isStale = true;
        requestFrame();
    }
}

QSGNode* TerminalView::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/) {
    auto* screen = static_cast<ScreenNode*>(node);
    if (screen == nullptr) {
        screen = new ScreenNode(*window());
    }
    // Cells lie on whole pixels wherever the item does.
    const qreal ratio = cell().devicePixelRatio;
    const QPointF place = mapToScene(QPointF()) * ratio;
    const QPointF shift = (QPointF(std::round(place.x()), std::round(place.y())) - place) / ratio;
    QMatrix4x4 matrix;
    matrix.translate(static_cast<float>(shift.x()), static_cast<float>(shift.y()));
    if (screen->matrix() != matrix) {
        screen->setMatrix(matrix);
    }

    const QSize pixels(static_cast<int>(std::ceil(width() * ratio)), static_cast<int>(std::ceil(height() * ratio)));
    ScreenNode::Scene scene{m_picture, cell(), pixels, corner(), cursorShape(), {}, m_preeditPicture, m_gutter};
    scene.hidesBlinking = !m_isTextOn;
    scene.cursorColor = QColor(m_picture.colors().theme.cursor);
    if (m_bell.isActive()) {
        QColor flash(m_picture.colors().foreground);
        flash.setAlpha(bellOpacity);
        scene.patches.push_back({QRect(QPoint(), pixels), flash});
    }
    screen->update(scene);
    m_madeTextures = screen->textureCount();
    if (std::exchange(m_isPictureNew, false)) {
        m_frameCost = std::chrono::milliseconds(m_sinceFrame.elapsed());
    }
    ++m_frames;
    return screen;
}

} // namespace orv
