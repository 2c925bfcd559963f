#pragma once

#include "OrvUI/AgentModels.h"

#include <optional>

namespace orv {

/// What stands in a picker at a place; empty: nothing does.
template <typename Table>
auto at(const Table& table, int index) -> std::optional<typename Table::value_type> {
    const bool isThere = index >= 0 && index < static_cast<int>(table.size());
    return isThere ? std::optional(table[static_cast<size_t>(index)]) : std::nullopt;
}

} // namespace orv
