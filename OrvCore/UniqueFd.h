#pragma once

#include <utility>

#include <unistd.h>

namespace orv {

/// Owns one file descriptor and closes it once.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) noexcept : m_fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : m_fd(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        reset(other.release());
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { reset(); }

    [[nodiscard]] int get() const noexcept { return m_fd; }
    [[nodiscard]] bool isValid() const noexcept { return m_fd >= 0; }
    [[nodiscard]] int release() noexcept { return std::exchange(m_fd, -1); }
    void reset(int fd = -1) noexcept {
        if (const int old = std::exchange(m_fd, fd); old >= 0 && old != fd) {
            ::close(old);
        }
    }

private:
    int m_fd = -1;
};

} // namespace orv
