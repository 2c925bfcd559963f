#pragma once

#include <QQmlComponent>
#include <QQuickItem>

#include <memory>
#include <vector>

namespace orv {

/// Makes items for the rows of a model and keeps those that no row needs any more for the rows that come: a GridView,
/// unlike a ListView, makes each one anew (Qt 6.4), which is most of the work while it scrolls.
///
/// An item has its row's roles as properties of the same names, and "index". While nobody shows it, it is a child of
/// the pool and so not visible. A main-thread item.
class ItemPool : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_CLASSINFO("DefaultProperty", "delegate")
    Q_PROPERTY(QQmlComponent* delegate MEMBER m_delegate NOTIFY delegateChanged FINAL)
    Q_PROPERTY(QAbstractItemModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)

public:
    /// An item, and what was written last to each of its properties of roles.
    struct Entry {
        QPointer<QQuickItem> item;
        std::vector<QVariant> values;
    };

    explicit ItemPool(QQuickItem* parent = nullptr);
    ~ItemPool() override;

    [[nodiscard]] QAbstractItemModel* model() const { return m_model; }
    void setModel(QAbstractItemModel* model);

    /// One that shows the row, below `parent`; null when there is no such row.
    [[nodiscard]] std::unique_ptr<Entry> take(const QModelIndex& row, QQuickItem* parent);
    void giveBack(std::unique_ptr<Entry> entry);
    /// Tells the item what has changed in its row.
    void update(Entry& entry, const QModelIndex& row) const;

Q_SIGNALS:
    void delegateChanged();
    void modelChanged();

private:
    struct Role {
        int role = 0;
        int property = 0; ///< of the item's meta object
    };

    [[nodiscard]] QQuickItem* make(const QModelIndex& row, QQuickItem* parent);
    void findRoles(const QObject& item, const QAbstractItemModel& model);

    QQmlComponent* m_delegate = nullptr;
    QPointer<QAbstractItemModel> m_model;
    std::vector<Role> m_roles;
    std::vector<std::unique_ptr<Entry>> m_idle;
};

} // namespace orv
