#include "TermEngine/SixelDecoder.h"

#include "TermEngine/Palette.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace term {
namespace {

constexpr int bandHeight = 6;
/// How often an image of the largest size may be painted over.
constexpr size_t mostLayers = 16;
/// Parameters stop growing here.
constexpr int largestParameter = 1'000'000;

/// In memory: red, green, blue, alpha.
uint32_t pixelOf(RgbColor color) {
    return std::bit_cast<uint32_t>(std::array<uint8_t, 4>{color.red, color.green, color.blue, 0xFF});
}

/// The registers of a VT340 when it is switched on, in per cent.
constexpr std::array<std::array<int, 3>, 16> vt340Colors{
    {{0, 0, 0},
     {20, 20, 80},
     {80, 13, 13},
     {20, 80, 20},
     {80, 20, 80},
     {20, 80, 80},
     {80, 80, 20},
     {53, 53, 53},
     {26, 26, 26},
     {33, 33, 60},
     {60, 26, 26},
     {33, 60, 33},
     {60, 33, 60},
     {33, 60, 60},
     {60, 60, 33},
     {80, 80, 80}}};

RgbColor ofPercent(int red, int green, int blue) {
    const auto part = [](int percent) { return static_cast<uint8_t>((std::clamp(percent, 0, 100) * 255 + 50) / 100); };
    return {part(red), part(green), part(blue)};
}

/// Hue in degrees from blue, as DEC counts them; lightness and saturation in per cent.
RgbColor ofHls(int hue, int lightness, int saturation) {
    const double l = std::clamp(lightness, 0, 100) / 100.0;
    const double s = std::clamp(saturation, 0, 100) / 100.0;
    const double chroma = (1 - (2 * l > 1 ? 2 * l - 1 : 1 - 2 * l)) * s;
    const double sector = (hue % 360 + 240) % 360 / 60.0;
    const auto part = [&](double offset) {
        // The distance to the sector in which this part is the largest, around the circle of six.
        double distance = sector - offset;
        distance = distance < 0 ? -distance : distance;
        distance = distance > 3 ? 6 - distance : distance;
        const double share = std::clamp(2 - distance, 0.0, 1.0);
        return static_cast<uint8_t>((l - chroma / 2 + chroma * share) * 255 + 0.5);
    };
    return {part(0), part(2), part(4)};
}

} // namespace

SixelDecoder::SixelDecoder(PixelAllowance& allowance, size_t limitBytes, Background background)
    : m_allowance(allowance),
      m_limitPixels(limitBytes / 4),
      m_background(background),
      m_budget(m_limitPixels * mostLayers) {
    static const Palette palette = makePalette(Ansi256PaletteStrategy::xterm, BaseColors::xterm());
    m_registers.fill(pixelOf({}));
    std::ranges::transform(palette, m_registers.begin(), pixelOf);
    std::ranges::transform(
        vt340Colors, m_registers.begin(), [](const auto& c) { return pixelOf(ofPercent(c[0], c[1], c[2])); });
}

void SixelDecoder::append(std::string_view data) {
    for (const char byte : data) {
        const bool isDigit = byte >= '0' && byte <= '9';
        if (m_state != State::data && isDigit) {
            if (m_parameterCount <= mostParameters) {
                int& value = m_parameters[m_parameterCount - 1];
                value = std::min(value * 10 + (byte - '0'), largestParameter);
            }
        } else if ((m_state == State::color || m_state == State::raster) && byte == ';') {
            if (++m_parameterCount <= mostParameters) {
                m_parameters[m_parameterCount - 1] = 0;
            } else {
                m_parameterCount = mostParameters + 1; // read over
            }
        } else if (byte > ' ' && byte <= '~') {
            leaveState();
            command(byte);
        }
    }
}

void SixelDecoder::command(char byte) {
    const auto enter = [this](State state) {
        m_state = state;
        m_parameters = {};
        m_parameterCount = 1;
    };
    switch (byte) {
    case '!':
        enter(State::repeat);
        return;
    case '#':
        enter(State::color);
        return;
    case '"':
        enter(State::raster);
        return;
    case '$':
        m_x = 0;
        return;
    case '-':
        m_x = 0;
        m_y = std::min(m_y + bandHeight, maximumImageSide);
        return;
    default:
        if (byte >= '?' && byte <= '~') {
            paint(static_cast<unsigned>(byte - '?'));
        }
        m_repeat = 1;
    }
}

void SixelDecoder::leaveState() {
    switch (m_state) {
    case State::data:
        break;
    case State::repeat:
        m_repeat = std::clamp(m_parameters[0], 1, maximumImageSide);
        break;
    case State::color:
        setColor();
        break;
    case State::raster:
        setRaster();
        break;
    }
    m_state = State::data;
}

