#include "TermEngine/Charsets.h"

#include <string>

namespace term {
namespace {

struct Designation {
    std::string_view finals;
    Charset set;
};

// XTerm Control Sequences, "Designate G0 Character Set".
constexpr Designation designations94[] = {
    {"B", Charset::ascii},           {"1", Charset::ascii},           {"0", Charset::decGraphics},
    {"2", Charset::decGraphics},     {"<", Charset::decSupplemental}, {"%5", Charset::decSupplemental},
    {"A", Charset::british},         {"4", Charset::dutch},           {"C", Charset::finnish},
    {"5", Charset::finnish},         {"R", Charset::french},          {"f", Charset::french},
    {"Q", Charset::frenchCanadian},  {"9", Charset::frenchCanadian},  {"K", Charset::german},
    {">", Charset::decTechnical},    {"Y", Charset::italian},         {"`", Charset::norwegianDanish},
    {"E", Charset::norwegianDanish}, {"6", Charset::norwegianDanish}, {"Z", Charset::spanish},
    {"H", Charset::swedish},         {"7", Charset::swedish},         {"=", Charset::swiss},
    {"%6", Charset::portuguese},
};

// The codes that a national set replaces, in the order of the characters below.
constexpr std::string_view replacedCodes = "#@[\\]^_`{|}~";

struct National {
    Charset set;
    std::u32string_view characters;
};

constexpr National nationals[] = {
    {Charset::british, U"£@[\\]^_`{|}~"},       {Charset::dutch, U"£¾ĳ½|^_`¨ƒ¼´"},
    {Charset::finnish, U"#@ÄÖÅÜ_éäöåü"},        {Charset::french, U"£à°ç§^_`éùè¨"},
    {Charset::frenchCanadian, U"#àâçêî_ôéùèû"}, {Charset::german, U"#§ÄÖÜ^_`äöüß"},
    {Charset::italian, U"£§°çé^_ùàòèì"},        {Charset::norwegianDanish, U"#ÄÆØÅÜ_äæøåü"},
    {Charset::spanish, U"£§¡Ñ¿^_`°ñç~"},        {Charset::swedish, U"#ÉÄÖÅÜ_éäöåü"},
    {Charset::swiss, U"ùàéçêîèôäöüû"},          {Charset::portuguese, U"#@ÃÇÕ^_`ãçõ~"},
};

// DEC Special Character and Line Drawing Set, 0x5F to 0x7E.
constexpr std::u32string_view graphics = U"\u00A0◆▒␉␌␍␊°±␤␋┘┐┌└┼⎺⎻─⎼⎽├┤┴┬│≤≥π≠£·";

// DEC Technical, 0x21 to 0x7E; what it leaves free is a reversed question mark.
constexpr std::u32string_view technical =
    U"⎷┌─⌠⌡│⎡⎣⎤⎦⎧⎩⎫⎭⎨⎬⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮⸮≤≠≥∫∴∝∞÷Δ∇ΦΓ∼≃Θ×Λ⇔⇒≡ΠΨ⸮Σ⸮⸮√ΩΞΥ⊂⊃∩∪∧∨¬αβχδεφγηιθκλ⸮ν∂πψρστ⸮ƒωξυζ←↑→↓";
static_assert(technical.size() == 0x7E - 0x20);

/// DEC Supplemental is Latin-1 but for these (VT220 Programmer Reference Manual, Multinational Character Set).
char32_t supplemental(std::uint8_t code) {
    switch (code) {
    case 0x20:
        return code;
    case 0x28:
        return U'¤';
    case 0x57:
        return U'Œ';
    case 0x5D:
        return U'Ÿ';
    case 0x77:
        return U'œ';
    case 0x7D:
        return U'ÿ';
    default:
        return code | 0x80U;
    }
}

} // namespace

std::optional<Charset> charsetOf(std::string_view designation, bool has96Characters) {
    if (has96Characters) {
        return designation == "A" ? std::optional(Charset::latin1) : std::nullopt;
    }
    for (const Designation& known : designations94) {
        if (known.finals == designation) {
            return known.set;
        }
    }
    return {};
}

char32_t characterOf(Charset set, std::uint8_t code) {
    switch (set) {
    case Charset::ascii:
        return code;
    case Charset::decGraphics:
        return code >= 0x5F && code <= 0x7E ? graphics[code - 0x5FU] : code;
    case Charset::latin1:
        return code | 0x80U;
    case Charset::decSupplemental:
        return supplemental(code);
    case Charset::decTechnical:
        return code > 0x20 && code <= 0x7E ? technical[code - 0x21U] : code;
    default:
        break;
    }
    for (const National& national : nationals) {
        if (national.set == set) {
            const std::size_t at = replacedCodes.find(static_cast<char>(code));
            return at == std::string_view::npos ? char32_t{code} : national.characters[at];
        }
    }
    return code;
}

} // namespace term
