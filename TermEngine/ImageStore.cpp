#include "TermEngine/ImageStore.h"

#include <algorithm>
#include <set>
#include <utility>

namespace term {
StoredImage* ImageStore::find(uint32_t id) {
    const auto found = m_images.find(id);
    return found == m_images.end() ? nullptr : &found->second;
}

StoredImage* ImageStore::findNewest(uint32_t number) {
    StoredImage* newest = nullptr;
    for (auto& [id, image] : m_images) {
        if (image.number == number && (newest == nullptr || image.serial > newest->serial)) {
            newest = &image;
        }
    }
    return newest;
}

uint32_t ImageStore::unusedId() const {
    uint32_t id = 0x7FFFFFFF;
    for (auto at = m_images.upper_bound(id); at != m_images.begin() && std::prev(at)->first == id; --at) {
        --id;
    }
    return id;
}

bool ImageStore::makeRoom(size_t bytes, uint32_t keptId) {
    if (bytes > m_limitBytes) {
        return false;
    }
    const auto hasRoom = [&](size_t spareBytes, size_t spareImages) {
        return m_usedBytes + bytes + spareBytes <= m_limitBytes && m_images.size() + spareImages < mostImages;
    };
    if (hasRoom(0, 0)) {
        return true;
    }
    std::set<uint32_t> placed;
    for (const auto& placement : m_placements) {
        placed.insert(placement.imageId);
    }
    struct Candidate {
        bool isPlaced;
        uint64_t serial;
        uint32_t id;
        auto operator<=>(const Candidate&) const = default;
    };
    std::vector<Candidate> candidates;
    for (const auto& [id, image] : m_images) {
        if (id != keptId) {
            candidates.push_back({placed.contains(id), image.serial, id});
        }
    }
    std::ranges::sort(candidates);
    // A little more than is needed goes, or every next small image would have to look for the oldest one again.
    std::set<uint32_t> gone;
    for (const auto& candidate : candidates) {
        if (hasRoom(m_limitBytes / 16, mostImages / 16)) {
            break;
        }
        dropData(candidate.id);
        gone.insert(candidate.id);
    }
    removePlacements([&gone](const ImagePlacement& some) { return gone.contains(some.imageId); }, Data::keep);
    return hasRoom(0, 0);
}

bool ImageStore::add(uint32_t id, uint32_t number, RgbaImage pixels) {
    remove(id);
    StoredImage image{.id = id, .number = number, .serial = ++m_serial};
    image.frames.push_back({std::make_shared<RgbaImage>(std::move(pixels)), 0});
    const size_t bytes = image.frames.front().pixels->pixels.size() + 2 * overheadBytes;
    image.costBytes = bytes;
    if (!makeRoom(bytes, id)) {
        return false;
    }
    m_usedBytes += bytes;
    m_images.emplace(id, std::move(image));
    return true;
}

bool ImageStore::setFrame(StoredImage& image, size_t index, RgbaImage pixels) {
    if (index == image.frames.size()) {
        const size_t bytes = pixels.pixels.size() + overheadBytes;
        if (!makeRoom(bytes, image.id)) {
            return false;
        }
        m_usedBytes += bytes;
        image.costBytes += bytes;
        image.frames.emplace_back();
    }
    image.frames[index].pixels = std::make_shared<RgbaImage>(std::move(pixels));
    return true;
}

bool ImageStore::hasRoomBeside(const StoredImage& image, size_t bytes) const {
    return image.costBytes + bytes + overheadBytes <= m_limitBytes;
}

RgbaImage& ImageStore::editable(StoredImage::Frame& frame) {
    if (frame.pixels.use_count() > 1) {
        frame.pixels = std::make_shared<RgbaImage>(*frame.pixels);
    }
    return *frame.pixels;
}

void ImageStore::removeFrame(StoredImage& image, size_t index) {
    const size_t bytes = image.frames[index].pixels->pixels.size() + overheadBytes;
    m_usedBytes -= bytes;
    image.costBytes -= bytes;
    image.frames.erase(image.frames.begin() + static_cast<std::ptrdiff_t>(index));
    image.currentFrame = std::min(image.currentFrame, image.frames.size() - 1);
}

void ImageStore::dropData(uint32_t id) {
    if (const auto found = m_images.find(id); found != m_images.end()) {
        m_usedBytes -= found->second.costBytes;
        m_images.erase(found);
    }
}

void ImageStore::remove(uint32_t id) {
    if (m_images.contains(id)) {
        dropData(id);
        removePlacements([id](const ImagePlacement& placement) { return placement.imageId == id; }, Data::keep);
    }
}

void ImageStore::dropUnplaced(const std::set<uint32_t>& ids) {
    std::set<uint32_t> unplaced = ids;
    for (const auto& placement : m_placements) {
        unplaced.erase(placement.imageId);
    }
    for (const uint32_t id : unplaced) {
        dropData(id);
    }
}

void ImageStore::countText() {
    m_textPlacements = static_cast<size_t>(std::ranges::count(m_placements, true, &ImagePlacement::isText));
}

void ImageStore::place(ImagePlacement placement) {
    placement.serial = ++m_serial;
    placement.originRow = placement.row;
    placement.originColumn = placement.column;
    if (placement.placementId != 0) {
        const auto isReplaced = [&placement](const ImagePlacement& other) {
            return other.imageId == placement.imageId && other.placementId == placement.placementId;
        };
        if (const auto before = std::ranges::find_if(m_placements, isReplaced); before != m_placements.end()) {
            for (ImagePlacement& child : m_placements) {
                child.parentSerial = child.parentSerial == before->serial ? placement.serial : child.parentSerial;
            }
        }
        std::erase_if(m_placements, isReplaced);
        countText();
    }
    append(placement);
    settleRelative();
}

const ImagePlacement* ImageStore::findPlacement(ScreenId screen, uint32_t imageId, uint32_t placementId) const {
    const ImagePlacement* newest = nullptr;
    for (const ImagePlacement& some : m_placements) {
        const bool isWanted = some.imageId == imageId && (placementId == 0 || some.placementId == placementId);
        if (isWanted && some.screen == screen && !some.isText && !some.isVirtual) {
            newest = &some;
        }
    }
    return newest;
}

const ImagePlacement* ImageStore::parentOf(const ImagePlacement& placement) const {
    const auto found = std::ranges::find(m_placements, placement.parentSerial, &ImagePlacement::serial);
    return placement.parentSerial == 0 || found == m_placements.end() ? nullptr : &*found;
}

void ImageStore::settleRelative() {
    const auto isRelative = [](const ImagePlacement& some) { return some.parentSerial != 0; };
    if (std::ranges::none_of(m_placements, isRelative)) {
        return;
    }
    std::vector<std::pair<uint64_t, size_t>> bySerial;
    for (size_t index = 0; index < m_placements.size(); ++index) {
        bySerial.emplace_back(m_placements[index].serial, index);
    }
    std::ranges::sort(bySerial);
    const auto withSerial = [&](uint64_t serial) -> const ImagePlacement* {
        const auto found = std::ranges::lower_bound(bySerial, std::pair(serial, size_t{0}));
        const bool isThere = found != bySerial.end() && found->first == serial;
        return isThere ? &m_placements[found->second] : nullptr;
    };
    std::set<uint64_t> orphans;
    for (ImagePlacement& placement : m_placements) {
        int64_t row = 0;
        int column = 0;
        const ImagePlacement* root = &placement;
        while (root != nullptr && isRelative(*root)) {
            row += root->parentRows;
            column += root->parentColumns;
            root = withSerial(root->parentSerial);
        }
        if (root == nullptr) {
            orphans.insert(placement.serial);
        } else if (isRelative(placement)) {
            placement.moveTo(root->originRow + row, root->originColumn + column);
        }
    }
    std::erase_if(m_placements, [&](const ImagePlacement& some) { return orphans.contains(some.serial); });
}

void ImageStore::append(const ImagePlacement& placement) {
    if (m_placements.size() >= mostPlacements) {
        m_placements.erase(m_placements.begin(), m_placements.begin() + mostPlacements / 4);
        countText();
    }
    m_placements.push_back(placement);
    m_textPlacements += placement.isText ? 1 : 0;
}

void ImageStore::removePlacements(const Condition& condition, Data data) {
    std::set<uint32_t> ids;
    std::erase_if(m_placements, [&](const ImagePlacement& placement) {
        const bool goes = condition(placement);
        if (goes) {
            ids.insert(placement.imageId);
        }
        return goes;
    });
    if (ids.empty()) {
        return;
    }
    countText();
    settleRelative();
    if (data == Data::release) {
        dropUnplaced(ids);
    }
}

void ImageStore::scroll(ScreenId screen, const CellArea& area, int64_t by, const CellArea& kept) {
    std::set<uint32_t> ids;
    std::erase_if(m_placements, [&](ImagePlacement& placement) {
        const bool isElsewhere = placement.screen != screen || placement.isVirtual || placement.isText;
        if (isElsewhere || placement.parentSerial != 0 || !area.contains(placement.area())) {
            return false;
        }
        placement.moveTo(placement.row + by, placement.column);
        const auto part = partOf(placement, kept);
        placement = part.value_or(placement);
        if (!part) {
            ids.insert(placement.imageId);
        }
        return !part;
    });
    settleRelative();
    if (!ids.empty()) {
        dropUnplaced(ids);
    }
    moveText(screen, area, {.rows = by}, kept);
}

void ImageStore::renumber(ScreenId screen, int64_t line, int64_t by, int64_t top) {
    for (ImagePlacement& placement : m_placements) {
        if (placement.screen == screen && !placement.isVirtual && !placement.isText && placement.row >= top &&
            placement.row + placement.rows > line) {
            placement.moveTo(placement.row + by, placement.column);
        }
    }
    settleRelative();
    constexpr CellArea all = CellArea::everything();
    moveText(screen, {line, all.bottom, all.left, all.right}, {.rows = by}, all);
}

bool ImageStore::moveText(ScreenId screen, const CellArea& area, CellShift by, const CellArea& kept) {
    return takeText(screen, area, [&](ImagePlacement part) {
        part.row += by.rows;
        part.column += by.columns;
        return partOf(part, kept);
    });
}

bool ImageStore::hasText(ScreenId screen, const CellArea& area) const {
    return std::ranges::any_of(m_placements, [&](const ImagePlacement& some) {
        return some.isText && some.screen == screen && area.intersects(some.area());
    });
}

bool ImageStore::eraseText(ScreenId screen, const CellArea& area) {
    return takeText(screen, area, [](const ImagePlacement&) { return std::optional<ImagePlacement>(); });
}

template <typename Change>
bool ImageStore::takeText(ScreenId screen, const CellArea& area, const Change& change) {
    if (!hasText()) {
        return false;
    }
    std::vector<ImagePlacement> parts;
    std::set<uint32_t> ids;
    std::erase_if(m_placements, [&](const ImagePlacement& placement) {
        if (!placement.isText || placement.screen != screen || !area.intersects(placement.area())) {
            return false;
        }
        ids.insert(placement.imageId);
        for (const ImagePlacement& part : partsAround(placement, area)) {
            parts.push_back(part);
        }
        if (const auto inside = partOf(placement, area)) {
            if (const auto changed = change(*inside)) {
                parts.push_back(*changed);
            }
        }
        return true;
    });
    if (ids.empty()) {
        return false;
    }
    countText();
    for (const ImagePlacement& part : parts) {
        append(part);
    }
    dropUnplaced(ids);
    return true;
}

void ImageStore::clear() {
    m_images.clear();
    m_placements.clear();
    m_textPlacements = 0;
    m_usedBytes = 0;
}

} // namespace term
