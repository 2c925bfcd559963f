#include "TermEngine/KittyClipboard.h"

#include "TermEngine/Encoding_p.h"
#include "TermEngine/OscPayloads.h"

#include <algorithm>
#include <array>
#include <utility>

namespace term {
namespace {

constexpr size_t longestWord = 256;
/// More than all fields with their longest words take.
constexpr size_t longestMetadata = 4096;
constexpr size_t mostTypesOfRead = 64;
/// Before it is encoded.
constexpr size_t pieceBytes = 4096;

constexpr std::array<std::string_view, 7> statusWords{"OK", "DONE", "EINVAL", "ENOSYS", "EPERM", "EBUSY", "EIO"};

std::string decodedText(std::string_view encoded, size_t limitBytes = longestWord) {
    const auto bytes = decodeBase64(encoded, limitBytes);
    return bytes ? cleanText({reinterpret_cast<const char*>(bytes->data()), bytes->size()}, limitBytes) : std::string();
}

/// The words of a list that spaces part.
std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> all;
    while (!text.empty()) {
        if (const std::string_view word = takeField(text, ' '); !word.empty()) {
            all.emplace_back(word);
        }
    }
    return all;
}

std::string header(std::string_view type, std::string_view id, std::string_view status) {
    std::string out = "5522;type=";
    out.append(type).append(":status=").append(status);
    if (!id.empty()) {
        out.append(":id=").append(id);
    }
    return out;
}

std::string_view word(KittyClipboardStatus status) {
    return statusWords[static_cast<size_t>(status)];
}

void appendPieces(
    std::vector<std::string>& out, std::string_view id, std::string_view mimeType, std::span<const uint8_t> bytes) {
    const std::string begin = header("read", id, "DATA") + ":mime=" + encodeBase64(mimeType) + ';';
    do {
        const auto piece = bytes.first(std::min(bytes.size(), pieceBytes));
        out.push_back(begin + encodeBase64(piece));
        bytes = bytes.subspan(piece.size());
    } while (!bytes.empty());
}

std::vector<uint8_t> joined(const std::vector<std::string>& types) {
    std::vector<uint8_t> list;
    for (const std::string& type : types) {
        if (!list.empty()) {
            list.push_back(' ');
        }
        list.insert(list.end(), type.begin(), type.end());
    }
    return list;
}

} // namespace

/// The part before the semicolon: key=value, parted by colons.
struct KittyClipboard::Metadata {
    std::string_view type;
    std::string id;
    ClipboardLocation location = ClipboardLocation::clipboard;
    std::string mimeType;
    std::string name;
    std::string password;

    explicit Metadata(std::string_view text) {
        while (!text.empty()) {
            std::string_view value = takeField(text, ':');
            const std::string_view key = takeField(value, '=');
            if (key == "type") {
                type = value;
            } else if (key == "id") {
                id = identifierOf(value);
            } else if (key == "loc") {
                location = value == "primary" ? ClipboardLocation::primary : ClipboardLocation::clipboard;
            } else if (key == "mime") {
                mimeType = decodedText(value);
            } else if (key == "name") {
                name = decodedText(value);
            } else if (key == "pw") {
                password = decodedText(value);
            }
        }
    }
};

KittyClipboard::KittyClipboard(const TerminalOptions& options)
    : m_policy(options.kittyClipboardPolicy),
      m_limitBytes(static_cast<size_t>(int64_t{options.kittyClipboardWriteLimitBytes})),
      m_mostRepresentations(static_cast<size_t>(std::max(options.kittyClipboardMaximumRepresentations, 0))),
      m_mostAliases(static_cast<size_t>(std::max(options.kittyClipboardMaximumAliases, 0))) {}

KittyClipboard::Outcome KittyClipboard::handle(std::string_view payload) {
    const std::string_view fields = takeField(payload, ';');
    if (fields.size() > longestMetadata) {
        return {};
    }
    const Metadata metadata(fields);
    if (metadata.type == "read") {
        return beginRead(metadata, payload);
    }
    if (metadata.type == "write") {
        return beginWrite(metadata);
    }
    if (metadata.type == "wdata" && m_writing) {
        return appendData(metadata, payload);
    }
    if (metadata.type == "walias" && m_writing) {
        return appendAlias(metadata, payload);
    }
    return {}; // pieces of a write that has failed already, and what is not known
}

