#pragma once

#include "TermEngine/Base64.h"
#include "TermEngine/TerminalOptions.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace term {

enum class ClipboardLocation : uint8_t { clipboard, primary };
/// The word of a status in a reply.
enum class KittyClipboardStatus : uint8_t { ok, done, invalid, notSupported, notPermitted, busy, failed };

/// One representation of what is on a clipboard.
struct ClipboardData {
    std::string mimeType{};
    std::vector<uint8_t> bytes{};
    bool operator==(const ClipboardData&) const = default;
};

/// What a program wants of the clipboard. The host answers it with one of the functions below, with its `id`.
struct KittyClipboardRead {
    std::string id{};
    ClipboardLocation location = ClipboardLocation::clipboard;
    bool wantsTypes = false; ///< the list of what there is ("."), perhaps beside some of it
    std::vector<std::string> mimeTypes{};
    std::string name{};     ///< by which the program may be shown to the user
    std::string password{}; ///< that stands for a permission given before
    bool needsPermission = true;
    bool operator==(const KittyClipboardRead&) const = default;
};
struct KittyClipboardWrite {
    std::string id{};
    ClipboardLocation location = ClipboardLocation::clipboard;
    std::vector<ClipboardData> data{};
    std::map<std::string, std::string> aliases{}; ///< further types, and the one whose data they have
    std::string name{};
    std::string password{};
    bool needsPermission = true;
    bool operator==(const KittyClipboardWrite&) const = default;
};

/// kitty's clipboard protocol (OSC 5522), between a program that speaks in pieces and a host that has a clipboard.
class KittyClipboard {
public:
    explicit KittyClipboard(const TerminalOptions& options);

    struct Outcome {
        /// Payloads of OSC strings to send back, "5522;..." each.
        std::vector<std::string> replies{};
        std::optional<KittyClipboardRead> read{};
        std::optional<KittyClipboardWrite> write{};
    };
    /// `payload` begins behind "5522;".
    Outcome handle(std::string_view payload);
    void reset() { m_writing.reset(); }

    /// The answer to a read that is granted: `types` is what there is, `data` what was asked for of it.
    [[nodiscard]] static std::vector<std::string> answer(
        const KittyClipboardRead& read, const std::vector<std::string>& types, const std::vector<ClipboardData>& data);
    [[nodiscard]] static std::string refuse(const KittyClipboardRead& read, KittyClipboardStatus status);
    [[nodiscard]] static std::string answer(const KittyClipboardWrite& write, KittyClipboardStatus status);
    /// What a paste sends under mode 5522: the types that the program may then ask for.
    [[nodiscard]] static std::vector<std::string> pasteEvent(
        ClipboardLocation location, const std::vector<std::string>& types);

private:
    struct Metadata;
    struct Writing {
        KittyClipboardWrite write;
        size_t usedBytes = 0;
        std::optional<Base64Decoder> decoder; ///< of the last representation
    };

    Outcome beginRead(const Metadata& metadata, std::string_view payload) const;
    Outcome beginWrite(const Metadata& metadata);
    Outcome appendData(const Metadata& metadata, std::string_view payload);
    Outcome appendAlias(const Metadata& metadata, std::string_view payload);
    Outcome fail(KittyClipboardStatus status);
    [[nodiscard]] bool finishRepresentation();

    const KittyClipboardPolicy m_policy;
    const size_t m_limitBytes;
    const size_t m_mostRepresentations;
    const size_t m_mostAliases;
    std::optional<Writing> m_writing;
};

} // namespace term
