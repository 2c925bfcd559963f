#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>

namespace term {

/// The bytes between the thread that reads and those who take: a fixed number of chunks in one piece of memory. Every
/// call is made under one lock of the owner; the memory of a chunk is used outside of it, by whoever was given it.
class ChunkRing {
public:
    static constexpr size_t chunkBytes = 64 * 1024;
    static constexpr size_t chunkCount = 16;

    ChunkRing() : m_storage(std::make_unique_for_overwrite<uint8_t[]>(chunkBytes * chunkCount)) {}

    /// Where the next bytes go: behind the ones of the newest chunk while nobody has taken it, so that small reads come
    /// together. Empty when all is full.
    [[nodiscard]] std::span<uint8_t> room() {
        if (m_count == chunkCount) {
            return {};
        }
        return isOpen() ? chunk(newest()).subspan(m_lens[newest()]) : chunk(m_head);
    }
    /// `written` is the beginning of what room() gave. Its chunk may have been taken since: then it moves to the next.
    void add(std::span<const uint8_t> written) {
        if (isOpen() && written.data() == chunk(newest()).data() + m_lens[newest()]) {
            m_lens[newest()] += written.size();
            return;
        }
        if (written.data() != chunk(m_head).data()) {
            std::memmove(chunk(m_head).data(), written.data(), written.size());
        }
        m_lens[m_head] = written.size();
        m_head = next(m_head);
        ++m_count;
    }

    struct Slice {
        size_t index = 0;
        std::span<const uint8_t> bytes;
    };
    /// The oldest chunk that nobody has taken. It is the taker's until released.
    [[nodiscard]] std::optional<Slice> take() {
        if (m_count == m_taken) {
            return std::nullopt;
        }
        const size_t index = (m_tail + m_taken++) % chunkCount;
        return Slice{index, chunk(index).first(m_lens[index])};
    }
    void release(size_t index) {
        m_lens[index] = 0;
        while (m_taken > 0 && m_lens[m_tail] == 0) {
            m_tail = next(m_tail);
            --m_taken;
            --m_count;
        }
        if (m_count == 0) {
            m_head = m_tail = 0; // a quiet terminal keeps using the same memory
        }
    }

private:
    /// Whether the newest chunk takes more.
    [[nodiscard]] bool isOpen() const { return m_count > m_taken && m_lens[newest()] < chunkBytes; }
    [[nodiscard]] std::span<uint8_t> chunk(size_t index) { return {m_storage.get() + index * chunkBytes, chunkBytes}; }
    [[nodiscard]] size_t newest() const { return (m_head + chunkCount - 1) % chunkCount; }
    [[nodiscard]] static size_t next(size_t index) { return (index + 1) % chunkCount; }

    std::unique_ptr<uint8_t[]> m_storage;
    std::array<size_t, chunkCount> m_lens{};
    size_t m_head = 0;  ///< the chunk that is filled next
    size_t m_tail = 0;  ///< the oldest chunk
    size_t m_count = 0; ///< chunks with bytes
    size_t m_taken = 0; ///< of these, from the tail on, the ones that were taken
};

} // namespace term
