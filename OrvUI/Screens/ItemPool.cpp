#include "OrvUI/Screens/ItemPool.h"

#include <QAbstractItemModel>
#include <QMetaProperty>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Otherwise it would take the focus along to where it is shown next.
void dropFocus(QQuickItem* item) {
    QQuickItem* scope = item->parentItem();
    while (scope != nullptr && !scope->isFocusScope()) {
        scope = scope->parentItem();
    }
    QQuickItem* focused = scope != nullptr ? scope->scopedFocusItem() : nullptr;
    if (focused != nullptr && (focused == item || item->isAncestorOf(focused))) {
        focused->setFocus(false);
    }
}

} // namespace

ItemPool::ItemPool(QQuickItem* parent) : QQuickItem(parent) {
    setVisible(false);
}

ItemPool::~ItemPool() = default;

void ItemPool::setModel(QAbstractItemModel* model) {
    if (m_model != model) {
        m_model = model;
        Q_EMIT modelChanged();
    }
}

std::unique_ptr<ItemPool::Entry> ItemPool::take(const QModelIndex& row, QQuickItem* parent) {
    if (!row.isValid()) {
        return nullptr;
    }
    std::unique_ptr<Entry> entry;
    if (!m_idle.empty()) {
        entry = std::move(m_idle.back());
        m_idle.pop_back();
    } else {
        entry = std::make_unique<Entry>();
        entry->item = make(row, parent);
        if (entry->item == nullptr) {
            return nullptr;
        }
    }
    // It is told what it shows before it can be seen.
    update(*entry, row);
    entry->item->setProperty("index", row.row());
    entry->item->setParentItem(parent);
    return entry;
}

void ItemPool::giveBack(std::unique_ptr<Entry> entry) {
    if (entry == nullptr || entry->item == nullptr) {
        return;
    }
    dropFocus(entry->item);
    entry->item->setParentItem(this);
    m_idle.push_back(std::move(entry));
}

void ItemPool::update(Entry& entry, const QModelIndex& row) const {
    const QMetaObject* type = entry.item->metaObject();
    entry.values.resize(m_roles.size());
    for (size_t place = 0; place < m_roles.size(); ++place) {
        QVariant value = row.data(m_roles[place].role);
        if (value != entry.values[place]) {
            type->property(m_roles[place].property).write(entry.item, value);
            entry.values[place] = std::move(value);
        }
    }
}

QQuickItem* ItemPool::make(const QModelIndex& row, QQuickItem* parent) {
    if (m_delegate == nullptr) {
        return nullptr;
    }
    QObject* object = m_delegate->beginCreate(m_delegate->creationContext());
    auto* item = qobject_cast<QQuickItem*>(object);
    if (item == nullptr) {
        qWarning("%s", qUtf8Printable(m_delegate->errorString()));
        delete object;
        return nullptr;
    }
    item->setParent(this);
    item->setParentItem(parent);
    if (m_roles.empty()) {
        findRoles(*item, *row.model());
    }
    QVariantMap values{{u"index"_s, row.row()}};
    for (const Role& role : m_roles) {
        values.insert(QString::fromUtf8(item->metaObject()->property(role.property).name()), row.data(role.role));
    }
    m_delegate->setInitialProperties(item, values);
    m_delegate->completeCreate();
    return item;
}

void ItemPool::findRoles(const QObject& item, const QAbstractItemModel& model) {
    const QHash<int, QByteArray> names = model.roleNames();
    for (auto name = names.begin(); name != names.end(); ++name) {
        if (const int property = item.metaObject()->indexOfProperty(*name); property >= 0) {
            m_roles.push_back({.role = name.key(), .property = property});
        }
    }
}

} // namespace orv
