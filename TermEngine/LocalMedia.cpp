#include "TermEngine/LocalMedia_p.h"
#include "TermEngine/UniqueFd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace term {
namespace {

/// With all links resolved; empty where there is no such file.
std::string resolved(const std::string& path) {
    const auto release = [](char* text) { std::free(text); }; // NOLINT: realpath(3) allocates so
    const std::unique_ptr<char, decltype(release)> real(::realpath(path.c_str(), nullptr), release);
    return real ? std::string(real.get()) : std::string();
}

bool isBelow(const std::string& path, std::string_view folder) {
    return !folder.empty() && path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

bool isSystemFile(const std::string& path) {
    const bool isDevice = isBelow(path, "/dev") && !isBelow(path, "/dev/shm");
    return isDevice || isBelow(path, "/proc") || isBelow(path, "/sys");
}

bool isTemporaryImage(const std::string& path) {
    const char* chosen = std::getenv("TMPDIR"); // NOLINT(concurrency-mt-unsafe)
    const bool isTemporary = isBelow(path, "/tmp") || isBelow(path, "/var/tmp") || isBelow(path, "/dev/shm") ||
                             (chosen != nullptr && isBelow(path, resolved(chosen)));
    return isTemporary && path.find("tty-graphics-protocol") != std::string::npos;
}

std::expected<std::vector<uint8_t>, std::string_view> readPart(
    const UniqueFd& fd, size_t offset, size_t size, size_t limitBytes) {
    struct stat status{};
    if (!fd.isValid() || ::fstat(fd.get(), &status) != 0) {
        return std::unexpected("EBADF:can't be opened");
    }
    if (!S_ISREG(status.st_mode)) {
        return std::unexpected("EINVAL:no regular file");
    }
    const auto whole = static_cast<size_t>(status.st_size);
    const size_t rest = whole - std::min(whole, offset);
    const size_t wanted = size == 0 ? rest : std::min(size, rest);
    if (wanted > limitBytes) {
        return std::unexpected("EFBIG:too much data");
    }
    std::vector<uint8_t> data(wanted);
    size_t filled = 0;
    while (filled < wanted) {
        const ssize_t count =
            ::pread(fd.get(), data.data() + filled, wanted - filled, static_cast<off_t>(offset + filled));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            break;
        }
        filled += count > 0 ? static_cast<size_t>(count) : 0;
    }
    data.resize(filled);
    return data;
}

} // namespace

std::expected<std::vector<uint8_t>, std::string_view> readLocalMedium(
    LocalMedium medium, const std::string& name, size_t offset, size_t size, size_t limitBytes) {
    if (name.find('\0') != std::string::npos) {
        return std::unexpected("EINVAL:bad name");
    }
    if (medium == LocalMedium::sharedMemory) {
        const UniqueFd fd(::shm_open(name.c_str(), O_RDONLY | O_CLOEXEC, 0));
        auto data = readPart(fd, offset, size, limitBytes);
        if (fd.isValid()) {
            ::shm_unlink(name.c_str());
        }
        return data;
    }
    const std::string path = resolved(name);
    if (path.empty() || !name.starts_with('/') || isSystemFile(path)) {
        return std::unexpected("EBADF:can't be opened");
    }
    // A pipe would block.
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW));
    auto data = readPart(fd, offset, size, limitBytes);
    if (medium == LocalMedium::temporaryFile && isTemporaryImage(path)) {
        ::unlink(path.c_str());
    }
    return data;
}

} // namespace term
