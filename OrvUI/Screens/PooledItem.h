#pragma once

#include "OrvUI/Screens/ItemPool.h"

#include <QPersistentModelIndex>

namespace orv {

/// A view's delegate that borrows what it shows from a pool, until the view drops it. A main-thread item.
class PooledItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(orv::ItemPool* pool READ pool WRITE setPool NOTIFY poolChanged REQUIRED FINAL)
    Q_PROPERTY(int index READ index WRITE setIndex NOTIFY indexChanged REQUIRED FINAL)
    /// Null where the model has no such row.
    Q_PROPERTY(QQuickItem* item READ item NOTIFY itemChanged FINAL)

public:
    explicit PooledItem(QQuickItem* parent = nullptr) : QQuickItem(parent) {}
    ~PooledItem() override;

    [[nodiscard]] ItemPool* pool() const { return m_pool; }
    /// Once.
    void setPool(ItemPool* pool);
    [[nodiscard]] int index() const { return m_index; }
    void setIndex(int index);
    [[nodiscard]] QQuickItem* item() const;

Q_SIGNALS:
    void poolChanged();
    void indexChanged();
    void itemChanged();

protected:
    void componentComplete() override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    /// The view gives the focus to its current item, which is this one.
    void focusInEvent(QFocusEvent* event) override;

private:
    void giveBack();
    void onDataChanged(const QModelIndex& first, const QModelIndex& last);

    QPointer<ItemPool> m_pool;
    int m_index = -1;
    QPersistentModelIndex m_row;
    std::unique_ptr<ItemPool::Entry> m_entry;
    QMetaObject::Connection m_siblings;
};

} // namespace orv
