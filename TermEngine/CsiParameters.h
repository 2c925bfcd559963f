#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace term {

/// The parameters of a control sequence: at least one, since an empty list is one parameter of value 0.
struct CsiParameters {
    static constexpr int maximumCount = 24;
    static constexpr std::int32_t maximumValue = 65535;

    std::array<std::int32_t, maximumCount> values{};
    int count = 1;
    /// Bit i: a ':' ended parameter i, so parameter i + 1 is a sub-parameter of it.
    std::uint64_t colonMask = 0;
    /// There were more parameters than are kept.
    bool limitExceeded = false;

    /// 0 for one that is not there.
    [[nodiscard]] std::int32_t at(int index) const {
        return index < count ? values[static_cast<std::size_t>(index)] : 0;
    }
    /// For the functions where none and 0 mean 1.
    [[nodiscard]] std::int32_t atLeastOne(int index) const { return at(index) < 1 ? 1 : at(index); }
    [[nodiscard]] bool endsWithColon(int index) const { return ((colonMask >> index) & 1) != 0; }
    /// How many parameters from this one on belong together, sub-parameters included.
    [[nodiscard]] int groupSize(int index) const {
        int size = 1;
        while (index + size < count && endsWithColon(index + size - 1)) {
            ++size;
        }
        return size;
    }

    void clear() {
        values[0] = 0;
        count = 1;
        colonMask = 0;
        limitExceeded = false;
    }
    [[nodiscard]] std::int32_t last() const { return values[static_cast<std::size_t>(count - 1)]; }
    /// Without effect on parameters that are too many.
    void setLast(std::int32_t value) {
        if (!limitExceeded) {
            values[static_cast<std::size_t>(count - 1)] = value;
        }
    }
    void putDigit(int digit) { setLast(std::min(last() * 10 + digit, maximumValue)); }
    void putSeparator(bool colon) {
        if (limitExceeded || count == maximumCount) {
            limitExceeded = true;
            return;
        }
        colonMask |= std::uint64_t{colon} << (count - 1);
        values[static_cast<std::size_t>(count++)] = 0;
    }
};

} // namespace term
