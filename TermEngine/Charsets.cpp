#include "TermEngine/Charsets.h"

#include <algorithm>
#include <string>

namespace term {
namespace {

struct Designation {
    std::string_view finals;
    Charset set;
};

// XTerm Control Sequences, "Designate G0 Character Set" and "Designate G1 Character Set, VT300". Of several names of a
// set, the first is the one by which it is reported.
constexpr Designation designations[] = {
    {"B", Charset::ascii},
    {"1", Charset::ascii},
    {"0", Charset::decGraphics},
    {"2", Charset::decGraphics},
    {"%5", Charset::decSupplementalGraphics},
    {"<", Charset::decSupplemental},
    {">", Charset::decTechnical},
    {"\"4", Charset::decHebrew},
    {"\"?", Charset::decGreek},
    {"%0", Charset::decTurkish},
    {"&4", Charset::decCyrillic},
    {"A", Charset::british},
    {"4", Charset::dutch},
    {"C", Charset::finnish},
    {"5", Charset::finnish},
    {"R", Charset::french},
    {"f", Charset::french},
    {"Q", Charset::frenchCanadian},
    {"9", Charset::frenchCanadian},
    {"K", Charset::german},
    {"Y", Charset::italian},
    {"`", Charset::norwegianDanish},
    {"E", Charset::norwegianDanish},
    {"6", Charset::norwegianDanish},
    {"Z", Charset::spanish},
    {"H", Charset::swedish},
    {"7", Charset::swedish},
    {"=", Charset::swiss},
    {"%6", Charset::portuguese},
    {"\">", Charset::greek},
    {"%=", Charset::hebrew},
    {"%2", Charset::turkish},
    {"A", Charset::latin1},
    {"B", Charset::latin2},
    {"F", Charset::isoGreek},
    {"H", Charset::isoHebrew},
    {"L", Charset::isoCyrillic},
    {"M", Charset::latin5},
};

struct Characters {
    Charset set;
    std::u32string_view characters;
};

// The codes that a national set replaces, in the order of the characters below.
constexpr std::string_view replacedCodes = "#@[\\]^_`{|}~";
constexpr std::string_view turkishCodes = "!&@[\\]^`{|}~";

constexpr Characters nationals[] = {
    {Charset::british, U"£@[\\]^_`{|}~"},       {Charset::dutch, U"£¾ĳ½|^_`¨ƒ¼´"},
    {Charset::finnish, U"#@ÄÖÅÜ_éäöåü"},        {Charset::french, U"£à°ç§^_`éùè¨"},
    {Charset::frenchCanadian, U"#àâçêî_ôéùèû"}, {Charset::german, U"#§ÄÖÜ^_`äöüß"},
    {Charset::italian, U"£§°çé^_ùàòèì"},        {Charset::norwegianDanish, U"#ÄÆØÅÜ_äæøåü"},
    {Charset::spanish, U"£§¡Ñ¿^_`°ñç~"},        {Charset::swedish, U"#ÉÄÖÅÜ_éäöåü"},
    {Charset::swiss, U"ùàéçêîèôäöüû"},          {Charset::portuguese, U"#@ÃÇÕ^_`ãçõ~"},
    {Charset::turkish, U"ığİŞÖÇÜĞşöçü"},
};

// Those that have letters in the place of small ones, from 0x60 on.
constexpr Characters letters[] = {
    {Charset::greek, U"`ΑΒΓΔΕΖΗΘΙΚΛΜΝΧΟΠΡΣΤΥΦΞΨΩ  "},
    {Charset::hebrew, U"אבגדהוזחטיךכלםמןנסעףפץצקרשת"},
};

// DEC Special Character and Line Drawing Set, 0x5F to 0x7E.
constexpr std::u32string_view graphics = U"\u00A0◆▒␉␌␍␊°±␤␋┘┐┌└┼⎺⎻─⎼⎽├┤┴┬│≤≥π≠£·";
// The same codes in the graphics mode of the VT52, as xterm shows them: of its fractions without a denominator Unicode
// has one only.
constexpr std::u32string_view vt52Graphics = U"  ▮⅟   °±→…÷↓⎺⎺⎻⎻⎼⎼⎽⎽₀₁₂₃₄₅₆₇₈₉¶";
static_assert(vt52Graphics.size() == graphics.size());

// Whole sets, 0x21 to 0x7E; what a set leaves free is a reversed question mark, as in xterm.
constexpr Characters wholeSets[] = {
    {Charset::decTechnical, U"⎷┌─⌠⌡│⎡⎣⎤⎦⎧⎩⎫⎭⎨⎬⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮≤≠≥∫∴∝∞÷Δ∇ΦΓ∼≃Θ×Λ"
                            U"⇔⇒≡ΠΨ⸮Σ⸮⸮√ΩΞΥ⊂⊃∩∪∧∨¬αβχδεφγηιθκλ⸮ν∂πψρστ⸮ƒωξυζ←↑→↓"},
    {Charset::decSupplemental, U"¡¢£⸮¥⸮§¤©ª«⸮⸮⸮⸮°±²³⸮µ¶·⸮¹º»¼½⸮¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
                               U"⸮ÑÒÓÔÕÖŒØÙÚÛÜŸ⸮ßàáâãäåæçèéêëìíîï⸮ñòóôõöœøùúûüÿ⸮"},
    {Charset::decHebrew, U"¡¢£⸮¥⸮§¨©×«⸮⸮⸮⸮°±²³⸮µ¶·⸮¹÷»¼½⸮¿⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮"
                         U"⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮אבגדהוזחטיךכלםמןנסעףפץצקרשת⸮⸮⸮⸮"},
    {Charset::decGreek, U"¡¢£⸮¥⸮§¤©ª«⸮⸮⸮⸮°±²³⸮µ¶·⸮¹º»¼½⸮¿ϊΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟ"
                        U"⸮ΠΡΣΤΥΦΧΨΩάέήί⸮όϋαβγδεζηθικλμνξο⸮πρστυφχψωςύώ΄⸮"},
    {Charset::decTurkish, U"¡¢£⸮¥⸮§¨©ª«⸮⸮İ⸮°±²³⸮µ¶·⸮¹º»¼½ı¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
                          U"ĞÑÒÓÔÕÖŒØÙÚÛÜŸŞßàáâãäåæçèéêëìíîïğñòóôõöœøùúûüÿş"},
    {Charset::decCyrillic, U"⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮юабцдефгхийклмно"
                           U"пярстужвьызшэщчъЮАБЦДЕФГХИЙКЛМНОПЯРСТУЖВЬЫЗШЭЩЧ"},
    {Charset::latin2, U"Ą˘Ł¤ĽŚ§¨ŠŞŤŹ\u00ADŽŻ°ą˛ł´ľśˇ¸šşťź˝žżŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎ"
                      U"ĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢßŕáâăäĺćçčéęëěíîďđńňóôőö÷řůúűüýţ"},
    {Charset::isoGreek, U"‘’£€₯¦§¨©ͺ«¬\u00AD⸮―°±²³΄΅Ά·ΈΉΊ»Ό½ΎΏΐΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟ"
                        U"ΠΡ⸮ΣΤΥΦΧΨΩΪΫάέήίΰαβγδεζηθικλμνξοπρςστυφχψωϊϋόύώ"},
    {Charset::isoHebrew, U"⸮¢£¤¥¦§¨©×«¬\u00AD®¯°±²³´µ¶·¸¹÷»¼½¾⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮"
                         U"⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮‗אבגדהוזחטיךכלםמןנסעףפץצקרשת⸮⸮\u200E\u200F"},
    {Charset::isoCyrillic, U"ЁЂЃЄЅІЇЈЉЊЋЌ\u00ADЎЏАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"
                           U"абвгдежзийклмнопрстуфхцчшщъыьэюя№ёђѓєѕіїјљњћќ§ў"},
    {Charset::latin5, U"¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
                      U"ĞÑÒÓÔÕÖ×ØÙÚÛÜİŞßàáâãäåæçèéêëìíîïğñòóôõö÷øùúûüış"},
};
static_assert(std::ranges::all_of(wholeSets, [](const Characters& whole) { return whole.characters.size() == 94; }));

/// The character that stands where `code` does among the codes.
char32_t replaced(std::string_view codes, std::u32string_view characters, std::uint8_t code) {
    const std::size_t at = codes.find(static_cast<char>(code));
    return at == std::string_view::npos ? char32_t{code} : characters[at];
}

/// The character of a set that has those from `first` on.
char32_t characterFrom(std::uint8_t first, std::u32string_view characters, std::uint8_t code) {
    return code >= first && code - first < static_cast<int>(characters.size()) ? characters[code - std::size_t{first}]
                                                                               : char32_t{code};
}

} // namespace

std::optional<Charset> charsetOf(std::string_view designation, bool has96) {
    for (const Designation& known : designations) {
        if (known.finals == designation && has96Characters(known.set) == has96) {
            return known.set;
        }
    }
    return {};
}

std::string_view designationOf(Charset set) {
    // What has no name is the nearest one that has.
    const Charset named = set == Charset::vt52Graphics ? Charset::decGraphics : set;
    return std::ranges::find(designations, named, &Designation::set)->finals;
}

char32_t characterOf(Charset set, std::uint8_t code) {
    set = set == Charset::decSupplementalGraphics ? Charset::decSupplemental : set;
    const auto in = [set](const auto& table) -> std::u32string_view {
        const auto* const found = std::ranges::find(table, set, &Characters::set);
        return found == std::end(table) ? std::u32string_view() : found->characters;
    };
    if (set == Charset::ascii) {
        return code;
    }
    if (set == Charset::decGraphics) {
        return characterFrom(0x5F, graphics, code);
    }
    if (set == Charset::vt52Graphics) {
        return characterFrom(0x5F, vt52Graphics, code);
    }
    if (set == Charset::latin1) {
        return code | 0x80U;
    }
    if (const auto characters = in(wholeSets); !characters.empty()) {
        return has96Characters(set) && code == 0x20 ? U'\u00A0' : characterFrom(0x21, characters, code);
    }
    if (const auto characters = in(letters); !characters.empty()) {
        return characterFrom(0x60, characters, code);
    }
    return replaced(set == Charset::turkish ? turkishCodes : replacedCodes, in(nationals), code);
}

} // namespace term
