#include "TermEngine/ImageCodec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <utility>

#include <png.h>
#include <zlib.h>

namespace term {
namespace {

/// The check value at the end of a zlib stream (RFC 1950), of sixteen bytes at once: zlib takes five times as long.
class Adler32 {
public:
    /// Not more than some megabytes at once.
    void add(std::span<const uint8_t> bytes) {
        constexpr size_t lanes = 16;
        constexpr size_t rows = 16; // so that no lane overflows
        using Row [[gnu::vector_size(lanes)]] = uint8_t;
        using Lanes [[gnu::vector_size(lanes * 2)]] = uint16_t;
        for (; bytes.size() >= lanes * rows; bytes = bytes.subspan(lanes * rows)) {
            Lanes sums{};
            Lanes sumsBefore{}; // what each row adds to those of the rows behind it
            for (size_t at = 0; at < lanes * rows; at += lanes) {
                Row row;
                std::memcpy(&row, bytes.data() + at, lanes);
                sumsBefore += sums;
                sums += __builtin_convertvector(row, Lanes);
            }
            m_second += lanes * rows * m_first;
            for (size_t lane = 0; lane < lanes; ++lane) {
                m_first += sums[lane];
                m_second += lanes * sumsBefore[lane] + (lanes - lane) * sums[lane];
            }
        }
        for (const uint8_t byte : bytes) {
            m_first += byte;
            m_second += m_first;
        }
        m_first %= modulus;
        m_second %= modulus;
    }
    [[nodiscard]] bool isAt(const uint8_t* bytes) const {
        return m_second == (size_t{bytes[0]} << 8U | bytes[1]) && m_first == (size_t{bytes[2]} << 8U | bytes[3]);
    }

private:
    static constexpr uint64_t modulus = 65521;
    uint64_t m_first = 1;
    uint64_t m_second = 0;
};

} // namespace

std::optional<std::vector<uint8_t>> inflateZlib(std::span<const uint8_t> data, size_t limitBytes) {
    z_stream stream{};
    if (::inflateInit(&stream) != Z_OK) {
        return std::nullopt;
    }
    ::inflateValidate(&stream, 0); // which is done here
    constexpr size_t largest = 1U << 30U;
    stream.next_in = const_cast<Bytef*>(data.data()); // NOLINT: zlib does not write to it
    stream.avail_in = static_cast<uInt>(std::min(data.size(), largest));
    // In pieces that stay in the processor's cache, so that no storage is cleared before it is written.
    const size_t pieceSize = std::min(size_t{64} << 10U, mostInflated(data.size()));
    const auto piece = std::make_unique_for_overwrite<uint8_t[]>(pieceSize);
    Adler32 sum;
    std::vector<uint8_t> out;
    out.reserve(std::min({limitBytes, mostInflated(data.size()), largest}));
    int result = Z_OK;
    bool fits = true;
    while (result == Z_OK && fits) {
        stream.next_out = piece.get();
        stream.avail_out = static_cast<uInt>(pieceSize);
        result = ::inflate(&stream, Z_NO_FLUSH);
        const std::span made(piece.get(), pieceSize - stream.avail_out);
        fits = out.size() + made.size() <= limitBytes;
        if (fits) {
            sum.add(made);
            out.insert(out.end(), made.begin(), made.end());
        }
    }
    const bool isWhole = result == Z_STREAM_END && fits && sum.isAt(stream.next_in - 4);
    ::inflateEnd(&stream);
    return isWhole ? std::optional(std::move(out)) : std::nullopt;
}

size_t mostInflated(size_t bytes) {
    constexpr size_t expansion = 1032; // zlib, "Maximum Expansion Factor"
    return bytes * expansion;
}

size_t pngPixels(std::span<const uint8_t> data) {
    // Signature, length and name of the first chunk, which has to be the header: width and height.
    constexpr size_t start = 16;
    if (data.size() < start + 8 || ::png_sig_cmp(data.data(), 0, 8) != 0) {
        return 0;
    }
    return size_t{png_get_uint_32(data.data() + start)} * png_get_uint_32(data.data() + start + 4);
}

std::optional<RgbaImage> decodePng(std::span<const uint8_t> data, size_t limitBytes) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (::png_image_begin_read_from_memory(&png, data.data(), data.size()) == 0) {
        return std::nullopt;
    }
    const uint64_t size = uint64_t{png.width} * png.height * 4;
    if (png.width > maximumImageSide || png.height > maximumImageSide || size > limitBytes || size == 0) {
        ::png_image_free(&png);
        return std::nullopt;
    }
    RgbaImage image{
        static_cast<int>(png.width), static_cast<int>(png.height), std::vector<uint8_t>(static_cast<size_t>(size))};
    png.format = PNG_FORMAT_RGBA;
    const bool isGood = ::png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) != 0;
    ::png_image_free(&png);
    return isGood ? std::optional(std::move(image)) : std::nullopt;
}

std::optional<RgbaImage> fromRawPixels(std::vector<uint8_t> data, int width, int height, int bytesPerPixel) {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    const auto each = static_cast<size_t>(bytesPerPixel);
    if (count == 0 || data.size() < count * each) {
        return std::nullopt;
    }
    RgbaImage image{width, height, {}};
    if (each == 4) {
        data.resize(count * 4);
        image.pixels = std::move(data);
        return image;
    }
    constexpr auto opaque = std::bit_cast<uint32_t>(std::array<uint8_t, 4>{0, 0, 0, 0xFF});
    image.reserveRows();
    std::vector<uint32_t> row(static_cast<size_t>(width));
    for (const uint8_t* from = data.data(); image.pixels.size() < count * 4;) {
        // Four bytes of each pixel, but of the last one, which nothing has to follow.
        for (uint32_t& pixel : std::span(row).first(row.size() - 1)) {
            std::memcpy(&pixel, from, 4);
            pixel |= opaque;
            from += each;
        }
        std::memcpy(&row.back(), from, each);
        row.back() |= opaque;
        from += each;
        image.appendRow(row);
    }
    return image;
}

} // namespace term
