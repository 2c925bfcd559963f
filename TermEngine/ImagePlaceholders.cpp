#include "TermEngine/ImagePlaceholders.h"

#include "TermEngine/UnicodeTables_p.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace term {
namespace {

/// The number that a combining mark stands for.
std::optional<int> numberOf(char32_t mark) {
    struct NumberedRun {
        char32_t first;
        int count;
        int number;
    };
    static const auto runs = [] {
        std::array<NumberedRun, unicode::numberDiacritics.size()> made{};
        int number = 0;
        std::ranges::transform(unicode::numberDiacritics, made.begin(), [&number](const unicode::ScalarRun& run) {
            const NumberedRun numbered{run.first, run.count, number};
            number += run.count;
            return numbered;
        });
        return made;
    }();
    const auto behind = std::ranges::upper_bound(runs, mark, {}, &NumberedRun::first);
    if (behind == runs.begin()) {
        return std::nullopt;
    }
    const NumberedRun& run = *std::prev(behind);
    const int at = static_cast<int>(mark - run.first);
    return at < run.count ? std::optional(run.number + at) : std::nullopt;
}

std::uint32_t idIn(const Color& color) {
    return color.kind() == Color::Kind::ansi256 || color.kind() == Color::Kind::trueColor ? color.value() : 0;
}

/// One cell; what it does not say itself it has from the one before it.
struct Placeholder {
    std::uint32_t lowId = 0; ///< of the image, the lower 24 bits
    std::uint32_t placementId = 0;
    std::optional<int> row{};
    std::optional<int> column{};
    std::optional<int> highId{};
};

std::optional<Placeholder> read(PackedCell cell, const CellArena& arena) {
    char32_t memory = 0;
    const std::u32string_view scalars = arena.scalarValues(cell, memory);
    if (scalars.empty() || scalars[0] != PlaceholderRun::placeholder) {
        return std::nullopt;
    }
    const Attribute attribute = arena.attributeOf(cell);
    Placeholder made{
        .lowId = idIn(attribute.fg), .placementId = attribute.underlineColor ? idIn(*attribute.underlineColor) : 0};
    const std::array fields{&made.row, &made.column, &made.highId};
    for (std::size_t at = 0; at < fields.size() && at + 1 < scalars.size(); ++at) {
        *fields[at] = numberOf(scalars[at + 1]);
    }
    return made;
}

/// Whether `next` goes on with what it says where `before` ends.
bool continues(const Placeholder& next, const Placeholder& before) {
    return next.lowId == before.lowId && next.placementId == before.placementId &&
           next.row.value_or(*before.row) == *before.row &&
           next.column.value_or(*before.column + 1) == *before.column + 1 &&
           next.highId.value_or(*before.highId) == *before.highId;
}

} // namespace

std::vector<PlaceholderRun> placeholdersIn(const BufferLine& line, const CellArena& arena) {
    std::vector<PlaceholderRun> runs;
    std::optional<Placeholder> before;
    for (int column = 0; column < line.usedLength(); ++column) {
        std::optional<Placeholder> cell = read(line[column], arena);
        if (!cell) {
            before.reset();
            continue;
        }
        const bool goesOn = before && continues(*cell, *before);
        cell->row = cell->row.value_or(goesOn ? *before->row : 0);
        cell->column = cell->column.value_or(goesOn ? *before->column + 1 : 0);
        cell->highId = cell->highId.value_or(goesOn ? *before->highId : 0);
        if (goesOn) {
            ++runs.back().count;
        } else {
            runs.push_back(
                {.imageId = cell->lowId | static_cast<std::uint32_t>(*cell->highId) << 24U,
                 .placementId = cell->placementId,
                 .column = column,
                 .count = 1,
                 .imageRow = *cell->row,
                 .imageColumn = *cell->column});
        }
        before = cell;
    }
    return runs;
}

const ImagePlacement* placementOf(const PlaceholderRun& run, const ImageStore& images) {
    const auto found = std::ranges::find_if(images.placements(), [&run](const ImagePlacement& some) {
        return some.isVirtual && some.imageId == run.imageId &&
               (run.placementId == 0 || some.placementId == run.placementId);
    });
    const bool isShown =
        found != images.placements().end() && run.imageRow < found->rows && run.imageColumn < found->columns;
    return isShown ? &*found : nullptr;
}

} // namespace term
