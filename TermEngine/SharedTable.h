#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace term {

/// Values by index, in blocks that copies share. A copy is for readers, on any thread: what it had when it was made
/// does not change in it. Values that are added go into the same blocks, where no reader of the copy looks; one that
/// takes the place of another goes into a block of the original's own.
template <typename Value>
class SharedTable {
public:
    static constexpr std::size_t blockSize = 256;

    SharedTable() = default;
    SharedTable(const SharedTable& other) : m_blocks(other.m_blocks), m_size(other.m_size) {
        m_isShared.assign(m_blocks.size(), true);
        other.m_isShared = m_isShared;
    }
    SharedTable& operator=(const SharedTable&) = delete;

    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] const Value& operator[](std::size_t index) const {
        return (*m_blocks[index / blockSize])[index % blockSize];
    }
    void add(const Value& value) {
        if (m_size % blockSize == 0) {
            m_blocks.push_back(std::make_shared<Block>());
            m_isShared.push_back(false);
        }
        (*m_blocks.back())[m_size++ % blockSize] = value;
    }
    void replace(std::size_t index, const Value& value) {
        const std::size_t block = index / blockSize;
        if (m_isShared[block]) {
            m_blocks[block] = std::make_shared<Block>(*m_blocks[block]);
            m_isShared[block] = false;
        }
        (*m_blocks[block])[index % blockSize] = value;
    }
    /// Whether what `copy` reads here is what it reads in itself.
    [[nodiscard]] bool hasBlocksOf(const SharedTable& copy) const { return m_blocks == copy.m_blocks; }

private:
    using Block = std::array<Value, blockSize>;
    std::vector<std::shared_ptr<Block>> m_blocks;
    mutable std::vector<bool> m_isShared; ///< by block: a copy has it too
    std::size_t m_size = 0;
};

} // namespace term
