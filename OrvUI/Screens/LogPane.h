#pragma once

#include "OrvTerminal/View/Links.h"
#include "OrvUI/LogSelection.h"
#include "OrvUI/Screens/LogLine.h"

#include <QPointer>
#include <QQuickItem>
#include <QTimer>
#include <QUrl>

#include <optional>

namespace orv {

/// Lies over a list of LogLines and takes the mouse for them: a drag selects text, two clicks a word and three a line,
/// a click with Ctrl opens what is named there, a turn of the wheel to the side moves the text. A main-thread item.
class LogPane : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// The list.
    Q_PROPERTY(QQuickItem* view MEMBER m_view NOTIFY viewChanged FINAL)
    Q_PROPERTY(orv::LogSelection* selection MEMBER m_selection NOTIFY selectionChanged FINAL)
    /// Where relative paths may begin.
    Q_PROPERTY(QStringList folders MEMBER m_folders NOTIFY foldersChanged FINAL)
    /// How far the text is moved to the left; no further than the widest line that is to be seen asks for.
    Q_PROPERTY(int offset READ offset WRITE setOffset NOTIFY offsetChanged FINAL)
    /// Where the link below the mouse leads; empty: there is none.
    Q_PROPERTY(QString hoveredLink READ hoveredLink NOTIFY hoveredLinkChanged FINAL)
    /// Whether a click opens it.
    Q_PROPERTY(bool opensLink READ opensLink NOTIFY hoveredLinkChanged FINAL)
    /// The same of the link that the menu is for.
    Q_PROPERTY(QString menuLink READ menuLink NOTIFY menuAsked FINAL)
    Q_PROPERTY(QString menuLine READ menuLine NOTIFY menuAsked FINAL)

public:
    explicit LogPane(QQuickItem* parent = nullptr);

    [[nodiscard]] int offset() const { return m_offset; }
    void setOffset(int offset);
    [[nodiscard]] QString hoveredLink() const { return target(m_hovered.link); }
    [[nodiscard]] bool opensLink() const { return m_hovered.line >= 0 && m_isCtrlHeld; }
    [[nodiscard]] QString menuLink() const { return target(m_menuLink); }
    [[nodiscard]] const QString& menuLine() const { return m_menuLine; }

    Q_INVOKABLE void openMenuLink() { activate(m_menuLink); }
    /// The menu of the line that was selected last, or of the first one in view.
    Q_INVOKABLE void askMenu();
    /// Brings the current match of a search into view where it stands too far to a side.
    Q_INVOKABLE void revealMatch();

Q_SIGNALS:
    void viewChanged();
    void selectionChanged();
    void foldersChanged();
    void offsetChanged();
    void hoveredLinkChanged();
    void linkActivated(const QUrl& link);
    void fileActivated(const QString& path, int line, int column);
    void menuAsked(QPointF place);
    /// Text is being selected: it is to stay where it is.
    void held();
    /// The list is to move by that much.
    void scrollAsked(qreal by);
    /// The keys selected up to that one.
    void rowReached(int row);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Hovered {
        LogModel::Serial line = -1;
        TextLink link;

        bool operator==(const Hovered&) const = default;
    };

    void reveal(const LogLine& line, qsizetype start, qsizetype end);
    [[nodiscard]] QList<LogLine*> lines() const;
    [[nodiscard]] LogLine* lineAt(QPointF place) const;
    [[nodiscard]] std::optional<LogSelection::Place> placeAt(QPointF place) const;
    [[nodiscard]] TextLink linkUnder(QPointF place) const;
    [[nodiscard]] std::optional<TextLink> existing(TextLink link) const;
    [[nodiscard]] static QString target(const TextLink& link);
    void activate(const TextLink& link);
    void hover(QPointF place);
    void setCtrlHeld(bool isHeld);
    void showPointer();
    void setHovered(const Hovered& hovered);
    void press(const QMouseEvent& event);
    void drag(QPointF place);
    void askMenuOf(const LogLine& line, const TextLink& link, QPointF place);

    QPointer<QQuickItem> m_view;
    LogSelection* m_selection = nullptr;
    QStringList m_folders;
    int m_offset = 0;
    Hovered m_hovered;
    std::optional<Hovered> m_pressed;
    TextLink m_menuLink;
    QString m_menuLine;
    int m_clicks = 0;
    quint64 m_clickTime = 0;
    QPointF m_clickPlace;
    bool m_isSelecting = false;
    bool m_isCtrlHeld = false;
    bool m_knowsCtrl = false; ///< it was pressed or released since the mouse came
    QPointF m_pointer;
    QTimer m_dragTimer;
};

} // namespace orv
