#pragma once

#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/RowModel.h"

#include <QPointer>
#include <QtQmlIntegration>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// A tab as the strip shows it.
struct TerminalTab {
    QString key; ///< the session's id
    TerminalSession* session = nullptr;
    /// Among those with the same title: "2 of 3"; empty where there is no other one.
    QString place{};
    QString folder{}; ///< in which such a one's shell is, where the title does not say it; of a guest always
    bool isGuest = false;

    [[nodiscard]] static const std::vector<RowRole<TerminalTab>>& roles();
};

/// A terminal that is not of the project whose tabs are shown.
struct OtherTerminal {
    QString key; ///< the session's id
    TerminalSession* session = nullptr;
    QString text;      ///< "shop: vim"
    QString projectID; ///< empty: of none
    bool hasUnseen = false;

    [[nodiscard]] static const std::vector<RowRole<OtherTerminal>>& roles();
};

/// The tabs for the strip above the terminals of a project, what the strip does with them, and what there is besides.
/// Main thread.
///
/// A session is of the innermost project in which it was opened. One that is of none (in a folder of projects, say) is
/// a guest of the page on which it was opened, or asked for, as long as that shows nothing else.
class TerminalTabList : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(orv::TerminalTabs* tabs READ tabs WRITE setTabs NOTIFY tabsChanged FINAL)
    /// Without one, all sessions are of the one project.
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
    Q_PROPERTY(QString projectID MEMBER m_projectID NOTIFY projectIDChanged FINAL)
    Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT FINAL)
    Q_PROPERTY(QAbstractListModel* others READ others CONSTANT FINAL)
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)
    Q_PROPERTY(int otherCount READ otherCount NOTIFY countChanged FINAL)
    Q_PROPERTY(bool hasUnseen READ hasUnseen NOTIFY hasUnseenChanged FINAL)
    Q_PROPERTY(bool hasUnseenElsewhere READ hasUnseenElsewhere NOTIFY hasUnseenChanged FINAL)
    Q_PROPERTY(orv::TerminalSession* selected READ selected NOTIFY selectedChanged FINAL)
    Q_PROPERTY(orv::TerminalSession* closing READ closing NOTIFY closingChanged FINAL)
public:
    explicit TerminalTabList(QObject* parent = nullptr);

    [[nodiscard]] TerminalTabs* tabs() const { return m_tabs; }
    void setTabs(TerminalTabs* tabs);
    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] QAbstractListModel* rows() { return &m_rows; }
    [[nodiscard]] QAbstractListModel* others() { return &m_others; }
    [[nodiscard]] int count() const { return m_rows.rowCount(); }
    [[nodiscard]] int otherCount() const { return m_others.rowCount(); }
    /// Whether there is something in any of the tabs that nobody saw.
    [[nodiscard]] bool hasUnseen() const;
    [[nodiscard]] bool hasUnseenElsewhere() const;
    /// The guest, or the tab that was used last.
    [[nodiscard]] TerminalSession* selected() const;
    /// A tab that is to be closed although a program runs in it, as long as nobody has said so again and the program
    /// runs. Another one may be selected meanwhile.
    [[nodiscard]] TerminalSession* closing() const { return m_closing; }

    Q_INVOKABLE void open(const QUrl& folder);
    /// One of another project is selected on that one's page.
    Q_INVOKABLE void select(orv::TerminalSession* session);
    /// By its place, from 0; a place that is not there is let be.
    Q_INVOKABLE void selectAt(int place);
    /// The next one, or the one before; round the ends.
    Q_INVOKABLE void step(int direction);
    /// Puts a tab where another one stands.
    Q_INVOKABLE void moveTo(orv::TerminalSession* session, orv::TerminalSession* other);
    /// Puts the selected one a place further to the right (1), or to the left (-1); at the end it stays.
    Q_INVOKABLE void moveSelected(int direction);
    /// At once, or after a question where a program runs.
    Q_INVOKABLE void close(orv::TerminalSession* session);
    Q_INVOKABLE void answerClosing(bool isWanted);
    /// In place of a shell that has ended, a new one.
    Q_INVOKABLE void renew(orv::TerminalSession* session);

Q_SIGNALS:
    void tabsChanged();
    void modelChanged();
    void projectIDChanged();
    void countChanged();
    void hasUnseenChanged();
    void selectedChanged();
    void closingChanged();

private:
    enum class Owner { project, another, none };

    [[nodiscard]] std::optional<QString> projectOf(const TerminalSession& session) const;
    [[nodiscard]] Owner ownerOf(const TerminalSession& session) const;
    [[nodiscard]] QList<TerminalSession*> own() const;
    [[nodiscard]] OtherTerminal otherRow(TerminalSession& session) const;
    void takeIn(TerminalSession* session);
    void follow();
    void listRows();
    /// What tells tabs of one title apart.
    void tellApart(QList<TerminalTab>& rows) const;
    void closeNow(TerminalSession& session);
    void lookAtClosing();
    void setClosing(TerminalSession* session);

    QPointer<TerminalTabs> m_tabs;
    QPointer<AppModel> m_model;
    QString m_projectID;
    RowModel<TerminalTab> m_rows;
    RowModel<OtherTerminal> m_others;
    QPointer<TerminalSession> m_guest;
    QPointer<TerminalSession> m_closing;
};

} // namespace orv
