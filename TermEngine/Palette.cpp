#include "TermEngine/Palette.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace term {
namespace {

constexpr size_t cubeBegin = 16;
constexpr size_t cubeSide = 6;
constexpr size_t rampBegin = 232;
constexpr size_t rampSteps = 24;

/// CIE 1976 L*a*b* under D65.
struct Lab {
    double l = 0;
    double a = 0;
    double b = 0;
};

constexpr double whiteX = 0.95047;
constexpr double whiteZ = 1.08883;
constexpr double epsilon = 216.0 / 24389.0;
constexpr double kappa = 24389.0 / 27.0;

double linear(uint8_t part) {
    const double value = part / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4); // IEC 61966-2-1
}

uint8_t encoded(double value) {
    const double part = value <= 0.0031308 ? value * 12.92 : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
    return static_cast<uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

Lab toLab(RgbColor color) {
    const double red = linear(color.red);
    const double green = linear(color.green);
    const double blue = linear(color.blue);
    const auto f = [](double t) { return t > epsilon ? std::cbrt(t) : (kappa * t + 16) / 116; };
    const double x = f((0.4124564 * red + 0.3575761 * green + 0.1804375 * blue) / whiteX);
    const double y = f(0.2126729 * red + 0.7151522 * green + 0.0721750 * blue);
    const double z = f((0.0193339 * red + 0.1191920 * green + 0.9503041 * blue) / whiteZ);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

RgbColor toRgb(const Lab& lab) {
    const double fy = (lab.l + 16) / 116;
    const auto inverse = [](double f) { return f * f * f > epsilon ? f * f * f : (116 * f - 16) / kappa; };
    const double x = inverse(fy + lab.a / 500) * whiteX;
    const double y = inverse(fy);
    const double z = inverse(fy - lab.b / 200) * whiteZ;
    return {
        encoded(3.2404542 * x - 1.5371385 * y - 0.4985314 * z), encoded(-0.9692660 * x + 1.8760108 * y + 0.0415560 * z),
        encoded(0.0556434 * x - 0.2040259 * y + 1.0572252 * z)};
}

Lab between(const Lab& from, const Lab& to, double part) {
    return {from.l + (to.l - from.l) * part, from.a + (to.a - from.a) * part, from.b + (to.b - from.b) * part};
}

void fillXterm(Palette& palette) {
    const auto level = [](size_t step) { return static_cast<uint8_t>(step == 0 ? 0 : 55 + 40 * step); };
    for (size_t index = 0; index < cubeSide * cubeSide * cubeSide; ++index) {
        palette[cubeBegin + index] = {level(index / 36), level(index / 6 % 6), level(index % 6)};
    }
    for (size_t step = 0; step < rampSteps; ++step) {
        const auto gray = static_cast<uint8_t>(8 + 10 * step);
        palette[rampBegin + step] = {gray, gray, gray};
    }
}

void fillFromBase(Palette& palette, const BaseColors& base, bool isHarmonious) {
    Lab begin = toLab(base.background);
    Lab end = toLab(base.foreground);
    if (!isHarmonious && begin.l > end.l) {
        std::swap(begin, end);
    }
    // The corners in the order of the bits red, green, blue: as the named colours are numbered, but for the ends.
    std::array<Lab, 8> corners{};
    for (size_t corner = 0; corner < corners.size(); ++corner) {
        corners[corner] = toLab(base.ansi[corner]);
    }
    corners.front() = begin;
    corners.back() = end;
    const auto part = [](size_t step) { return static_cast<double>(step) / (cubeSide - 1); };
    for (size_t index = 0; index < cubeSide * cubeSide * cubeSide; ++index) {
        const double red = part(index / 36);
        const double green = part(index / 6 % 6);
        const double blue = part(index % 6);
        const auto edge = [&](size_t at) { return between(corners[at], corners[at + 1], red); }; // bit 0 is red
        const Lab front = between(edge(0), edge(2), green);
        const Lab back = between(edge(4), edge(6), green);
        palette[cubeBegin + index] = toRgb(between(front, back, blue));
    }
    for (size_t step = 0; step < rampSteps; ++step) {
        palette[rampBegin + step] = toRgb(between(begin, end, static_cast<double>(step + 1) / (rampSteps + 1)));
    }
}

} // namespace

const BaseColors& BaseColors::xterm() {
    static const BaseColors colors{
        {{{0, 0, 0},
          {205, 0, 0},
          {0, 205, 0},
          {205, 205, 0},
          {0, 0, 238},
          {205, 0, 205},
          {0, 205, 205},
          {229, 229, 229},
          {127, 127, 127},
          {255, 0, 0},
          {0, 255, 0},
          {255, 255, 0},
          {92, 92, 255},
          {255, 0, 255},
          {0, 255, 255},
          {255, 255, 255}}},
        {229, 229, 229},
        {0, 0, 0}};
    return colors;
}

Palette makePalette(Ansi256PaletteStrategy strategy, const BaseColors& base) {
    Palette palette{};
    std::ranges::copy(base.ansi, palette.begin());
    if (strategy == Ansi256PaletteStrategy::xterm) {
        fillXterm(palette);
    } else {
        fillFromBase(palette, base, strategy == Ansi256PaletteStrategy::base16LabHarmonious);
    }
    return palette;
}

} // namespace term
