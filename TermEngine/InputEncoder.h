#pragma once

#include "TermEngine/KeyEncoder.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace term {

enum class FocusChange : uint8_t { lost, gained };
enum class PasteMode : uint8_t { plain, bracketed };
enum class ScrollDirection : uint8_t { up, down };

/// What a change of the focus sends under mode 1004.
[[nodiscard]] std::string encodeFocus(FocusChange change, ControlBits controls = ControlBits::seven);

struct PasteControlBytes {
    std::string begin = "\x1b[200~"; ///< of a bracketed paste
    std::string end = "\x1b[201~";
    /// Characters that the line discipline acts upon, beside the control characters
    /// (`PseudoTerminalHelpers::controlBytes`).
    std::string lineDiscipline{};
    bool operator==(const PasteControlBytes&) const = default;
};

/// What pasted text sends. Line ends become CR, as from the Enter key; what would control the terminal, its line
/// discipline or a program becomes a space, and the end of a bracketed paste can't be part of it.
[[nodiscard]] std::string encodePaste(std::string_view text, PasteMode mode, const PasteControlBytes& controls = {});

/// What a turn of the wheel over the alternate screen sends under mode 1007: cursor keys, at most 100.
[[nodiscard]] std::string encodeAlternateScroll(ScrollDirection direction, int lines, const KeyModes& modes);

} // namespace term
