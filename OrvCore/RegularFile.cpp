#include "OrvCore/RegularFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace orv {

UniqueFd RegularFile::open(int parent, const char* path, qint64* size, int flags) {
    // Without O_NONBLOCK the opening of a named pipe waits for a writer.
    const int allFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags;
    int descriptor = -1;
    do {
        descriptor = ::openat(parent, path, allFlags);
    } while (descriptor < 0 && errno == EINTR);
    UniqueFd file(descriptor);
    struct stat info{};
    if (!file.isValid() || ::fstat(file.get(), &info) != 0) {
        return {};
    }
    if (!S_ISREG(info.st_mode)) {
        file.reset();
        errno = EINVAL;
        return {};
    }
    if (size != nullptr) {
        *size = info.st_size;
    }
    return file;
}

std::optional<QByteArray> RegularFile::readUpTo(int file, qint64 limit) {
    constexpr qint64 step = 256 * 1024;
    QByteArray bytes;
    struct stat info{};
    if (::fstat(file, &info) == 0) {
        bytes.reserve(std::clamp<qint64>(info.st_size, 0, limit));
    }
    while (bytes.size() < limit) {
        const qsizetype filled = bytes.size();
        const qint64 room = std::min(limit - filled, std::max(step, bytes.capacity() - filled));
        bytes.resize(filled + room);
        const ssize_t count = ::read(file, bytes.data() + filled, static_cast<size_t>(room));
        const int code = errno;
        bytes.truncate(filled + std::max<ssize_t>(count, 0));
        if (count == 0) {
            break;
        }
        if (count < 0 && code != EINTR) {
            return std::nullopt;
        }
    }
    return bytes;
}

std::optional<QByteArray> RegularFile::prefix(const QString& path, qint64 bytes) {
    const UniqueFd file = open(QFile::encodeName(path).constData());
    return file.isValid() ? readUpTo(file.get(), bytes) : std::nullopt;
}

std::optional<QByteArray> RegularFile::read(const QString& path, qint64 limitBytes) {
    auto bytes = prefix(path, limitBytes + 1);
    return bytes && bytes->size() <= limitBytes ? std::move(bytes) : std::nullopt;
}

} // namespace orv
