#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace term {

/// What a program asks to be shown on the desktop.
struct NotificationRequest {
    std::string identifier{}; ///< of OSC 99, of characters that may be sent back; "0" where none was given
    std::string title{};
    std::string body{};
    bool focuses = true;  ///< a click brings the terminal to the front
    bool reports = false; ///< a click is reported to the program

    bool operator==(const NotificationRequest&) const = default;
};

/// Puts notifications together that come in pieces (OSC 99 of kitty, "Desktop notifications"). Of unfinished ones the
/// last 16 are kept.
class NotificationAssembler {
public:
    /// `payload` begins behind "99;". A notification, once it is complete.
    [[nodiscard]] std::optional<NotificationRequest> append(std::string_view payload);
    void reset() { m_unfinished.clear(); }

private:
    std::deque<NotificationRequest> m_unfinished;
};

/// OSC 777 behind "777;": notify ; title ; body
[[nodiscard]] std::optional<NotificationRequest> parseUrxvtNotification(std::string_view payload);
/// OSC 9 behind "9;": a text. The forms of ConEmu, which begin with a number (OSC 9;4 among them), are none.
[[nodiscard]] std::optional<NotificationRequest> parseITermNotification(std::string_view payload);

} // namespace term
