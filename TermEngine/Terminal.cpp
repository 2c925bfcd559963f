#include "TermEngine/Terminal.h"

#include <algorithm>

namespace term {
namespace {

constexpr int largestSize = 10'000;
constexpr int largestScrollback = 10'000'000;

TerminalOptions withinBounds(TerminalOptions options) {
    options.cols = std::clamp(options.cols, 1, largestSize);
    options.rows = std::clamp(options.rows, 1, largestSize);
    options.scrollback = std::clamp(options.scrollback, 0, largestScrollback);
    return options;
}

Buffer::Setup setupOf(const TerminalOptions& options, bool hasScrollback, const VectorOps& ops) {
    return {
        .cols = options.cols,
        .rows = options.rows,
        .scrollback = hasScrollback ? options.scrollback : 0,
        .hasScrollback = hasScrollback,
        .tabStopWidth = options.tabStopWidth,
        .regionalIndicatorWidth = options.regionalIndicatorWidth,
        .ops = &ops};
}

} // namespace

Terminal::Terminal(TerminalDelegate& delegate, TerminalOptions options, const VectorOps& ops)
    : m_delegate(delegate),
      m_options(withinBounds(std::move(options))),
      m_arena(std::make_shared<CellArena>()),
      m_normal(std::make_unique<Buffer>(m_arena, setupOf(m_options, true, ops))),
      m_alternate(std::make_unique<Buffer>(m_arena, setupOf(m_options, false, ops))),
      m_buffer(m_normal.get()),
      m_parser(*this, ops, EscapeSequenceParser::groundWalkFor<Terminal>()),
      m_cursorStyle(m_options.cursorStyle),
      m_rectangles(ops),
      m_images(m_options.kittyGraphics.imageCacheLimitBytes),
      m_graphics(m_options.kittyGraphics, m_images),
      m_colors(m_options.ansi256PaletteStrategy),
      m_kittyClipboard(m_options) {
    m_parser.setMaximumOscBytes(m_options.maximumOscBytes);
    m_normal->lineObserver = this;
    m_alternate->lineObserver = this;
    m_arena->setRoots([this](CellArena::Marker& marker) { mark(marker); });
    m_arena->setCoarsening([this](CellArena::Coarsening& coarsening) { coarsen(coarsening); });
    m_arena->setReleasing([this](CellArena::Releasing& releasing) { release(releasing); });
    resetState();
    if (m_normal->defaultBidiState != 0) {
        m_normal->clear();
        m_alternate->clear();
    }
}

Terminal::~Terminal() = default;

void Terminal::mark(CellArena::Marker& marker) const {
    m_normal->mark(marker);
    m_alternate->mark(marker);
    marker.markPen(m_pen.bits);
    marker.markPen(m_pen.blank.rawValue);
    marker.markPen(std::uint64_t{m_link} << PackedCell::payloadShift);
}

void Terminal::coarsen(CellArena::Coarsening& coarsening) {
    coarsening.keepPen(m_pen.bits);
    coarsening.keepPen(m_pen.blank.rawValue);
    m_alternate->coarsen(coarsening);
    m_normal->coarsen(coarsening);
}

void Terminal::release(CellArena::Releasing& releasing) {
    releasing.keepPen(m_pen.bits);
    releasing.keepPen(std::uint64_t{m_link} << PackedCell::payloadShift);
    m_alternate->release(releasing);
    m_normal->release(releasing);
}

void Terminal::printScalars(std::span<const char32_t> text) {
    const ClusterMode mode = m_modes.graphemeClusters ? ClusterMode::graphemes : ClusterMode::scalars;
    // Short runs of ASCII come with the text around them.
    if (m_options.screenReaderMode) [[unlikely]] {
        beginAnnouncing();
        std::ranges::for_each(text, [this](char32_t scalar) { announce(scalar); });
    }
    for (; !m_charset.isPlain() && !text.empty(); text = text.subspan(1)) {
        const char32_t scalar = translated(text.front());
        m_buffer->insertScalarRun({&scalar, 1}, pen(), mode);
    }
    m_buffer->insertScalarRun(text, pen(), mode);
    endAnnouncing();
}

/// In character sets that are not plain, or for a screen reader, which gets the characters that are shown.
void Terminal::printTranslated(Bytes text) {
    beginAnnouncing();
    if (m_charset.isPlain()) {
        std::ranges::for_each(text, [this](std::uint8_t code) { announce(code); });
        m_buffer->insertAsciiRun(text, pen());
        text = {};
    }
    for (const std::uint8_t code : text) {
        const char32_t scalar = translated(code);
        announce(scalar);
        m_buffer->insertScalarRun({&scalar, 1}, pen(), ClusterMode::scalars);
    }
    endAnnouncing();
}

LinePlace Terminal::cursorPlace() const {
    return {lineNumber(m_buffer->y()), m_buffer->x() + (m_buffer->pendingWrap() ? 1 : 0)};
}

void Terminal::beginAnnouncing() {
    if (m_announcedEnd && *m_announcedEnd != cursorPlace()) {
        announce(m_announcedEnd->line != cursorPlace().line ? U'\n' : U' ');
    }
}

void Terminal::announce(char32_t scalar) {
    if (m_options.screenReaderMode && m_announcement.size() < maximumAnnouncementBytes) {
        unicode::appendUtf8(m_announcement, scalar);
    }
}

void Terminal::endAnnouncing() {
    if (m_options.screenReaderMode) [[unlikely]] {
        m_announcedEnd = cursorPlace();
    }
}

/// After all that was fed.
void Terminal::echoAndAnnounce() {
    if (m_parser.isParsing()) {
        return;
    }
    // What the host sends because of an echo is not echoed, or there might be no end to it.
    m_isEchoing = true;
    const std::string echo = std::exchange(m_echo, {});
    m_parser.parseBorrowed(Bytes(reinterpret_cast<const std::uint8_t*>(echo.data()), echo.size()));
    m_isEchoing = false;
    if (!m_announcement.empty()) {
        m_delegate.textWritten(*this, std::exchange(m_announcement, {}));
    }
}

/// What a scalar of a text stands for; a single shift is over with it.
char32_t Terminal::translated(char32_t scalar) {
    const int slot = m_charset.single >= 0 ? m_charset.single : m_charset.left;
    m_charset.single = -1;
    return scalar < 0x7F ? characterIn(slot, static_cast<std::uint8_t>(scalar)) : scalar;
}

/// The character of one of G0 to G3.
char32_t Terminal::characterIn(int slot, std::uint8_t code) const {
    const Charset set = m_charset.designated[static_cast<std::size_t>(slot)];
    return isNational(set) && !m_modes.nationalReplacement ? char32_t{code} : characterOf(set, code);
}

void Terminal::resize(int cols, int rows) {
    cols = std::clamp(cols, 1, largestSize);
    rows = std::clamp(rows, 1, largestSize);
    if (cols == this->cols() && rows == this->rows()) {
        return;
    }
    // Only the normal screen flows, and with it what was selected, unless that is a rectangle.
    if (cols != this->cols() && (isAlternateActive() || m_selection.shape() == RangeShape::rectangle)) {
        dropSelection();
    }
    // Afterwards other text stands above or below a picture.
    cutOverwrittenImages();
    std::vector<LinePlace> places = placesOfImages();
    const std::size_t imageCount = places.size();
    const std::vector<TextPlace> selected = isAlternateActive() ? std::vector<TextPlace>() : m_selection.places();
    places.insert(places.end(), selected.begin(), selected.end());
    m_normal->resize(cols, rows, places);
    moveImagesTo(std::span(places).first(imageCount));
    moveSelectionTo(std::span(places).subspan(imageCount));
    m_alternate->resize(cols, rows);
    rememberSelection();
    cutOverwrittenImages();
    dropPassedImages();
    tellOfChanges();
    m_delegate.sizeChanged(*this);
    if (m_modes.inBandResize) {
        reportSize();
    }
}

void Terminal::setScrollback(int lines) {
    m_options.scrollback = std::clamp(lines, 0, largestScrollback);
    m_normal->changeHistorySize(m_options.scrollback);
    dropPassedImages();
}

void Terminal::resetState() {
    m_modes = {};
    m_cursorStyle = m_options.cursorStyle;
    m_modes.cursorBlink = static_cast<int>(m_cursorStyle) % 2 == 0;
    m_modes.bidiBoxMirroring = m_options.initialBidiState.mirrorsBoxDrawing;
    m_modes.bidiAutodetection = m_options.initialBidiState.autodetectsDirection;
    m_modes.bidiArrowKeySwap = m_options.initialBidiArrowKeySwap;
    m_savedModes.clear();
    m_attribute = {};
    m_attributeStack.clear();
    m_isProtected = false;
    m_isErasureGuarded = false;
    m_link = 0;
    m_isPenStale = true;
    m_charset = {};
    m_charsetOfAnsi = {};
    m_parser.setVt52(false);
    m_changesRectangles = false;
    m_conformance = 65;
    m_titleModes = {};
    m_titleStack.clear();
    m_iconTitleStack.clear();
    m_keyboards = {};
    m_notifications.reset();
    m_loadingFile.reset();
    m_kittyClipboard.reset();
    m_clipboardQuestions.clear();
    m_permissions.clear();
    m_colors.resetAll();
    m_colorStack.clear();
    m_colorTop = 0;
    m_graphics.reset();
    m_images.clear();
    for (Buffer* buffer : {m_normal.get(), m_alternate.get()}) {
        buffer->insertMode = false;
        buffer->marginMode = false;
        buffer->wraparound = true;
        buffer->reverseWraparound = false;
        buffer->extendedReverseWraparound = false;
        buffer->saved = {};
        buffer->semantic = {};
        buffer->defaultBidiState = static_cast<std::uint8_t>(m_options.initialBidiState.paragraph);
        buffer->setupTabStops();
        buffer->forgetLastScalar();
    }
}

void Terminal::tellOfChanges() {
    if (std::exchange(m_imagesHaveChanged, false)) {
        m_delegate.imagesChanged(*this);
    }
    if (std::exchange(m_selectionHasChanged, false)) {
        m_delegate.selectionChanged(*this);
    }
}

void Terminal::reset() {
    m_parser.reset();
    const bool wasAlternate = isAlternateActive();
    const TerminalModes before = m_modes;
    m_imagesHaveChanged = m_imagesHaveChanged || !m_images.placements().empty();
    const std::vector<DynamicColor> hadColors = ownDynamicColors();
    const bool hadPointerShape = !std::exchange(m_pointerShape, {}).empty();
    const bool showedProgress = std::exchange(m_showsProgress, false);
    dropSelection();
    resetState();
    m_buffer = m_normal.get();
    m_normal->clearHistory();
    m_normal->clear();
    m_alternate->clear();
    // As long as that is what it has.
    m_modes.columns132 = before.columns132 && cols() == 132;
    tellOfChanges();
    if (wasAlternate) {
        m_delegate.bufferActivated(*this);
    }
    tellOfReset(before);
    if (hadPointerShape) {
        m_delegate.pointerShapeChanged(*this, {});
    }
    if (showedProgress) {
        m_delegate.progressReport(*this, {});
    }
    m_delegate.colorChanged(*this, {});
    for (const DynamicColor which : hadColors) {
        dynamicColorChanged(which);
    }
    // Like xterm, which leaves the width alone where columns must not be changed.
    if (before.allowsColumnMode && m_modes.columns132 && m_delegate.allowsResize(*this, 80, rows())) {
        m_modes.columns132 = false;
        resize(80, rows());
    }
}

void Terminal::tellOfReset(const TerminalModes& before) {
    if (!before.cursorVisible) {
        m_delegate.showCursor(*this);
    }
    if (before.mouseTracking != MouseTracking::none) {
        m_delegate.mouseModeChanged(*this);
    }
    if (before.synchronizedOutput) {
        m_delegate.synchronizedOutputChanged(*this, false);
    }
    m_delegate.cursorStyleChanged(*this, m_cursorStyle);
}

/// What DECSTR resets: VT520 Programmer Information, DECSTR.
void Terminal::softReset() {
    setCursorVisible(true);
    m_modes.origin = false;
    m_modes.applicationCursor = false;
    m_modes.applicationKeypad = false;
    m_modes.keyboardLocked = false;
    m_modes.nationalReplacement = false;
    m_modes.modifyOtherKeys = 0;
    m_buffer->insertMode = false;
    m_buffer->marginMode = false;
    m_buffer->wraparound = true;
    m_buffer->reverseWraparound = false;
    m_buffer->extendedReverseWraparound = false;
    m_buffer->resetMargins();
    m_buffer->saved = {};
    m_attribute = {};
    m_isProtected = false;
    m_isErasureGuarded = false;
    m_isPenStale = true;
    m_charset = {};
    m_changesRectangles = false;
    keyboard().reset();
}

void Terminal::setColorScheme(ColorScheme scheme) {
    const bool changes = m_colorScheme != scheme;
    m_colorScheme = scheme;
    if (changes && m_modes.colorSchemeUpdates) {
        reportColorScheme();
    }
}

void Terminal::synchronizedOutputTimedOut() {
    setSynchronizedOutput(false);
}

std::string_view Terminal::linkUrl(TinyAtom atom) const {
    if (atom == 0) {
        return {};
    }
    const std::string_view link = m_arena->link(atom);
    return link.substr(link.find(';') + 1);
}

std::string Terminal::lineText(int row) const {
    return m_buffer->line(row).translateToString(*m_arena, true);
}

} // namespace term
