#include "TerminalFixture.h"
#include "UpdateMain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

// What real programs wrote, in tests/TermEngine/recordings: NAME.bytes, made by `record` there, and NAME.screen, with
// the sizes in its first line ("size 80x24 5100 100x30": from byte 5100 on another one) and then what has to be shown.
// With --update the program writes the screens anew.

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
    std::istringstream sizes(recording.size.substr(5));
    TerminalOptions options;
    char by = 0;
    sizes >> options.cols >> by >> options.rows;
    RecordingHost host;
    Terminal terminal(host, options);
    std::string_view rest = recording.bytes;
    const auto* piece = pieces.begin();
    const auto feedTo = [&](std::size_t end) {
        while (recording.bytes.size() - rest.size() < end) {
            const std::size_t fed = recording.bytes.size() - rest.size();
            const std::size_t count = std::min(*piece, end - fed);
            terminal.feed(rest.substr(0, count));
            rest.remove_prefix(count);
            piece += piece + 1 != pieces.end() ? 1 : 0;
        }
    };
    std::size_t offset = 0;
    for (int cols = 0, rows = 0; sizes >> offset >> cols >> by >> rows;) {
        feedTo(offset);
        terminal.resize(cols, rows);
    }
    feedTo(recording.bytes.size());
    std::string text = describe(terminal);
    text += "title " + terminal.title() + "\n";
    return host.replies.empty() ? text : text + "reply " + escaped(host.replies) + "\n";
}

TEST(Recordings, ShowWhatTheProgramsMeantHoweverTheBytesAreCut) {
    const std::vector<Recording> recordings = allRecordings();
    EXPECT_GE(recordings.size(), 9U);
    for (const Recording& recording : recordings) {
        EXPECT_EQ(shown(recording, {recording.bytes.size()}), recording.expected) << recording.name;
        for (const std::size_t piece : {1U, 2U, 3U, 5U, 7U, 13U, 64U, 1000U}) {
            EXPECT_EQ(shown(recording, {piece}), recording.expected) << recording.name << " in pieces of " << piece;
        }
        // Cut at every position: in pieces that are longer than what is looked at together anywhere, first at those
        // from one byte on, then at those that are one byte further on, and so forth.
        constexpr std::size_t stride = 100;
        for (std::size_t first = 1; first <= std::min(stride, recording.bytes.size()); ++first) {
            ASSERT_EQ(shown(recording, {first, stride}), recording.expected)
                << recording.name << " cut at " << first << " and each " << stride << " bytes further on";
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
