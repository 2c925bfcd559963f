#pragma once

#include "TermEngine/Bidi.h"
#include "TermEngine/Buffer.h"
#include "TermEngine/CharData.h"
#include "TermEngine/ColorTable.h"
#include "TermEngine/EscapeSequenceParser.h"
#include "TermEngine/ImageStore.h"
#include "TermEngine/InputEncoder.h"
#include "TermEngine/KittyClipboard.h"
#include "TermEngine/KittyGraphics.h"
#include "TermEngine/KittyKeyboardStack.h"
#include "TermEngine/RectangleMemory.h"
#include "TermEngine/RenditionCache.h"
#include "TermEngine/TerminalDelegate.h"
#include "TermEngine/TerminalModes.h"
#include "TermEngine/TerminalOptions.h"
#include "TermEngine/TerminalOscEvents.h"
#include "TermEngine/TextRange.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace term {

/// A terminal: bytes of a program in; a screen, calls on the host and bytes for the program out. It never fails on its
/// input. It belongs to one thread at a time.
class Terminal final : private ParserHandler, private LineObserver {
public:
    /// What a title, a working directory or a link may have, in bytes.
    static constexpr std::size_t maximumTextBytes = term::maximumTextBytes;
    static constexpr std::size_t titleStackLimit = 10;
    static constexpr std::size_t maximumAnnouncementBytes = 4096;
    static constexpr std::chrono::milliseconds synchronizedOutputTimeout{1000};

