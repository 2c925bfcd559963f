#include "FuzzInput.h"
#include "TermEngine/SixelDecoder.h"

#include <chrono>

/// One image, whole and in pieces, under a limit from the first bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using term::SixelDecoder;
    FuzzInput input(data, size);
    const size_t limit = input.number() % 400'000;
    const auto background =
        input.byte() % 2 == 0 ? SixelDecoder::Background::filled : SixelDecoder::Background::transparent;
    const size_t step = input.byte() + size_t{1};
    const std::string_view rest = input.take(size);
    term::PixelAllowance allowance(limit);
    SixelDecoder whole(allowance, limit, background);
    whole.append(rest);
    const auto image = whole.finish();
    allowance = term::PixelAllowance(limit);
    SixelDecoder pieces(allowance, limit, background);
    for (std::string_view left = rest; !left.empty(); left.remove_prefix(std::min(step, left.size()))) {
        pieces.append(left.substr(0, step));
    }
    require(pieces.finish() == image);
    if (image) {
        require(image->width <= term::maximumImageSide && image->height <= term::maximumImageSide);
        require(image->pixels.size() == static_cast<size_t>(image->height) * image->rowBytes());
        require(image->pixels.size() <= limit);
    }
    return 0;
}
