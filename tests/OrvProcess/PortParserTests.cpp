#include "OrvProcess/OutputBytes_p.h"
#include "OrvProcess/PortParser.h"
#include "OrvProcess/TerminalLine.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace orv {
namespace {

bool mayAnnounce(const QByteArray& output) {
    return PortParser::mayAnnounce(output, searchOutput(output));
}

} // namespace

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
        EXPECT_TRUE(mayAnnounce(row.line) || !row.expected) << "passed over: " << row.line;
    }
    EXPECT_FALSE(mayAnnounce("[12:34:56] GET /about \x1b[32m200\x1b[39m in 14 ms, that was fast\r\n"))
        << "the cheap test is to hold back ordinary output";
}

TEST(PortParser, TellsADebuggersPortFromTheServices) {
    struct Row {
        const char* line;
        std::optional<int> debugger;
        std::optional<int> service;
    };
    const std::array rows{
        Row{"Debugger listening on ws://127.0.0.1:9229/9f0c-11", 9229, {}},
        Row{"\x1b[33mDebugger listening on ws://localhost:\x1b[1m9231\x1b[0m/9f0c", 9231, {}},
        Row{"Starting inspector on 127.0.0.1:9229 failed: address already in use", 9229, {}},
        Row{"DevTools listening on ws://127.0.0.1:9222/devtools/browser/1", 9222, {}},
        Row{"A Dart VM Service on Linux is available at: http://127.0.0.1:41235/x=/", 41235, {}},
        Row{"Listening for transport dt_socket at address: 5005", 5005, {}},
        Row{"Listening for transport dt_socket at address: localhost:5006", 5006, {}},
        Row{"API server listening at: 127.0.0.1:2345", 2345, {}},
        Row{"API server listening at: http://localhost:4000", {}, 4000},
        Row{"Debugger attached.", {}, {}},
        Row{" * Debugger PIN: 123-456-789", {}, {}},
        Row{"Server on http://localhost:3000, debugger at 127.0.0.1:9229", 9229, 3000},
        Row{"  Local: http://localhost:5173/", {}, 5173},
    };
    for (const Row& row : rows) {
        const QString line = QString::fromUtf8(row.line);
        EXPECT_EQ(PortParser::debuggerPort(line), row.debugger) << row.line;
        EXPECT_EQ(PortParser::servicePort(line), row.service) << row.line;
    }
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
        ASSERT_TRUE(mayAnnounce(line) || !hasPort) << line.toPercentEncoding().toStdString();
        ASSERT_TRUE(mayAnnounce(line + '\n') || !hasPort) << line.toPercentEncoding().toStdString();
    }
    EXPECT_GT(announced, 200) << "the lines are to exercise the parser";
}

TEST(OutputBytes, FindsTheSameWhereverItStands) {
    struct Row {
        const char* text;
        bool escape;
        bool rewrite;
        bool candidate;
    };
    const std::array rows{
        Row{"localhost:3", false, false, true},
        Row{"127.0.0.1:3", false, false, true},
        Row{"[::]:3", false, false, true},
        Row{"PORT 3", false, false, true},
        Row{"port\t\v3", false, true, true},
        Row{"port  3", false, false, true},
        Row{"port\n3", false, false, false},
        Row{"port:3 localhost: 12:30 [2]:3", false, false, false},
        Row{"\t\r\n\x80\xff", false, false, false},
        Row{"\x1b[m", true, false, false},
        Row{"a\rb", false, true, false},
        Row{"\x7f", false, true, false},
    };
    std::vector searches{&detail::searchBytes};
#if defined(ORV_SEARCHES_WITH_AVX2)
    if (__builtin_cpu_supports("avx2")) {
        searches.push_back(&detail::searchBytesAvx2);
    }
#elif defined(ORV_SEARCHES_WITH_NEON)
    searches.push_back(&detail::searchBytesNeon);
#endif
    for (size_t i = 0; i < searches.size(); ++i) {
        for (const Row& row : rows) {
            for (qsizetype at = 0; at < 140; ++at) {
                for (const qsizetype behind : {0, 1, 40}) {
                    const QByteArray line = QByteArray(at, 'x') + row.text + QByteArray(behind, '.') + '\n';
                    const detail::BytesFound found = searches[i](
                        reinterpret_cast<const unsigned char*>(line.data()), static_cast<size_t>(line.size()));
                    ASSERT_EQ(found.lineFeeds, line.count('\n')) << row.text << " at " << at;
                    ASSERT_EQ(found.hasEscapes, row.escape) << row.text << " at " << at;
                    ASSERT_EQ(found.hasRewrites, row.rewrite) << row.text << " at " << at;
                    ASSERT_EQ(found.hasCandidate, row.candidate) << row.text << " at " << at;
                }
            }
        }
        const QByteArray feeds(30'011, '\n');
        EXPECT_EQ(searches[i](reinterpret_cast<const unsigned char*>(feeds.data()), 30'011).lineFeeds, 30'011)
            << "more than one byte can count";
    }
}

} // namespace orv
