#pragma once

#include "TermEngine/CharData.h"
#include "TermEngine/Unicode.h"

#include <algorithm>
#include <cstdint>

namespace term {

/// One cell in storage.
///
///     bits  0-1   kind
///           2-25  the scalar, the cluster's identifier, or the colour of the background
///          26-41  identifier of the attribute, 0 is the default one
///          42-43  width state
///          44     protected
///          45-60  payload atom
///          61-63  semantic content
class PackedCell {
public:
    enum class Kind : std::uint8_t { scalar, cluster, paletteBlank, trueColorBlank };

    static constexpr int contentShift = 2;
    static constexpr int attributeShift = 26;
    static constexpr int widthShift = 42;
    static constexpr int protectedShift = 44;
    static constexpr int payloadShift = 45;
    static constexpr int semanticShift = 61;
    static constexpr std::uint64_t contentMask = 0xFFFFFFULL << contentShift;
    static constexpr std::uint64_t widthMask = 3ULL << widthShift;
    static constexpr std::uint64_t attributeMask = 0xFFFFULL << attributeShift;
    static constexpr std::uint64_t payloadMask = 0xFFFFULL << payloadShift;

    constexpr PackedCell() = default;
    constexpr explicit PackedCell(std::uint64_t raw) : rawValue(raw) {}
    [[nodiscard]] static constexpr PackedCell make(
        Kind kind, std::uint32_t content, std::uint64_t pen = 0, WidthState width = WidthState::narrow) {
        return PackedCell(
            static_cast<std::uint64_t>(kind) | std::uint64_t{content} << contentShift | pen |
            static_cast<std::uint64_t>(width) << widthShift);
    }

    [[nodiscard]] constexpr Kind kind() const { return static_cast<Kind>(rawValue & 3); }
    [[nodiscard]] constexpr std::uint32_t content() const {
        return static_cast<std::uint32_t>(rawValue >> contentShift) & 0xFFFFFF;
    }
    [[nodiscard]] constexpr std::uint16_t attributeId() const {
        return static_cast<std::uint16_t>(rawValue >> attributeShift);
    }
    [[nodiscard]] constexpr WidthState widthState() const {
        return static_cast<WidthState>((rawValue >> widthShift) & 3);
    }
    [[nodiscard]] constexpr bool isProtected() const { return ((rawValue >> protectedShift) & 1) != 0; }
    [[nodiscard]] constexpr TinyAtom payload() const { return static_cast<TinyAtom>(rawValue >> payloadShift); }
    [[nodiscard]] constexpr std::uint8_t semanticCode() const {
        return static_cast<std::uint8_t>(rawValue >> semanticShift);
    }
    [[nodiscard]] constexpr bool isWide() const { return widthState() == WidthState::wide; }
    [[nodiscard]] constexpr bool isSpacer() const { return widthState() == WidthState::spacer; }
    /// Nothing was written here, or it was erased.
    [[nodiscard]] constexpr bool isEmpty() const { return (rawValue & 2) != 0 || (rawValue & (contentMask | 3)) == 0; }
    /// Empty, and not the half of a wide character.
    [[nodiscard]] constexpr bool isBlank() const { return isEmpty() && !isSpacer(); }
    [[nodiscard]] constexpr PackedCell with(WidthState width) const {
        return PackedCell((rawValue & ~widthMask) | static_cast<std::uint64_t>(width) << widthShift);
    }

    /// Whether the fields keep the rules of their kind.
    [[nodiscard]] constexpr bool hasValidEncoding() const {
        if (semanticCode() == 7) {
            return false;
        }
        switch (kind()) {
        case Kind::scalar:
            return unicode::isScalar(content());
        case Kind::cluster:
            return content() != 0;
        case Kind::paletteBlank:
            return content() < 256;
        case Kind::trueColorBlank:
            return true;
        }
        return false;
    }

    bool operator==(const PackedCell&) const = default;

    std::uint64_t rawValue = 0;
};
static_assert(sizeof(PackedCell) == 8);

/// Equal cells, in blocks that compilers write by vector instructions; a plain loop they leave as it is, depending on
/// what stands around it.
inline void fillCells(PackedCell* cells, int count, PackedCell cell) {
    constexpr int block = 8;
    int at = 0;
    for (; at + block <= count; at += block) {
        std::fill_n(cells + at, block, cell);
    }
    for (; at < count; ++at) {
        cells[at] = cell;
    }
}

} // namespace term
