#pragma once

#include <QString>

#include <algorithm>
#include <optional>
#include <utility>

namespace orv {

/// The spellings of an enumeration that is stored. A specialisation holds
/// `static constexpr std::array table{std::pair{E::first, "first"_L1}, ...}`, every case once, in declaration order.
template <typename E>
struct StoredNames {};

template <typename E>
concept StoredEnum = requires { StoredNames<E>::table; };

/// The stored spelling of a case.
template <StoredEnum E>
[[nodiscard]] QString rawValue(E value) {
    const auto& table = StoredNames<E>::table;
    const auto row = std::ranges::find(table, value, [](const auto& entry) { return entry.first; });
    Q_ASSERT_X(row != table.end(), "rawValue", "the table of spellings lacks a case");
    return row->second;
}

/// The case of exactly that spelling (case-sensitive).
template <StoredEnum E>
[[nodiscard]] std::optional<E> fromRawValue(QStringView raw) {
    const auto& table = StoredNames<E>::table;
    const auto row = std::ranges::find_if(table, [raw](const auto& entry) { return raw == entry.second; });
    return row == table.end() ? std::nullopt : std::optional(row->first);
}

} // namespace orv
