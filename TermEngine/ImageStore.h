#pragma once

#include "TermEngine/ImagePlacement.h"
#include "TermEngine/PixelAllowance.h"
#include "TermEngine/RgbaImage.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace term {

/// An image and the frames of its animation. What a renderer was given does not change under its hands.
struct StoredImage {
    struct Frame {
        std::shared_ptr<RgbaImage> pixels{}; ///< of the whole image; who shares it must not change it
        int gapMilliseconds = 0;             ///< until the next frame; negative: it is passed over
    };
    enum class Animation : uint8_t { stopped, loading, running };

    uint32_t id = 0;
    uint32_t number = 0;
    uint64_t serial = 0;         ///< later images have larger ones
    std::vector<Frame> frames{}; ///< the first one is the image itself
    size_t currentFrame = 0;
    Animation animation = Animation::stopped;
    uint32_t loops = 0;   ///< that are still to be played; 0: without end
    size_t costBytes = 0; ///< what it counts for in its store

    [[nodiscard]] int width() const { return frames.front().pixels->width; }
    [[nodiscard]] int height() const { return frames.front().pixels->height; }
};

/// The images of a terminal and where they are shown, within a limit of memory. When it is full, images without a
/// placement go first, and among equals the oldest.
class ImageStore {
public:
    /// What an image or a placement costs beside its pixels.
    static constexpr size_t overheadBytes = 512;
    /// There are never more: whoever goes on adding loses the oldest. A screen shows hundreds at most.
    static constexpr size_t mostImages = 4096;
    static constexpr size_t mostPlacements = 1024;

    explicit ImageStore(size_t limitBytes) : m_limitBytes(limitBytes), m_allowance(limitBytes) {}

    [[nodiscard]] size_t usedBytes() const { return m_usedBytes; }
    [[nodiscard]] size_t limitBytes() const { return m_limitBytes; }
    /// To be asked before pixels are made of what a program sends.
    [[nodiscard]] PixelAllowance& allowance() { return m_allowance; }
    [[nodiscard]] const std::map<uint32_t, StoredImage>& images() const { return m_images; }
    [[nodiscard]] const std::vector<ImagePlacement>& placements() const {
        catchUp();
        return m_placements;
    }
    [[nodiscard]] bool hasPlacements() const { return !m_placements.empty(); }

    [[nodiscard]] StoredImage* find(uint32_t id);
    [[nodiscard]] StoredImage* findNewest(uint32_t number);
    /// An id that no program chooses: from the upper half down.
    [[nodiscard]] uint32_t unusedId();
    /// Takes the place of an image with the same id and of its placements. False where it does not fit.
    bool add(uint32_t id, uint32_t number, RgbaImage pixels);
    /// A new frame, or in place of the one at `index`. False where it does not fit.
    bool setFrame(StoredImage& image, size_t index, RgbaImage pixels);
    /// Whether so many pixels more, in bytes, would fit once all other images were gone.
    [[nodiscard]] bool hasRoomBeside(const StoredImage& image, size_t bytes) const;
    /// To be drawn upon; a renderer that has the frame keeps it as it was.
    [[nodiscard]] static RgbaImage& editable(StoredImage::Frame& frame);
    void removeFrame(StoredImage& image, size_t index);
    void remove(uint32_t id);
    /// All from the first id to the last one; whether there was one.
    bool remove(uint32_t firstId, uint32_t lastId);

