#pragma once

#include "OrvUI/RowModel.h"
#include "OrvUI/UpdateSoon_p.h"

#include <QObject>

namespace orv {

class AppModel;
struct ProjectFilterSet;

/// One thing that can be chosen, or that is chosen.
struct FilterChoiceRow {
    QString key; ///< to be handed back
    QString title;
    bool isOn = false;

    bool operator==(const FilterChoiceRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<FilterChoiceRow>>& roles();
};

/// The refine filters of the model as the filter bar and its popover show and change them. Lives on the main thread.
class FilterBar : public QObject {
    Q_OBJECT
    Q_PROPERTY(QAbstractListModel* kinds READ kinds CONSTANT)
    Q_PROPERTY(QAbstractListModel* frameworks READ frameworks CONSTANT)
    Q_PROPERTY(QAbstractListModel* chips READ chips CONSTANT)
    Q_PROPERTY(QStringList gitTitles READ gitTitles CONSTANT)
    Q_PROPERTY(QStringList collectionTitles READ collectionTitles CONSTANT)
    Q_PROPERTY(int git READ git WRITE setGit NOTIFY changed)
    Q_PROPERTY(int collections READ collections WRITE setCollections NOTIFY changed)
    Q_PROPERTY(bool onlyRunning READ onlyRunning WRITE setOnlyRunning NOTIFY changed)
    Q_PROPERTY(bool onlyPinned READ onlyPinned WRITE setOnlyPinned NOTIFY changed)
    Q_PROPERTY(bool onlyUncommitted READ onlyUncommitted WRITE setOnlyUncommitted NOTIFY changed)
    Q_PROPERTY(int activeCount READ activeCount NOTIFY changed)
    /// Something leaves projects out, beside the sidebar's filter and the search.
    Q_PROPERTY(bool narrows READ narrows NOTIFY changed)

public:
    explicit FilterBar(AppModel& model, QObject* parent = nullptr);

    [[nodiscard]] QAbstractListModel* kinds() { return &m_kinds; }
    /// Those of all projects, and the chosen ones that none has any more.
    [[nodiscard]] QAbstractListModel* frameworks() { return &m_frameworks; }
    /// What is chosen, each to be removed by its key.
    [[nodiscard]] QAbstractListModel* chips() { return &m_chips; }
    [[nodiscard]] static QStringList gitTitles();
    [[nodiscard]] static QStringList collectionTitles();
    [[nodiscard]] int git() const; ///< the place of the chosen one among the titles
    void setGit(int place);
    [[nodiscard]] int collections() const;
    void setCollections(int place);
    [[nodiscard]] bool onlyRunning() const;
    void setOnlyRunning(bool isOn);
    [[nodiscard]] bool onlyPinned() const;
    void setOnlyPinned(bool isOn);
    [[nodiscard]] bool onlyUncommitted() const;
    void setOnlyUncommitted(bool isOn);
    [[nodiscard]] int activeCount() const;
    [[nodiscard]] bool narrows() const;

    /// By the key of a kind, a framework or a chip.
    Q_INVOKABLE void toggle(const QString& key);
    Q_INVOKABLE void clear();

Q_SIGNALS:
    void changed();

private:
    void update();
    void change(void (*set)(ProjectFilterSet& filters, int value), int value);

    AppModel& m_model;
    RowModel<FilterChoiceRow> m_kinds;
    RowModel<FilterChoiceRow> m_frameworks;
    RowModel<FilterChoiceRow> m_chips;
    UpdateSoon m_updateSoon;
};

} // namespace orv
