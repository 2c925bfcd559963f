#pragma once

#include "OrvTerminal/View/KeyTranslator.h"
#include "OrvTerminal/View/KeyboardSelection.h"
#include "OrvTerminal/View/Links.h"
#include "OrvTerminal/View/ScreenNode.h"
#include "OrvTerminal/View/ScreenPicture.h"
#include "OrvTerminal/View/TerminalFind.h"
#include "OrvTerminal/View/TerminalStyle.h"
#include "TermEngine/TextRange.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QQuickItem>
#include <QSet>
#include <QTimer>
#include <QUrl>
#include <QVariantList>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace orv {

class TerminalSession;

/// A link that is to be seen, and the letters that open it.
struct LinkHint {
    Q_GADGET
    Q_PROPERTY(QString letters MEMBER letters FINAL)
    Q_PROPERTY(QString target MEMBER target FINAL)
    Q_PROPERTY(QPointF place MEMBER place FINAL)
public:
    QString letters; ///< those that are still to be typed
    QString target;  ///< an address or a file
    QPointF place;   ///< of its first cell, in the view
};

/// What a person sees of a session and types into. It belongs to the session, which outlives no view of it, and moves
/// between the containers that show it. A main-thread item.
///
/// While nothing changes it does nothing: the only timers that run are those of a blinking cursor, which stops by
/// itself when nobody types, of an animation or of blinking text that is in view, and of a drag beyond the edge.
class TerminalView : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(orv::TerminalSession* session READ session CONSTANT FINAL)
    Q_PROPERTY(orv::TerminalFind* find READ find CONSTANT FINAL)
    Q_PROPERTY(int historyLines READ historyLines NOTIFY scrollChanged FINAL)
    Q_PROPERTY(int topLine READ topLine NOTIFY scrollChanged FINAL)
    Q_PROPERTY(int rows READ rows NOTIFY scrollChanged FINAL)
    Q_PROPERTY(QColor background READ background NOTIFY backgroundChanged FINAL)
    Q_PROPERTY(bool hasSelection READ hasSelection NOTIFY selectionChanged FINAL)
    Q_PROPERTY(QString hoveredLink READ hoveredLink NOTIFY hoveredLinkChanged FINAL)
    Q_PROPERTY(orv::KeyboardSelection* keyboardSelection READ keyboardSelection CONSTANT FINAL)
    Q_PROPERTY(bool choosesLink READ choosesLink NOTIFY linkHintsChanged FINAL)
    Q_PROPERTY(QVariantList linkHints READ linkHints NOTIFY linkHintsChanged FINAL)
    Q_PROPERTY(int pasteLines READ pasteLines NOTIFY pasteQuestionChanged FINAL)
    Q_PROPERTY(QString programsCopy READ programsCopy NOTIFY programsCopyChanged FINAL)
