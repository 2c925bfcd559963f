#pragma once

#include "OrvCore/Models.h"
#include "OrvUI/RowModel.h"

#include <QPointer>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// A service as the user may correct it.
struct OverrideRow {
    QString key; ///< of its override
    QString project;
    QString kindLabel; ///< "Backend"; of one of several in its project "Backend · api"
    QString framework;
    QString folder; ///< in the project; empty: the project's own
    int tileIndex = 0;
    QString tileLetter;
    bool isChanged = false;
    QString command; ///< the corrected one; empty: the detected one runs
    QString detectedCommand;
    QString port;
    int kind = 0; ///< index of ServiceKind

    bool operator==(const OverrideRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<OverrideRow>>& roles();
};

/// Every service of every project, by name, with what the user has corrected. Lives on the main thread.
class OverrideRows : public RowModel<OverrideRow> {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
    /// Keeps those with this in the project's name, the kind, the framework or the folder.
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged FINAL)

public:
    explicit OverrideRows(QObject* parent = nullptr) : RowModel(parent) {}

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] const QString& filter() const { return m_filter; }
    void setFilter(const QString& filter);

    /// Stores the correction and scans again. What went wrong with the input, or empty: "The port must be a number from
    /// 1 to 65535." An empty command is the detected one, an empty port none.
    Q_INVOKABLE QString save(const QString& key, const QString& command, const QString& port, int kind);
    /// Takes the correction away and scans again.
    Q_INVOKABLE void reset(const QString& key);

Q_SIGNALS:
    void modelChanged();
    void filterChanged();

private:
    void update();

    QPointer<AppModel> m_model;
    QString m_filter;
};

} // namespace orv