KittyClipboard::Outcome KittyClipboard::beginRead(const Metadata& metadata, std::string_view payload) const {
    KittyClipboardRead read{
        .id = metadata.id, .location = metadata.location, .name = metadata.name, .password = metadata.password};
    read.needsPermission = m_policy != KittyClipboardPolicy::allow;
    if (m_policy == KittyClipboardPolicy::deny || m_policy == KittyClipboardPolicy::writeOnly) {
        return {.replies = {refuse(read, KittyClipboardStatus::notPermitted)}};
    }
    read.mimeTypes = words(decodedText(payload, maximumTextBytes));
    read.wantsTypes = std::erase(read.mimeTypes, ".") > 0;
    // What types there are gives nothing away.
    read.needsPermission = read.needsPermission && !read.mimeTypes.empty();
    if ((read.mimeTypes.empty() && !read.wantsTypes) || read.mimeTypes.size() > mostTypesOfRead) {
        return {.replies = {refuse(read, KittyClipboardStatus::invalid)}};
    }
    return {.read = std::move(read)};
}

KittyClipboard::Outcome KittyClipboard::beginWrite(const Metadata& metadata) {
    m_writing.emplace(KittyClipboardWrite{
        .id = metadata.id,
        .location = metadata.location,
        .name = metadata.name,
        .password = metadata.password,
        .needsPermission = m_policy == KittyClipboardPolicy::ask});
    return m_policy == KittyClipboardPolicy::deny ? fail(KittyClipboardStatus::notPermitted) : Outcome{};
}

/// A write fails once: its later pieces are read over.
KittyClipboard::Outcome KittyClipboard::fail(KittyClipboardStatus status) {
    Outcome outcome{.replies = {answer(m_writing->write, status)}};
    m_writing.reset();
    return outcome;
}

bool KittyClipboard::finishRepresentation() {
    if (!m_writing->decoder) {
        return true;
    }
    auto bytes = m_writing->decoder->finish();
    m_writing->decoder.reset();
    if (!bytes) {
        return false;
    }
    m_writing->usedBytes += bytes->size();
    m_writing->write.data.back().bytes = std::move(*bytes);
    return true;
}

KittyClipboard::Outcome KittyClipboard::appendData(const Metadata& metadata, std::string_view payload) {
    auto& data = m_writing->write.data;
    const bool isOther = data.empty() || data.back().mimeType != metadata.mimeType;
    if (isOther && !finishRepresentation()) {
        return fail(KittyClipboardStatus::invalid);
    }
    if (metadata.mimeType.empty()) {
        Outcome outcome{.write = std::move(m_writing->write)};
        m_writing.reset();
        return outcome;
    }
    if (isOther) {
        const bool isKnown = std::ranges::find(data, metadata.mimeType, &ClipboardData::mimeType) != data.end();
        if (isKnown || data.size() == m_mostRepresentations) {
            return fail(isKnown ? KittyClipboardStatus::invalid : KittyClipboardStatus::failed);
        }
        data.push_back({metadata.mimeType});
        m_writing->decoder.emplace(m_limitBytes - m_writing->usedBytes);
    }
    switch (m_writing->decoder->append(payload)) {
    case Base64Decoder::Error::none:
        return {};
    case Base64Decoder::Error::tooLong:
        return fail(KittyClipboardStatus::failed);
    case Base64Decoder::Error::invalid:
        break;
    }
    return fail(KittyClipboardStatus::invalid);
}

KittyClipboard::Outcome KittyClipboard::appendAlias(const Metadata& metadata, std::string_view payload) {
    if (metadata.mimeType.empty()) {
        return fail(KittyClipboardStatus::invalid);
    }
    for (const std::string& alias : words(decodedText(payload, maximumTextBytes))) {
        if (m_writing->write.aliases.size() == m_mostAliases) {
            return fail(KittyClipboardStatus::failed);
        }
        m_writing->write.aliases[alias] = metadata.mimeType;
    }
    return {};
}

std::vector<std::string> KittyClipboard::answer(
    const KittyClipboardRead& read, const std::vector<std::string>& types, const std::vector<ClipboardData>& data) {
    std::vector<std::string> replies{header("read", read.id, word(KittyClipboardStatus::ok))};
    if (read.wantsTypes) {
        appendPieces(replies, read.id, ".", joined(types));
    }
    for (const ClipboardData& each : data) {
        appendPieces(replies, read.id, each.mimeType, each.bytes);
    }
    replies.push_back(header("read", read.id, word(KittyClipboardStatus::done)));
    return replies;
}

std::string KittyClipboard::refuse(const KittyClipboardRead& read, KittyClipboardStatus status) {
    return header("read", read.id, word(status));
}

std::string KittyClipboard::answer(const KittyClipboardWrite& write, KittyClipboardStatus status) {
    return header("write", write.id, word(status));
}

std::vector<std::string> KittyClipboard::pasteEvent(ClipboardLocation location, const std::vector<std::string>& types) {
    auto replies = answer(KittyClipboardRead{.wantsTypes = true}, types, {});
    if (location == ClipboardLocation::primary) {
        for (std::string& reply : replies) {
            reply.insert(std::min(reply.find(';', 5), reply.size()), ":loc=primary");
        }
    }
    return replies;
}

} // namespace term