public:
    /// `style` outlives the view.
    TerminalView(TerminalSession& session, TerminalStyle& style, QQuickItem* parent = nullptr);
    ~TerminalView() override;

    [[nodiscard]] TerminalSession* session() const { return &m_session; }
    [[nodiscard]] TerminalFind* find() const { return m_find; }
    /// The space at both sides of the cells, and above them, in logical pixels.
    void setPadding(QSizeF padding);
    /// Gives the terminal the size that the view has, at once: a shell that starts then finds it.
    void fit();
    [[nodiscard]] const CellGeometry& cell() const { return m_glyphs->cell(); }
    /// The corner of a cell of the screen, in the item.
    [[nodiscard]] QPointF placeOf(int column, int row) const;

    [[nodiscard]] int historyLines() const;
    /// The first line shown: 0 is the oldest, `historyLines` the first one of the screen.
    [[nodiscard]] int topLine() const;
    [[nodiscard]] int rows() const;
    Q_INVOKABLE void scrollTo(int topLine);
    Q_INVOKABLE void scrollToPrompt(int direction);

    /// Around the cells, and where they have none of their own.
    [[nodiscard]] QColor background() const { return QColor(m_background); }

    [[nodiscard]] bool hasSelection() const;
    [[nodiscard]] QString selectedText() const;
    Q_INVOKABLE void copy();
    Q_INVOKABLE void selectAll();
    /// The output of the command that stands at the top of the view, or that ended last (OSC 133).
    Q_INVOKABLE void selectOutput();
    /// Lines that wait for an answer before they go to a shell that would run them; 0: none do.
    [[nodiscard]] int pasteLines() const;
    Q_INVOKABLE void paste();
    void paste(const QString& text);
    Q_INVOKABLE void answerPaste(bool isWanted);
    /// The beginning, on one line, of what a program wants to put on the clipboard and nobody has decided upon. Empty:
    /// none does.
    [[nodiscard]] QString programsCopy() const;
    Q_INVOKABLE void answerProgramsCopy(bool isWanted) const;
    /// Screen and history.
    Q_INVOKABLE void clear();
    Q_INVOKABLE void zoom(int direction) { m_style.zoom(direction); }

    [[nodiscard]] QString hoveredLink() const { return m_hoveredText; }

    [[nodiscard]] KeyboardSelection* keyboardSelection() const { return m_keyboardSelection; }
    /// Waits for the letters of a link that is to be opened; with Shift it is copied.
    Q_INVOKABLE void chooseLink();
    [[nodiscard]] bool choosesLink() const { return m_choosesLink; }
    /// `LinkHint`s: the links in view whose letters begin as what was typed.
    [[nodiscard]] QVariantList linkHints() const;

    // What it costs, since the beginning.
    [[nodiscard]] std::uint64_t paintedLines() const { return m_picture.paintedCount(); }
    [[nodiscard]] std::uint64_t madeTextures() const { return m_madeTextures; }
    [[nodiscard]] std::uint64_t frames() const { return m_frames; }
    /// No timer runs.
    [[nodiscard]] bool isIdle() const;
    /// Something has changed that is to be drawn, and was not yet.
    [[nodiscard]] bool isWaiting() const;

    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

Q_SIGNALS:
    void scrollChanged();
    void backgroundChanged();
    void selectionChanged();
    void hoveredLinkChanged();
    void linkHintsChanged();
    void pasteQuestionChanged();
    void programsCopyChanged();
    void linkActivated(const QUrl& url);
    /// Of a file that is there; line and column count from 1, 0: none was named.
    void fileActivated(const QString& path, int line, int column);
    void contextMenuRequested(const QPointF& place);
    /// Return was pressed after the shell had ended.
    void renewRequested();
    /// Someone looked for a prompt, or for the output of a command, and the shell has marked none (OSC 133).
    void marksMissed();

