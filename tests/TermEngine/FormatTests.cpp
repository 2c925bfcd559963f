#include "TermEngine/Base64.h"
#include "TermEngine/Notifications.h"
#include "TermEngine/OscPayloads.h"
#include "TermEngine/Palette.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace term {
namespace {

std::vector<uint8_t> bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

/// The perceived lightness, roughly.
double lightness(RgbColor color) {
    return 0.21 * color.red + 0.72 * color.green + 0.07 * color.blue;
}

} // namespace

TEST(RgbColor, ReadsColoursAsXParseColorDoes) {
    struct Row {
        const char* text;
        std::optional<RgbColor> expected;
    };
    const std::vector<Row> rows{
        {"rgb:f/8/0", RgbColor{255, 136, 0}},
        {"rgb:ff/80/00", RgbColor{255, 128, 0}},
        {"rgb:fff/800/000", RgbColor{255, 128, 0}},
        {"rgb:FFFF/8080/1", RgbColor{255, 128, 17}},
        {"rgbi:1.0/0.5/0", RgbColor{255, 128, 0}},
        {"#f80", RgbColor{0xF0, 0x80, 0}},
        {"#ff8001", RgbColor{255, 128, 1}},
        {"#fff800010", RgbColor{255, 128, 1}},
        {"#ffff80000100", RgbColor{255, 128, 1}},
        {"Dark Orange", RgbColor{255, 140, 0}},
        {"yellow", RgbColor{255, 255, 0}},
        {"RGB:11/22/33", RgbColor{0x11, 0x22, 0x33}},
        {"gray50", RgbColor{127, 127, 127}},
        {"navy blue", RgbColor{0, 0, 128}},
        {"DARK SLATE GREY", RgbColor{0x2F, 0x4F, 0x4F}},
        {"green4", RgbColor{0, 0x8B, 0}},
        {"light goldenrod yellow", RgbColor{0xFA, 0xFA, 0xD2}},
        {"darkgrey42", {}},
        {"r gb:11/22/33", {}},
        {"", {}},
        {"rgb:", {}},
        {"rgb:ff/ff", {}},
        {"rgb:ff/ff/", {}},
        {"rgb:ff/ff/ff/ff", {}},
        {"rgb:12345/0/0", {}},
        {"rgb:-1/0/0", {}},
        {"rgb:0x1/0/0", {}},
        {"rgbi:1.1/0/0", {}},
        {"rgbi:nan/0/0", {}},
        {"#", {}},
        {"#ffff", {}},
        {"#ggg", {}},
        {"#0000000000000000", {}},
        {"yello", {}},
        {"yellow of the longest kind", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(parseColorSpec(row.text), row.expected) << row.text;
    }
    EXPECT_EQ(formatColorSpec({255, 128, 1}), "rgb:ffff/8080/0101");
}

TEST(Palette, KeepsTheSixteenAndFollowsTheStrategy) {
    BaseColors dark = BaseColors::xterm();
    dark.background = {40, 30, 20};
    dark.foreground = {230, 220, 210};
    BaseColors light = dark;
    std::swap(light.background, light.foreground);
    using enum Ansi256PaletteStrategy;
    for (const auto strategy : {xterm, base16Lab, base16LabHarmonious}) {
        const Palette palette = makePalette(strategy, light);
        EXPECT_TRUE(std::equal(light.ansi.begin(), light.ansi.end(), palette.begin()));
    }
    const Palette fixed = makePalette(xterm, dark);
    EXPECT_EQ(fixed[16], (RgbColor{0, 0, 0}));
    EXPECT_EQ(fixed[110], (RgbColor{135, 175, 215}));
    EXPECT_EQ(fixed[231], (RgbColor{255, 255, 255}));
    EXPECT_EQ(fixed[232], (RgbColor{8, 8, 8}));
    EXPECT_EQ(fixed[255], (RgbColor{238, 238, 238}));

    struct Row {
        const char* label;
        Ansi256PaletteStrategy strategy;
        const BaseColors& base;
        RgbColor begin;
        RgbColor end;
    };
    for (const Row& row :
         {Row{"dark", base16Lab, dark, dark.background, dark.foreground},
          Row{"dark, harmonious", base16LabHarmonious, dark, dark.background, dark.foreground},
          Row{"light", base16Lab, light, light.foreground, light.background},
          Row{"light, harmonious", base16LabHarmonious, light, light.background, light.foreground}}) {
        SCOPED_TRACE(row.label);
        const Palette palette = makePalette(row.strategy, row.base);
        EXPECT_EQ(palette[16], row.begin);
        EXPECT_EQ(palette[231], row.end);
        // The other corners: red, green, yellow, blue, magenta, cyan.
        const std::array<size_t, 6> corners{16 + 180, 16 + 30, 16 + 210, 16 + 5, 16 + 185, 16 + 35};
        for (size_t at = 0; at < corners.size(); ++at) {
            EXPECT_EQ(palette[corners[at]], row.base.ansi[at + 1]) << at;
        }
        for (size_t at = 233; at < 256; ++at) {
            const double step = lightness(palette[at]) - lightness(palette[at - 1]);
            EXPECT_GT(row.begin == row.base.background && &row.base == &light ? -step : step, 0) << at;
        }
    }
}

TEST(Base64, DecodesWhateverThePieces) {
    struct Row {
        std::string encoded;
        std::optional<std::string> expected;
    };
    const std::vector<Row> rows{
        {"", ""},
        {"QQ==", "A"},
        {"QUI=", "AB"},
        {"QUJD", "ABC"},
        {"QUJDRA", "ABCD"},
        {"QUI", "AB"},
        {"QQ==QkM=", "ABC"},
        {"QQ==QQ==QQ==", "AAA"},
        {"Q", {}},
        {"QU!D", {}},
        {"QUJD\n", {}},
        {"Q=", {}},
        {"QUJDRA==QUJDRUZH", "ABCDABCEFG"},
        {"////", "\xff\xff\xff"},
        {"QUJD====", "ABC"},
    };
    for (const Row& row : rows) {
        for (size_t cut = 0; cut <= row.encoded.size(); ++cut) {
            Base64Decoder decoder(100);
            decoder.append(std::string_view(row.encoded).substr(0, cut));
            decoder.append(std::string_view(row.encoded).substr(cut));
            const auto decoded = decoder.finish();
            EXPECT_EQ(decoded, row.expected ? std::optional(bytes(*row.expected)) : std::nullopt)
                << row.encoded << " cut at " << cut;
        }
    }
    EXPECT_EQ(decodeBase64("QUJDREVG", 6), bytes("ABCDEF"));
    EXPECT_EQ(decodeBase64("QUJDREVG", 5), std::nullopt);
    std::string all;
    for (int length = 0; length < 300; ++length) {
        EXPECT_EQ(decodeBase64(encodeBase64(all), 300), bytes(all));
        all.push_back(static_cast<char>(length * 37));
    }
    EXPECT_EQ(encodeBase64("AB"), "QUI=");
    // Every other byte at every place of a block is seen, and every character has its value there.
    const std::string encoded = encodeBase64(all);
    for (size_t at = 0; at < 48; ++at) {
        for (int value = 0; value < 256; ++value) {
            std::string text = encoded;
            text[at] = static_cast<char>(value);
            Base64Decoder single(300); // a character at a time
            for (const char character : text) {
                single.append(std::string_view(&character, 1));
            }
            EXPECT_EQ(decodeBase64(text, 300), single.finish()) << at << " " << value;
        }
    }
}

TEST(OscPayloads, CleansTexts) {
    EXPECT_EQ(
        cleanText("a\x1b[31m\n\x7f\xc2\x9b"
                  "b"),
        "a[31mb");
    EXPECT_EQ(cleanText("\xffx\xe6\x97\xc3\xa9\xed\xa0\x80"), "\ufffdx\ufffd\ufffdé\ufffd\ufffd\ufffd");
    EXPECT_EQ(cleanText("日本語", 7), "日本") << "no character is cut";
    EXPECT_EQ(cleanText(std::string(1000, '\x7f') + "a"), "a");
    EXPECT_EQ(cleanText(std::string(100'000, '\x7f') + "a"), "");
}

TEST(OscPayloads, ReadsFoldersAndLinks) {
    using Folder = std::optional<DirectoryReport>;
    EXPECT_EQ(parseDirectoryReport("file://host/a%20b/%E6%97%A5"), Folder({"host", "/a b/日"}));
    EXPECT_EQ(parseDirectoryReport("file:///50%/%zz"), Folder({"", "/50%/%zz"}));
    for (const auto& bad :
         {std::string("/tmp"), std::string("file://host"), std::string("http://a/b"), std::string("file:///a%00b"),
          std::string("file:///a%0ab"), std::string("file:///%ff"), "file:///" + std::string(5000, 'a'),
          "file://" + std::string(5000, 'h') + "/"}) {
        EXPECT_EQ(parseDirectoryReport(bad), std::nullopt) << bad;
    }
    using Link = std::optional<HyperlinkReport>;
    EXPECT_EQ(parseHyperlink("id=a:x=y;http://a/;b"), Link({"a", "http://a/;b"}));
    EXPECT_EQ(parseHyperlink("x:id=b=c:;u"), Link({"b=c", "u"}));
    EXPECT_EQ(parseHyperlink(";"), Link({"", ""}));
    EXPECT_EQ(parseHyperlink("id=a"), std::nullopt);
    EXPECT_EQ(parseHyperlink(";http://\x1b"), std::nullopt);
    EXPECT_EQ(parseHyperlink(";http://ü"), std::nullopt);
    EXPECT_EQ(parseHyperlink(";" + std::string(4097, 'a')), std::nullopt);
    EXPECT_EQ(parseHyperlink(std::string(4097, ':') + ";u"), std::nullopt);
}

TEST(OscPayloads, ReadsProgressAndClipboard) {
    using State = ProgressReport::State;
    using Progress = std::optional<ProgressReport>;
    EXPECT_EQ(parseProgress("4;1;50"), Progress({State::set, 50}));
    EXPECT_EQ(parseProgress("4;1;999"), Progress({State::set, 100}));
    EXPECT_EQ(parseProgress("4;1"), Progress({State::set, 0}));
    EXPECT_EQ(parseProgress("4;2;-5"), Progress({State::error, {}}));
    EXPECT_EQ(parseProgress("4;3;50"), Progress({State::indeterminate, {}}));
    EXPECT_EQ(parseProgress("4;0;50"), Progress({State::remove, {}}));
    for (const char* bad : {"", "4", "4;", "4;5", "4;x", "5;1;50", "4;99999999999"}) {
        EXPECT_EQ(parseProgress(bad), std::nullopt) << bad;
    }
    using Kind = ClipboardReport::Kind;
    using Clipboard = std::optional<ClipboardReport>;
    EXPECT_EQ(parseClipboard("c;QUJD", 3), Clipboard({"c", Kind::write, bytes("ABC")}));
    EXPECT_EQ(parseClipboard(";?", 3), Clipboard({"s0", Kind::query, {}}));
    EXPECT_EQ(parseClipboard("pcxp;!", 3), Clipboard({"cp", Kind::clear, {}}));
    EXPECT_EQ(parseClipboard("c;", 3), Clipboard({"c", Kind::clear, {}}));
    for (const char* tooLong : {"c;QUJDRA==", "c;QUJDRA", "c;QUJDREU", "c;QUJDREVG"}) {
        EXPECT_EQ(parseClipboard(tooLong, 3), std::nullopt) << tooLong;
    }
    EXPECT_EQ(parseClipboard("QUJD", 3), std::nullopt);
}

TEST(OscPayloads, ReadsITermCommandsThatDoNoHarm) {
    using Kind = ITermCommand::Kind;
    using Unit = ITermCommand::File::Extent::Unit;
    struct Row {
        std::string payload;
        std::optional<ITermCommand> expected;
    };
    const std::vector<Row> rows{
        {"SetMark", ITermCommand{.kind = Kind::setMark}},
        {"CurrentDir=/tmp/a=b\x1b", ITermCommand{.kind = Kind::currentDirectory, .value = "/tmp/a=b"}},
        {"CurrentDir=/" + std::string(4096, 'a'), {}},
        {"CurrentDir=/" + std::string(4096, '\x01'), {}},
        {"File=" + std::string(20'000, ';') + ":QUJD", {}},
        {"CursorShape=2", ITermCommand{.kind = Kind::cursorShape, .value = "2"}},
        {"CursorShape=3", {}},
        {"SetUserVar=a=QUJD", ITermCommand{.kind = Kind::setUserVariable, .name = "a", .value = "ABC"}},
        {"SetUserVar=a=!", {}},
        {"StealFocus", {}},
        {"OpenURL=:aHR0cDovL2E=", {}},
        {"File=name=QQ==;width=10;height=50%;preserveAspectRatio=0;inline=1:QUJD",
         ITermCommand{
             .kind = Kind::file,
             .file =
                 {.name = "A",
                  .width = {Unit::cells, 10},
                  .height = {Unit::percent, 50},
                  .preservesAspectRatio = false,
                  .isInline = true,
                  .data = bytes("ABC")}}},
        {"File=width=7px;height=auto;width=99999999:QQ==",
         ITermCommand{.kind = Kind::file, .file = {.width = {Unit::cells, 10'000}, .data = bytes("A")}}},
        {"File=inline=1", {}},
        {"File=inline=1:QUJDRA==", {}},
        {"", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(parseITermCommand(row.payload, 3), row.expected) << row.payload;
    }
}

TEST(OscPayloads, AnswersForItsOwnCapabilitiesOnly) {
    using Answers = std::vector<std::string>;
    EXPECT_EQ(
        answerTermcapRequest("436F;544e;6b31;zz;524742", "xterm-256color"),
        (Answers{"1+r436F=323536", "1+r544E=787465726D2D323536636F6C6F72", "0+r", "0+r", "1+r524742=382F382F38"}));
    EXPECT_EQ(answerTermcapRequest(std::string(100'000, ';'), "x").size(), 64U);
    EXPECT_TRUE(answerTermcapRequest("", "x").empty());
}

TEST(Notifications, ComeTogetherFromTheirPieces) {
    using Request = std::optional<NotificationRequest>;
    NotificationAssembler assembler;
    EXPECT_EQ(assembler.append(";Hello"), Request({"0", "Hello", ""}));
    EXPECT_EQ(assembler.append("i=1:d=0;Hel"), std::nullopt);
    EXPECT_EQ(assembler.append("i=2:p=body;only a body"), Request({"2", "only a body", ""}));
    EXPECT_EQ(assembler.append("i=1:d=0:p=body:a=report,-focus;B"), std::nullopt);
    EXPECT_EQ(assembler.append("i=1:e=1:unknown;bG8="), Request({"1", "Hello", "B", false, true}));
    EXPECT_EQ(assembler.append("i=a\x1b]b;x\x07y"), Request({"ab", "xy", ""})) << "what is sent back is harmless";
    EXPECT_EQ(assembler.append("i=1:e=1;!"), std::nullopt);
    EXPECT_EQ(assembler.append("i=1:d=0;T"), std::nullopt);
    EXPECT_EQ(assembler.append("i=1:e=1:p=body;!"), Request({"1", "T", ""})) << "what came before it counts";
    EXPECT_EQ(assembler.append("e=1;" + std::string(8000, 'V'))->title.size(), 4096U) << "cut, as plain text is";
    EXPECT_EQ(assembler.append("i=1"), std::nullopt);
    for (const char letter : {':', ','}) {
        EXPECT_EQ(assembler.append("a=" + std::string(5000, letter) + ";x"), std::nullopt) << letter;
    }
    EXPECT_EQ(assembler.append("i=1;"), std::nullopt);
    for (int number = 0; number < 1000; ++number) {
        EXPECT_EQ(assembler.append("d=0:i=" + std::to_string(number) + ";" + std::string(9000, 'x')), std::nullopt);
    }
    EXPECT_EQ(assembler.append("i=983;y"), Request({"983", "y", ""})) << "long forgotten";
    EXPECT_EQ(assembler.append("i=999;y")->title.size(), 4096U);
    EXPECT_EQ(parseUrxvtNotification("notify;T;a;b"), Request({"0", "T", "a;b"}));
    EXPECT_EQ(parseUrxvtNotification("other;T;a"), std::nullopt);
    EXPECT_EQ(parseITermNotification("done;\x1b!"), Request({"0", "done;!", ""}));
    EXPECT_EQ(parseITermNotification("4;1;50"), std::nullopt);
}

} // namespace term
