#include "HostileInputs.h"

#include "BenchTerm.h"

#include <utility>

namespace bench {
namespace {

std::string utf8(char32_t scalar) {
    const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
    if (scalar < 0x800) {
        return {byte(0xC0 | scalar >> 6), byte(0x80 | (scalar & 63))};
    }
    return {byte(0xE0 | scalar >> 12), byte(0x80 | (scalar >> 6 & 63)), byte(0x80 | (scalar & 63))};
}

} // namespace

std::string times(int count, const std::function<std::string(int)>& one) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += one(i);
    }
    return text;
}

std::string repeated(int count, const std::string& text) {
    return times(count, [&](int) { return text; });
}

std::string piecesOf(const std::string& text) {
    return repeated(static_cast<int>(pieceSize / text.size()), text);
}

std::string color(int i) {
    return "\x1B[38;2;" + std::to_string(i >> 16 & 255) + ";" + std::to_string(i >> 8 & 255) + ";" +
           std::to_string(i & 255) + "mx";
}

std::string link(int i) {
    return "\x1B]8;;https://example.org/" + std::to_string(i) + "\x1B\\y";
}

std::string cluster(int i) {
    const auto mark = [i](int shift) { return utf8(0x300 + static_cast<char32_t>(i >> shift & 63)); };
    return "e" + mark(0) + mark(6) + mark(12) + mark(18);
}

