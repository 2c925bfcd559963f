#include "TermEngine/ImageCodec.h"

#include <algorithm>
#include <utility>

#include <png.h>
#include <zlib.h>

namespace term {

std::optional<std::vector<uint8_t>> inflateZlib(std::span<const uint8_t> data, size_t limitBytes) {
    z_stream stream{};
    if (::inflateInit(&stream) != Z_OK) {
        return std::nullopt;
    }
    constexpr size_t largest = 1U << 30U;
    // One byte more than the limit tells a stream that goes on from one that is just as long.
    std::vector<uint8_t> out(std::min({limitBytes + 1, mostInflated(data.size()), largest}));
    stream.next_in = const_cast<Bytef*>(data.data()); // NOLINT: zlib does not write to it
    stream.avail_in = static_cast<uInt>(std::min(data.size(), largest));
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = ::inflate(&stream, Z_FINISH);
    out.resize(out.size() - stream.avail_out);
    ::inflateEnd(&stream);
    return result == Z_STREAM_END && out.size() <= limitBytes ? std::optional(std::move(out)) : std::nullopt;
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
    image.pixels.resize(count * 4);
    const uint8_t* from = data.data();
    for (uint8_t *to = image.pixels.data(), *end = to + count * 4; to != end; to += 4, from += 3) {
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
        to[3] = 0xFF;
    }
    return image;
}

} // namespace term
