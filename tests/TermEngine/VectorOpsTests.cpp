#include "TermEngine/Base64.h"
#include "TermEngine/EscapeSequenceParser_p.h"
#include "TermEngine/Unicode.h"
#include "TermEngine/VectorOps_p.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace term {
namespace {

constexpr std::uint64_t untouched = 0xDEADBEEF;
constexpr std::uint64_t pen = std::uint64_t{7} << PackedCell::attributeShift;

std::vector<std::uint8_t> bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

/// Characters of one to four bytes, of one and two columns, alone and in runs.
std::u32string mixedText(std::mt19937& random, std::size_t size) {
    static constexpr std::array<detail::ScalarRange, 10> ranges = {
        {{0x20, 0x7E},
         {0x61, 0x7A},
         {0xA0, 0x2FF},
         {0x300, 0x36F},
         {0x400, 0x4FF},
         {0x3041, 0x30FF},
         {0x4E00, 0x9FFF},
         {0xAC00, 0xD7FF},
         {0xE000, 0xFFFF},
         {0x1F300, 0x10FFFF}}};
    std::u32string text;
    while (text.size() < size) {
        const auto& [first, last] = ranges[random() % ranges.size()];
        for (std::size_t run = random() % 24; run > 0; --run) {
            text.push_back(first + static_cast<char32_t>(random() % (last - first + 1)));
        }
    }
    return text;
}

/// All of it: what a call leaves is taken a byte at a time, a stray byte as `stray`.
std::u32string decodeAll(const VectorOps& ops, const std::vector<std::uint8_t>& bytes) {
    constexpr char32_t stray = 0xFFFFFFFF;
    std::u32string text;
    std::vector<char32_t> scalars(bytes.size() + VectorOps::decodeSlack);
    for (std::size_t at = 0; at < bytes.size();) {
        const DecodedText done = ops.decodeUtf8(bytes.data() + at, bytes.size() - at, scalars.data());
        text.append(scalars.data(), done.scalars);
        at += done.bytes;
        // What is not taken by one set of instructions may be by another: one character at a time has the last word.
        if (at < bytes.size()) {
            char32_t scalar = bytes[at];
            const std::uint8_t padded[4] = {
                bytes[at], at + 1 < bytes.size() ? bytes[at + 1] : std::uint8_t{},
                at + 2 < bytes.size() ? bytes[at + 2] : std::uint8_t{},
                at + 3 < bytes.size() ? bytes[at + 3] : std::uint8_t{}};
            const int size = detail::decodeSequence(padded, detail::wordAt(padded), scalar);
            text.push_back(size > 0 ? scalar : stray);
            at += static_cast<std::size_t>(std::max(size, 1));
        }
    }
    return text;
}

TEST(VectorOps, DecodeUtf8AsItIsWritten) {
    std::mt19937 random(3);
    for (int round = 0; round < 400; ++round) {
        const std::u32string text = mixedText(random, random() % 300);
        const std::vector<std::uint8_t> bytes = bytesOf(unicode::toUtf8(text));
        for (const VectorOps& ops : availableVectorOps()) {
            ASSERT_EQ(
                decodeAll(ops, bytes), unicode::fromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()}))
                << ops.name << ", round " << round;
        }
    }
}

TEST(VectorOps, AgreeOnWhatIsNoUtf8) {
    const std::vector<std::string> broken = {
        "\xC0\x80",
        "\xC1\xBF",
        "\xE0\x9F\xBF",
        "\xED\xA0\x80",
        "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xF8\x88\x80\x80",
        "\xFF",
        "\x80",
        "\xE4\xB8",
        "\xF0\x9F\x98",
        "\xC3",
        "\xE4\xB8\xC3\xA9",
        "\x1B",
        "\x7F",
        "\xC3\x1B",
        "\xE2\x82\x41"};
    std::mt19937 random(4);
    for (int round = 0; round < 2000; ++round) {
        std::string text = unicode::toUtf8(mixedText(random, random() % 90));
        for (std::size_t count = 1 + random() % 3; count > 0; --count) {
            text.insert(random() % (text.size() + 1), broken[random() % broken.size()]);
        }
        const std::u32string expected = decodeAll(availableVectorOps().front(), bytesOf(text));
        for (const VectorOps& ops : availableVectorOps()) {
            ASSERT_EQ(decodeAll(ops, bytesOf(text)), expected) << ops.name << ", round " << round;
        }
    }
    // A sequence that is none is never taken.
    for (const std::string& bytes : broken) {
        for (const VectorOps& ops : availableVectorOps()) {
            std::vector<char32_t> scalars(100);
            const std::string text = "\xC3\xA9" + bytes + std::string(80, '\x1B');
            EXPECT_LE(ops.decodeUtf8(bytesOf(text).data(), text.size(), scalars.data()).scalars, 1U) << ops.name;
        }
    }
}

