#include "OrvUI/BranchChoices.h"

#include "OrvCore/Async.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// What a remote's branch would be called here: "origin/feat/x" is "feat/x".
QString localName(const BranchRow& row) {
    return row.isRemote ? row.name.section(u'/', 1) : row.name;
}

} // namespace

void BranchChoices::setGit(GitModel* git) {
    ORV_ASSERT_MAIN_THREAD();
    if (git == m_git) {
        return;
    }
    if (m_git) {
        disconnect(m_git, nullptr, this, nullptr);
    }
    m_git = git;
    if (git != nullptr) {
        connect(git, &GitModel::statusChanged, this, &BranchChoices::update);
    }
    update();
    Q_EMIT gitChanged();
}

void BranchChoices::setText(const QString& text) {
    if (text != m_text) {
        m_text = text;
        update();
    }
}

void BranchChoices::setCreating(bool isCreating) {
    if (isCreating != m_isCreating) {
        m_isCreating = isCreating;
        update();
    }
}

void BranchChoices::setFollower(const QString& branch) {
    if (branch != m_follower) {
        m_follower = branch;
        update();
    }
}

QString BranchChoices::followed() const {
    if (!m_git || m_follower.isEmpty()) {
        return {};
    }
    const auto& all = m_git->branches()->rows();
    const auto row =
        std::ranges::find_if(all, [this](const BranchRow& each) { return !each.isRemote && each.name == m_follower; });
    return row != all.end() ? row->upstream : QString();
}

bool BranchChoices::isListed(const BranchRow& row) const {
    // A remote's branch beside a local one is another name of it, unless it is to be followed.
    const bool isMeant = m_follower.isEmpty() ? !(row.isRemote && isThere(localName(row))) : row.isRemote;
    return isMeant && row.name.contains(m_text.trimmed(), Qt::CaseInsensitive);
}

bool BranchChoices::isThere(const QString& name) const {
    if (!m_git) {
        return false;
    }
    const auto& all = m_git->branches()->rows();
    return std::ranges::any_of(all, [&](const BranchRow& row) { return !row.isRemote && row.name == name; });
}

void BranchChoices::update() {
    QList<BranchRow> rows;
    if (m_git && !m_isCreating) {
        const QString upstream = followed();
        for (BranchRow row : m_git->branches()->rows()) {
            if (isListed(row)) {
                row.isCurrent = m_follower.isEmpty() ? row.isCurrent : row.name == upstream;
                rows.append(row);
            }
        }
    }
    m_rows.setRows(rows);
    Q_EMIT changed();
}

QString BranchChoices::newName() const {
    const QString name = m_text.trimmed();
    return !m_git || !m_follower.isEmpty() || name.isEmpty() || isThere(name) || !isBranchName(name) ? QString() : name;
}

QString BranchChoices::problem() const {
    const QString name = m_text.trimmed();
    if (name.isEmpty() || !m_follower.isEmpty() || (!m_isCreating && m_rows.rowCount() > 0)) {
        return {};
    }
    if (isThere(name)) {
        return tr("There is a branch of this name.");
    }
    return isBranchName(name) ? QString() : tr("Git does not take this as a name.");
}

bool BranchChoices::choose(int row) {
    if (!m_git || row < 0 || row >= m_rows.rowCount()) {
        return false;
    }
    const BranchRow chosen = m_rows.rows()[row];
    if (!m_follower.isEmpty()) {
        if (!chosen.isCurrent) {
            m_git->setUpstream(m_follower, chosen.name);
        }
    } else if (chosen.isRemote) {
        // By its name alone it may be a branch of several remotes.
        m_git->switchToRemote(chosen.name);
    } else if (!chosen.isCurrent) {
        m_git->switchBranch(chosen.name);
    }
    return true;
}

bool BranchChoices::create() {
    const QString name = newName();
    if (name.isEmpty()) {
        return false;
    }
    m_git->createBranch(name);
    return true;
}

bool BranchChoices::unfollow() {
    if (!follows()) {
        return false;
    }
    m_git->setUpstream(m_follower, {});
    return true;
}

} // namespace orv
