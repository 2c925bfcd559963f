#pragma once

#include "OrvUI/RowModel.h"
#include "OrvUI/UpdateSoon_p.h"

#include <QObject>

namespace orv {

class AppModel;

struct SuggestionRow {
    QString key; ///< "add-project"
    QString headline;
    QString body;
    QString button;
    QString illustration;

    bool operator==(const SuggestionRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<SuggestionRow>>& roles();
};

/// The suggested steps on the home page. What is dismissed stays so after a restart. Lives on the main thread.
class Suggestions : public QObject {
    Q_OBJECT
    Q_PROPERTY(QAbstractListModel* cards READ cards CONSTANT)
    Q_PROPERTY(int limit READ limit WRITE setLimit NOTIFY limitChanged)

public:
    explicit Suggestions(AppModel& model, QObject* parent = nullptr);

    [[nodiscard]] QAbstractListModel* cards() { return &m_cards; }
    [[nodiscard]] const QList<SuggestionRow>& rows() const { return m_cards.rows(); }
    /// How many there is room for.
    [[nodiscard]] int limit() const { return m_limit; }
    void setLimit(int limit);

    /// What the card's button does.
    Q_INVOKABLE void perform(const QString& key);
    Q_INVOKABLE void dismiss(const QString& key);
    /// The widgets are on the desktop: that is not suggested any more.
    Q_INVOKABLE void confirmWidgets();
    /// Of all that were dismissed.
    Q_INVOKABLE void bringBack();
    void update();

Q_SIGNALS:
    void limitChanged();

private:
    void review();
    void resume();

    AppModel& m_model;
    RowModel<SuggestionRow> m_cards;
    int m_limit = 3;
    UpdateSoon m_updateSoon;
};

} // namespace orv
