#include "TermEngine/ImageStore.h"

#include <algorithm>
#include <utility>

namespace term {
namespace {

CellArea shifted(const CellArea& area, CellShift by) {
    return {area.top + by.rows, area.bottom + by.rows, area.left + by.columns, area.right + by.columns};
}

void include(std::optional<CellArea>& box, const CellArea& area) {
    box = !box ? area
               : CellArea{
                     std::min(box->top, area.top), std::max(box->bottom, area.bottom), std::min(box->left, area.left),
                     std::max(box->right, area.right)};
}

bool isRelative(const ImagePlacement& some) {
    return some.parentSerial != 0;
}

} // namespace

void ImageStore::scroll(ScreenId screen, const CellArea& area, int64_t by, const CellArea& kept) {
    move({Move::Kind::lines, screen, area, {.rows = by}, kept});
}

void ImageStore::renumber(ScreenId screen, int64_t line, int64_t by, int64_t top) {
    constexpr CellArea all = CellArea::everything();
    move({Move::Kind::numbers, screen, {line, all.bottom, all.left, all.right}, {.rows = by}, all, top});
}

void ImageStore::moveText(ScreenId screen, const CellArea& area, CellShift by, const CellArea& kept) {
    move({Move::Kind::text, screen, area, by, kept});
}

/// Whether the last move goes on; then it is noted.
bool ImageStore::joinsDrift(const Move& move) {
    Drift& drift = m_drift;
    if (!drift.last || drift.last->screen != move.screen) {
        return false;
    }
    Move& last = *drift.last;
    const bool isSameKind = last.kind == move.kind;
    if (isSameKind && move.kind == Move::Kind::numbers) {
        // The same ones again, whose numbers have become larger as those of the lines have.
        if (move.area.top != last.area.top + last.by.rows || move.top != last.top + last.by.rows) {
            return !drift.touches(move.area);
        }
        last = move;
    } else {
        // All that there was in the area of the move that began it has moved.
        const bool isFree =
            (isSameKind && last.area.contains(move.area)) || !(drift.rest && move.area.intersects(*drift.rest));
        const bool meets = drift.box && move.area.intersects(*drift.box);
        if (!isFree || !meets) {
            return isFree && !meets;
        }
        if (!isSameKind || !move.area.contains(*drift.box) || !move.kept.contains(shifted(*drift.box, move.by))) {
            return false;
        }
    }
    drift.by.rows += move.by.rows;
    drift.by.columns += move.by.columns;
    if (drift.box) {
        drift.box = shifted(*drift.box, move.by);
    }
    return true;
}

bool ImageStore::isConcerned(const ImagePlacement& placement, const Move& move) {
    if (placement.isText) {
        return move.area.intersects(placement.area());
    }
    switch (move.kind) {
    case Move::Kind::lines:
        return move.area.contains(placement.area());
    case Move::Kind::numbers:
        return placement.row >= move.top && placement.row + placement.rows > move.area.top;
    case Move::Kind::text:
        break;
    }
    return false;
}

/// Of one that belongs to the text, what is beside the area comes to the `parts`, and with it what has moved.
ImageStore::Fate ImageStore::moveOne(ImagePlacement& placement, const Move& move, std::vector<ImagePlacement>& parts) {
    if (!isConcerned(placement, move)) {
        return Fate::stays;
    }
    const auto moved = [&move](ImagePlacement part) {
        part.moveTo(part.row + move.by.rows, part.column + move.by.columns);
        return partOf(part, move.kept);
    };
    if (placement.isText && !move.area.contains(placement.area())) {
        for (const ImagePlacement& part : partsAround(placement, move.area)) {
            parts.push_back(part);
        }
        const auto inside = partOf(placement, move.area);
        if (const auto part = inside ? moved(*inside) : std::nullopt) {
            parts.push_back(*part);
        }
        return Fate::goes;
    }
    placement.moveTo(placement.row + move.by.rows, placement.column + move.by.columns);
    if (!move.kept.contains(placement.area())) {
        const auto part = partOf(placement, move.kept);
        placement = part.value_or(placement);
        return part ? Fate::moves : Fate::goes;
    }
    return Fate::moves;
}

void ImageStore::move(const Move& move) {
    if (m_placements.empty() || joinsDrift(move)) {
        return;
    }
    catchUp();
    Drift drift{.last = move, .moves = std::exchange(m_drift.moves, {})};
    drift.moves.assign(m_placements.size(), 0);
    m_drift.last.reset();
    std::vector<ImagePlacement> parts;
    std::set<uint32_t> ids;
    size_t index = 0;
    std::erase_if(m_placements, [&](ImagePlacement& placement) {
        const size_t at = index++;
        if (placement.screen != move.screen || placement.isVirtual || isRelative(placement)) {
            return false;
        }
        const Fate fate = moveOne(placement, move, parts);
        if (fate == Fate::goes) {
            ids.insert(placement.imageId);
            return true;
        }
        include(fate == Fate::moves ? drift.box : drift.rest, placement.area());
        drift.moves[at] = fate == Fate::moves ? 1 : 0;
        return false;
    });
    if (ids.empty() && m_tiesAreKnown) {
        for (const Tie& tie : m_ties) {
            moveTied(tie);
            drift.moves[tie.child] = drift.moves[tie.root];
        }
        m_drift = std::move(drift);
        return;
    }
    countText();
    settleRelative();
    for (const ImagePlacement& part : parts) {
        append(part);
    }
    dropUnplaced(ids);
}

/// A relative one goes with that which it is tied to.
void ImageStore::moveTied(const Tie& tie) {
    const ImagePlacement& root = m_placements[tie.root];
    m_placements[tie.child].moveTo(root.originRow + tie.rows, root.originColumn + tie.columns);
}

void ImageStore::catchUp() const {
    const CellShift by = std::exchange(m_drift.by, {});
    if (by.rows == 0 && by.columns == 0) {
        return;
    }
    for (size_t index = 0; index < m_placements.size(); ++index) {
        if (ImagePlacement& placement = m_placements[index]; m_drift.moves[index] != 0) {
            placement.moveTo(placement.row + by.rows, placement.column + by.columns);
        }
    }
}

/// Before placements come, go or move otherwise.
void ImageStore::forgetDrift() {
    catchUp();
    m_drift.last.reset();
    m_tiesAreKnown = false;
}

/// `indexOf` finds a serial among the placements, past which it goes where there is none.
template <typename IndexOf>
ImageStore::Tie ImageStore::tieOf(size_t index, const IndexOf& indexOf) const {
    Tie tie{.child = index, .root = index, .rows = 0, .columns = 0};
    while (isTied(tie) && isRelative(m_placements[tie.root])) {
        tie.rows += m_placements[tie.root].parentRows;
        tie.columns += m_placements[tie.root].parentColumns;
        tie.root = indexOf(m_placements[tie.root].parentSerial);
    }
    return tie;
}

/// After one has come; the others have kept their places, if ties are known.
void ImageStore::settleNewest() {
    if (!m_tiesAreKnown) {
        settleRelative();
    } else if (isRelative(m_placements.back())) {
        const Tie tie = tieOf(m_placements.size() - 1, [this](uint64_t serial) {
            const auto found = std::ranges::find(m_placements, serial, &ImagePlacement::serial);
            return static_cast<size_t>(found - m_placements.begin());
        });
        if (!isTied(tie)) {
            m_placements.pop_back();
            return;
        }
        moveTied(tie);
        m_ties.push_back(tie);
    }
}

void ImageStore::settleRelative() {
    m_ties.clear();
    m_tiesAreKnown = true;
    if (std::ranges::none_of(m_placements, isRelative)) {
        return;
    }
    // What isn't a part of the text stands in the order of the serials, and parents are none.
    std::vector<std::pair<uint64_t, size_t>> bySerial;
    for (size_t index = 0; index < m_placements.size(); ++index) {
        if (!m_placements[index].isText) {
            bySerial.emplace_back(m_placements[index].serial, index);
        }
    }
    const auto indexOf = [&](uint64_t serial) {
        const auto found = std::ranges::lower_bound(bySerial, std::pair(serial, size_t{0}));
        return found != bySerial.end() && found->first == serial ? found->second : m_placements.size();
    };
    std::set<uint64_t> orphans;
    for (size_t index = 0; index < m_placements.size(); ++index) {
        if (!isRelative(m_placements[index])) {
            continue;
        }
        const Tie tie = tieOf(index, indexOf);
        if (isTied(tie)) {
            moveTied(tie);
            m_ties.push_back(tie);
        } else {
            orphans.insert(m_placements[index].serial);
        }
    }
    if (!orphans.empty()) {
        std::erase_if(m_placements, [&](const ImagePlacement& some) { return orphans.contains(some.serial); });
        settleRelative();
    }
}

} // namespace term
