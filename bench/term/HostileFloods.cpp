#include "BenchTerm.h"
#include "HostileInputs.h"
#include "TermEngine/Base64.h"

#include <array>
#include <cstdint>
#include <span>

#include <zlib.h>

namespace bench {
namespace {

/// The side of a square picture that just fits into a terminal's memory for pictures, and of one that does so twice.
constexpr int fullSide = 1580;
constexpr int halfSide = 1110;

std::string number(int value) {
    return std::to_string(value);
}

std::string zlibOf(const std::string& bytes) {
    std::string out(compressBound(bytes.size()), '\0');
    uLongf size = out.size();
    compress2(
        reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), 9);
    out.resize(size);
    return out;
}

std::string bigEndian(std::size_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift);
    }
    return bytes;
}

std::string chunk(const std::string& kind, const std::string& data) {
    const std::string body = kind + data;
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return bigEndian(data.size()) + body + bigEndian(sum);
}

enum class Rows : char { inOrder, interlaced };

/// A square of one colour with a bit a pixel, in base64: the shortest that there is of its size.
std::string shortPng(int side, Rows rows = Rows::inOrder) {
    const auto pixels = static_cast<std::size_t>(side);
    const std::string header =
        bigEndian(pixels) + bigEndian(pixels) + std::string("\x01\0\0\0", 4) + static_cast<char>(rows);
    const std::string data = zlibOf(std::string((pixels / 8 + 2) * pixels * 2, '\0'));
    return term::encodeBase64("\x89PNG\r\n\x1A\n" + chunk("IHDR", header) + chunk("IDAT", data) + chunk("IEND", ""));
}

std::string shortPixels(int side, int bytesPerPixel = 4) {
    return term::encodeBase64(zlibOf(std::string(static_cast<std::size_t>(side * side * bytesPerPixel), '\x7F')));
}

std::string kitty(const std::string& keys, const std::string& data = "") {
    return "\x1B_Gq=2," + keys + ";" + data + "\x1B\\";
}

std::string square(int side) {
    return ",s=" + number(side) + ",v=" + number(side);
}

