#include "OrvUI/Screens/FocusFollower.h"

#include "OrvUI/Screens/InputMode.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickWindow>

#include <algorithm>

namespace orv {

namespace {

/// The part of its height by which a key turns a page; the rest is seen on both.
constexpr double pageShare = 0.9;

} // namespace

void FocusFollower::componentComplete() {
    if (m_view.isNull()) {
        return;
    }
    QObject* keys = m_view->parentItem() != nullptr ? m_view->parentItem() : m_view.data();
    keys->installEventFilter(this);
    connect(m_view, &QQuickItem::windowChanged, this, &FocusFollower::setWindow);
    setWindow(m_view->window());
}

void FocusFollower::setWindow(QQuickWindow* window) {
    disconnect(m_focus);
    if (m_window) {
        m_window->removeEventFilter(this);
    }
    m_window = window;
    if (window != nullptr) {
        window->installEventFilter(this);
        m_focus = connect(window, &QQuickWindow::activeFocusItemChanged, this, &FocusFollower::follow);
    }
}

bool FocusFollower::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || m_view.isNull() || !m_view->isVisible()) {
        return QObject::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    if (watched == m_window) {
        // One may have scrolled away from where one writes.
        if (const QQuickItem* field = focused(); field != nullptr &&
                                                 field->flags().testFlag(QQuickItem::ItemAcceptsInputMethod) &&
                                                 InputMode::writes(key->text(), static_cast<int>(key->modifiers()))) {
            follow();
        }
        return QObject::eventFilter(watched, event);
    }
    const bool isDown = key->key() == Qt::Key_PageDown;
    if ((!isDown && key->key() != Qt::Key_PageUp) || (key->modifiers() & ~Qt::KeypadModifier) != 0) {
        return QObject::eventFilter(watched, event);
    }
    const double page = m_view->height() * pageShare;
    scrollTo(m_view->property("contentY").toDouble() + (isDown ? page : -page));
    return true;
}

QQuickItem* FocusFollower::focused() const {
    QQuickItem* item = m_view.isNull() || m_window.isNull() ? nullptr : m_window->activeFocusItem();
    return item != nullptr && item != m_view && m_view->isAncestorOf(item) ? item : nullptr;
}

void FocusFollower::follow() {
    const QQuickItem* item = focused();
    if (item == nullptr || QGuiApplication::mouseButtons() != Qt::NoButton) {
        return;
    }
    const double top = item->mapToItem(m_view, QPointF()).y() - m_margin;
    const double bottom = top + item->height() + 2 * m_margin;
    const double at = m_view->property("contentY").toDouble();
    if (top < 0 && bottom < m_view->height()) {
        scrollTo(at + top);
    } else if (bottom > m_view->height() && top > 0) {
        // Of what is higher than the view its beginning.
        scrollTo(at + std::min(bottom - m_view->height(), top));
    }
}

void FocusFollower::scrollTo(double y) {
    const double origin = m_view->property("originY").toDouble();
    const double last = origin + std::max(0.0, m_view->property("contentHeight").toDouble() - m_view->height());
    m_view->setProperty("contentY", std::clamp(y, origin, last));
}

} // namespace orv
