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

uint32_t ImageStore::unusedId() {
    for (auto at = m_images.upper_bound(m_unusedId); at != m_images.begin() && std::prev(at)->first == m_unusedId;
         --at) {
        --m_unusedId;
    }
    return m_unusedId;
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
        m_unusedId = id <= highestOwnId ? std::max(m_unusedId, id) : m_unusedId;
    }
}

void ImageStore::remove(uint32_t id) {
    if (m_images.contains(id)) {
        dropData(id);
        removePlacements([id](const ImagePlacement& placement) { return placement.imageId == id; }, Data::keep);
    }
}

bool ImageStore::remove(uint32_t firstId, uint32_t lastId) {
    bool hasRemoved = false;
    for (auto next = m_images.lower_bound(firstId); next != m_images.end() && next->first <= lastId;) {
        dropData((next++)->first);
        hasRemoved = true;
    }
    if (hasRemoved) {
        removePlacements(
            [=](const ImagePlacement& some) { return some.imageId >= firstId && some.imageId <= lastId; }, Data::keep);
    }
    return hasRemoved;
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
    const auto isReplaced = [&placement](const ImagePlacement& other) {
        return other.imageId == placement.imageId && other.placementId == placement.placementId;
    };
    if (placement.placementId != 0 && std::ranges::any_of(m_placements, isReplaced)) {
        forgetDrift();
        const uint64_t before = std::ranges::find_if(m_placements, isReplaced)->serial;
        for (ImagePlacement& child : m_placements) {
            child.parentSerial = child.parentSerial == before ? placement.serial : child.parentSerial;
        }
        std::erase_if(m_placements, isReplaced);
        countText();
    }
    append(placement);
    settleNewest();
}

const ImagePlacement* ImageStore::findPlacement(ScreenId screen, uint32_t imageId, uint32_t placementId) const {
    const ImagePlacement* newest = nullptr;
    for (const ImagePlacement& some : placements()) {
        const bool isWanted = some.imageId == imageId && (placementId == 0 || some.placementId == placementId);
        if (isWanted && some.screen == screen && !some.isText && !some.isVirtual) {
            newest = &some;
        }
    }
    return newest;
}

const ImagePlacement* ImageStore::parentOf(const ImagePlacement& placement) const {
    const auto found = std::ranges::find(placements(), placement.parentSerial, &ImagePlacement::serial);
    return placement.parentSerial == 0 || found == m_placements.end() ? nullptr : &*found;
}

void ImageStore::append(const ImagePlacement& placement) {
    catchUp();
    m_drift.last.reset();
    if (m_placements.size() >= mostPlacements) {
        forgetDrift();
        m_placements.erase(m_placements.begin(), m_placements.begin() + mostPlacements / 4);
        countText();
    }
    m_placements.push_back(placement);
    m_textPlacements += placement.isText ? 1 : 0;
}

void ImageStore::removePlacements(const Condition& condition, Data data) {
    std::set<uint32_t> ids;
    catchUp();
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
    forgetDrift();
    countText();
    settleRelative();
    if (data == Data::release) {
        dropUnplaced(ids);
    }
}

bool ImageStore::hasText(ScreenId screen, const CellArea& area) const {
    if (m_drift.last && m_drift.last->screen == screen && !m_drift.touches(area)) {
        return false;
    }
    return std::ranges::any_of(placements(), [&](const ImagePlacement& some) {
        return some.isText && some.screen == screen && area.intersects(some.area());
    });
}

bool ImageStore::eraseText(ScreenId screen, const CellArea& area) {
    if (!hasText(screen, area)) {
        return false;
    }
    forgetDrift();
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
        return true;
    });
    countText();
    for (const ImagePlacement& part : parts) {
        append(part);
    }
    dropUnplaced(ids);
    return true;
}

void ImageStore::clear() {
    m_images.clear();
    m_unusedId = highestOwnId;
    forgetDrift();
    m_placements.clear();
    m_ties.clear();
    m_textPlacements = 0;
    m_usedBytes = 0;
}

} // namespace term
