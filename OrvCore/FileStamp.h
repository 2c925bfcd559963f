#pragma once

#include <QFile>
#include <QString>

#include <sys/stat.h>

namespace orv {

/// Tells two states of a file or folder apart without reading it; all zero for none.
struct FileStamp {
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 modifiedNs = 0;
    qint64 changedNs = 0;

    bool operator==(const FileStamp&) const = default;

    /// Of what a symbolic link leads to.
    [[nodiscard]] static FileStamp of(const QString& path) {
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

private:
    static qint64 nanoseconds(const timespec& time) { return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec; }
};

} // namespace orv
