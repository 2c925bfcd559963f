#include "OrvUI/Screens/FocusFollower.h"

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
    if (window != nullptr) {
        m_focus = connect(window, &QQuickWindow::activeFocusItemChanged, this, &FocusFollower::follow);
    }
}

bool FocusFollower::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || m_view.isNull() || !m_view->isVisible()) {
        return QObject::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool isDown = key->key() == Qt::Key_PageDown;
    if ((!isDown && key->key() != Qt::Key_PageUp) || (key->modifiers() & ~Qt::KeypadModifier) != 0) {
        return QObject::eventFilter(watched, event);
    }
    const double page = m_view->height() * pageShare;
    scrollTo(m_view->property("contentY").toDouble() + (isDown ? page : -page));
    return true;
}

void FocusFollower::follow() {
    if (m_view.isNull() || m_view->window() == nullptr || QGuiApplication::mouseButtons() != Qt::NoButton) {
        return;
    }
    const QQuickItem* focused = m_view->window()->activeFocusItem();
    if (focused == nullptr || focused == m_view || !m_view->isAncestorOf(focused)) {
        return;
    }
    const double top = focused->mapToItem(m_view, QPointF()).y() - m_margin;
    const double bottom = top + focused->height() + 2 * m_margin;
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
