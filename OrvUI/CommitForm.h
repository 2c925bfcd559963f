#pragma once

#include "OrvUI/GitOverview.h"

#include <QObject>
#include <QString>

namespace orv {

class GitModel;

/// The message that the next commit will have. What is being written for a repository stays in the overview's drafts
/// while the user looks at something else. Lives on the main thread.
class CommitForm : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString summary READ summary WRITE setSummary NOTIFY textChanged)
    Q_PROPERTY(QString description READ description WRITE setDescription NOTIFY textChanged)
    Q_PROPERTY(bool amending READ isAmending WRITE setAmending NOTIFY changed)
    Q_PROPERTY(bool canAmend READ canAmend NOTIFY changed)
    Q_PROPERTY(bool ready READ isReady NOTIFY changed)
    Q_PROPERTY(QString actionText READ actionText NOTIFY changed)

public:
    CommitForm(GitModel& git, GitOverview& overview, QObject* parent = nullptr);

    [[nodiscard]] const QString& summary() const { return m_message.summary; }
    void setSummary(const QString& text);
    [[nodiscard]] const QString& description() const { return m_message.description; }
    void setDescription(const QString& text);
    [[nodiscard]] bool isAmending() const { return m_isAmending; }
    /// The last commit's message takes the place of the one that was being written, which comes back with `false`.
    void setAmending(bool isAmending);
    [[nodiscard]] bool canAmend() const;
    [[nodiscard]] bool isReady() const;       ///< there is something to commit, and nothing under way
    [[nodiscard]] QString actionText() const; ///< "Commit 2 files"

    /// Commits, or says by a signal what has to be known first.
    Q_INVOKABLE void submit();
    /// Nobody said who commits: it is not tried again.
    Q_INVOKABLE void withdraw() { m_wait = Wait::none; }

Q_SIGNALS:
    void textChanged();
    void changed();
    void summaryNeeded();
    /// Git does not know who commits. Once it does, `submit` is tried again.
    void identityNeeded();

private:
    void setMessage(const CommitMessage& message);
    void recall();
    void takeAway();
    void actionSucceeded(const QString& action);
    void submitIfIdentityCame();

    GitModel& m_git;
    GitOverview& m_overview;
    CommitMessage m_message;
    CommitMessage m_kept; ///< that was being written when the amendment began
    bool m_isAmending = false;
    enum class Wait { none, forIdentity, forItsReading };
    Wait m_wait = Wait::none;
};

} // namespace orv
