#include "OrvCore/StoreWatcher.h"

#include "OrvCore/Async.h"
#include "OrvCore/StoreFile.h"

#include <QFileInfo>

#include <chrono>
#include <tuple>

using namespace std::chrono_literals;

namespace orv {

namespace {

/// A file written in place is truncated first; its content follows within this time.
constexpr auto settleTime = 20ms;

} // namespace

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
        stamp.value() = FileStamp::of(stamp.key());
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
        FileStamp now = FileStamp::of(stamp.key());
        if (now.device != stamp->device || now.inode != stamp->inode) {
            // A watch stays with the old file while that has another name, ".corrupt" for one.
            m_watcher.removePath(stamp.key());
            watch();
            now = FileStamp::of(stamp.key());
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