std::vector<HostileInput> hostileInputs() {
    std::vector<HostileInput> made;
    const auto add = [&made](const char* name, std::string bytes) { made.push_back({name, "", std::move(bytes)}); };
    const std::string full = repeated(60, std::string(300, 'x'));
    for (const char* final :
         {"@", "A", "B", "C", "D", "G", "I", "L", "M", "P", "S", "T", "X", "Z", "b", "d", " @", " A", "'}", "'~"}) {
        add(final, full + "\x1B[H" + repeated(1000, std::string("z\x1B[65535") + final));
    }
    add("ED", full + repeated(5000, "\x1B[J\x1B[1J\x1B[2J\x1B[3J"));
    add("rectangles", full + repeated(
                                 200, "\x1B[65;1;1;65535;65535$x\x1B[1;1;65535;65535;1;2;2;1$v\x1B[1;1;65535;65535;7$r"
                                      "\x1B[1;1;65535;65535;5$t\x1B[1;1;65535;65535${"));
    add("checksums", full + repeated(500, "\x1B[1;1;1;1;65535;65535*y"));
    add("reverse wraparound", "\x1B[?7;45;1045h" + repeated(2000, "\x1B[65535D"));
    add("RIS", repeated(
                   5000, "\x1B"
                         "cx"));
    add("DECSTR", repeated(20000, "\x1B[!p"));
    add("DECALN", repeated(2000, "\x1B#8"));
    add("alternate screens", repeated(5000, "\x1B[?1049hx\x1B[?1049l"));
    add("column modes", "\x1B[?40h" + repeated(2000, "\x1B[?3h\x1B[?3l"));
    add("parameters", repeated(200, "\x1B[" + repeated(1000, "1:2;") + "m"));
    add("long number", "\x1B[" + std::string(1'000'000, '9') + "m");
    add("intermediates", "\x1B[" + std::string(1'000'000, '!') + "m");
    add("queries", repeated(20000, "\x1B[c\x1B[6n\x1B[?2026$p\x1BP$qm\x1B\\"));
    add("stacks", repeated(
                      20000, "\x1B[22t\x1B[#{\x1B[>1u\x1B[?s\x1B"
                             "7"));
    add("saved modes", times(65535, [](int i) { return "\x1B[?" + std::to_string(i) + "s"; }));
    add("titles", repeated(200, "\x1B]2;" + (hostileMark + std::string(4000, 't')) + "\a"));
    add("long string", "\x1B]2;" + std::string(60'000'000, 't') + "\a");
    add("too long string", "\x1B_" + std::string(80'000'000, 't') + "\x1B\\");
    add("open strings", repeated(100'000, "\x1B]0;\x1BP\x1B_G\x1BX"));
    add("colours", times(100'000, color));
    add("links", times(30'000, link));
    add("clusters", times(50'000, cluster));
    add("long cluster", "e" + repeated(500'000, utf8(0x301)));
    add("joined emoji", repeated(100'000, "\xF0\x9F\x91\xA9\xE2\x80\x8D"));
    add("flags", repeated(100'000, "\xF0\x9F\x87\xA6"));
    add("broken UTF-8", std::string(1'000'000, '\xF4') + std::string(1'000'000, '\x80'));
    add("palette", times(20'000, [](int i) { return "\x1B]4;" + std::to_string(i % 256) + ";rgb:12/34/56;1;?\a"; }));
    add("palette questions", "\x1B]4;" + repeated(1'000'000, "0;?;") + "\a");
    add("colour questions", "\x1B]21;" + repeated(1'000'000, "0=?;") + "\a");
    add("termcap", "\x1BP+q" + repeated(50'000, "544E;") + "\x1B\\");
    const std::string many(60'000'000, ';');
    add("options of a mark", "\x1B]133;A" + many + "\a");
    add("parameters of a link", "\x1B]8;" + std::string(many.size(), ':') + ";http://x\a");
    add("keys of a notification", "\x1B]99;" + std::string(many.size(), ':') + ";x\a");
    add("actions of a notification", "\x1B]99;a=" + std::string(many.size(), ',') + ";x\a");
    add("title in digits", "\x1B[>0t\x1B]2;" + repeated(30'000'000, "41") + "\a");
    add("marks", repeated(30'000, "\x1B]133;A\a$ \x1B]133;C\ao\r\n\x1B]133;D;1\a"));
    add("clipboard", "\x1B]52;c;" + std::string(10'000'000, 'A') + "\a");
    add("sixel size", repeated(20, "\x1BPq\"1;1;65535;65535#0;2;9;9;9!65535~\x1B\\"));
    add("sixel lines", "\x1BPq" + repeated(20'000, "!9999~-") + "\x1B\\");
    add("images",
        times(5000, [](int i) { return "\x1B_Ga=T,i=" + std::to_string(i + 1) + ",f=24,s=1,v=1;AAAA\x1B\\"; }));
    add("image size", repeated(50, "\x1B_Ga=T,f=32,s=10000,v=10000,o=z;eJztwTEBAAAAwqD1T+1vBqAAAAA=\x1B\\"));
    add("placements", "\x1B_Ga=t,i=1,f=24,s=1,v=1;AAAA\x1B\\" + times(5000, [](int i) {
                          return "\x1B_Ga=p,i=1,p=" + std::to_string(i + 1) + ",c=99,r=99\x1B\\";
                      }));
    add("nested resets", repeated(
                             2000, "\x1B"
                                   "c\x1B[!p\x1B[?1049h\x1B[4;9r\x1B]8;;a:b\a\x1BP+q\x1B"
                                   "c"));
    add("pops", repeated(20'000, "\x1B[23t\x1B[#}\x1B[<9u\x1B[#Q\x1B[u\x1B[?r"));
    add("colour stacks", repeated(20'000, "\x1B[#P\x1B[10#P\x1B[#R"));
    add("long links", times(200, [](int i) {
            return "\x1B]8;id=" + std::to_string(i) + ";https://" + std::string(4000, 'l') + "\ay";
        }));
    const std::string mark = hostileMark;
    add("questions about what is not known",
        repeated(
            5000, "\x1B]0;" + mark + "\a\x1B[21t\x1BP$q" + mark + "\x1B\\\x1BP+q78797A7A79\x1B\\\x1B]4;1;" + mark +
                      "\a\x1B]21;" + mark + "=?\a\x1B]1337;" + mark + "=?\a\x1B_G" + mark + "=1,i=1;" + mark +
                      "\x1B\\\x05"));
    add("notifications", times(20'000, [](int i) { return "\x1B]99;i=" + std::to_string(i) + ":d=0;x\x1B\\"; }));
    return made;
}

} // namespace bench
