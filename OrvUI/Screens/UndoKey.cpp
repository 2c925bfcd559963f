#include "OrvUI/Screens/UndoKey.h"

#include <QKeyEvent>

namespace orv {

bool UndoKey::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride || watched != m_window ||
        !static_cast<QKeyEvent*>(event)->matches(QKeySequence::Undo)) {
        return QQuickItem::eventFilter(watched, event);
    }
    const QQuickItem* focused = m_window->activeFocusItem();
    const QVariant canUndo = focused != nullptr ? focused->property("canUndo") : QVariant();
    if (!canUndo.isValid() || canUndo.toBool()) {
        return QQuickItem::eventFilter(watched, event);
    }
    event->ignore();
    return true;
}

void UndoKey::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemSceneChange && m_window != value.window) {
        if (m_window) {
            m_window->removeEventFilter(this);
        }
        m_window = value.window;
        if (m_window) {
            m_window->installEventFilter(this);
        }
    }
    QQuickItem::itemChange(change, value);
}

} // namespace orv
