#include "OrvUI/CommitForm.h"

#include "OrvUI/GitModel.h"

using namespace Qt::StringLiterals;

namespace orv {

CommitForm::CommitForm(GitModel& git, GitOverview& overview, QObject* parent)
    : QObject(parent), m_git(git), m_overview(overview) {
    for (const auto signal : {&GitModel::statusChanged, &GitModel::busyChanged, &GitModel::detailsChanged}) {
        connect(&git, signal, this, &CommitForm::changed);
    }
    connect(this, &CommitForm::changed, this, &CommitForm::submitIfIdentityCame);
    connect(&git, &GitModel::succeeded, this, &CommitForm::actionSucceeded);
    connect(&git, &GitModel::repositoryChanged, this, &CommitForm::recall);
    connect(&overview, &GitOverview::draftDropped, this, [this](const QString& repository) {
        if (repository == m_git.repository()) {
            takeAway();
        }
    });
}

void CommitForm::setMessage(const CommitMessage& message) {
    if (message != m_message) {
        m_message = message;
        if (!m_isAmending) {
            m_overview.keepDraft(m_git.repository(), message);
        }
        Q_EMIT textChanged();
    }
}

/// What was being written for the repository that is shown now.
void CommitForm::recall() {
    m_isAmending = false;
    m_kept = {};
    setMessage(m_overview.draft(m_git.repository()));
    Q_EMIT changed();
}

/// The message is that of a commit now; an amendment that is being written is another one.
void CommitForm::takeAway() {
    if (m_isAmending) {
        m_kept = {};
    } else {
        setMessage({});
    }
}

void CommitForm::setSummary(const QString& text) {
    setMessage({text, m_message.description});
}

void CommitForm::setDescription(const QString& text) {
    setMessage({m_message.summary, text});
}

bool CommitForm::canAmend() const {
    return m_git.hasCommits() && m_git.state() == "ready"_L1 && m_git.operation().isEmpty();
}

void CommitForm::setAmending(bool isAmending) {
    if (isAmending == m_isAmending || (isAmending && !canAmend())) {
        return;
    }
    m_isAmending = isAmending;
    if (isAmending) {
        m_kept = m_message;
        setMessage({m_git.headSummary(), m_git.headDescription()});
    } else {
        setMessage(std::exchange(m_kept, {}));
    }
    Q_EMIT changed();
}

bool CommitForm::isReady() const {
    return m_git.state() == "ready"_L1 && !m_git.isBusy() && (m_isAmending || m_git.stagedCount() > 0);
}

QString CommitForm::actionText() const {
    if (m_isAmending) {
        return tr("Amend");
    }
    const int count = m_git.stagedCount();
    return count == 0 ? tr("Commit") : count == 1 ? tr("Commit 1 file") : tr("Commit %1 files").arg(count);
}

void CommitForm::submit() {
    if (!isReady()) {
        return;
    }
    if (m_message.summary.trimmed().isEmpty()) {
        Q_EMIT summaryNeeded();
        return;
    }
    if (m_git.identityName().isEmpty() || m_git.identityEmail().isEmpty()) {
        m_wait = Wait::forIdentity;
        Q_EMIT identityNeeded();
        return;
    }
    if (m_isAmending) {
        m_git.amend(m_message.summary, m_message.description);
    } else {
        m_git.commit(m_message.summary, m_message.description);
    }
}

void CommitForm::actionSucceeded(const QString& action) {
    if (action == "amend"_L1) {
        setAmending(false);
    } else if (action == "identity"_L1 && m_wait == Wait::forIdentity) {
        m_wait = Wait::forItsReading;
    }
}

void CommitForm::submitIfIdentityCame() {
    const bool isKnown = !m_git.identityName().isEmpty() && !m_git.identityEmail().isEmpty();
    if (m_wait == Wait::forItsReading && isKnown && isReady()) {
        m_wait = Wait::none;
        submit();
    }
}

} // namespace orv
