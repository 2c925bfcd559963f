#pragma once

#include "OrvTerminal/TerminalSession.h"
#include "OrvTerminal/View/TerminalStyle.h"
#include "OrvTerminal/View/TerminalView.h"

#include <QPointer>
#include <QQuickItem>

namespace orv {

/// The container that shows a session: it makes the session's view when there is none yet, takes it from whoever showed
/// it before, and gives it its size and the keyboard. A main-thread item.
class TerminalHostView : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(orv::TerminalSession* session READ session WRITE setSession NOTIFY sessionChanged FINAL)
    Q_PROPERTY(orv::TerminalStyle* style READ style WRITE setStyle NOTIFY styleChanged FINAL)
    Q_PROPERTY(orv::TerminalView* view READ view NOTIFY viewChanged FINAL)
    Q_PROPERTY(QSizeF padding READ padding WRITE setPadding NOTIFY paddingChanged FINAL)
public:
    explicit TerminalHostView(QQuickItem* parent = nullptr);
    ~TerminalHostView() override;

    [[nodiscard]] TerminalSession* session() const { return m_session; }
    void setSession(TerminalSession* session);
    /// Nothing is shown before it is set.
    [[nodiscard]] TerminalStyle* style() const { return m_style; }
    void setStyle(TerminalStyle* style);
    /// Null without a session.
    [[nodiscard]] TerminalView* view() const { return qobject_cast<TerminalView*>(m_view.data()); }
    /// Around the cells.
    [[nodiscard]] QSizeF padding() const { return m_padding; }
    void setPadding(QSizeF padding);
    /// Takes the view back when another container has it.
    Q_INVOKABLE void attach();

Q_SIGNALS:
    void sessionChanged();
    void styleChanged();
    void viewChanged();
    void paddingChanged();

protected:
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    void setView(TerminalView* view);

    QPointer<TerminalSession> m_session;
    QPointer<TerminalStyle> m_style;
    QPointer<QQuickItem> m_view; ///< a TerminalView, until it goes and is only an item any more
    QSizeF m_padding{18, 14};
};

} // namespace orv
