#pragma once

#include "OrvUI/GitModel.h"

#include <QPointer>

namespace orv {

/// The branches of a repository as somebody types into the field above them, to switch to one, to make one, or to say
/// what one follows. Lives on the main thread.
class BranchChoices : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::GitModel* git READ git WRITE setGit NOTIFY gitChanged)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY changed)
    Q_PROPERTY(bool creating READ isCreating WRITE setCreating NOTIFY changed)
    Q_PROPERTY(QString follower READ follower WRITE setFollower NOTIFY changed)
    Q_PROPERTY(bool follows READ follows NOTIFY changed)
    Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT)
    Q_PROPERTY(QString newName READ newName NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed)

public:
    explicit BranchChoices(QObject* parent = nullptr) : QObject(parent) {}

    [[nodiscard]] GitModel* git() const { return m_git; }
    void setGit(GitModel* git);
    [[nodiscard]] const QString& text() const { return m_text; }
    void setText(const QString& text);
    /// The text is the name of a new branch, and nothing is listed.
    [[nodiscard]] bool isCreating() const { return m_isCreating; }
    void setCreating(bool isCreating);
    /// The branch whose upstream is chosen: the remotes' branches are listed, with the one that it follows as the
    /// current one. Empty while a branch to switch to is.
    [[nodiscard]] const QString& follower() const { return m_follower; }
    void setFollower(const QString& branch);
    /// Whether that branch follows another one by now.
    [[nodiscard]] bool follows() const { return !followed().isEmpty(); }
    /// Branches whose name contains the text, in any case. A remote's branch is left out where there is a local one of
    /// its name.
    [[nodiscard]] RowModel<BranchRow>* rows() { return &m_rows; }
    /// The branch that could be made of the text; empty when there is one of that name, or it can't be a name.
    [[nodiscard]] QString newName() const;
    /// Why the text can't be the name of a new branch; empty when it can, or nobody wants one.
    [[nodiscard]] QString problem() const;

    /// Whether there was anything to do.
    Q_INVOKABLE bool choose(int row);
    Q_INVOKABLE bool create();
    Q_INVOKABLE bool unfollow();

Q_SIGNALS:
    void gitChanged();
    void changed();

private:
    void update();
    [[nodiscard]] bool isThere(const QString& name) const;
    [[nodiscard]] QString followed() const;
    [[nodiscard]] bool isListed(const BranchRow& row) const;

    QPointer<GitModel> m_git;
    QString m_text;
    bool m_isCreating = false;
    QString m_follower;
    RowModel<BranchRow> m_rows;
};

} // namespace orv
