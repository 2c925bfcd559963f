#include "TermEngine/ImageStore.h"

#include <algorithm>
#include <set>
#include <utility>

namespace term {
namespace {

size_t bytesOf(const StoredImage& image) {
    size_t bytes = ImageStore::overheadBytes;
    for (const auto& frame : image.frames) {
        bytes += frame.pixels->pixels.size() + ImageStore::overheadBytes;
    }
    return bytes;
}

/// Cuts what of `placement` lies outside of the lines, and of its source in proportion. False: nothing is left.
bool clip(ImagePlacement& placement, int64_t first, int64_t last) {
    const int64_t above = std::max<int64_t>(0, first - placement.row);
    const int64_t below = std::max<int64_t>(0, placement.row + placement.rows - 1 - last);
    if (above + below >= placement.rows) {
        return false;
    }
    const auto ofSource = [&placement](int64_t rows) {
        return static_cast<int>(rows * placement.sourceHeight / placement.rows);
    };
    const int cutAbove = ofSource(above);
    const int cutBelow = ofSource(below);
    placement.sourceY += cutAbove;
    placement.sourceHeight -= cutAbove + cutBelow;
    placement.row += above;
    placement.rows -= static_cast<int>(above + below);
    return true;
}

} // namespace

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

bool ImageStore::isPlaced(uint32_t id) const {
    return std::ranges::find(m_placements, id, &ImagePlacement::imageId) != m_placements.end();
}

bool ImageStore::makeRoom(size_t bytes, uint32_t keptId) {
    if (bytes > m_limitBytes) {
        return false;
    }
    if (m_usedBytes + bytes <= m_limitBytes) {
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
    const size_t spare = m_limitBytes / 16;
    for (const auto& candidate : candidates) {
        if (m_usedBytes + bytes + spare <= m_limitBytes) {
            break;
        }
        remove(candidate.id);
    }
    return m_usedBytes + bytes <= m_limitBytes;
}

bool ImageStore::add(uint32_t id, uint32_t number, RgbaImage pixels) {
    remove(id);
    StoredImage image{.id = id, .number = number, .serial = ++m_serial};
    image.frames.push_back({std::make_shared<RgbaImage>(std::move(pixels)), 0});
    const size_t bytes = bytesOf(image);
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
        image.frames.emplace_back();
    }
    image.frames[index].pixels = std::make_shared<RgbaImage>(std::move(pixels));
    return true;
}

bool ImageStore::hasRoomBeside(const StoredImage& image, size_t bytes) const {
    return bytesOf(image) + bytes + overheadBytes <= m_limitBytes;
}

RgbaImage& ImageStore::editable(StoredImage::Frame& frame) {
    if (frame.pixels.use_count() > 1) {
        frame.pixels = std::make_shared<RgbaImage>(*frame.pixels);
    }
    return *frame.pixels;
}

void ImageStore::removeFrame(StoredImage& image, size_t index) {
    m_usedBytes -= image.frames[index].pixels->pixels.size() + overheadBytes;
    image.frames.erase(image.frames.begin() + static_cast<std::ptrdiff_t>(index));
    image.currentFrame = std::min(image.currentFrame, image.frames.size() - 1);
}

void ImageStore::remove(uint32_t id) {
    const auto found = m_images.find(id);
    if (found == m_images.end()) {
        return;
    }
    m_usedBytes -= bytesOf(found->second);
    m_images.erase(found);
    removePlacements([id](const ImagePlacement& placement) { return placement.imageId == id; }, Data::keep);
}

void ImageStore::place(ImagePlacement placement) {
    if (placement.placementId != 0) {
        removePlacements(
            [&placement](const ImagePlacement& other) {
                return other.imageId == placement.imageId && other.placementId == placement.placementId;
            },
            Data::keep);
    }
    // A screen shows hundreds at most; whoever places more loses the oldest.
    constexpr size_t mostPlacements = 4096;
    if (m_placements.size() == mostPlacements) {
        m_placements.erase(m_placements.begin(), m_placements.begin() + mostPlacements / 4);
    }
    placement.serial = ++m_serial;
    m_placements.push_back(placement);
}

void ImageStore::removePlacements(const Condition& condition, Data data) {
    std::vector<uint32_t> ids;
    std::erase_if(m_placements, [&](const ImagePlacement& placement) {
        const bool goes = condition(placement);
        if (goes) {
            ids.push_back(placement.imageId);
        }
        return goes;
    });
    if (data == Data::release) {
        for (const uint32_t id : ids) {
            if (!isPlaced(id)) {
                remove(id);
            }
        }
    }
}

void ImageStore::scroll(ScreenId screen, int64_t first, int64_t last, int64_t by) {
    std::erase_if(m_placements, [=](ImagePlacement& placement) {
        const bool isInside = placement.screen == screen && !placement.isVirtual && placement.row >= first &&
                              placement.row + placement.rows - 1 <= last;
        if (!isInside) {
            return false;
        }
        placement.row += by;
        return !clip(placement, first, last);
    });
}

void ImageStore::clear() {
    m_images.clear();
    m_placements.clear();
    m_usedBytes = 0;
}

} // namespace term
