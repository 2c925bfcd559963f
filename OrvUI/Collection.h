#pragma once

#include "OrvUI/HomeRows.h"
#include "OrvUI/ModelPart.h"

namespace orv {

/// A folder of the tree that groups projects, with the cards of those below it. Lives on the main thread.
class Collection : public orv::ModelPart {
    Q_OBJECT
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY changed FINAL)
    Q_PROPERTY(QString pathText READ pathText NOTIFY changed FINAL)
    Q_PROPERTY(QString name READ name NOTIFY changed FINAL)
    Q_PROPERTY(int count READ count NOTIFY changed FINAL)
    /// What lies directly in it, folders as cards of their own; otherwise every project below it.
    Q_PROPERTY(bool nested READ isNested WRITE setNested NOTIFY changed FINAL)
    /// Of the cards only those with this in their name.
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY changed FINAL)
    Q_PROPERTY(QAbstractListModel* cards READ cards CONSTANT FINAL)

public:
    using ModelPart::ModelPart;

    [[nodiscard]] const QString& path() const { return m_path; }
    void setPath(const QString& path);
    [[nodiscard]] QString pathText() const;
    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] int count() const { return m_cards.rowCount(); }
    [[nodiscard]] bool isNested() const { return m_isNested; }
    void setNested(bool isNested);
    [[nodiscard]] const QString& searchText() const { return m_searchText; }
    void setSearchText(const QString& text);
    [[nodiscard]] QAbstractListModel* cards() { return &m_cards; }

Q_SIGNALS:
    void changed();

private:
    void takeModel() override;
    void update();

    QString m_path;
    QString m_name;
    QString m_searchText;
    bool m_isNested = false;
    RowModel<CardRow> m_cards;
};

} // namespace orv
