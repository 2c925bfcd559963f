#include "FuzzInput.h"
#include "TermEngine/InputEncoder.h"
#include "TermEngine/KeyEncoder.h"
#include "TermEngine/MouseEncoder.h"

namespace {

/// A paste may not end itself, nor hold what acts on a terminal.
void requireSafePaste(std::string_view text) {
    using namespace std::string_view_literals;
    const std::string plain = term::encodePaste(text, term::PasteMode::plain);
    require(plain.size() <= text.size());
    require(std::ranges::all_of(plain, [](char letter) {
        return static_cast<uint8_t>(letter) >= 0x20 ? letter != 0x7F : letter == '\t' || letter == '\r';
    }));
    const std::string bracketed = term::encodePaste(text, term::PasteMode::bracketed);
    require(bracketed.starts_with("\x1b[200~") && bracketed.find("\x1b[201~") == bracketed.size() - 6);
    require(bracketed.find('\x1b', 1) == bracketed.size() - 6);
}

} // namespace

/// A key, a turn of the mouse, and a paste, under modes from the first bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const uint8_t flags = input.byte();
    const uint8_t more = input.byte();
    const term::KeyModes modes{
        .applicationCursorKeys = (flags & 1U) != 0,
        .applicationKeypad = (flags & 2U) != 0,
        .numLockOverridesKeypad = (flags & 4U) != 0,
        .backarrowSendsBackspace = (flags & 8U) != 0,
        .enterSendsLineFeed = (flags & 16U) != 0,
        .altSendsEscape = (flags & 32U) != 0,
        .eightBitMeta = (flags & 64U) != 0,
        .deleteSendsDel = (flags & 128U) != 0,
        .modifyOtherKeys = static_cast<uint8_t>(more % 3),
        .kitty = {static_cast<uint8_t>(more >> 3U)}};
    term::KeyEvent event{
        .key = static_cast<term::Key>(input.byte() % 2 == 0 ? 0 : 57344 + input.number() % 128),
        .code = input.number() % 0x120000,
        .shifted = input.number() % 0x120000,
        .base = input.number() % 0x120000,
        .modifiers = {input.byte()},
        .type = static_cast<term::KeyEventType>(1 + input.byte() % 3)};
    event.text = input.take(input.byte() % 16);
    const std::string sent = term::encodeKey(event, modes);
    require(sent.size() <= 256 + event.text.size() * 8);
    require(event.type != term::KeyEventType::release || modes.kitty.bits != 0 || sent.empty());

    const term::MouseEvent mouse{
        static_cast<term::MouseEventType>(input.byte() % 3),
        static_cast<term::MouseButton>(input.byte()),
        static_cast<int>(input.number()),
        static_cast<int>(input.number()),
        static_cast<int>(input.number()),
        static_cast<int>(input.number()),
        {input.byte()}};
    const std::string report = term::encodeMouse(
        mouse, static_cast<term::MouseTracking>(input.byte() % 5), static_cast<term::MouseEncoding>(input.byte() % 5));
    require(report.empty() || (report.starts_with("\x1b[") && report.size() <= 32));
    requireSafePaste(input.take(size));
    return 0;
}
