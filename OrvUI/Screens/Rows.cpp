#include "OrvUI/Screens/Rows.h"

namespace orv {

int Rows::find(const QAbstractItemModel* model, const QString& role, const QVariant& value) {
    const int key = model->roleNames().key(role.toUtf8(), -1);
    for (int row = 0; key >= 0 && row < model->rowCount(); ++row) {
        if (model->index(row, 0).data(key) == value) {
            return row;
        }
    }
    return -1;
}

} // namespace orv
