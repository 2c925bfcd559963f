#include "OrvUI/Screens/PooledItem.h"

#include <QAbstractItemModel>

namespace orv {

PooledItem::~PooledItem() {
    disconnect(m_siblings);
    giveBack();
}

void PooledItem::setPool(ItemPool* pool) {
    if (pool != m_pool) {
        m_pool = pool;
        Q_EMIT poolChanged();
    }
}

void PooledItem::setIndex(int index) {
    if (index == m_index) {
        return;
    }
    m_index = index;
    if (item() != nullptr) {
        item()->setProperty("index", index);
    }
    Q_EMIT indexChanged();
}

QQuickItem* PooledItem::item() const {
    return m_entry != nullptr ? m_entry->item.data() : nullptr;
}

void PooledItem::giveBack() {
    if (m_entry == nullptr) {
        return;
    }
    if (m_row.model() != nullptr) {
        disconnect(m_row.model(), nullptr, this, nullptr);
    }
    if (m_pool != nullptr) {
        m_pool->giveBack(std::move(m_entry));
    }
    m_entry.reset();
}

void PooledItem::componentComplete() {
    QQuickItem::componentComplete();
    QAbstractItemModel* model = m_pool != nullptr ? m_pool->model() : nullptr;
    if (model == nullptr) {
        return;
    }
    m_row = model->index(m_index, 0);
    m_entry = m_pool->take(m_row, this);
    if (m_entry != nullptr) {
        connect(model, &QAbstractItemModel::dataChanged, this, &PooledItem::onDataChanged);
        Q_EMIT itemChanged();
    }
}

void PooledItem::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemParentHasChanged && value.item != nullptr) {
        disconnect(m_siblings);
        // Taken from its parent, it is still in the window for the time of this signal. What leaves the window loses
        // all that it is drawn by.
        m_siblings = connect(value.item, &QQuickItem::childrenChanged, this, [this, parent = value.item] {
            if (!parent->childItems().contains(this)) {
                giveBack();
            }
        });
    }
    QQuickItem::itemChange(change, value);
}

void PooledItem::focusInEvent(QFocusEvent* event) {
    if (item() != nullptr) {
        item()->forceActiveFocus(event->reason());
    }
}

void PooledItem::onDataChanged(const QModelIndex& first, const QModelIndex& last) {
    if (m_pool != nullptr && item() != nullptr && m_row.isValid() && first.row() <= m_row.row() &&
        m_row.row() <= last.row()) {
        m_pool->update(*m_entry, m_row);
    }
}

} // namespace orv
