#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace term {

/// A ring of elements that can be moved, indexed from the oldest. Memory grows with what is in it, up to the maximum.
template <typename Element>
class CircularList {
public:
    explicit CircularList(std::size_t maxLength) : m_maxLength(maxLength) {}

    [[nodiscard]] std::size_t size() const { return m_count; }
    [[nodiscard]] std::size_t maxLength() const { return m_maxLength; }
    [[nodiscard]] bool isFull() const { return m_count == m_maxLength; }
    [[nodiscard]] Element& operator[](std::size_t index) { return m_array[physical(index)]; }
    [[nodiscard]] const Element& operator[](std::size_t index) const { return m_array[physical(index)]; }

    /// Appends; of a full ring the oldest element goes first, into what is returned.
    Element push(Element element) {
        if (isFull()) {
            Element oldest = std::exchange((*this)[0], std::move(element));
            m_startIndex = m_startIndex + 1 == m_array.size() ? 0 : m_startIndex + 1;
            return oldest;
        }
        if (m_count == m_array.size()) {
            setCapacity(std::min(m_maxLength, std::max<std::size_t>(16, m_count * 2)));
        }
        ++m_count;
        (*this)[m_count - 1] = std::move(element);
        return Element();
    }
    /// Of a full ring: the oldest element becomes the newest, where it stands.
    Element& turn() {
        Element& oldest = (*this)[0];
        m_startIndex = m_startIndex + 1 == m_array.size() ? 0 : m_startIndex + 1;
        return oldest;
    }
    Element pop() {
        Element last = std::move((*this)[m_count - 1]);
        --m_count;
        return last;
    }
    void dropOldest(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            (*this)[i] = Element();
        }
        m_startIndex = m_array.empty() ? 0 : (m_startIndex + count) % m_array.size();
        m_count -= count;
    }
    /// The oldest go when there are too many.
    void setMaxLength(std::size_t maxLength) {
        if (m_count > maxLength) {
            dropOldest(m_count - maxLength);
        }
        m_maxLength = maxLength;
        if (m_array.size() > maxLength) {
            setCapacity(maxLength);
        }
    }
    /// The element at `from` comes to stand at `to`; those in between move by one.
    void moveElement(std::size_t from, std::size_t to) {
        const std::size_t lowest = m_startIndex + std::min(from, to);
        if (const std::size_t begin = lowest >= m_array.size() ? lowest - m_array.size() : lowest;
            begin + (std::max(from, to) - std::min(from, to)) < m_array.size()) {
            // In one piece. To swap moves an element with a load and a store, an assignment looks at what it replaces.
            const auto first = m_array.begin() + static_cast<std::ptrdiff_t>(begin);
            if (from < to) {
                const auto last = first + static_cast<std::ptrdiff_t>(to - from);
                Element moved = std::move(*first);
                for (auto at = last; at != first; --at) {
                    std::swap(moved, *at);
                }
                *first = std::move(moved);
            } else {
                const auto last = first + static_cast<std::ptrdiff_t>(from - to);
                Element moved = std::move(*last);
                for (auto at = first; at != last; ++at) {
                    std::swap(moved, *at);
                }
                *last = std::move(moved);
            }
            return;
        }
        Element moved = std::move((*this)[from]);
        for (; from < to; ++from) {
            (*this)[from] = std::move((*this)[from + 1]);
        }
        for (; from > to; --from) {
            (*this)[from] = std::move((*this)[from - 1]);
        }
        (*this)[to] = std::move(moved);
    }
    /// As std::rotate: what stands from `middle` to `end` comes before what stands from `first` to `middle`.
    void rotate(std::size_t first, std::size_t middle, std::size_t end) {
        reverse(first, middle);
        reverse(middle, end);
        reverse(first, end);
    }
    void assign(std::vector<Element> elements) {
        m_array = std::move(elements);
        m_count = m_array.size();
        m_startIndex = 0;
    }

private:
    [[nodiscard]] std::size_t physical(std::size_t index) const {
        const std::size_t at = m_startIndex + index;
        return at >= m_array.size() ? at - m_array.size() : at;
    }
    void reverse(std::size_t first, std::size_t end) {
        for (; first + 1 < end; ++first) {
            std::swap((*this)[first], (*this)[--end]);
        }
    }
    void setCapacity(std::size_t capacity) {
        std::vector<Element> array(capacity);
        for (std::size_t i = 0; i < m_count; ++i) {
            array[i] = std::move((*this)[i]);
        }
        m_array = std::move(array);
        m_startIndex = 0;
    }

    std::vector<Element> m_array;
    std::size_t m_startIndex = 0;
    std::size_t m_count = 0;
    std::size_t m_maxLength;
};

} // namespace term
