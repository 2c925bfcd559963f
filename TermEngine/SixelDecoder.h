#pragma once

#include "TermEngine/PixelAllowance.h"
#include "TermEngine/RgbColor.h"
#include "TermEngine/RgbaImage.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace term {

/// Decodes sixel data (DEC STD 070, VT330/VT340 Programmer Reference, chapter 14) as it comes in.
///
/// Pixels are square: the aspect ratio is read over, as programs of today expect. What lies outside of
/// `maximumImageSide` or of the limit is not drawn, and an image that paints its pixels over and over ends where it has
/// cost enough. One for which the allowance does not suffice is no image. So any input takes bounded time and memory.
class SixelDecoder {
public:
    enum class Background : uint8_t { filled, transparent };

    /// `background` is the second parameter of the DCS: 1 leaves what is not painted transparent.
    SixelDecoder(PixelAllowance& allowance, size_t limitBytes, Background background);

    void append(std::string_view data);
    /// The image; nothing where none was painted or announced.
    [[nodiscard]] std::optional<RgbaImage> finish();

private:
    using Pixel = uint32_t;
    static constexpr size_t registerCount = 1024;
    static constexpr size_t mostParameters = 5;
    enum class State : uint8_t { data, repeat, color, raster };

    void command(char byte);
    void leaveState();
    void setColor();
    void setRaster();
    void paint(unsigned bits);
    [[nodiscard]] bool makeRoom(int width, int height);
    [[nodiscard]] bool take(size_t pixels);
    void drop();

    PixelAllowance& m_allowance;
    bool m_isRefused = false;
    const size_t m_limitPixels;
    const Background m_background;
    size_t m_budget; ///< pixels that may still be painted
    State m_state = State::data;
    std::array<int, mostParameters> m_parameters{};
    size_t m_parameterCount = 0;
    int m_repeat = 1;
    std::array<Pixel, registerCount> m_registers{};
    size_t m_register = 0;
    int m_x = 0;
    int m_y = 0; ///< the top of the band of six
    int m_width = 0;
    int m_height = 0;
    int m_announcedWidth = 0;
    int m_announcedHeight = 0;
    int m_stride = 0;
    std::vector<Pixel> m_pixels; ///< 0: not painted
};

} // namespace term
