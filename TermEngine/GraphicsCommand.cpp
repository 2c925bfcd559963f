#include "TermEngine/GraphicsCommand.h"

#include "TermEngine/Encoding_p.h"

#include <algorithm>
#include <charconv>

namespace term {
namespace {

constexpr std::string_view letterKeys = "adot";
constexpr std::string_view signedKeys = "zHV";

template <typename Number>
std::optional<uint32_t> whole(std::string_view text) {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(static_cast<uint32_t>(value)) : std::nullopt;
}

std::optional<uint32_t> valueOf(char key, std::string_view text) {
    if (letterKeys.find(key) != std::string_view::npos) {
        return text.size() == 1 ? std::optional(uint32_t{static_cast<uint8_t>(text[0])}) : std::nullopt;
    }
    return signedKeys.find(key) != std::string_view::npos ? whole<int32_t>(text) : whole<uint32_t>(text);
}

} // namespace

std::optional<GraphicsCommand> GraphicsCommand::parse(std::string_view body) {
    GraphicsCommand command;
    std::string_view control = takeField(body, ';');
    command.m_payload = body;
    while (!control.empty()) {
        std::string_view value = takeField(control, ',');
        const std::string_view key = takeField(value, '=');
        const bool isLetter = key.size() == 1 && ((key[0] >= 'a' && key[0] <= 'z') || (key[0] >= 'A' && key[0] <= 'Z'));
        const auto number = isLetter ? valueOf(key[0], value) : std::nullopt;
        if (!number) {
            return std::nullopt;
        }
        command.m_values[index(key[0])] = *number;
        command.m_present[index(key[0])] = true;
    }
    return command;
}

int GraphicsCommand::extent(char key) const {
    constexpr uint32_t largest = 1U << 28U;
    return static_cast<int>(std::min(number(key), largest));
}

bool GraphicsCommand::hasOnly(std::string_view keys) const {
    for (size_t key = 0; key < m_present.size(); ++key) {
        if (m_present[key] && keys.find(static_cast<char>(key)) == std::string_view::npos) {
            return false;
        }
    }
    return true;
}

GraphicsCommand GraphicsCommand::withoutPayload() const {
    GraphicsCommand copy = *this;
    copy.m_payload = {};
    return copy;
}

} // namespace term
