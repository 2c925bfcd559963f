#include "OrvCore/ScratchFolder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

/// After which a folder that nobody holds is not just being made.
constexpr auto makingTime = 60s;

QString begin() {
    return u"orvlauncher-scratch-%1-"_s.arg(::getuid());
}

/// Not valid while somebody holds it.
UniqueFd takeLock(const QString& folder, int flags) {
    const QByteArray path = QFile::encodeName(folder + u"/lock"_s);
    UniqueFd lock(::open(path.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600));
    if (lock.isValid() && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        lock.reset();
    }
    return lock;
}

bool isLeft(const QFileInfo& folder) {
    const bool isOld = folder.lastModified() < QDateTime::currentDateTime().addDuration(-makingTime);
    const bool hasLock = QFileInfo::exists(folder.filePath() + u"/lock"_s);
    return isOld && folder.ownerId() == ::getuid() && (!hasLock || takeLock(folder.filePath(), 0).isValid());
}

void removeWhatIsLeft() {
    const QDir folders(QDir::tempPath());
    for (const QFileInfo& folder :
         folders.entryInfoList({begin() + u'*'}, QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks)) {
        if (isLeft(folder)) {
            QDir(folder.filePath()).removeRecursively();
        }
    }
}

} // namespace

ScratchFolder::ScratchFolder() : m_folder(QDir::tempPath() + u'/' + begin() + u"XXXXXX"_s) {
    removeWhatIsLeft();
    if (!m_folder.isValid()) {
        m_error = m_folder.errorString();
        return;
    }
    m_lock = takeLock(m_folder.path(), O_CREAT);
    if (!m_lock.isValid()) {
        m_error = qt_error_string();
    }
}

} // namespace orv
