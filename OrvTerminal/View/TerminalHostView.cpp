#include "OrvTerminal/View/TerminalHostView.h"

#include "OrvCore/Async.h"

namespace orv {

TerminalHostView::TerminalHostView(QQuickItem* parent) : QQuickItem(parent) {
    ORV_ASSERT_MAIN_THREAD();
    setFlag(ItemIsFocusScope);
}

TerminalHostView::~TerminalHostView() {
    setView(nullptr);
}

void TerminalHostView::setSession(TerminalSession* session) {
    if (session == m_session) {
        return;
    }
    m_session = session;
    attach();
    Q_EMIT sessionChanged();
}

void TerminalHostView::setStyle(TerminalStyle* style) {
    if (style != m_style) {
        m_style = style;
        attach();
        Q_EMIT styleChanged();
    }
}

void TerminalHostView::setPadding(QSizeF padding) {
    if (padding != m_padding) {
        m_padding = padding;
        if (TerminalView* shown = view()) {
            shown->setPadding(padding);
        }
        Q_EMIT paddingChanged();
    }
}

void TerminalHostView::attach() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_session == nullptr || m_style == nullptr) {
        setView(nullptr);
        return;
    }
    auto* view = qobject_cast<TerminalView*>(m_session->terminalView());
    if (view == nullptr) {
        auto made = std::make_unique<TerminalView>(*m_session, *m_style);
        view = made.get();
        m_session->setTerminalView(std::move(made));
    }
    setView(view);
}

void TerminalHostView::setView(TerminalView* view) {
    if (m_view != nullptr && m_view != view && m_view->parentItem() == this) {
        m_view->setParentItem(nullptr);
    }
    const bool isOther = view != m_view;
    m_view = view;
    if (view != nullptr && view->parentItem() != this) {
        view->setPadding(m_padding);
        view->setPosition({});
        view->setSize(size());
        view->setParentItem(this);
        view->fit();
        view->setFocus(true);
        // Not before the container is where it is going to be.
        QMetaObject::invokeMethod(
            view,
            [this, view, host = QPointer<TerminalHostView>(this)] {
                if (host && view->parentItem() == this && view->window() != nullptr) {
                    view->forceActiveFocus(Qt::OtherFocusReason);
                }
            },
            Qt::QueuedConnection);
    }
    if (isOther) {
        Q_EMIT viewChanged();
    }
}

void TerminalHostView::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (m_view != nullptr && m_view->parentItem() == this) {
        m_view->setSize(now.size());
    }
}

void TerminalHostView::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickItem::itemChange(change, value);
    if (change == ItemChildRemovedChange && value.item == m_view) {
        m_view = nullptr;
        Q_EMIT viewChanged();
    }
}

} // namespace orv