    /// In place of the one with the same two ids, where it has a placement id. What is placed relative to that one goes
    /// with the new one.
    void place(ImagePlacement placement);
    /// The newest placement of an image, with that id where it is not 0, that others can be placed relative to.
    [[nodiscard]] const ImagePlacement* findPlacement(ScreenId screen, uint32_t imageId, uint32_t placementId) const;
    [[nodiscard]] const ImagePlacement* parentOf(const ImagePlacement& placement) const;
    /// Relative placements stand where their parents do, or go with them. (After `movable`; all else does it by
    /// itself.)
    void settleRelative();
    using Condition = std::function<bool(const ImagePlacement&)>;
    enum class Data : uint8_t { keep, release };
    /// With `release`, images that lose their last placement go too.
    void removePlacements(const Condition& condition, Data data);
    /// What lay wholly in `area` moves by `by` lines with it; what is not within `kept` then is not shown any more. Of
    /// what belongs to the text, each part moves with its cells.
    void scroll(ScreenId screen, const CellArea& area, int64_t by, const CellArea& kept);
    /// The lines from `line` on have got numbers that are larger by `by`. What reaches below `line` goes with them,
    /// unless it begins above `top`.
    void renumber(ScreenId screen, int64_t line, int64_t by, int64_t top);
    /// The part in `area` of what belongs to the text.
    void moveText(ScreenId screen, const CellArea& area, CellShift by, const CellArea& kept);
    /// Whether there was something of it.
    bool eraseText(ScreenId screen, const CellArea& area);
    [[nodiscard]] bool hasText() const { return m_textPlacements > 0; }
    [[nodiscard]] bool hasText(ScreenId screen, const CellArea& area) const;
    /// To give places new lines and columns; nothing else may change.
    [[nodiscard]] std::vector<ImagePlacement>& movable() {
        forgetDrift();
        return m_placements;
    }
    void clear();

private:
    [[nodiscard]] bool makeRoom(size_t bytes, uint32_t keptId);
    void append(const ImagePlacement& placement);
    void dropData(uint32_t id);
    void dropUnplaced(const std::set<uint32_t>& ids);
    void countText();

    /// What moves with the text, and how; `top` is only that of what gets other numbers.
    struct Move {
        enum class Kind : uint8_t { lines, text, numbers };
        Kind kind;
        ScreenId screen;
        CellArea area;
        CellShift by;
        CellArea kept;
        int64_t top = 0;
    };
    /// The placements that moved last. As long as they go on moving together, none of them cut and nothing else with
    /// them, it is enough to add up by how much.
    struct Drift {
        std::optional<Move> last{};     ///< none: each has to be looked at
        CellShift by{};                 ///< that is not in their places yet
        std::optional<CellArea> box{};  ///< around those that move, where they are now, but for relative ones
        std::optional<CellArea> rest{}; ///< around all others of the screen
        std::vector<uint8_t> moves{};   ///< by place among the placements

        [[nodiscard]] bool touches(const CellArea& area) const {
            return (box && area.intersects(*box)) || (rest && area.intersects(*rest));
        }
    };
    /// Of a relative placement and the one that stands by itself at the end of its parents, their places among all.
    struct Tie {
        size_t child;
        size_t root;
        int64_t rows;
        int columns;
    };
    enum class Fate : uint8_t { stays, moves, goes };
    void move(const Move& move);
    [[nodiscard]] bool joinsDrift(const Move& move);
    [[nodiscard]] static bool isConcerned(const ImagePlacement& placement, const Move& move);
    [[nodiscard]] static Fate moveOne(ImagePlacement& placement, const Move& move, std::vector<ImagePlacement>& parts);
    [[nodiscard]] bool isTied(const Tie& tie) const { return tie.root < m_placements.size(); }
    void moveTied(const Tie& tie);
    template <typename IndexOf>
    [[nodiscard]] Tie tieOf(size_t index, const IndexOf& indexOf) const;
    void settleNewest();
    void catchUp() const;
    void forgetDrift();

    const size_t m_limitBytes;
    PixelAllowance m_allowance;
    size_t m_usedBytes = 0;
    uint64_t m_serial = 0;
    std::map<uint32_t, StoredImage> m_images;
    static constexpr uint32_t highestOwnId = 0x7FFFFFFF;
    uint32_t m_unusedId = highestOwnId;               ///< those above it, up to the highest own one, are in use
    mutable std::vector<ImagePlacement> m_placements; ///< but for what is still to be added of the drift
    mutable Drift m_drift;
    std::vector<Tie> m_ties;     ///< of all relative ones
    bool m_tiesAreKnown = false; ///< none has come to stand elsewhere among them
    size_t m_textPlacements = 0;
};

} // namespace term