TEST(VectorOps, KnowTheWidthsOfTheTables) {
    for (char32_t scalar = 0; scalar < 0x110000; ++scalar) {
        const unicode::Properties properties = unicode::properties(scalar);
        const int width = detail::commonWidth(scalar);
        ASSERT_TRUE(width == 0 || (properties.startsCluster() && properties.width() == width))
            << std::hex << static_cast<std::uint32_t>(scalar);
    }
}

TEST(VectorOps, ExpandScalarsIntoTheColumnsThatAreThere) {
    std::mt19937 random(5);
    for (int round = 0; round < 3000; ++round) {
        const std::u32string text = mixedText(random, 1 + random() % 60);
        const std::size_t columns = random() % 70;
        std::vector<std::uint64_t> expected;
        std::size_t known = 0;
        for (; known < text.size(); ++known) {
            const int width = detail::commonWidth(text[known]);
            if (width == 0 || expected.size() + static_cast<std::size_t>(width) > columns) {
                break;
            }
            const auto state = width == 2 ? WidthState::wide : WidthState::narrow;
            expected.push_back(PackedCell::make(PackedCell::Kind::scalar, text[known], pen, state).rawValue);
            if (width == 2) {
                expected.push_back(PackedCell::make(PackedCell::Kind::scalar, 0, pen, WidthState::spacer).rawValue);
            }
        }
        for (const VectorOps& ops : availableVectorOps()) {
            std::vector<std::uint64_t> cells(columns + 20, untouched);
            const ExpandedText done = ops.expandScalars(cells.data(), text.data(), text.size(), columns, pen);
            ASSERT_LE(done.scalars, known) << ops.name;
            ASSERT_TRUE(done.scalars + 8 > known) << ops.name << ", much was left: " << done.scalars << " of " << known;
            ASSERT_TRUE(
                std::equal(cells.begin(), cells.begin() + static_cast<std::ptrdiff_t>(done.columns), expected.begin()))
                << ops.name << ", round " << round;
            ASSERT_EQ(std::ranges::count(cells, untouched), static_cast<std::ptrdiff_t>(cells.size() - done.columns));
            const auto isWide = [](char32_t scalar) { return detail::commonWidth(scalar) == 2; };
            ASSERT_EQ(
                done.hasWide,
                std::any_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(done.scalars), isWide));
        }
    }
}

TEST(VectorOps, DecodeBase64UpToWhatIsNone) {
    std::mt19937 random(6);
    for (std::size_t size = 0; size < 400; size += 4) {
        for (int round = 0; round < 6; ++round) {
            std::vector<std::uint8_t> bytes(size / 4 * 3);
            std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(random()); });
            std::string text = encodeBase64(bytes);
            if (round > 0 && size > 0) {
                const std::size_t at = random() % size;
                text[at] = std::string_view("=-_\n\x80\xFF@`{[/:\0", 13)[random() % 13];
                const bool isGood = text[at] == '/';
                bytes.resize(isGood ? bytes.size() : at / 4 * 3);
                if (isGood) {
                    bytes = *decodeBase64(text, bytes.size());
                }
            }
            for (const VectorOps& ops : availableVectorOps()) {
                // The memory ends where the bytes do.
                std::vector<std::uint8_t> decoded(size / 4 * 3);
                const auto* const from = reinterpret_cast<const std::uint8_t*>(text.data());
                const std::size_t taken = ops.decodeBase64(from, text.size(), decoded.data());
                decoded.resize(taken / 4 * 3);
                ASSERT_EQ(decoded, bytes) << ops.name << ", " << text;
            }
        }
    }
}

TEST(VectorOps, SumTheScalarsOfCells) {
    std::mt19937_64 random(7);
    for (std::size_t size = 0; size < 60; ++size) {
        std::vector<std::uint64_t> cells(size);
        std::ranges::generate(cells, random);
        std::uint32_t scalars = 0;
        std::uint32_t clusters = 0;
        for (const std::uint64_t raw : cells) {
            const PackedCell cell(raw);
            scalars += cell.kind() == PackedCell::Kind::scalar ? cell.content() : 0;
            clusters += cell.kind() == PackedCell::Kind::cluster ? 1 : 0;
        }
        for (const VectorOps& ops : availableVectorOps()) {
            const TextSum sum = ops.sumScalars(cells.data(), size);
            ASSERT_TRUE(sum.scalars == scalars && sum.clusters == clusters) << ops.name << ", " << size;
        }
    }
}

TEST(VectorOps, TellDigitsAndSemicolons) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t at = 0; at < detail::sequenceSize; ++at) {
            std::vector<std::uint8_t> text(detail::sequenceSize, static_cast<std::uint8_t>('0' + byte % 10));
            text[at] = static_cast<std::uint8_t>(byte);
            const std::uint32_t bit = std::uint32_t{1} << at;
            for (const auto shapeOf : {detail::sequenceShape, detail::sequenceShapePlain}) {
                const detail::SequenceShape shape = shapeOf(text.data());
                ASSERT_EQ(shape.others, byte >= '0' && byte <= '9' ? 0 : bit) << byte;
                ASSERT_EQ(shape.semicolons, byte == ';' ? bit : 0) << byte;
            }
            const bool isPrintable = byte >= 0x20 && byte < 0x7F;
            const std::size_t run = isPrintable || at >= 16 ? 16 : at;
            ASSERT_EQ(detail::asciiRun16(text.data()), run) << byte;
        }
    }
}

