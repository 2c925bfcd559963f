#include "OrvProcess/PortParser.h"
#include "OrvProcess/TerminalLine.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace orv {

TEST(PortParser, FindsTheAnnouncedPort) {
    struct Row {
        const char* line;
        std::optional<int> expected;
    };
    const std::array rows{
        Row{"  Local:   localhost:5173/", 5173},
        Row{"  Local:   http://\x1b[36mlocalhost:\x1b[1m3000\x1b[22m/\x1b[39m", 3000},
        Row{"lo\x1b[1mcal\x1b[0mhost:\x1b[1m30\x1b[?25l00", 3000},
        Row{"Listening on PORT 8080", 8080},
        Row{"on port\t 81", 81},
        Row{"port\x1b[1m 82", 82},
        Row{"192.168.1.5:3000", {}},
        Row{"192.168.1.5:3000, port 3001", 3001},
        Row{"listening at [::1]:4000 and port 9", 4000},
        Row{"[::]:4001", 4001},
        Row{"port 3000, http://127.0.0.1:4002", 4002},
        Row{"0.0.0.0:80", 80},
        Row{"127.0.0.1:4003 and localhost:4004", 4003},
        Row{"localhost:8", {}},
        Row{"port 9", {}},
        Row{"LOCALHOST:3000", {}},
        Row{"127x0.0.1:3000", {}},
        Row{"localhost:99999", 99999},
        Row{"localhost:123456", 12345},
        Row{"port: 3000", {}},
        Row{"port3000", {}},
        Row{"ports 3000", {}},
        Row{"support 24 hours", 24},
        Row{"", {}},
        Row{":80", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(PortParser::port(QString::fromUtf8(row.line)), row.expected) << row.line;
        EXPECT_TRUE(PortParser::mayAnnounce(row.line) || !row.expected) << "passed over: " << row.line;
    }
    EXPECT_FALSE(PortParser::mayAnnounce("[12:34:56] GET /about \x1b[32m200\x1b[39m in 14 ms, that was fast\r\n"))
        << "the cheap test is to hold back ordinary output";
}

TEST(PortParser, PassesOverNoLineWithAPort) {
    const std::array<const char*, 22> pieces{
        "localhost", "127.0.0.1", "[::1]", ":",       "3000",       "80", "port", "PoRT", " ",     "\t", "\x1b[1m",
        "\x1b[2K",   "\r",        "\b",    "\x1b[3D", "\x1b]0;t\a", "x",  "\x07", "9",    "\x1b[", "\v", "\xc3\xa9"};
    std::mt19937 random(20);
    int announced = 0;
    for (int i = 0; i < 40'000; ++i) {
        QByteArray line;
        for (size_t n = random() % 9; n > 0; --n) {
            line += pieces.at(random() % pieces.size());
        }
        const bool hasPort = PortParser::port(TerminalLine::text(line)).has_value();
        announced += hasPort ? 1 : 0;
        ASSERT_TRUE(PortParser::mayAnnounce(line) || !hasPort) << line.toPercentEncoding().toStdString();
        ASSERT_TRUE(PortParser::mayAnnounce(line + '\n') || !hasPort) << line.toPercentEncoding().toStdString();
    }
    EXPECT_GT(announced, 200) << "the lines are to exercise the parser";
}

} // namespace orv
