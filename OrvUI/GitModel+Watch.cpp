#include "OrvCore/FileStamp.h"
#include "OrvGit/GitPath.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/Pool_p.h"

#include <QCryptographicHash>
#include <QElapsedTimer>

#include <algorithm>
#include <array>

using namespace std::chrono_literals;

namespace orv {
namespace {

/// Of more changed files, a further edit of one behind these is not noticed.
constexpr qsizetype mostStamps = 1000;
/// How often the time that a look takes may pass until the next one: looks take a twentieth of one core at most.
constexpr int restOfLooks = 20;
/// The same of a whole reading, after which one waits for the next change.
constexpr int restOfReadings = 3;

} // namespace

QByteArray GitModel::markOf(const QString& repository, const RepoStatus& status) {
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const auto add = [&hash](const QString& text) {
        hash.addData(QByteArrayView(reinterpret_cast<const char*>(text.utf16()), (text.size() + 1) * 2));
    };
    qsizetype stamps = 0;
    for (const FileChange& change : status.changes) {
        add(change.path);
        const std::array letters{change.index, change.worktree};
        hash.addData(QByteArrayView(letters.data(), letters.size()));
        if (stamps++ < mostStamps) {
            const FileStamp stamp = FileStamp::of(repository + u'/' + change.path);
            const std::array facts{stamp.size, stamp.modifiedNs, stamp.changedNs, static_cast<qint64>(stamp.inode)};
            hash.addData(QByteArrayView(reinterpret_cast<const char*>(facts.data()), sizeof(facts)));
        }
    }
    return hash.result();
}

void GitModel::setLookedAt(bool isLookedAt) {
    ORV_ASSERT_MAIN_THREAD();
    if (isLookedAt == m_isLookedAt) {
        return;
    }
    m_isLookedAt = isLookedAt;
    lookLater();
    Q_EMIT lookedAtChanged();
}

void GitModel::lookLater() {
    if (!m_isLookedAt || m_loading || m_state != State::ready) {
        m_nextLook.stop();
    } else if (!m_isLooking && !m_nextLook.isActive()) {
        m_nextLook.start(std::max(lookInterval, m_rest));
    }
}

void GitModel::restAfterReading(std::chrono::milliseconds time) {
    m_rest = time * restOfReadings;
    lookLater();
}

/// Nothing tells of a file that is edited in any folder of a work tree, short of a watch on each of them.
void GitModel::look() {
    struct Look {
        QByteArray mark; ///< empty when git failed
        std::chrono::milliseconds time;
    };
    m_isLooking = true;
    const auto work = [reader = m_reader, repository = m_repository] {
        QElapsedTimer clock;
        clock.start();
        const auto status = reader.status(repository);
        return Look{status ? markOf(repository, *status) : QByteArray(), std::chrono::milliseconds(clock.elapsed())};
    };
    onFinished(runIn(m_overview.pool(), work), this, [this, at = m_generation](const Look& look) {
        m_isLooking = false;
        m_rest = look.time * restOfLooks;
        // What is being read, or was while this went on, is newer.
        if (at == m_generation && !m_loading && look.mark != m_mark && m_isLookedAt) {
            m_overview.refresh(m_project.id);
            refresh();
        }
        lookLater();
    });
}

} // namespace orv
