#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace term::detail {

/// The front of a text up to a separator, which goes too; the whole of it without one.
inline std::string_view cutAt(std::string_view& text, char separator) {
    const std::size_t at = text.find(separator);
    const std::string_view front = text.substr(0, at);
    text = at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
    return front;
}

/// A whole text that is a decimal number.
inline std::optional<int> numberOf(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

} // namespace term::detail
