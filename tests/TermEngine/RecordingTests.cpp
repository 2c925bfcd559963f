#include "TerminalFixture.h"
#include "UpdateMain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

// What real programs wrote, in tests/TermEngine/recordings: NAME.bytes, made by `record` there, and NAME.screen, with
// the size in its first line and then what has to be shown. With --update the program writes the screens anew.

namespace term {
namespace {

namespace fs = std::filesystem;

struct Recording {
    std::string name;
    std::string bytes;
    std::string size;
    std::string expected;
};

std::string contentsOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Recording> allRecordings() {
    std::vector<Recording> recordings;
    for (const auto& entry : fs::directory_iterator(TERM_TEST_RECORDINGS)) {
        if (entry.path().extension() == ".bytes") {
            const std::string screen = contentsOf(fs::path(entry.path()).replace_extension(".screen"));
            const std::size_t end = screen.find('\n') + 1;
            recordings.push_back(
                {entry.path().stem(), contentsOf(entry.path()), screen.substr(0, end), screen.substr(end)});
        }
    }
    std::ranges::sort(recordings, {}, &Recording::name);
    return recordings;
}

/// What is shown after the bytes came in pieces of these sizes, the last one again and again.
std::string shown(const Recording& recording, std::initializer_list<std::size_t> pieces) {
    TerminalOptions options;
    std::sscanf(recording.size.c_str(), "size %dx%d", &options.cols, &options.rows);
    RecordingHost host;
    Terminal terminal(host, options);
    const auto* piece = pieces.begin();
    for (std::string_view rest = recording.bytes; !rest.empty();) {
        const std::size_t count = std::min(*piece, rest.size());
        terminal.feed(rest.substr(0, count));
        rest.remove_prefix(count);
        piece += piece + 1 != pieces.end() ? 1 : 0;
    }
    std::string text = describe(terminal);
    text += "title " + terminal.title() + "\n";
    return host.replies.empty() ? text : text + "reply " + escaped(host.replies) + "\n";
}

TEST(Recordings, ShowWhatTheProgramsMeantHoweverTheBytesAreCut) {
    const std::vector<Recording> recordings = allRecordings();
    EXPECT_GE(recordings.size(), 9U);
    for (const Recording& recording : recordings) {
        EXPECT_EQ(shown(recording, {recording.bytes.size()}), recording.expected) << recording.name;
        for (const std::size_t piece : {1, 2, 3, 5, 7, 13, 64, 1000}) {
            EXPECT_EQ(shown(recording, {piece}), recording.expected) << recording.name << " in pieces of " << piece;
        }
        // In two halves, cut everywhere, as far as that is done in reasonable time.
        const std::size_t step = std::max<std::size_t>(recording.bytes.size() * recording.bytes.size() / 500'000, 1);
        for (std::size_t cut = 1; cut < recording.bytes.size(); cut += step) {
            ASSERT_EQ(shown(recording, {cut, recording.bytes.size()}), recording.expected)
                << recording.name << " cut at " << cut;
        }
    }
}

void update() {
    for (const Recording& recording : allRecordings()) {
        const std::string now = shown(recording, {recording.bytes.size()});
        if (now != recording.expected) {
            std::cout << recording.name << "\n" << now << "\n";
            std::ofstream(fs::path(TERM_TEST_RECORDINGS) / (recording.name + ".screen"), std::ios::binary)
                << recording.size << now;
        }
    }
}

[[maybe_unused]] const bool isUpdated = UpdateMain::add(update);

} // namespace
} // namespace term
