#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

namespace orv {

/// A text field takes the key that takes back even when nothing was written in it. In the window of this item the key
/// goes past such a field to whatever shortcut has it. Lives on the main thread.
class UndoKey : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    using QQuickItem::QQuickItem;

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    QPointer<QQuickWindow> m_window;
};

} // namespace orv
