#include "OrvUI/GitIdentityForm.h"

#include "OrvCore/Async.h"
#include "OrvCore/Paths.h"
#include "OrvGit/GitService.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Pool_p.h"

namespace orv {

AppModel* GitIdentityForm::model() const {
    return m_model;
}

void GitIdentityForm::setModel(AppModel* model) {
    ORV_ASSERT_MAIN_THREAD();
    if (model != m_model) {
        m_model = model;
        Q_EMIT modelChanged();
        read();
    }
}

void GitIdentityForm::read() {
    if (!m_model) {
        return;
    }
    const auto ask = [] { return GitService().identity(Paths::realHome(), GitScope::global); };
    onFinished(runIn(m_model->workPool(), ask), this, [this](const GitOutcome<GitIdentity>& identity) {
        m_identity = identity.value_or(GitIdentity());
        m_isRead = true;
        Q_EMIT changed();
    });
}

void GitIdentityForm::setName(const QString& name) {
    const QString wanted = name.trimmed();
    if (!wanted.isEmpty() && wanted != this->name()) {
        m_identity.name = wanted;
        write({.name = wanted, .email = {}});
    }
}

void GitIdentityForm::setEmail(const QString& email) {
    const QString wanted = email.trimmed();
    if (!wanted.isEmpty() && wanted != this->email()) {
        m_identity.email = wanted;
        write({.name = {}, .email = wanted});
    }
}

bool GitIdentityForm::isLikelyEmail(const QString& text) {
    const QString email = text.trimmed();
    const qsizetype at = email.indexOf(u'@');
    return at > 0 && at + 1 < email.size();
}

void GitIdentityForm::write(const GitIdentity& identity) {
    ORV_ASSERT_MAIN_THREAD();
    Q_EMIT changed();
    if (!m_model) {
        return;
    }
    const auto tell = [identity] { return GitService().setIdentity(identity, Paths::realHome(), GitScope::global); };
    // The page that asks may be left before git is done.
    const bool isDoubtful = identity.email && !isLikelyEmail(*identity.email);
    const auto ended = [model = m_model.data(), form = QPointer(this), isDoubtful](const GitOutcome<void>& result) {
        if (!result) {
            model->report(result.error().text(), true);
        } else if (isDoubtful) {
            model->report(tr("Your commits carry what is no e-mail address: it has no @ between two parts."), true);
        }
        model->refreshGitIdentity();
        if (form) {
            form->read();
        }
    };
    onFinished(runIn(m_model->workPool(), tell), m_model.data(), ended);
}

} // namespace orv
