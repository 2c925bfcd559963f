#include "TermEngine/ImageCodec.h"

#include <algorithm>

#include <png.h>
#include <zlib.h>

namespace term {

std::optional<std::vector<uint8_t>> inflateZlib(std::span<const uint8_t> data, size_t limitBytes) {
    z_stream stream{};
    if (::inflateInit(&stream) != Z_OK) {
        return std::nullopt;
    }
    std::vector<uint8_t> out;
    constexpr size_t step = 256 * 1024;
    constexpr size_t largestInput = 1U << 30U;
    stream.next_in = const_cast<Bytef*>(data.data()); // NOLINT: zlib does not write to it
    stream.avail_in = static_cast<uInt>(std::min(data.size(), largestInput));
    int result = Z_OK;
    // One byte more than the limit tells a stream that goes on from one that is just as long.
    while (result == Z_OK && out.size() <= limitBytes) {
        const size_t before = out.size();
        out.resize(before + std::min(std::max(step, before), limitBytes + 1 - before));
        stream.next_out = out.data() + before;
        stream.avail_out = static_cast<uInt>(out.size() - before);
        result = ::inflate(&stream, Z_NO_FLUSH);
        const size_t written = out.size() - stream.avail_out;
        result = result == Z_OK && written == before ? Z_BUF_ERROR : result; // it is cut off
        out.resize(written);
    }
    ::inflateEnd(&stream);
    return result == Z_STREAM_END && out.size() <= limitBytes ? std::optional(std::move(out)) : std::nullopt;
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

std::optional<RgbaImage> fromRawPixels(std::span<const uint8_t> data, int width, int height, int bytesPerPixel) {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    const auto each = static_cast<size_t>(bytesPerPixel);
    if (count == 0 || data.size() < count * each) {
        return std::nullopt;
    }
    RgbaImage image{width, height, {}};
    if (each == 4) {
        image.pixels.assign(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(count * 4));
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
