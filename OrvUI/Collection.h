#pragma once

#include "OrvUI/HomeRows.h"

#include <QPointer>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// A folder of the tree that groups projects, with the cards of those below it. Lives on the main thread.
class Collection : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY changed FINAL)
    Q_PROPERTY(QString pathText READ pathText NOTIFY changed FINAL)
    Q_PROPERTY(QString name READ name NOTIFY changed FINAL)
    Q_PROPERTY(int count READ count NOTIFY changed FINAL)
    /// Of the cards only those with this in their name.
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY changed FINAL)
    Q_PROPERTY(QAbstractListModel* cards READ cards CONSTANT FINAL)

public:
    explicit Collection(QObject* parent = nullptr) : QObject(parent) {}

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] const QString& path() const { return m_path; }
    void setPath(const QString& path);
    [[nodiscard]] QString pathText() const;
    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] int count() const { return m_cards.rowCount(); }
    [[nodiscard]] const QString& searchText() const { return m_searchText; }
    void setSearchText(const QString& text);
    [[nodiscard]] QAbstractListModel* cards() { return &m_cards; }

Q_SIGNALS:
    void modelChanged();
    void changed();

private:
    void update();

    QPointer<AppModel> m_model;
    QString m_path;
    QString m_name;
    QString m_searchText;
    RowModel<CardRow> m_cards;
};

} // namespace orv
