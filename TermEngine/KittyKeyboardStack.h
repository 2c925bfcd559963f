#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace term {

/// Progressive enhancement flags of kitty's keyboard protocol.
struct KittyKeyboardFlags {
    enum Bit : uint8_t {
        disambiguate = 1,
        reportEvents = 2,
        reportAlternates = 4,
        reportAllKeys = 8,
        reportText = 16,
        all = 31,
    };
    uint8_t bits = 0;

    [[nodiscard]] constexpr bool has(Bit wanted) const { return (bits & wanted) != 0; }
    bool operator==(const KittyKeyboardFlags&) const = default;
};

/// The flags of one screen, with those that programs put aside.
class KittyKeyboardStack {
public:
    static constexpr size_t capacity = 16;

    [[nodiscard]] KittyKeyboardFlags current() const { return m_current; }
    /// CSI > flags u. When it is full, the oldest ones fall out.
    void push(int flags) {
        if (m_count == capacity) {
            std::copy(m_saved.begin() + 1, m_saved.end(), m_saved.begin());
            --m_count;
        }
        m_saved[m_count++] = m_current;
        m_current = valid(flags);
    }
    /// CSI < count u. Whoever takes more than there is, is left without any flag.
    void pop(int count) {
        for (; count > 0; --count) {
            if (m_count == 0) {
                m_current = {};
                return;
            }
            m_current = m_saved[--m_count];
        }
    }
    /// CSI = flags ; mode u, with mode 1 (replace), 2 (add) or 3 (take away); others do nothing.
    void set(int flags, int mode) {
        const uint8_t given = valid(flags).bits;
        switch (mode) {
        case 1:
            m_current.bits = given;
            break;
        case 2:
            m_current.bits |= given;
            break;
        case 3:
            m_current.bits &= static_cast<uint8_t>(~given);
            break;
        default:
            break;
        }
    }
    void reset() { *this = {}; }

private:
    [[nodiscard]] static KittyKeyboardFlags valid(int flags) {
        return {static_cast<uint8_t>(flags & KittyKeyboardFlags::all)};
    }

    KittyKeyboardFlags m_current;
    std::array<KittyKeyboardFlags, capacity> m_saved{};
    size_t m_count = 0;
};

} // namespace term