/// # register, or # register ; system ; three parts
void SixelDecoder::setColor() {
    m_register = static_cast<size_t>(m_parameters[0]) % registerCount;
    if (m_parameterCount < mostParameters) {
        return;
    }
    const auto [number, system, first, second, third] = m_parameters;
    if (system == 1) {
        m_registers[m_register] = pixelOf(ofHls(first, second, third));
    } else if (system == 2) {
        m_registers[m_register] = pixelOf(ofPercent(first, second, third));
    }
}

/// " aspect ; aspect ; width ; height, of which only what is announced before the first pixel counts
void SixelDecoder::setRaster() {
    const int width = std::min(m_parameters[2], maximumImageSide);
    const int height = std::min(m_parameters[3], maximumImageSide);
    if (m_height == 0 && static_cast<size_t>(width) * static_cast<size_t>(height) <= m_limitPixels) {
        m_announcedWidth = width;
        m_announcedHeight = height;
    }
}

bool SixelDecoder::take(size_t pixels) {
    if (!m_isRefused && !m_allowance.take(pixels)) {
        m_isRefused = true;
        drop();
    }
    return !m_isRefused;
}

void SixelDecoder::drop() {
    m_pixels = {};
    m_width = m_height = m_stride = 0;
}

/// Whether the image may be as large; its rows get as long then, and as many.
bool SixelDecoder::makeRoom(int width, int height) {
    width = std::max(width, m_width);
    height = std::max(height, m_height);
    const auto pixels = [](int columns, int rows) { return static_cast<size_t>(columns) * static_cast<size_t>(rows); };
    const int widest = std::max(width, m_announcedWidth);
    if (widest > maximumImageSide || height > maximumImageSide || pixels(widest, height) > m_limitPixels) {
        return false;
    }
    if (width > m_stride) {
        // Twice as long, as long as that is within the limit: so it seldom moves.
        const int mostOfLimit = static_cast<int>(m_limitPixels / static_cast<size_t>(height));
        const int stride = std::min({std::max(widest, m_stride * 2), mostOfLimit, maximumImageSide});
        if (!take(pixels(stride, height))) {
            return false;
        }
        std::vector<Pixel> moved(pixels(stride, height));
        for (int row = 0; row < m_height; ++row) {
            std::copy_n(m_pixels.begin() + row * m_stride, m_width, moved.begin() + row * stride);
        }
        m_pixels = std::move(moved);
        m_stride = stride;
    } else if (pixels(m_stride, height) > m_pixels.size()) {
        if (!take(pixels(m_stride, height) - m_pixels.size())) {
            return false;
        }
        m_pixels.resize(pixels(m_stride, height));
    }
    m_width = width;
    m_height = height;
    return true;
}

void SixelDecoder::paint(unsigned bits) {
    const int count = std::min(m_repeat, maximumImageSide - m_x);
    const size_t cost = static_cast<size_t>(std::popcount(bits)) * static_cast<size_t>(count);
    const int left = m_x;
    m_x += count;
    if (bits == 0 || count <= 0 || cost > m_budget || !take(cost) ||
        !makeRoom(m_x, m_y + static_cast<int>(std::bit_width(bits)))) {
        return;
    }
    m_budget -= cost;
    for (int row = m_y; bits != 0; ++row, bits >>= 1U) {
        if ((bits & 1U) != 0) {
            std::fill_n(m_pixels.begin() + row * m_stride + left, count, m_registers[m_register]);
        }
    }
}

std::optional<RgbaImage> SixelDecoder::finish() {
    leaveState();
    int width = std::max(m_width, m_announcedWidth);
    int height = std::max(m_height, m_announcedHeight);
    if (static_cast<size_t>(width) * static_cast<size_t>(height) > m_limitPixels) {
        width = m_width;
        height = m_height;
    }
    if (width == 0 || height == 0 || !take(static_cast<size_t>(width) * static_cast<size_t>(height))) {
        return std::nullopt;
    }
    RgbaImage image{width, height, {}};
    const Pixel background = m_background == Background::filled ? m_registers[0] : 0;
    std::vector<Pixel> line(static_cast<size_t>(width), background);
    image.reserveRows();
    for (int row = 0; row < m_height; ++row) {
        const auto painted = m_pixels.begin() + static_cast<std::ptrdiff_t>(row) * m_stride;
        std::transform(painted, painted + m_width, line.begin(), [background](Pixel pixel) {
            return pixel != 0 ? pixel : background;
        });
        image.appendRow(line);
    }
    std::ranges::fill(line, background);
    for (int row = m_height; row < height; ++row) {
        image.appendRow(line);
    }
    drop();
    return image;
}

} // namespace term
