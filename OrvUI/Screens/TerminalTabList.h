#pragma once

#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/RowModel.h"

#include <QPointer>
#include <QtQmlIntegration>

namespace orv {

/// A tab as the strip shows it.
struct TerminalTab {
    QString key; ///< the session's id
    TerminalSession* session = nullptr;
    /// Among those with the same title: "2 of 3"; empty where there is no other one.
    QString place{};
    QString folder{}; ///< in which such a one's shell is, where the title does not say it

    [[nodiscard]] static const std::vector<RowRole<TerminalTab>>& roles();
};

/// The tabs for the strip above the terminals, and what the strip does with them. Main thread.
class TerminalTabList : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(orv::TerminalTabs* tabs READ tabs WRITE setTabs NOTIFY tabsChanged FINAL)
    Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT FINAL)
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)
    Q_PROPERTY(bool hasUnseen READ hasUnseen NOTIFY hasUnseenChanged FINAL)
    Q_PROPERTY(orv::TerminalSession* selected READ selected NOTIFY selectedChanged FINAL)
    Q_PROPERTY(orv::TerminalSession* closing READ closing NOTIFY closingChanged FINAL)
public:
    explicit TerminalTabList(QObject* parent = nullptr);

    [[nodiscard]] TerminalTabs* tabs() const { return m_tabs; }
    void setTabs(TerminalTabs* tabs);
    [[nodiscard]] QAbstractListModel* rows() { return &m_rows; }
    [[nodiscard]] int count() const { return m_rows.rowCount(); }
    /// Whether there is something in any of them that nobody saw.
    [[nodiscard]] bool hasUnseen() const { return m_tabs != nullptr && m_tabs->hasUnseen(); }
    [[nodiscard]] TerminalSession* selected() const;
    /// A tab that is to be closed although a program runs in it, as long as nobody has said so again and the program
    /// runs. Another one may be selected meanwhile.
    [[nodiscard]] TerminalSession* closing() const { return m_closing; }

    Q_INVOKABLE void open(const QUrl& folder);
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
    void countChanged();
    void hasUnseenChanged();
    void selectedChanged();
    void closingChanged();

private:
    void follow();
    void listRows();
    /// What tells tabs of one title apart.
    void tellApart(QList<TerminalTab>& rows) const;
    void lookAtClosing();
    void setClosing(TerminalSession* session);

    QPointer<TerminalTabs> m_tabs;
    RowModel<TerminalTab> m_rows;
    QPointer<TerminalSession> m_closing;
};

} // namespace orv
