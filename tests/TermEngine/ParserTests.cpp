#include "TermEngine/EscapeSequenceParser.h"
#include "TermEngine/Unicode.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace term {
namespace {

using namespace std::string_literals;

Bytes bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Everything that a parser hands over, as words; texts in a row are one.
class Recorder final : public ParserHandler {
public:
    std::vector<std::string> events;
    std::vector<std::string> messages;
    std::function<void(const std::string&)> onEvent;

    [[nodiscard]] std::string joined() const {
        std::string all;
        for (const std::string& event : events) {
            all += (all.empty() ? "" : " ") + event;
        }
        return all;
    }

private:
    class Data final : public DcsHandler {
    public:
        Data(Recorder& recorder, std::string name) : m_recorder(recorder), m_text(std::move(name)) {}
        void put(Bytes data) override { m_text += textOf(data); }
        void unhook() override { m_recorder.add("dcs:" + m_text); }

    private:
        Recorder& m_recorder;
        std::string m_text;
    };

    void add(const std::string& event) {
        events.push_back(event);
        if (onEvent) {
            onEvent(event);
        }
    }
    void addText(const std::string& text) {
        if (!events.empty() && events.back().starts_with('"')) {
            events.back() += text;
        } else {
            events.push_back("\"" + text);
        }
    }
    static std::string list(const CsiParameters& parameters) {
        std::string text;
        for (int i = 0; i < parameters.count; ++i) {
            text += std::to_string(parameters.at(i));
            text += i + 1 == parameters.count ? "" : parameters.endsWithColon(i) ? ":" : ";";
        }
        return text + (parameters.limitExceeded ? "!" : "");
    }
    void printAscii(Bytes text) override { addText(textOf(text)); }
    void printScalars(std::span<const char32_t> text) override { addText(unicode::toUtf8({text.data(), text.size()})); }
    bool execute(std::uint8_t code) override {
        add("c" + std::to_string(code));
        return code != 1;
    }
    bool dispatchCsi(char final, const CsiParameters& parameters, std::string_view collected) override {
        add("csi:" + std::string(collected) + list(parameters) + final);
        return final != 'y';
    }
    bool dispatchEsc(std::string_view collected, char final) override {
        add("esc:" + std::string(collected) + final);
        return final != 'y';
    }
    bool dispatchOsc(int code, Bytes payload, StringEnd end) override {
        add("osc:" + std::to_string(code) + (end == StringEnd::bell ? ",bel," : ",st,") + textOf(payload));
        return code != 999;
    }
    bool dispatchApc(Bytes payload) override {
        add("apc:" + textOf(payload));
        return payload[0] == 'G';
    }
    std::unique_ptr<DcsHandler> dcsHandler(
        char final, const CsiParameters& parameters, std::string_view collected) override {
        if (final == 'y') {
            return nullptr;
        }
        return std::make_unique<Data>(*this, std::string(collected) + list(parameters) + final + ",");
    }
    [[nodiscard]] bool isLogging() const override { return true; }
    void log(std::string_view message) override { messages.emplace_back(message); }
};

struct Case {
    const char* label;
    std::string input;
    std::string events;
};

const std::vector<Case>& cases() {
    static const std::vector<Case> table = {
        {"text and controls", "ab\r\n\tc", "\"ab c13 c10 c9 \"c"},
        {"UTF-8", "aé漢🚀z", "\"aé漢🚀z"},
        {"C1 range within UTF-8 is text",
         "\xC2\x9B"s
         "31m",
         "\"\xC2\x9B"s
         "31m"},
        {"a stray C1 byte is no control",
         "\x9B"s
         "31m",
         "\"\uFFFD31m"},
        {"broken UTF-8 before a control", "\xE6\xBC\x1B[m", "\"\uFFFD csi:0m"},
        {"EM and DEL print nothing",
         "a\x19\x7F"s
         "b",
         "\"ab"},
        {"parameter saturates", "\x1B[99999m", "csi:65535m"},
        {"saturates beyond 32 bits", "\x1B[99999999999999999999m", "csi:65535m"},
        {"empty parameters", "\x1B[;5;H", "csi:0;5;0H"},
        {"sub-parameters", "\x1B[4:3;1m", "csi:4:3;1m"},
        {"30 parameters", "\x1B[1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16;17;18;19;20;21;22;23;24;25;26;27;28;29;30m",
         "csi:1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16;17;18;19;20;21;22;23;24!m"},
        {"private marker and intermediate", "\x1B[?2026$p\x1B[>c\x1B[ q", "csi:?$2026p csi:>0c csi: 0q"},
        {"control within a sequence", "\x1B[3\n1m", "c10 csi:31m"},
        {"marker too late", "\x1B[1?2mx", "\"x"},
        {"parameter after an intermediate", "\x1B[ 1qx", "\"x"},
        {"CAN and SUB", "\x1B[3\x18m\x1B]0;t\x1Am\x1BPq#\x18m", "c24 \"m c26 \"m c24 \"m"},
        {"ESC begins anew", "\x1B[3\x1B[4m\x1B\x1B[5m", "csi:4m csi:5m"},
        {"ESC with intermediates", "\x1B(0\x1B#8\x1B 7", "esc:(0 esc:#8 esc: 7"},
        {"C1 bytes within a sequence",
         "\x1B[1\x9B"s
         "2m\x1B[\x85",
         "csi:2m c133"},
        {"OSC by BEL", "\x1B]0;title\x07x", "osc:0,bel,title \"x"},
        {"OSC by ST in 7 bits", "\x1B]8;;http://a\x1B\\x", "osc:8,st,;http://a esc:\\ \"x"},
        {"OSC by ST in 8 bits",
         "\x1B]2;t\x9C"s
         "x",
         "osc:2,st,t \"x"},
        {"OSC with a ST byte in a character",
         "\x1B]2;\xE2\x80\x9C"s
         "\xC3\x9C\x07",
         "osc:2,bel,\xE2\x80\x9C\xC3\x9C"},
        {"OSC ended by ST in 8 bits behind a byte that begins no character",
         "\x1B]2;\xC1\x9C"s
         "x\x1B]2;\xF5\x9C"s
         "y",
         "osc:2,st,\xC1 \"x osc:2,st,\xF5 \"y"},
        {"OSC drops controls", "\x1B]2;a\r\nb\x07", "osc:2,bel,ab"},
        {"OSC without number", "\x1B]x;y\x07\x1B];z\x07\x1B]12x\x07q", "\"q"},
        {"OSC of a number alone", "\x1B]104\x07", "osc:104,bel,"},
        {"OSC number too big", "\x1B]99999999999;y\x07q", "\"q"},
        {"OSC ended by another sequence", "\x1B]2;t\x1B[1m", "osc:2,st,t csi:1m"},
        {"OSC begun by a C1 byte",
         "\x1B[\x9D"s
         "2;t\x07",
         "osc:2,bel,t"},
        {"APC", "\x1B_Ga=q;AAAA\x1B\\", "apc:Ga=q;AAAA esc:\\"},
        {"BEL does not end an APC",
         "\x1B_Ga\x07"s
         "b\x1B\\",
         "apc:Gab esc:\\"},
        {"PM and SOS",
         "\x1B^secret\x1B\\\x1BXmore\x9C"s
         "x",
         "esc:\\ \"x"},
        {"DCS", "\x1BP1;2$qm\x1B\\x", "dcs:$1;2q,m esc:\\ \"x"},
        {"DCS by ST in 8 bits",
         "\x1BPqab\r\n\x9C"s
         "x",
         "dcs:0q,ab\r\n \"x"},
        {"DCS spoilt by a colon", "\x1BP1:2qdata\x1B\\x", "esc:\\ \"x"},
        {"DCS unknown", "\x1BPydata\x1B\\x", "esc:\\ \"x"},
        {"unknown ones are skipped", "\x1B[5y\x1By\x01\x1B]999;x\x07\x1B_Zq\x1B\\",
         "csi:5y esc:y c1 osc:999,bel,x apc:Zq esc:\\"},
    };
    return table;
}

TEST(Parser, GivesTheSameWhereverTheBytesAreCutAndWithAnyVectors) {
    for (const Case& test : cases()) {
        for (const VectorOps& ops : availableVectorOps()) {
            for (std::size_t cut = 0; cut <= test.input.size(); ++cut) {
                Recorder recorder;
                EscapeSequenceParser parser(recorder, ops);
                parser.parseBorrowed(bytesOf(test.input).first(cut));
                parser.parseBorrowed(bytesOf(test.input).subspan(cut));
                ASSERT_EQ(recorder.joined(), test.events) << test.label << ", cut at " << cut << ", " << ops.name;
                EXPECT_EQ(parser.currentState(), ParserState::ground) << test.label;
            }
            Recorder recorder;
            EscapeSequenceParser parser(recorder, ops);
            for (const char& byte : test.input) {
                parser.parseBorrowed(bytesOf({&byte, 1}));
            }
            ASSERT_EQ(recorder.joined(), test.events) << test.label << ", byte by byte, " << ops.name;
        }
    }
}

TEST(Parser, ReadsNoiseAlikeWithEveryVectorsAndCuts) {
    std::mt19937 random(20240607);
    const std::string alphabet =
        "\x1B\x1B[];:?0123456789mHqP_\\\x07\x18\x90\x9B\x9C\x9D\x9F\xE2\x80\xC3\xF0\x9F\r\n abc$ \x7F\x19";
    for (int round = 0; round < 300; ++round) {
        std::string input;
        while (input.size() < 400) {
            input += random() % 8 == 0 ? std::string(random() % 70, 'x')
                                       : std::string(1, alphabet[random() % alphabet.size()]);
        }
        std::string expected;
        for (const VectorOps& ops : availableVectorOps()) {
            for (const std::size_t piece : {std::size_t{1}, std::size_t{37}, input.size()}) {
                Recorder recorder;
                EscapeSequenceParser parser(recorder, ops);
                for (std::size_t at = 0; at < input.size(); at += piece) {
                    parser.parseBorrowed(bytesOf(std::string_view(input).substr(at, piece)));
                }
                expected = expected.empty() ? recorder.joined() : expected;
                ASSERT_EQ(recorder.joined(), expected)
                    << "round " << round << ", pieces of " << piece << ", " << ops.name;
            }
        }
    }
}

TEST(Parser, SaysWhatItDoesNotKnow) {
    Recorder recorder;
    EscapeSequenceParser parser(recorder);
    parser.parseBorrowed(bytesOf("\x01\x1B[?1;2y\x1B#y\x1B]999;secret\x07\x1B_Zsecret\x1B\\\x1BP$yq\x1B\\\x19"));
    const std::vector<std::string> expected = {
        "TermEngine: Unknown EXECUTE code 1",
        "TermEngine: Unknown CSI Code (collect=? code=y pars=1,2)",
        "TermEngine: Unknown ESC Code: ESC + #y",
        "TermEngine: Unknown OSC code: 999",
        "TermEngine: Unknown APC code: 90",
        "TermEngine: Unknown DCS + $y",
        "TermEngine: Parsing error, state: 0 byte: 25"};
    EXPECT_EQ(recorder.messages, expected);
}

TEST(Parser, DropsAStringThatIsTooLong) {
    Recorder recorder;
    EscapeSequenceParser parser(recorder);
    parser.setMaximumOscBytes(10);
    parser.parseBorrowed(bytesOf("\x1B]2;12345678\x07\x1B]2;123456789\x07x\x1B]2;1\x07"));
    EXPECT_EQ(recorder.joined(), "osc:2,bel,12345678 \"x osc:2,bel,1");
    recorder.events.clear();
    const std::string flood(EscapeSequenceParser::maximumApcBytes, 'G');
    parser.parseBorrowed(bytesOf("\x1B_" + flood + "\x1B\\\x1B_G" + flood + "\x1B\\\x1B_Ga\x1B\\"));
    ASSERT_EQ(recorder.events.size(), 5U);
    EXPECT_EQ(recorder.events[0].size(), flood.size() + 4);
    EXPECT_EQ(recorder.events[3], "apc:Ga");
}

TEST(Parser, KeepsTheEndOfAStatusThatIsTooLong) {
    Recorder recorder;
    EscapeSequenceParser parser(recorder);
    parser.setMaximumOscBytes(10);
    parser.setProgramStatusOsc(777);
    parser.parseBorrowed(
        bytesOf("\x1B]777;abcdefghijklmnopqrstuvwxyz0123456789\x1B\\\x1B]777;ab\x1B[1m\x1B]777;c\x07"));
    EXPECT_EQ(recorder.joined(), "osc:777,st,456789 esc:\\ osc:777,st,ab csi:1m osc:777,bel,c");
    EXPECT_EQ(parser.oscIgnoredBytes(), 0U);
}

TEST(Parser, GoesOnFromTheGroundAfterAResetByAHandler) {
    for (const std::string& trigger :
         {"\x1B"s
          "c"s,
          "\x1B[0m"s, "\x1B]2;t\x07"s, "\r"s}) {
        Recorder recorder;
        EscapeSequenceParser parser(recorder);
        recorder.onEvent = [&](const std::string&) { parser.reset(); };
        const std::uint64_t before = parser.resetSerial();
        parser.parseBorrowed(bytesOf(trigger + "31m"));
        EXPECT_EQ(recorder.events.back(), "\"31m");
        EXPECT_EQ(parser.resetSerial(), before + 1);
        EXPECT_EQ(parser.currentState(), ParserState::ground);
    }
}

TEST(Parser, ParsesWhatAHandlerFeedsAfterTheBytesUnderWay) {
    Recorder recorder;
    EscapeSequenceParser parser(recorder);
    recorder.onEvent = [&](const std::string& event) {
        if (event == "c7") {
            parser.parseBorrowed(bytesOf("\x1B[2m\x08"));
            parser.parseBorrowed(bytesOf("\x1B[3m"));
        } else if (event == "c8") {
            parser.parseBorrowed(bytesOf("\x1B[4m"));
        }
    };
    parser.parseBorrowed(bytesOf("\x07\x1B[1m"));
    EXPECT_EQ(recorder.joined(), "c7 csi:1m csi:2m c8 csi:3m csi:4m") << "all of it, in its order";

    // One that feeds without end: each call ends, what is left comes first in the next one, and nothing is lost.
    recorder.events.clear();
    std::size_t fed = 0;
    recorder.onEvent = [&](const std::string& event) {
        if (event == "c7" && fed < 3 * EscapeSequenceParser::fedBackAtOnce) {
            ++fed;
            parser.parseBorrowed(bytesOf("\x07"));
        }
    };
    parser.parseBorrowed(bytesOf("\x07"));
    EXPECT_LE(recorder.events.size(), EscapeSequenceParser::fedBackAtOnce + 2);
    for (int call = 0; call < 4; ++call) {
        parser.parseBorrowed(bytesOf("\x0B"));
    }
    EXPECT_EQ(std::ranges::count(recorder.events, "c7"), 1 + static_cast<std::ptrdiff_t>(fed));
    EXPECT_EQ(std::ranges::count(recorder.events, "c11"), 4);
}

} // namespace
} // namespace term
