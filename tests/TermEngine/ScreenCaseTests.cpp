#include "TerminalFixture.h"
#include "UpdateMain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

// Cases of bytes in and screen out, in tests/TermEngine/cases. A case is
//
//     == what it shows
//     size 10x3            columns and rows; 20x5 when it is missing
//     in \e[2;3Hx          the bytes; as many lines as wanted, and "resize 5x3" between them
//     |          |         from here on: what comes out, written by --update
//
// With --update the program writes the cases anew and prints those that are different.

namespace term {
namespace {

struct ScreenCase {
    std::string title;
    std::vector<std::string> script;
    std::string expected;
};

struct CaseFile {
    std::filesystem::path path;
    std::string preface;
    std::vector<ScreenCase> cases;
};

bool isScript(const std::string& line) {
    return line.starts_with("size ") || line.starts_with("in ") || line.starts_with("resize ") ||
           line.starts_with("history");
}

CaseFile read(const std::filesystem::path& path) {
    CaseFile file{path, {}, {}};
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("== ")) {
            file.cases.push_back({line.substr(3), {}, {}});
        } else if (file.cases.empty()) {
            file.preface += line + "\n";
        } else if (isScript(line)) {
            file.cases.back().script.push_back(line);
        } else if (!line.empty()) {
            file.cases.back().expected += line + "\n";
        }
    }
    return file;
}

std::vector<CaseFile> allFiles() {
    std::vector<CaseFile> files;
    for (const auto& entry : std::filesystem::directory_iterator(TERM_TEST_CASES)) {
        if (entry.path().extension() == ".txt") {
            files.push_back(read(entry.path()));
        }
    }
    std::ranges::sort(files, {}, &CaseFile::path);
    return files;
}

std::pair<int, int> sizeOf(const std::string& text) {
    std::istringstream stream(text);
    int cols = 0;
    int rows = 0;
    char by = 0;
    stream >> cols >> by >> rows;
    return {cols, rows};
}

enum class Feeding { whole, byteByByte };

std::string run(const ScreenCase& test, Feeding feeding) {
    TerminalOptions options;
    options.cols = 20;
    options.rows = 5;
    bool withHistory = false;
    if (const std::string& first = test.script.front(); first.starts_with("size ")) {
        std::tie(options.cols, options.rows) = sizeOf(first.substr(5));
    }
    RecordingHost host;
    Terminal terminal(host, options);
    for (const std::string& line : test.script) {
        if (line.starts_with("in ")) {
            const std::string bytes = unescaped(line.substr(3));
            if (feeding == Feeding::whole) {
                terminal.feed(bytes);
            }
            for (std::size_t at = 0; feeding == Feeding::byteByByte && at < bytes.size(); ++at) {
                terminal.feed(std::string_view(bytes).substr(at, 1));
            }
        } else if (line.starts_with("resize ")) {
            const auto [cols, rows] = sizeOf(line.substr(7));
            terminal.resize(cols, rows);
        }
        withHistory = withHistory || line == "history";
    }
    std::string text = describe(terminal, withHistory);
    for (const std::string& call : host.calls) {
        text += "call " + call + "\n";
    }
    return host.replies.empty() ? text : text + "reply " + escaped(host.replies) + "\n";
}

TEST(ScreenCases, ShowWhatTheyDidHoweverTheBytesAreCut) {
    for (const CaseFile& file : allFiles()) {
        for (const ScreenCase& test : file.cases) {
            const std::string where = file.path.filename().string() + ": " + test.title;
            EXPECT_EQ(run(test, Feeding::whole), test.expected) << where;
            EXPECT_EQ(run(test, Feeding::byteByByte), test.expected) << where << ", byte by byte";
        }
    }
}

void update() {
    for (const CaseFile& file : allFiles()) {
        std::ofstream out(file.path);
        out << file.preface;
        for (const ScreenCase& test : file.cases) {
            const std::string now = run(test, Feeding::whole);
            out << (&test == &file.cases.front() ? "" : "\n") << "== " << test.title << "\n";
            for (const std::string& line : test.script) {
                out << line << "\n";
            }
            out << now;
            if (now != test.expected) {
                std::cout << file.path.filename().string() << ": " << test.title << "\n-- was\n"
                          << test.expected << "-- is\n"
                          << now << "\n";
            }
        }
    }
}

[[maybe_unused]] const bool isUpdated = UpdateMain::add(update);

} // namespace
} // namespace term
