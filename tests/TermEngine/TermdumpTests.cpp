#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <unistd.h>

// The program termdump, run as people run it.

namespace term {
namespace {

struct Output {
    std::string text;
    int exitCode = -1;
};

/// Of a shell line in which "termdump" is the program.
Output run(const std::string& line) {
    const std::string command = "termdump() { " TERM_TERMDUMP " \"$@\"; }; " + line;
    FILE* const pipe = ::popen(command.c_str(), "r");
    Output output;
    for (int c = 0; pipe != nullptr && (c = std::fgetc(pipe)) != EOF;) {
        output.text += static_cast<char>(c);
    }
    output.exitCode = pipe == nullptr ? -1 : WEXITSTATUS(::pclose(pipe));
    return output;
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

class TermdumpTest : public testing::Test {
protected:
    TermdumpTest() { std::filesystem::create_directory(folder); }
    ~TermdumpTest() override { std::filesystem::remove_all(folder); }
    const std::string folder = std::filesystem::temp_directory_path() / ("termdump-" + std::to_string(::getpid()));
};

TEST_F(TermdumpTest, PrintsAttributesLinksAndModes) {
    const Output json =
        run(R"(printf '\033]2;a "title"\a\033[1;4:3;31;48;2;1;2;255;58:5:9mred\033[m \033]8;;http://x/\033\\)"
            R"(link\033]8;;\033\\ plain\r\n\033[?2004h\033[4h\033[53;7m\346\274\242\033[1"q!' | )"
            "termdump --size 30x3 --json --replay -");
    EXPECT_EQ(json.exitCode, 0);
    EXPECT_EQ(json.text, R"({
  "columns": 30,
  "title": "a \"title\"",
  "cursor": {"row": 1, "column": 3, "pendingWrap": false, "visible": true, "style": "blinkBlock"},
  "alternate": false,
  "modes": {"ansi": [4, 12], "dec": [2, 7, 8, 12, 25, 1007, 1035, 1036, 1039, 1046, 1048, 2004, 2027]},
  "history": 0,
  "wrapped": [],
  "rows": [
    "red link plain",
    "漢!",
    ""
  ],
  "attributes": [
    {"row": 0, "column": 0, "length": 3, "foreground": 1, "background": "#0102ff", "styles": ["bold", "underline"], "underline": "curly", "underlineColor": 9},
    {"row": 0, "column": 4, "length": 4, "link": "http://x/"},
    {"row": 1, "column": 0, "length": 2, "styles": ["inverse", "overline"]},
    {"row": 1, "column": 2, "length": 1, "styles": ["inverse", "overline"], "protected": true}
  ]
}
)");
}

TEST_F(TermdumpTest, RecordsBytesAndSizesSoThatAReplayShowsTheSame) {
    const std::string file = folder + "/recording";
    const std::string command =
        "sh -c 'stty -echo; printf \"%025d\\n\" 7; while read -r word; do echo \"<$word>\"; done'";
    const Output live = run(
        "printf 'one\\n\\0two\\n' | termdump --size 20x6 --resize 10x4 --resize 40x5 --quiet 200 --input - --record " +
        file + " -- " + command);
    EXPECT_EQ(live.text, "0000000000000000000000007\n<one>\n<two>\n\n\n");
    const std::string bytes = contentsOf(file);
    const std::string end = std::to_string(bytes.size());
    EXPECT_EQ(contentsOf(file + ".sizes"), "0 20x6\n" + end + " 10x4\n" + end + " 40x5\n");
    EXPECT_EQ(run("termdump --replay " + file).text, live.text);
    // What comes after a change comes to the new size.
    std::ofstream(file + ".sizes") << "0 20x6\n3 5x2\n";
    EXPECT_EQ(run("termdump --replay " + file).text, "<two>\n\n");
}

TEST_F(TermdumpTest, TypesKeysAsTheModesHaveThem) {
    const std::string program =
        R"(-- sh -c 'stty raw -echo; printf "\\033[?1h\\033="; dd bs=1 count=26 2>/dev/null | cat -v')";
    EXPECT_EQ(
        run("termdump --size 60x1 --quiet 100 --keys 'up ctrl+up f1 shift+f5 kp7 é space ctrl+c' " + program).text,
        "^[OA^[[1;5A^[OP^[[15;2~^[OwM-CM-) ^C\n");
    EXPECT_EQ(
        run("termdump --size 60x1 --quiet 100 --keys 'a shift+a alt+shift+a ctrl+a' -- sh -c 'stty raw -echo; "
            "echo; dd bs=1 count=5 2>/dev/null | cat -v'")
            .text,
        "aA^[A^A\n");
    EXPECT_EQ(
        run(R"(termdump --size 60x1 --quiet 100 --keys 'shift+a' -- sh -c 'stty raw -echo; printf "\033[>31u"; )"
            R"(dd bs=1 count=13 2>/dev/null | cat -v')")
            .text,
        "^[[97:65;2;65u\n");
    EXPECT_EQ(run("termdump --keys 'up nothing' -- true 2>/dev/null").exitCode, 2);
}

TEST_F(TermdumpTest, AnswersWhatAProgramAsksAndSaysHowItEnded) {
    EXPECT_EQ(run("printf '\\033[5n\\033[8;7;50t\\033[18t' | termdump --filter").text, "\x1B[0n\x1B[8;7;50t");
    EXPECT_EQ(run("termdump --wait there --timeout 5000 -- sh -c 'echo is there; cat'").exitCode, 0);
    EXPECT_EQ(run("termdump --wait nowhere --timeout 200 -- echo is there").exitCode, 1);
    EXPECT_EQ(run("termdump --ansi --size 8x1 -- printf '\\033[32mok'").text, "\x1B[0;32mok\x1B[m\n");
    EXPECT_EQ(run("termdump --strange 2>&1 | head -c 6").text, "usage:");
    EXPECT_EQ(run("termdump --size 80 -- true 2>/dev/null").exitCode, 2);
    EXPECT_EQ(run("termdump --filter --record " + folder + "/none </dev/null 2>/dev/null").exitCode, 2);
    const std::string missing = folder + "/missing/file";
    for (const auto& [options, verb] :
         {std::pair("--replay ", "read "), std::pair("--input ", "read "), std::pair("--record ", "write ")}) {
        const Output failed = run("termdump " + (options + missing) + " -- true 2>&1 >/dev/null");
        EXPECT_EQ(failed.text, "termdump: can't " + (verb + missing) + ": No such file or directory\n") << options;
        EXPECT_EQ(failed.exitCode, 1) << options;
    }
    EXPECT_EQ(run("termdump --replay /dev/null --size 3x1").text, "\n");
    // Without descriptors; without threads, for which there is no room.
    for (const auto& [limit, reason] :
         {std::pair("-n 7", "No descriptors to start the program: Too many open files"),
          std::pair("-s 200000000000", "No thread to read from the program: Resource temporarily unavailable")}) {
        const std::string start = "(exec 3>&- 4>&- 5>&- 6>&-; ulimit " + std::string(limit) + "; termdump ";
        for (const std::string& options : {std::string(), "--wait hi --record " + folder + "/none"}) {
            const Output failed = run(start + options + " -- echo hi) 2>&1");
            EXPECT_EQ(failed.text, "termdump: " + std::string(reason) + "\n") << options;
            EXPECT_EQ(failed.exitCode, 1) << options;
        }
    }
}

} // namespace
} // namespace term
