#pragma once

#include <mutex>

namespace term {

/// A value that is used under its lock alone.
template <typename Value>
class Locked {
public:
    /// What `use` makes of the value. It must not come back here.
    template <typename Use>
    auto with(const Use& use) {
        const std::scoped_lock lock(m_mutex);
        return use(m_value);
    }
    template <typename Use>
    auto with(const Use& use) const {
        const std::scoped_lock lock(m_mutex);
        return use(m_value);
    }

private:
    mutable std::mutex m_mutex;
    Value m_value{};
};

} // namespace term
