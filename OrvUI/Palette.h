#pragma once

#include "OrvUI/RowModel.h"
#include "OrvUI/UpdateSoon_p.h"
#include "OrvUI/UseCounts.h"

#include <QObject>
#include <QPointer>
#include <QVariantList>

#include <array>
#include <functional>
#include <optional>
#include <vector>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;
class FuzzyPattern;
struct Project;

struct PaletteRow {
    QString key{}; ///< of the delegate that shows it
    QString what;  ///< it stands for, the same at every start: "project:/home/sam/shop", "push:/home/sam/shop"
    QString group; ///< under which heading it stands
    QString title;
    QVariantList hits{}; ///< which letters of the title were found, of maps: start, length
    QString detail;
    QString icon; ///< empty: a project's tile
    int tileIndex = 0;
    QString tileLetter;
    QString shortcut; ///< that does the same elsewhere
    QString hint;     ///< what Enter does, where the title does not say it
    QString projectID;

    bool operator==(const PaletteRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<PaletteRow>>& roles();
};

/// The command palette: whatever the application can do, found by a few letters and done by Enter. What was chosen
/// often comes first. Lives on the main thread.
///
/// What can be found is collected when the palette opens, and again when the model changes while it is open. A letter
/// that is typed only looks through that.
class Palette : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY isOpenChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(QAbstractListModel* results READ results CONSTANT)
    Q_PROPERTY(int resultCount READ resultCount NOTIFY resultsChanged)
    /// The name of the project to whose actions the palette is narrowed; empty: to none.
    Q_PROPERTY(QString scopeName READ scopeName NOTIFY scopeChanged)

public:
    explicit Palette(QObject* parent = nullptr);
    ~Palette() override;

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    Q_INVOKABLE void open();
    Q_INVOKABLE void close();
    [[nodiscard]] const QString& query() const { return m_query; }
    void setQuery(const QString& query);
    [[nodiscard]] QAbstractListModel* results() { return &m_results; }
    [[nodiscard]] const QList<PaletteRow>& rows() const { return m_results.rows(); }
    [[nodiscard]] int resultCount() const { return m_results.rowCount(); }
    [[nodiscard]] QString scopeName() const;

    /// Does what the row stands for, and closes.
    Q_INVOKABLE void activate(int row);
    /// Runs the row's project, or stops it, and closes. Nothing where the row is of no project.
    Q_INVOKABLE void runOrStop(int row);
    /// Narrows it to the row's project; false where the row is of none.
    Q_INVOKABLE bool narrow(int row);
    /// Takes that back; false when there was nothing to take back.
    Q_INVOKABLE bool widen();

Q_SIGNALS:
    void modelChanged();
    void isOpenChanged();
    void queryChanged();
    void resultsChanged();
    void scopeChanged();
    /// The sheet of all shortcuts is wanted.
    void diagnosticsAsked();
    void shortcutsAsked();

private:
    enum Group { projects, actions, places, tasks };

    /// What can be done with each project; `verbs` has the words, in this order.
    enum Verb {
        show,
        run,
        stop,
        restart,
        browse,
        push,
        pull,
        fetch,
        terminal,
        ask,
        pin,
        unpin,
        showTasks,
        showLogs,
        showGit,
        showFiles,
        verbCount,
    };
    struct VerbInfo;
    struct Candidate;
    struct Item;
    struct Hit;
    static const std::array<VerbInfo, verbCount>& verbs();

    void collect();
    void collectProjects();
    void collectActions();
    void collectPlaces();
    void collectTasks();
    void add(Group group, PaletteRow row, std::function<void()> perform, const QString& alsoKnownAs = {});
    /// What a delegate goes on to show: whatever comes to its place, or what it showed, wherever that comes.
    enum class Delegates { keepTheirPlace, follow };
    void search(Delegates delegates = Delegates::keepTheirPlace);
    void assignKeys(QList<PaletteRow>& rows, Delegates delegates);
    [[nodiscard]] QList<Hit> found() const;
    [[nodiscard]] QList<Hit> suggested() const;
    [[nodiscard]] static QList<Hit> arranged(QList<Hit> hits);
    [[nodiscard]] PaletteRow row(const Hit& hit, const FuzzyPattern& pattern) const;
    [[nodiscard]] QString detail(const Project& project, Verb verb) const;
    [[nodiscard]] static QString key(const QString& projectID, int verb);
    [[nodiscard]] int bonus(const QString& key) const;
    void performVerb(const PaletteRow& row);
    void note(const QString& key);

    QPointer<AppModel> m_model;
    std::optional<UseCounts> m_uses; ///< "palette.json" beside the settings
    QMap<QString, double> m_counts;  ///< as of the opening
    bool m_isOpen = false;
    QString m_query;
    QString m_scope; ///< a project's id
    std::vector<Candidate> m_candidates;
    std::vector<Item> m_items;
    RowModel<PaletteRow> m_results;
    int m_nextKey = 0;
    UpdateSoon m_updateSoon;
};

} // namespace orv
