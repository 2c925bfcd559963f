#pragma once

#include "OrvUI/RowModel.h"

#include <QCoreApplication>

namespace orv {

/// A shortcut as the sheet of all of them lists it.
struct ShortcutRow {
    QString key; ///< its id in the key map
    QString group;
    QString action;
    QStringList keys; ///< each for itself ("Ctrl", "Shift", "R"); what can be pressed instead follows an empty one
    QStringList terminalKeys; ///< those that do it in a terminal, where they are others; each for itself

    bool operator==(const ShortcutRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<ShortcutRow>>& roles();
};

/// The shortcuts of the application. Lives on the main thread.
class Shortcuts : public RowModel<ShortcutRow> {
    Q_OBJECT
    /// Only those with this in what they do, in their group or in their keys.
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged FINAL)

public:
    explicit Shortcuts(QObject* parent = nullptr);

    [[nodiscard]] const QString& searchText() const { return m_searchText; }
    void setSearchText(const QString& text);

Q_SIGNALS:
    void searchTextChanged();

private:
    QString m_searchText;
};

} // namespace orv
