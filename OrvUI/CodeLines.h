#pragma once

#include "OrvUI/FileContent.h"

#include <QAbstractListModel>

namespace orv {

/// The lines of a file as rows. What differs is replaced, and there is no reset. Lives on the main thread.
class CodeLines : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { number = Qt::UserRole, text, spans };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    void setContent(const FileContent& content);
    [[nodiscard]] const QStringList& lines() const { return m_lines; }

private:
    QStringList m_lines;
    QList<QList<int>> m_spans;
};

} // namespace orv