    explicit Terminal(
        TerminalDelegate& delegate, TerminalOptions options = {}, const VectorOps& ops = fastestVectorOps());
    ~Terminal() override;
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Bytes that the host feeds from within one of its calls come after those that are being fed.
    void feed(Bytes bytes) {
        if (!m_parser.isParsing()) [[likely]] {
            m_images.allowance().renew(bytes.size());
            m_rectangles.renewSteps();
        }
        m_parser.parseBorrowed(bytes);
        if (m_images.hasPlacements()) [[unlikely]] {
            cutOverwrittenImages();
            dropPassedImages();
        }
        if (m_selection.range()) [[unlikely]] {
            checkSelection();
        }
        if (m_options.screenReaderMode || !m_echo.empty()) [[unlikely]] {
            echoAndAnnounce();
        }
        if (m_imagesHaveChanged || m_selectionHasChanged) [[unlikely]] {
            tellOfChanges();
        }
    }
    void feed(std::string_view text) { feed(Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())); }
    /// Sizes below 1 are 1; the largest is 10,000 by 10,000.
    void resize(int cols, int rows);
    void setScrollback(int lines);
    /// RIS.
    void reset();
    /// DECSTR.
    void softReset();

    [[nodiscard]] int cols() const { return m_buffer->cols(); }
    [[nodiscard]] int rows() const { return m_buffer->rows(); }
    [[nodiscard]] const Buffer& buffer() const { return *m_buffer; }
    [[nodiscard]] Buffer& buffer() { return *m_buffer; }
    [[nodiscard]] const Buffer& normalBuffer() const { return *m_normal; }
    [[nodiscard]] bool isAlternateActive() const { return m_buffer == m_alternate.get(); }
    [[nodiscard]] CellArena& arena() const { return *m_arena; }
    [[nodiscard]] const TerminalOptions& options() const { return m_options; }
    [[nodiscard]] const TerminalModes& modes() const { return m_modes; }
    [[nodiscard]] Attribute attribute() const { return Attribute::unpacked(m_attribute); }
    [[nodiscard]] CursorStyle cursorStyle() const { return m_cursorStyle; }
    [[nodiscard]] const std::string& title() const { return m_title; }
    [[nodiscard]] const std::string& iconTitle() const { return m_iconTitle; }
    /// OSC 7: a URL, as the program gave it.
    [[nodiscard]] const std::string& hostCurrentDirectory() const { return m_directory; }
    /// OSC 6.
    [[nodiscard]] const std::string& hostCurrentDocument() const { return m_document; }
    [[nodiscard]] KittyKeyboardFlags kittyKeyboardFlags() const { return keyboard().current(); }
    /// The URL of a link, of the payload of a cell; empty without one.
    [[nodiscard]] std::string_view linkUrl(TinyAtom atom) const;
    /// How a row of the screen, or of the history where it is negative, is to be presented where its text has two
    /// directions (see `presentedRow`).
    [[nodiscard]] BidiPresentationState bidiState(int row) const;
    /// The same row with its cells in the order in which they are shown, within the limit of the options.
    [[nodiscard]] PresentedRow presentedRow(int row) const;
    /// The text of a row of the screen without blanks at its end.
    [[nodiscard]] std::string lineText(int row) const;

    [[nodiscard]] const ColorTable& colors() const { return m_colors; }
    /// Images and where they stand; lines count as `Buffer::trimmedCount` does.
    [[nodiscard]] const ImageStore& images() const { return m_images; }
    /// Moves animations on; when to do it again, in milliseconds after `now`.
    std::optional<std::int64_t> advanceAnimations(std::int64_t nowMilliseconds);
    /// The host's `getColors` has another answer.
    void themeChanged();
    void setColorScheme(ColorScheme scheme);
    void setVisibility(TerminalVisibility visibility) { m_visibility = visibility; }
    /// The name that XTVERSION answers with; "unknown" when it is empty.
    void setXtVersionIdentity(std::string identity) { m_xtVersionIdentity = std::move(identity); }
    /// The time of `scheduleSynchronizedOutputTimeout` is over.
    void synchronizedOutputTimedOut();
    [[nodiscard]] EscapeSequenceParser& parser() { return m_parser; }
    /// All OSC strings, for whoever wants to see them.
    [[nodiscard]] TerminalOscEventDispatcher& oscEvents() { return m_oscEvents; }
    /// The OSC number of strings that report a program's status: records, parted by semicolons. None, a negative
    /// number, at first.
    void setProgramStatusOsc(int code);
    [[nodiscard]] const std::vector<std::string>& programStatus() const { return m_programStatus; }

    // Input (Terminal+Input.cpp): what the modes make of it goes to the delegate's `send`. False: nothing was sent.
    [[nodiscard]] KeyModes keyModes() const;
    bool sendKey(const KeyEvent& event);
    /// Over the alternate screen, a wheel that no program asked for sends `wheelLines` cursor keys.
    bool sendMouse(const MouseEvent& event, int wheelLines = 3);
    bool sendFocus(FocusChange change);
    bool paste(std::string_view text, ClipboardLocation location = ClipboardLocation::clipboard);
    /// A click of the user into the input of a shell's prompt: what brings the shell's cursor there, if the shell has
    /// said how (Terminal+Semantic.cpp).
    bool clickPrompt(TextPlace place);
    /// The user has chosen a notification that wants to be told so.
    void notificationActivated(const NotificationRequest& request);

    // Clipboard (Terminal+Clipboard.cpp): what the host answers later.
    /// To the oldest `clipboardReadRequest`; nothing: the program gets no answer.
    void answerClipboardRead(const std::optional<std::string>& content);
    void resolveKittyClipboardPermission(std::uint64_t number, ClipboardPermission permission);

    /// What the user has selected on the screen that is shown (Terminal+Selection.cpp). It follows a change of the
    /// width, and ends when its text moves otherwise or is another one after a feed.
    [[nodiscard]] const TextSelection& selection() const { return m_selection; }
    void startSelection(TextPlace place, TextSelection::Unit unit);
    void extendSelection(TextPlace place);
    void clearSelection();

    /// The state of a mode; nothing for one that is not known.
    [[nodiscard]] std::optional<bool> ansiMode(int mode) const;
    [[nodiscard]] std::optional<bool> decPrivateMode(int mode) const;
    void applyDECPrivateMode(int mode, bool on);