/// Text in one attribute, in two in turn, by ones and by pairs, and in another one in each cell; empty cells in two
/// colours in turn, wide characters in two, and clusters; characters of one column and two, every other one protected.
struct Screens {
    std::string plain = repeated(100, std::string(300, 'x'));
    std::string inTurn = repeated(15'000, "\x1B[31mA\x1B[32mB");
    std::string pairs = repeated(7'500, "\x1B[31mAA\x1B[32mBB");
    std::string blanks = repeated(100, repeated(150, "\x1B[41m\x1B[X\x1B[C\x1B[42m\x1B[X\x1B[C") + "\r\n");
    std::string wide = repeated(7'500, "\x1B[31m\xE6\xBC\xA2\x1B[32m\xE6\xBC\xA2");
    std::string guarded = repeated(15'000, "\x1B[1\"qx\x1B[0\"qy");
    std::string guardedWide = repeated(7'500, "\x1B[1\"q\xE6\xBC\xA2\x1B[0\"q\xE6\xBC\xA2");
    std::string colored = "\x1B[1m";
    std::string clusters;
    Screens() {
        for (int i = 0; i < 30'000; ++i) {
            const auto part = [i](int shift) { return number(i >> shift & 255); };
            colored += "\x1B[38;2;" + part(0) + ";" + part(8) + ";7mx";
            clusters += "e\xCC" + std::string(1, static_cast<char>(0x80 + i % 64)) + "\xCD" +
                        std::string(1, static_cast<char>(0x80 + i / 64 % 32));
        }
    }
};

/// What moves pictures with the text, back and forth, so that none leaves the screen; on the alternate one, lines that
/// scroll go nowhere else.
std::vector<HostileInput> movedPictures() {
    const auto at = [](int i) { return "\x1B[" + number(1 + i % 25) + ";" + number(1 + i / 25) + "H"; };
    const std::string sixels = times(1000, [&](int i) { return at(i) + "\x1BPq~\x1B\\"; });
    const std::string pixel = kitty("a=t,i=1,f=24,s=1,v=1", "AAAA");
    const std::string places = pixel + times(1000, [&](int i) { return at(i) + "\x1B_Ga=p,i=1,q=2\x1B\\"; });
    const std::string relative =
        pixel + "\x1B[5H" + kitty("a=p,i=1,p=1,C=1") +
        times(1000, [](int i) { return kitty("a=p,i=1,P=1,Q=1,H=" + number(i % 20) + ",V=" + number(i % 15)); }) +
        "\x1B[999H";
    const std::string regions = "\x1B[;9r\x1B[T\x1B[9r\x1B[T\x1B[;9r\x1B[S\x1B[9r\x1B[S";
    std::vector<HostileInput> made;
    for (const auto& [name, before] : std::to_array<std::pair<std::string, std::string>>(
             {{"1000 sixels", sixels}, {"1000 places of a picture", places}, {"1000 relative places", relative}})) {
        made.push_back({"SD and a line feed beside " + name, before, piecesOf("\x1B[T\n")});
        made.push_back({"SD and SU beside " + name, "\x1B[?1049h" + before, piecesOf("\x1B[T\x1B[S")});
        made.push_back({"two regions in turn beside " + name, "\x1B[?1049h" + before, piecesOf(regions)});
        made.push_back({"line feeds above " + name, before + "\x1B[;2r\x1B[2H", piecesOf("\n")});
        made.push_back({"SL and SR beside " + name, before, piecesOf("\x1B[ @\x1B[ A")});
        made.push_back({"a sixel and SR beside " + name, before, piecesOf("\x1BPq~\x1B\\\x1B[ A")});
        made.push_back({"another place beside " + name, before, piecesOf("\x1B_Ga=p,i=1,P=1,q=2\x1B\\")});
    }
    made.push_back({"a sixel written over, inserting", "\x1B[4h", piecesOf("\x1BPq~\x1B\\\x1B[Hx")});
    return made;
}

} // namespace

std::vector<HostileInput> hostileCellFloods() {
    static const Screens screens;
    std::vector<HostileInput> made;
    const auto add = [&made](const std::string& name, const std::string& before, const std::string& once) {
        made.push_back({name, before, piecesOf(once)});
    };
    struct Flood {
        const char* name;
        const char* once;
    };
    // Of the shortest forms; then with another rectangle each time, or a change of all cells between.
    for (const Flood& flood : std::to_array<Flood>(
             {{"DECRQCRA", "\x1B[*y"},
              {"DECRQCRA of two rectangles", "\x1B[;;;2*y\x1B[*y"},
              {"DECRQCRA, filled anew", "\x1B[*y\x1B[65$x"},
              {"DECRQCRA, a line written anew", "\x1B[*y0"},
              {"XTREPORTSGR", "\x1B[#|"},
              {"XTREPORTSGR of two rectangles", "\x1B[;2#|\x1B[#|"},
              {"XTREPORTSGR, a line written anew", "\x1B[#|0"},
              {"DECFRA", "\x1B[65$x"},
              {"DECFRA, two in turn", "\x1B[65$x\x1B[66$x"},
              {"DECERA", "\x1B[$z"},
              {"DECERA of a part", "\x1B[;2;;79$z"},
              {"DECSERA", "\x1B[${"},
              {"DECCARA", "\x1B[;;;;1$r"},
              {"DECCARA, two in turn", "\x1B[;;;;1$r\x1B[;;;;0$r"},
              {"DECRARA", "\x1B[;;;;7$t"},
              {"DECRARA of all", "\x1B[;;;;$t"},
              {"DECCRA of lines", "\x1B[;;;;;2$v"},
              {"DECCRA of columns", "\x1B[;;;;;;2$v"},
              {"DECALN", "\x1B#8"},
              {"DECALN and ED", "\x1B#8\x1B[J"},
              {"RIS and DECFRA", "\x1B"
                                 "c\x1B[65$x"},
              {"RIS and DECALN", "\x1B"
                                 "c\x1B#8"}})) {
        add(flood.name, screens.plain, flood.once);
        add(std::string(flood.name) + ", all colours", screens.colored, flood.once);
    }
    for (const char* once : {"\x1B[*y", "\x1B[;;;2*y\x1B[*y"}) {
        add("DECRQCRA of clusters", screens.clusters, once);
    }
    // Where each line has changed a little, or is elsewhere.
    for (const auto& [change, name] : std::to_array<std::pair<const char*, const char*>>(
             {{"\x1B[65;;5;;5$x", "a column written anew"}, {"\x1B[ @", "all shifted"}, {"\x1B[S", "scrolled"}})) {
        const auto addAfter = [&](const char* function, const char* once, const char* of, const std::string& screen) {
            add(function + std::string(" of ") + of + ", " + name, screen, once + std::string(change));
        };
        for (const Flood& flood : std::to_array<Flood>(
                 {{"DECRQCRA", "\x1B[*y"}, {"DECRQCRA of two", "\x1B[;;;2*y\x1B[*y"}, {"XTREPORTSGR", "\x1B[#|"}})) {
            addAfter(flood.name, flood.once, "text", screens.plain);
            addAfter(flood.name, flood.once, "all colours", screens.colored);
            addAfter(flood.name, flood.once, "clusters", screens.clusters);
            addAfter(flood.name, flood.once, "empty cells", screens.blanks);
        }
        for (const Flood& flood : std::to_array<Flood>({{"DECSERA", "\x1B[${"}, {"DECSED", "\x1B[?2J"}})) {
            addAfter(flood.name, flood.once, "what is protected by turns", screens.guarded);
            addAfter(flood.name, flood.once, "wide characters protected by turns", screens.guardedWide);
        }
    }
    for (const Flood& flood :
         std::to_array<Flood>({{"DECRARA", "\x1B[;;;;$t"}, {"DECCARA, two in turn", "\x1B[;;;;1$r\x1B[;;;;22$r"}})) {
        add(std::string(flood.name) + ", two attributes in turn", screens.inTurn, flood.once);
        add(std::string(flood.name) + ", two attributes by pairs", screens.pairs, flood.once);
        add(std::string(flood.name) + ", empty cells of two colours", screens.blanks, flood.once);
        add(std::string(flood.name) + ", wide characters", screens.wide, flood.once);
    }
    add("DECSERA, every other cell protected", screens.guarded, "\x1B[${");
    const std::string margins = "\x1B[?69h\x1B[2;79s\x1B[2;2H";
    for (const auto& [name, before] : std::to_array<std::pair<const char*, std::string>>(
             {{"REP", ""},
              {"REP, inserting", "\x1B[4h"},
              {"REP between margins", margins},
              {"REP between margins far apart", "\x1B[?69h\x1B[2;299s\x1B[2;2H"},
              {"REP in two columns", "\x1B[?69h\x1B[2;3s\x1B[2;2H"},
              {"REP without wrapping", "\x1B[?7l"}})) {
        const std::string repeat = "\x1B[65535b";
        for (const char* character : {"x", "\xC3\xA9", "\xE6\xBC\xA2", "\xF0\x9F\x98\x80", "\xF0\x9F\x87\xA6"}) {
            made.push_back(
                {name + std::string(" of ") + character, before, character + piecesOf(repeat).substr(repeat.size())});
            made.push_back(
                {name + std::string(" of ") + character + " behind CUP", before,
                 piecesOf(std::string("\x1B[H") + character + repeat)});
        }
    }
    // What moves all lines of a region.
    for (const Flood& flood : std::to_array<Flood>(
             {{"line feeds", "\n"},
              {"SU", "\x1B[S"},
              {"SD", "\x1B[T"},
              {"IL", "\x1B[L"},
              {"SD of many lines", "\x1B[98T"},
              {"IL of many lines", "\x1B[98L"},
              {"DECIC", "\x1B['}"},
              {"DECDC", "\x1B['~"},
              {"SL", "\x1B[ @"}})) {
        add(flood.name, screens.plain + "\x1B[H", flood.once);
        add(std::string(flood.name) + " between margins", screens.plain + margins + "\x1B[999;2H", flood.once);
    }
    for (const Flood& flood : std::to_array<Flood>(
             {{"DECFI and a line feed", "\x1B"
                                        "9\n"},
              {"NEL and a line feed", "\x1B"
                                      "E\n"},
              {"a character and a line feed", "x\n"},
              {"SD", "\x1B[T"}})) {
        add(flood.name + std::string(" between margins far apart"), screens.plain + "\x1B[?69h\x1B[2;299s\x1B[99;2H",
            flood.once);
    }
    add("DECBI", screens.plain,
        "\x1B"
        "6");
    add("DECSED and DECALN, all colours", screens.colored, "\x1B[?0J\x1B#8");
    add("ICH", screens.plain, "\x1B[@");
    const std::string pictures =
        times(1000, [](int i) { return "\x1B[" + number(1 + i % 25) + ";" + number(1 + i / 25) + "H\x1BPq~\x1B\\"; });
    for (const Flood& flood : std::to_array<Flood>(
             {{"DECERA", "\x1B[;76$z"},
              {"DECFRA", "\x1B[65;;76$x"},
              {"DECCRA", "\x1B[;75;;76;;;78$v"},
              {"DECCARA", "\x1B[;76;;;1$r\x1B[;76;;;22$r"}})) {
        add(flood.name + std::string(" beside 1000 sixels"), pictures, flood.once);
    }
    return made;
}

std::vector<HostileInput> hostilePictureFloods() {
    std::vector<HostileInput> made = movedPictures();
    const auto add = [&made](const char* name, const std::string& before, const std::string& once) {
        made.push_back({name, before, piecesOf(once)});
    };
    const std::string announced = "\"1;1;" + number(fullSide) + ";" + number(fullSide);
    const std::string row = "!" + number(fullSide) + "~";
    add("sixel, large and empty", "", "\x1BPq" + announced + "\x1B\\");
    add("sixel, large and transparent", "", "\x1BP;1q" + announced + "\x1B\\");
    add("sixel, painted", "", "\x1BPq" + repeated(fullSide / 6, row + "-") + "\x1B\\");
    add("sixel, painted over and over", "", "\x1BPq" + repeated(600, "!9999~$") + "\x1B\\");
    add("sixel, one pixel far away", "",
        "\x1BPq" + std::string(fullSide / 6 - 1, '-') + "!" + number(fullSide - 1) + "?@\x1B\\");
    add("sixel, growing", "", "\x1BPq" + std::string(fullSide / 6, '-') + "@" + repeated(10, "!150?@") + "\x1B\\");
    add("sixel, small", "", "\x1BPq~\x1B\\");
    add("sixel, small and transparent", "\x1B[H", "\x1BP;1q@\x1B\\\r");
    add("PNG", "", kitty("a=T,f=100", shortPng(fullSide)));
    add("PNG, interlaced", "", kitty("a=T,f=100", shortPng(fullSide, Rows::interlaced)));
    add("PNG, asked about", "", kitty("a=q,f=100,i=1", shortPng(fullSide)));
    add("PNG, too large", "", kitty("a=T,f=100", shortPng(9999)));
    add("PNG by OSC 1337", "", "\x1B]1337;File=inline=1:" + shortPng(fullSide) + "\a");
    add("PNG by OSC 1337, over the screen", "",
        "\x1B]1337;File=inline=1;width=300;height=100;preserveAspectRatio=0:" + shortPng(1) + "\a");
    add("compressed pixels", "", kitty("a=T,o=z,f=32" + square(fullSide), shortPixels(fullSide)));
    add("compressed pixels of three bytes", "", kitty("a=T,i=1,o=z,f=24" + square(fullSide), shortPixels(fullSide, 3)));
    add("compressed pixels, too many", "", kitty("a=T,o=z,f=32" + square(1500), shortPixels(fullSide)));
    add("pixels that do not come", "", kitty("a=T,f=32" + square(fullSide), "AAAA"));
    const auto image = [](int side) { return kitty("a=T,i=1,C=1,o=z,f=32" + square(side), shortPixels(side)); };
    const std::string pixel = "s=1,v=1";
    add("frames, large", image(halfSide), kitty("a=f,i=1," + pixel, "AAAAAA==") + kitty("a=d,d=f,i=1"));
    add("frames upon others", image(halfSide), kitty("a=f,c=1,i=1," + pixel, "AAAAAA==") + kitty("a=d,d=f,i=1"));
    add("frames, edited", image(halfSide), kitty("a=f,r=1,i=1," + pixel, "AAAAAA=="));
    add("frames, small", kitty("a=T,i=1," + pixel, "AAAAAA=="), kitty("a=f,i=1," + pixel, "AAAAAA=="));
    const std::string frames = image(halfSide - 50) + kitty("a=f,i=1," + pixel, "AAAAAA==");
    add("frames, composed", frames, "\x1B_Ga=c,i=1,r=1,c=2\x1B\\");
    add("frames, replaced by others", frames, "\x1B_Ga=c,i=1,r=1,c=2,C=1\x1B\\");
    add("pictures of a pixel", "", kitty("a=T,f=24," + pixel, "AAAA"));
    add("places for a picture", image(10), "\x1B_Ga=p,i=1,q=2\x1B\\");
    add("places for a picture, named", image(10), kitty("a=p,i=1,p=1,c=9999,r=9999"));
    add("places, deleted", image(10) + piecesOf(kitty("a=p,i=1,C=1")), "\x1B_Ga=d,d=z,z=1\x1B\\");
    return made;
}

} // namespace bench