/// The same byte by byte; nothing for what is not so short.
std::optional<detail::ShortSequence> shortSequence(const std::array<std::uint8_t, 8>& bytes) {
    std::vector<std::string> numbers(1);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const std::uint8_t byte = bytes[at];
        if (byte >= 0x40 && byte < 0x7F && numbers.size() <= 2) {
            const auto valueOf = [](const std::string& digits) { return digits.empty() ? 0 : std::stoi(digits); };
            return detail::ShortSequence{
                static_cast<int>(at) + 1, byte, valueOf(numbers[0]), numbers.size() == 2 ? valueOf(numbers[1]) : -1};
        }
        if (byte == ';') {
            numbers.emplace_back();
        } else if (byte >= '0' && byte <= '9' && numbers.back().size() < 4) {
            numbers.back() += static_cast<char>(byte);
        } else {
            return {};
        }
    }
    return {};
}

TEST(VectorOps, ReadShortSequencesAsByteByByte) {
    static constexpr std::string_view bytes = "000123456789;;;;HmK@~:</?! \x1B\x7F\x80\xB1\xC8\xFF";
    std::mt19937 random(5);
    int found = 0;
    for (int round = 0; round < 200'000; ++round) {
        std::array<std::uint8_t, 8> text{};
        // Often digits and semicolons alone up to the end.
        const std::size_t kinds = round % 2 == 0 ? bytes.size() : bytes.find('K');
        std::ranges::generate(text, [&] { return static_cast<std::uint8_t>(bytes[random() % kinds]); });
        const auto expected = shortSequence(text);
        detail::ShortSequence read;
        const bool isShort = detail::readShortSequence(text.data(), read) && read.final >= 0x40 && read.final < 0x7F;
        const std::string shown(text.begin(), text.end());
        ASSERT_EQ(isShort, expected.has_value()) << testing::PrintToString(shown);
        if (expected) {
            ++found;
            ASSERT_TRUE(read == *expected) << testing::PrintToString(shown);
        }
    }
    EXPECT_GT(found, 50'000);
}

TEST(VectorOps, FillTheGapBeforeARun) {
    constexpr std::uint64_t blank = 0x123456789;
    const std::vector<std::uint8_t> text(20, 'x');
    for (const VectorOps& ops : availableVectorOps()) {
        for (std::ptrdiff_t gap = -40; ops.expandAsciiBehind != nullptr && gap < 200; ++gap) {
            const std::size_t size = static_cast<std::size_t>(gap + 40) % text.size();
            std::vector<std::uint64_t> expected(300, untouched);
            std::vector<std::uint64_t> cells = expected;
            std::fill_n(
                expected.begin() + 210 - std::max<std::ptrdiff_t>(gap, 0), std::max<std::ptrdiff_t>(gap, 0), blank);
            std::fill_n(expected.begin() + 210, size, PackedCell::make(PackedCell::Kind::scalar, 'x', pen).rawValue);
            ops.expandAsciiBehind(cells.data() + 210, gap, blank, text.data(), size, pen);
            ASSERT_EQ(cells, expected) << ops.name << ", " << gap;
        }
    }
}

TEST(VectorOps, FindAndExpandRunsOfEveryLength) {
    for (const VectorOps& ops : availableVectorOps()) {
        for (std::size_t size = 0; size < 140; ++size) {
            std::vector<std::uint8_t> text(size, ' ');
            for (std::size_t i = 0; i < size; ++i) {
                text[i] = static_cast<std::uint8_t>(0x20 + i % 95);
            }
            std::vector<std::uint64_t> cells(size + 2, untouched);
            ops.expandAscii(cells.data() + 1, text.data(), size, pen);
            ASSERT_TRUE(cells.front() == untouched && cells.back() == untouched) << ops.name << ", " << size;
            for (std::size_t i = 0; i < size; ++i) {
                ASSERT_EQ(cells[i + 1], PackedCell::make(PackedCell::Kind::scalar, text[i], pen).rawValue) << ops.name;
            }
            ASSERT_EQ(ops.asciiRun(text.data(), size), size) << ops.name;
            for (const int other : {0x00, 0x1F, 0x7F, 0x80, 0xFF}) {
                for (std::size_t at = 0; at < size; at += 1 + at / 8) {
                    std::vector<std::uint8_t> marked = text;
                    marked[at] = static_cast<std::uint8_t>(other);
                    ASSERT_EQ(ops.asciiRun(marked.data(), size), at) << ops.name << ", " << size;
                }
            }
        }
    }
}

} // namespace
} // namespace term
