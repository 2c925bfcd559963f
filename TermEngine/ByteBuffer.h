#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>

namespace term {

/// Bytes that grow at their end. Large ones grow without being copied, where the C library can move pages.
class ByteBuffer {
public:
    ByteBuffer() = default;
    ByteBuffer(ByteBuffer&& other) noexcept
        : m_bytes(std::move(other.m_bytes)),
          m_size(std::exchange(other.m_size, 0)),
          m_capacity(std::exchange(other.m_capacity, 0)) {}
    ByteBuffer& operator=(ByteBuffer&& other) noexcept {
        m_bytes = std::move(other.m_bytes);
        m_size = std::exchange(other.m_size, 0);
        m_capacity = std::exchange(other.m_capacity, 0);
        return *this;
    }

    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] bool empty() const { return m_size == 0; }
    [[nodiscard]] std::size_t capacity() const { return m_capacity; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {m_bytes.get(), m_size}; }

    void append(std::span<const std::uint8_t> more) {
        if (more.empty()) {
            return;
        }
        if (m_size + more.size() > m_capacity) {
            reserve(std::max({m_capacity * 2, m_size + more.size(), std::size_t{256}}));
        }
        std::memcpy(m_bytes.get() + m_size, more.data(), more.size());
        m_size += more.size();
    }
    /// `count` bytes from `first` on go; there are so many.
    void erase(std::size_t first, std::size_t count) {
        std::memmove(m_bytes.get() + first, m_bytes.get() + first + count, m_size - first - count);
        m_size -= count;
    }
    void clear() { m_size = 0; }
    void release() { *this = ByteBuffer(); }

private:
    struct Free {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };
    void reserve(std::size_t capacity) {
        void* const moved = std::realloc(m_bytes.get(), capacity);
        if (moved == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(m_bytes.release());
        m_bytes.reset(static_cast<std::uint8_t*>(moved));
        m_capacity = capacity;
    }

    std::unique_ptr<std::uint8_t, Free> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

} // namespace term
