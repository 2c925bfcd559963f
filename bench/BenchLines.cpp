// Prints numbered lines of 95 bytes, as a server under load would, and as fast as the reader takes them.
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include <unistd.h>

namespace {

constexpr size_t numberWidth = 8;
constexpr std::string_view before = "10:42:17.318 INFO  request ";
constexpr std::string_view after = " GET /api/orders/48213?page=3 200 in 12 ms, user maria, 2841 bytes";

bool writeAll(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

/// Adds one to a decimal number that stands in `digits`.
void countUp(char* digits) {
    for (size_t at = numberWidth; at-- > 0;) {
        if (digits[at] != '9') {
            ++digits[at];
            return;
        }
        digits[at] = '0';
    }
}

} // namespace

int main(int argc, char** argv) {
    constexpr size_t lineBytes = 95;
    static_assert(before.size() + numberWidth + 1 + after.size() >= lineBytes);
    const std::string_view count = argc > 1 ? argv[1] : "";
    long lines = 0;
    if (std::from_chars(count.data(), count.data() + count.size(), lines).ec != std::errc() || lines < 1) {
        std::fputs("usage: orv-bench-lines COUNT [--announce | --linger]\n", stderr);
        return 2;
    }
    const std::string_view option = argc > 2 ? argv[2] : "";
    if (option == "--announce" && !writeAll("Listening on http://localhost:4321\n")) {
        return 1;
    }
    std::string line = std::string(before) + std::string(numberWidth, '0') + std::string(after);
    line.resize(lineBytes - 1);
    line += '\n';

    constexpr size_t linesAtOnce = 64 * 1024 / lineBytes;
    std::string block;
    block.reserve(linesAtOnce * lineBytes);
    for (long number = 1; number <= lines; ++number) {
        countUp(line.data() + before.size());
        block += line;
        if (block.size() + lineBytes > linesAtOnce * lineBytes || number == lines) {
            if (!writeAll(block)) {
                return 1;
            }
            block.clear();
        }
    }
    if (option == "--linger") {
        pause();
    }
    return 0;
}