private:
    friend class EscapeSequenceParser; // its loop calls the functions of ParserHandler at once
    using Parameters = CsiParameters;
    class StringRequest;
    /// XTPUSHSGR, with what XTPOPSGR brings back of it.
    struct SavedAttribute {
        Attribute attribute{};
        bool isWhole = false;
        CharacterStyle styles{};
        bool foreground = false;
        bool background = false;
    };

    // ParserHandler
    void printAscii(Bytes text) override;
    void printScalars(std::span<const char32_t> text) override;
    bool execute(std::uint8_t code) override;
    bool dispatchCsi(char final, const Parameters& parameters, std::string_view collected) override;
    bool applyKnownRendition(const SequenceText& text) override;
    bool applyTrueColor(std::uint8_t ground, int red, int green, int blue) override;
    bool applyPaletteColor(std::uint8_t ground, int index) override;
    bool dispatchNumbers(char final, int first, int second) override;
    bool dispatchEsc(std::string_view collected, char final) override;
    bool dispatchVt52(std::string_view collected, char final);
    bool dispatchOsc(int code, Bytes payload, StringEnd end) override;
    bool actOnOsc(int code, std::string_view payload, StringEnd end);
    bool dispatchApc(Bytes payload) override;
    std::unique_ptr<DcsHandler> dcsHandler(
        char final, const Parameters& parameters, std::string_view collected) override;
    [[nodiscard]] bool isLogging() const override { return m_delegate.isLogging(); }
    void log(std::string_view message) override { m_delegate.log(*this, message); }

    bool dispatchPlainCsi(char final, const Parameters& parameters);
    bool moveCursor(char final, const Parameters& parameters);
    bool changeCells(char final, const Parameters& parameters);
    bool dispatchOtherCsi(char final, const Parameters& parameters);
    bool dispatchPrivateCsi(char final, const Parameters& parameters);
    bool dispatchMarkedCsi(char marker, char final, const Parameters& parameters);
    bool dispatchIntermediateCsi(std::string_view collected, char final, const Parameters& parameters);
    bool dispatchStateCsi(std::string_view function, const Parameters& parameters);
    bool csiPHandler(std::string_view collected, const Parameters& parameters);
    bool csiX(std::string_view collected, const Parameters& parameters);
    bool csiZ(std::string_view collected, const Parameters& parameters);
    bool csiOpenBrace(std::string_view collected, const Parameters& parameters);
    bool csiCloseBrace(std::string_view collected, const Parameters& parameters);

    // Pen
    const Pen& pen() {
        if (m_isPenStale) {
            refreshPen();
        }
        return m_pen;
    }
    void refreshPen();
    void printTranslated(Bytes text);
    void beginAnnouncing();
    void announce(char32_t scalar);
    void endAnnouncing();
    void echoAndAnnounce();
    [[nodiscard]] LinePlace cursorPlace() const;
    [[nodiscard]] char32_t translated(char32_t scalar);
    [[nodiscard]] char32_t characterIn(int slot, std::uint8_t code) const;

    // Terminal+Cursor.cpp
    void cmdCursorUp(int count);
    void cmdCursorDown(int count);
    void cursorForward(int count);
    void cursorBackward(int count);
    void cursorRelative(int cols, int rows);
    void cmdHPositionRelative(int count) { cursorRelative(count, 0); }
    void cmdVPositionRelative(int count) { cursorRelative(0, count); }
    void cmdCursorCharAbsolute(int col);
    void cmdCharPosAbsolute(int col) { cmdCursorCharAbsolute(col); }
    void cmdLinePosAbsolute(int row);
    void cmdCursorPosition(int row, int col) {
        Buffer& b = *m_buffer;
        if (m_modes.origin) [[unlikely]] {
            row = std::min(b.scrollTop() + row, b.scrollBottom());
            col = std::min(b.marginLeft() + col, b.marginRight());
        }
        b.setCursor(col, row);
    }
    void cmdHVPosition(int row, int col) { cmdCursorPosition(row, col); }
    void carriageReturn();
    void lineFeed();
    void cmdIndex() { m_buffer->index(pen()); }
    void nextLine();
    void backspace();
    void tab(int count);
    void backTab(int count);
    void cmdTabClear(int what);
    void cmdSaveCursor();
    void cmdRestoreCursor();
    void cmdSetScrollRegion(int first, int last);
    void cmdSetMargins(const Parameters& parameters);
    void backIndex();
    void forwardIndex();

    // Terminal+Erase.cpp
    enum class EraseKind : std::uint8_t { all, unprotected };
    void eraseCells(int row, int first, int end, EraseKind kind);
    void eraseText(int row, int first, int end, EraseKind kind);
    void cmdEraseInDisplay(int what, EraseKind kind);
    void cmdEraseInLine(int what, EraseKind kind);
    void cmdEraseChars(int count);
    void cmdInsertChars(int count);
    void cmdDeleteChars(int count);
    void cmdInsertLines(int count) { m_buffer->insertLines(count, pen()); }
    void cmdDeleteLines(int count) { m_buffer->deleteLines(count, pen()); }
    void cmdScrollUp(int count) { m_buffer->scrollUp(count, pen()); }
    void cmdScrollDown(int count) { m_buffer->scrollDown(count, pen()); }
    void insertColumns(int count);
    void cmdDeleteColumns(int count);
    void shiftColumns(int count);
    void cmdRepeatPrecedingCharacter(int count);
    void cmdScreenAlignmentPattern();
    void setLineMode(RenderLineMode mode);

    // Terminal+Rectangles.cpp
    [[nodiscard]] Rectangle rectangle(const Parameters& parameters, int first) const;
    void csiCopyRectangularArea(const Parameters& parameters);
    void fillRectangle(const Parameters& parameters);
    void eraseRectangle(const Parameters& parameters, EraseKind kind);
    void changeAttributes(const Parameters& parameters, bool reverses);
    void cmdDECRQCRA(const Parameters& parameters);

    // Terminal+Sgr.cpp
    void cmdCsiM(const Parameters& parameters);
    bool cmdCsiM(int first, int second);
    void setAttribute(PackedAttributeKey attribute);
    void setColor(std::uint8_t ground, Color color);
    [[nodiscard]] static AttributePatch patchOf(const Parameters& parameters);
    void pushSgr(const Parameters& parameters);
    void popSgr();

    // Terminal+Modes.cpp
    enum class ModeKind : std::uint8_t { ansi, decPrivate };
    void applyMode(ModeKind kind, int mode, bool on);
    void cmdSetMode(ModeKind kind, const Parameters& parameters);
    void cmdResetMode(ModeKind kind, const Parameters& parameters);
    void applyAnsiMode(int mode, bool on);
    void cmdSavePrivateModes(const Parameters& parameters);
    void restorePrivateModes(const Parameters& parameters);
    bool applyTabledMode(int mode, bool on);
    void chooseScreen(int mode, bool on);
    void setAnsi(bool on);
    void setMouseTracking(MouseTracking tracking);
    void setColumnMode(bool wide);
    void setCursorVisible(bool visible);
    void cmdSetCursorStyle(int parameter);
    void setCursorBlink(bool blink);
    void setSynchronizedOutput(bool on);
    void activateAlternate(bool clears);
    void activateNormal(bool clears);
    void clearAlternate();
    void switchTo(Buffer& buffer);
    void selectDirection(BidiDirection direction, int firstRow);
    void cmdSelectCharacterPath(BidiDirection direction) { selectDirection(direction, m_buffer->y()); }
    void cmdSelectPresentationDirection(BidiDirection direction) { selectDirection(direction, 0); }
    void setConformanceLevel(const Parameters& parameters);

    // Terminal+Reports.cpp
    void reply(std::string_view text);
    void sendCsi(std::string_view body);
    void sendDcs(std::string_view body);
    [[nodiscard]] std::string oscString(std::string_view body, StringEnd end) const;
    void sendOsc(std::string_view body, StringEnd end);
    void cmdSendDeviceAttributes(std::string_view collected, const Parameters& parameters);
    void sendPrimaryAttributes();
    void sendSecondaryAttributes(const Parameters& parameters);
    void cmdDeviceStatus(const Parameters& parameters);
    void privateDeviceStatus(const Parameters& parameters);
    void reportCursor(bool isPrivate);
    void reportMode(int mode, bool isPrivate);
    void cmdXTVERSION();
    void reportColorScheme();
    void reportTerminalVisibility();
    void reportKeyModifiers(int resource);
    void reportSize();
    void reportGraphics(const Parameters& parameters);
    void requestStatusString(const std::string& request);
    void requestTermcap(const std::string& request);
    void cmdWindowOptions(const Parameters& parameters);
    void reportWindow(int function);
    void reportTitle(char kind, const std::string& title);

    // Terminal+PresentationState.cpp
    void reportPresentationState(int what);
    void reportCursorInformation();
    void restoreCursorInformation(const std::string& report);
    void restoreTabStops(const std::string& report);
    void reportRendition(const Parameters& parameters);
    void pushColors(const Parameters& parameters);
    void popColors(const Parameters& parameters);
    void reportColors();

    // Terminal+Osc.cpp
    void setTitles(int code, std::string_view payload);
    void setLink(std::string_view payload);
    void notifyOrProgress(std::string_view payload);
    void notify(const std::optional<NotificationRequest>& request);
    void iTermCommand(std::string_view payload, StringEnd end);
    [[nodiscard]] std::optional<RgbaImage> decodedFile(const ITermCommand::File& file, ImageRequest request);
    void takeFile(const ITermCommand& command);
    void showFile(const ITermCommand::File& file);
    void setDirectory(std::string url);
    void setProgramStatus(std::string_view payload);

    // Terminal+Semantic.cpp
    void semanticPrompt(std::string_view payload);
    void continuePrompt();

    // Terminal+Clipboard.cpp
    struct ClipboardQuestion {
        std::uint64_t number;
        std::string selections;
        StringEnd end;
    };
    struct PendingPermission {
        KittyClipboardRequest request;
        StringEnd end;
    };
    void clipboard(std::string_view payload, StringEnd end);
    void kittyClipboard(std::string_view payload, StringEnd end);
    void grant(KittyClipboardRequest request, StringEnd end);
    void refuse(const KittyClipboardRequest& request, KittyClipboardStatus status, StringEnd end);
    void sendAll(const std::vector<std::string>& bodies, StringEnd end);
    bool announcePaste(ClipboardLocation location);

    // Terminal+Input.cpp
    void send(std::string_view text);
    [[nodiscard]] BidiDirection paragraphDirection(int row) const;
    bool sendInput(const std::string& bytes);
    bool sendTyped(const std::string& bytes);
    [[nodiscard]] ControlBits controlBits() const {
        return m_modes.eightBitControls ? ControlBits::eight : ControlBits::seven;
    }

    // Terminal+Selection.cpp
    /// The selection in the lines that programs could write to when it was looked at.
    struct SelectedText {
        struct Line {
            RenderIdentity identity = 0;
            std::uint64_t generation = 0;
            bool operator==(const Line&) const = default;
        };
        std::int64_t firstLine = 0;
        std::vector<Line> lines{};
        std::string text{};
    };
    void rememberSelection();
    [[nodiscard]] std::string selectedTextFrom(std::int64_t firstLine) const;
    [[nodiscard]] SelectedText::Line selectedLine(std::int64_t line) const;
    void checkSelection();
    template <typename Change>
    void changeSelection(const Change& change);
    void dropSelection();
    void moveSelectionTo(std::span<const TextPlace> places);
    void dropSelectionWithin(std::int64_t first, std::int64_t last);

    // Terminal+Colors.cpp
    bool dispatchColors(int code, std::string_view payload, StringEnd end);
    void paletteColors(int code, std::string_view payload, StringEnd end);
    void dynamicColors(int code, std::string_view payload, StringEnd end);
    void resetPalette(int code, std::string_view payload);
    void kittyColors(std::string_view payload, StringEnd end);
    void dynamicColorChanged(DynamicColor which);
    [[nodiscard]] std::vector<DynamicColor> ownDynamicColors() const;
    [[nodiscard]] ColorTable& themedColors();

    // Terminal+Graphics.cpp
    class SixelPicture;
    [[nodiscard]] std::unique_ptr<DcsHandler> sixelHandler(const Parameters& parameters);
    [[nodiscard]] GraphicsContext graphicsContext();
    /// Cells that a picture is stretched over; 0: it is as large as it is.
    struct TextImageSize {
        int columns = 0;
        int rows = 0;
    };
    /// Where the cursor is afterwards: in the column where it was, behind the picture, or at its place. Then the
    /// picture stands at the top left (DECSDM).
    enum class AfterTextImage : std::uint8_t { cursorBelow, cursorBehind, cursorStays };
    void showTextImage(RgbaImage image, const TextImageSize& size, AfterTextImage after);
    void tellOfImage(std::uint32_t id);
    void applyGraphics(const GraphicsResult& result);
    void moveDown(int count);
    void dropPassedImages();
    void cutOverwrittenImages();
    /// Before cells are erased or replaced: of a rectangle at once, for a few bytes may name many rows.
    void loseTextImages(const Rectangle& area) {
        if (m_images.hasText() && !area.isEmpty()) [[unlikely]] {
            eraseTextImagesIn(area);
        }
    }
    void eraseTextImagesIn(const Rectangle& area);
    void moveTextImages(int top, int bottom, int left, int by);
    void eraseTextImages(ScreenId screen, std::span<const CellArea> areas);
    void linesMoved(const Buffer& buffer, Rectangle margins, int by) override;
    void rowsRenumbered(const Buffer& buffer, int row, int by) override;
    void cellsMoved(const Buffer& buffer, int left, int by) override;
    void cellsLost(const Buffer& buffer, int row, int first, int end) override;
    [[nodiscard]] std::vector<LinePlace> placesOfImages() const;
    void moveImagesTo(std::span<const LinePlace> places);
    [[nodiscard]] ScreenId graphicsScreen() const {
        return isAlternateActive() ? ScreenId::alternate : ScreenId::normal;
    }
    /// Of a row of the screen, as `Buffer::trimmedCount` counts.
    [[nodiscard]] std::int64_t lineNumber(int row) const;
    void clearImages(ScreenId screen);
    void titleModes(const Parameters& parameters, bool on);
    void pushTitle(int what);
    void popTitle(int what);

    bool designate(std::string_view collected, char final);
    bool shiftCharset(char final);
    void handleKittyKeyboardProtocol(char marker, const Parameters& parameters);
    [[nodiscard]] const KittyKeyboardStack& keyboard() const { return m_keyboards[isAlternateActive() ? 1 : 0]; }
    [[nodiscard]] KittyKeyboardStack& keyboard() { return m_keyboards[isAlternateActive() ? 1 : 0]; }
    void resetState();
    void tellOfReset(const TerminalModes& before);
    /// Of what changes in the middle of an operation the host hears when that is whole, since it may reset or resize
    /// the terminal then.
    void tellOfChanges();
    void mark(CellArena::Marker& marker) const;
    void coarsen(CellArena::Coarsening& coarsening);
    void release(CellArena::Releasing& releasing);

    TerminalDelegate& m_delegate;
    TerminalOptions m_options;
    std::shared_ptr<CellArena> m_arena;
    std::unique_ptr<Buffer> m_normal;
    std::unique_ptr<Buffer> m_alternate;
    Buffer* m_buffer;
    EscapeSequenceParser m_parser;

    TerminalModes m_modes;
    std::map<int, bool> m_savedModes;
    PackedAttributeKey m_attribute;
    RenditionCache m_renditions;
    std::vector<SavedAttribute> m_attributeStack;
    bool m_isProtected = false;
    bool m_isErasureGuarded = false; ///< by SPA: erasing spares what is protected
    TinyAtom m_link = 0;
    Pen m_pen;
    bool m_isPenStale = false;
    CharsetState m_charset;
    CharsetState m_charsetOfAnsi;     ///< while this is a VT52
    bool m_changesRectangles = false; ///< DECSACE: attributes of rectangles, not of the text between two places
    CursorStyle m_cursorStyle;
    int m_conformance = 65;

    RectangleMemory m_rectangles;
    ImageStore m_images;
    KittyGraphics m_graphics;
    std::array<std::int64_t, 2>
        m_firstLines{}; ///< of the screens, when images were last looked through for those before
    ColorTable m_colors;
    std::vector<ColorTable::OwnColors> m_colorStack;
    std::size_t m_colorTop = 0; ///< counts from 1; 0: all was popped
    bool m_hasTheme = false;
    NotificationAssembler m_notifications;
    struct LoadingFile {
        ITermCommand::File file;
        Base64Decoder data;
    };
    std::optional<LoadingFile> m_loadingFile; ///< of OSC 1337, in pieces
    KittyClipboard m_kittyClipboard;
    std::vector<ClipboardQuestion> m_clipboardQuestions;
    std::map<std::uint64_t, std::shared_ptr<PendingPermission>> m_permissions;
    std::uint64_t m_questionNumber = 0;
    std::uint64_t m_permissionNumber = 0;
    TextSelection m_selection;
    SelectedText m_selectedText;
    bool m_imagesHaveChanged = false; ///< and the host has not heard of it
    bool m_selectionHasChanged = false;
    TerminalOscEventDispatcher m_oscEvents;
    int m_programStatusOsc = -1;
    std::vector<std::string> m_programStatus;

    std::string m_echo; ///< SRM: of what was sent, not shown yet
    bool m_isEchoing = false;
    std::string m_announcement;              ///< for the screen reader
    std::optional<LinePlace> m_announcedEnd; ///< where its text ended

    std::string m_title;
    std::string m_iconTitle;
    std::vector<std::string> m_titleStack;
    std::vector<std::string> m_iconTitleStack;
    std::array<bool, 4> m_titleModes{};
    std::string m_directory;
    std::string m_document;
    std::string m_pointerShape;
    bool m_showsProgress = false;
    std::string m_xtVersionIdentity;
    ColorScheme m_colorScheme = ColorScheme::dark;
    TerminalVisibility m_visibility = TerminalVisibility::potentiallyVisible;
    std::array<KittyKeyboardStack, 2> m_keyboards;
};

} // namespace term