protected:
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void updatePolish() override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void releaseResources() override {}

    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    struct Hovered {
        TextLink link;
        std::int64_t line = 0; ///< of its first cell
        int first = 0;
        std::int64_t endLine = 0;
        int end = 0;
        [[nodiscard]] QString target() const { return link.url.isEmpty() ? link.path : link.url; }
        bool operator==(const Hovered&) const = default;
    };
    struct WrappedText;
    struct Cell {
        int column = 0;
        int row = 0;   ///< of the view
        QPoint pixels; ///< from the corner of the first cell, in pixels of the screen
        bool isRightHalf = false;
    };

    // TerminalView.cpp
    void changed();
    void draw();
    void requestFrame();
    void refresh();
    void applySize();
    void applyFont();
    void applyColors();
    void followScroll();
    void scrollToBottom();
    void tellOfMissingMarks();
    [[nodiscard]] std::int64_t firstLine() const;
    /// Whether somebody can see it: a window that is hidden or minimized shows nothing.
    [[nodiscard]] bool isShown() const;
    void followShown();
    [[nodiscard]] bool isHeld() const;
    [[nodiscard]] QPoint corner() const;

    // TerminalView+Looks.cpp
    [[nodiscard]] ResolvedColors resolvedColors() const;
    [[nodiscard]] std::vector<LineMark> marksOn(std::int64_t line) const;
    [[nodiscard]] std::vector<ScreenNode::Patch> gutter() const;
    [[nodiscard]] ScreenNode::CursorShape cursorShape() const;
    void restartBlinking();
    void blink();
    void followBlinkingText();
    void ring();
    void advanceAnimations();

    // TerminalView+Keyboard.cpp
    bool runShortcut(const QKeyEvent& event);
    bool runSelectionKey(const QKeyEvent& event);
    void followKeyboardSelection();
    /// Keys go to the selection or to the choice of a link, and nothing goes to the shell.
    [[nodiscard]] bool keepsKeys() const { return m_choosesLink || m_keyboardSelection->isActive(); }
    [[nodiscard]] static bool isForApplication(const QKeyEvent& event);
    void typed();

    // TerminalView+Clipboard.cpp
    void pasteWithoutQuestion(const QString& text);

    // TerminalView+Mouse.cpp
    [[nodiscard]] Cell cellAt(QPointF place) const;
    [[nodiscard]] term::TextPlace placeAt(const Cell& cell) const;
    [[nodiscard]] bool programWantsMouse(Qt::KeyboardModifiers modifiers) const;
    bool report(term::MouseEventType type, term::MouseButton button, QPointF place, Qt::KeyboardModifiers modifiers);
    void drag(QPointF place);
    void scrollByDrag();
    void finishSelecting();
    void hover(QPointF place);
    void setHovered(const std::optional<Hovered>& hovered);
    void updatePointer();

    // TerminalView+Links.cpp
    [[nodiscard]] WrappedText wrappedText(int index) const;
    [[nodiscard]] Hovered namedLink(int index, int column) const;
    [[nodiscard]] std::optional<Hovered> writtenLink(TextLink link, const WrappedText& text) const;
    [[nodiscard]] std::optional<Hovered> linkUnder(const Cell& cell) const;
    [[nodiscard]] std::vector<Hovered> linksInView() const;
    [[nodiscard]] QString lettersOf(size_t link) const;
    void typeLetter(const QKeyEvent& event);
    void stopChoosing();
    void activate(const TextLink& link);

    TerminalSession& m_session;
    TerminalStyle& m_style;
    TerminalFind* m_find;
    KeyboardSelection* m_keyboardSelection;
    std::unique_ptr<GlyphCache> m_glyphs;
    ScreenPicture m_picture;
    QSizeF m_padding{18, 14};

    QRgb m_background = 0xFF000000;
    bool m_isStale = true;
    bool m_isSizeStale = true;
    QTimer m_frameTimer;
    QElapsedTimer m_sinceFrame;
    bool m_awaitsEcho = false; ///< what comes next answers a key: it is shown at once
    bool m_isPictureNew = false;
    std::chrono::milliseconds m_frameCost{0}; ///< from the look at the terminal until the scene had it
    std::uint64_t m_frames = 0;
    std::atomic<std::uint64_t> m_madeTextures = 0;
    int m_shownTop = -1;
    int m_shownHistory = -1;
    int m_shownRows = -1;
    std::vector<ScreenNode::Patch> m_gutter;
    QTimer m_bell;
    QTimer m_animation;

    term::CursorStyle m_cursorStyle{}; ///< as it was when the screen was last looked at
    QTimer m_blinkTimer;
    bool m_isCursorOn = true;
    int m_blinksLeft = 0;
    QTimer m_textBlinkTimer; ///< runs while text that blinks can be seen
    bool m_isTextOn = true;

    KeyTranslator m_keys;
    QSet<quint32> m_sentKeys; ///< those that the program was told of and that are not up again
    QString m_preedit;
    int m_preeditCursor = 0;
    QImage m_preeditPicture;
    QString m_pendingPaste;

    Qt::MouseButtons m_held; ///< those that the program was told of
    std::optional<Cell> m_reported;
    bool m_isSelecting = false;
    int m_clicks = 0;
    QElapsedTimer m_sinceClick;
    QPointF m_clickPlace;
    QPointF m_dragPlace;
    QTimer m_dragTimer;
    QPointF m_wheelRest;
    QPointF m_pointer;
    bool m_isPointerInside = false;
    bool m_isLinkKeyDown = false;
    std::optional<Hovered> m_hovered;
    std::optional<Hovered> m_pressedLink;
    QString m_hoveredText;
    bool m_choosesLink = false;
    std::vector<Hovered> m_links; ///< of which one may be chosen
    QString m_typedLetters;
    QString m_pointerShape;
};

} // namespace orv
