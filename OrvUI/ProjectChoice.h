#pragma once

#include "OrvUI/ModelPart.h"
#include "OrvUI/RowModel.h"

namespace orv {

struct ProjectChoiceRow {
    QString key; ///< the project's id
    QString name;
    int tileIndex = 0;
    QString tileLetter;

    bool operator==(const ProjectChoiceRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<ProjectChoiceRow>>& roles();
};

/// The project that something is for, and while one is being chosen all that there are. Lives on the main thread.
class ProjectChoice : public orv::ModelPart {
    Q_OBJECT
    /// Empty: none is chosen.
    Q_PROPERTY(QString projectID READ projectID WRITE choose NOTIFY chosenChanged FINAL)
    Q_PROPERTY(QString name READ name NOTIFY chosenChanged FINAL)
    Q_PROPERTY(int tileIndex READ tileIndex NOTIFY chosenChanged FINAL)
    Q_PROPERTY(QString tileLetter READ tileLetter NOTIFY chosenChanged FINAL)
    /// Somebody looks at the rows; otherwise there are none.
    Q_PROPERTY(bool listing READ isListing WRITE setListing NOTIFY listingChanged FINAL)
    /// Of the rows only those with this in their name, in any case.
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged FINAL)
    Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT FINAL)

public:
    using ModelPart::ModelPart;

    [[nodiscard]] const QString& projectID() const { return m_chosen.key; }
    [[nodiscard]] const QString& name() const { return m_chosen.name; }
    [[nodiscard]] int tileIndex() const { return m_chosen.tileIndex; }
    [[nodiscard]] const QString& tileLetter() const { return m_chosen.tileLetter; }
    void choose(const QString& projectID);
    [[nodiscard]] bool isListing() const { return m_isListing; }
    void setListing(bool isListing);
    [[nodiscard]] const QString& text() const { return m_text; }
    void setText(const QString& text);
    [[nodiscard]] QAbstractListModel* rows() { return &m_rows; }

    /// The row at that place is chosen; whether there is one.
    Q_INVOKABLE bool chooseAt(int place);

Q_SIGNALS:
    void chosenChanged();
    void listingChanged();
    void textChanged();

private:
    void takeModel() override;
    void update();
    [[nodiscard]] ProjectChoiceRow rowOf(const QString& projectID) const;

    ProjectChoiceRow m_chosen;
    bool m_isListing = false;
    QString m_text;
    RowModel<ProjectChoiceRow> m_rows;
};

} // namespace orv
