#include "OrvCore/StoreWatcher.h"

#include "OrvCore/Async.h"
#include "OrvCore/StoreFile.h"

#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <tuple>

#include <sys/stat.h>

using namespace std::chrono_literals;

namespace orv {

namespace {

/// A file written in place is truncated first; its content follows within this time.
constexpr auto settleTime = 20ms;

qint64 nanoseconds(const timespec& time) {
    return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

} // namespace

StoreWatcher::Stamp StoreWatcher::Stamp::of(const QString& path) {
    struct stat info{};
    if (::stat(QFile::encodeName(path), &info) != 0) {
        return {};
    }
#ifdef Q_OS_MACOS
    const timespec modified = info.st_mtimespec;
    const timespec changed = info.st_ctimespec;
#else
    const timespec modified = info.st_mtim;
    const timespec changed = info.st_ctim;
#endif
    return {
        .device = static_cast<quint64>(info.st_dev),
        .inode = static_cast<quint64>(info.st_ino),
        .size = info.st_size,
        .modifiedNs = nanoseconds(modified),
        .changedNs = nanoseconds(changed),
    };
}

StoreWatcher::StoreWatcher(const QStringList& filePaths, QObject* parent) : QObject(parent) {
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleTime);
    const auto settle = [this] { m_settle.start(); };
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, settle);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, settle);
    connect(&m_settle, &QTimer::timeout, this, &StoreWatcher::compare);
    for (const QString& path : filePaths) {
        // A folder that can't be made is an answer of the first write.
        std::ignore = StoreIO::makeFolder(QFileInfo(path).path());
        m_stamps.insert(path, {});
    }
    watch();
    for (auto stamp = m_stamps.begin(); stamp != m_stamps.end(); ++stamp) {
        stamp.value() = Stamp::of(stamp.key());
    }
}

QStringList StoreWatcher::wantedPaths() const {
    QStringList wanted;
    for (auto stamp = m_stamps.cbegin(); stamp != m_stamps.cend(); ++stamp) {
        // What a symbolic link leads to is written beside there, and may be missing yet.
        for (const QString& place : {stamp.key(), StoreIO::target(stamp.key())}) {
            QString folder = QFileInfo(place).path();
            while (!QFileInfo(folder).isReadable() && folder.size() > 1) {
                folder = QFileInfo(folder).path();
            }
            wanted.append(folder);
        }
        if (QFileInfo(stamp.key()).isReadable()) {
            wanted.append(stamp.key());
        }
    }
    wanted.removeDuplicates();
    return wanted;
}

void StoreWatcher::watch() {
    QStringList wanted;
    // Again when something came up before its folder was watched.
    while (wanted != wantedPaths()) {
        wanted = wantedPaths();
        const QStringList watched = m_watcher.files() + m_watcher.directories();
        for (const QString& path : watched) {
            if (!wanted.contains(path)) {
                m_watcher.removePath(path);
            }
        }
        for (const QString& path : wanted) {
            if (!watched.contains(path)) {
                m_watcher.addPath(path);
            }
        }
    }
}

void StoreWatcher::compare() {
    ORV_ASSERT_MAIN_THREAD();
    watch();
    QStringList differing;
    for (auto stamp = m_stamps.begin(); stamp != m_stamps.end(); ++stamp) {
        Stamp now = Stamp::of(stamp.key());
        if (now.device != stamp->device || now.inode != stamp->inode) {
            // A watch stays with the old file while that has another name, ".corrupt" for one.
            m_watcher.removePath(stamp.key());
            watch();
            now = Stamp::of(stamp.key());
        }
        if (now != stamp.value()) {
            stamp.value() = now;
            differing.append(stamp.key());
        }
    }
    for (const QString& path : differing) {
        Q_EMIT changed(path);
    }
}

} // namespace orv
