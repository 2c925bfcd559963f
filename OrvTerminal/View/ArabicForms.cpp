#include "OrvTerminal/View/ArabicForms.h"

#include <QString>

#include <array>
#include <unordered_map>

namespace orv {
namespace {

/// By whether the letter is joined to the one before it (1), and to the one behind it (2).
using Forms = std::array<char32_t, 4>;

std::unordered_map<char32_t, Forms> readForms() {
    std::unordered_map<char32_t, Forms> forms;
    const auto read = [&forms](char32_t first, char32_t last) {
        for (char32_t scalar = first; scalar <= last; ++scalar) {
            const QString letter = QChar::decomposition(scalar);
            if (letter.size() != 1) {
                continue;
            }
            Forms& of = forms[letter.front().unicode()];
            switch (QChar::decompositionTag(scalar)) {
            case QChar::Final:
                of[1] = scalar;
                break;
            case QChar::Initial:
                of[2] = scalar;
                break;
            case QChar::Medial:
                of[3] = scalar;
                break;
            default:
                break;
            }
        }
    };
    read(0xFB50, 0xFBFF);
    read(0xFE80, 0xFEFC);
    return forms;
}

bool joinsBehind(char32_t scalar) {
    const QChar::JoiningType type = QChar::joiningType(scalar);
    return type == QChar::Joining_Dual || type == QChar::Joining_Left || type == QChar::Joining_Causing;
}

bool joinsBefore(char32_t scalar) {
    const QChar::JoiningType type = QChar::joiningType(scalar);
    return type == QChar::Joining_Dual || type == QChar::Joining_Right || type == QChar::Joining_Causing;
}

} // namespace

char32_t joinedForm(char32_t letter, char32_t before, char32_t behind) {
    const size_t form =
        (joinsBefore(letter) && joinsBehind(before) ? 1U : 0U) + (joinsBehind(letter) && joinsBefore(behind) ? 2U : 0U);
    if (form == 0) {
        return letter;
    }
    static const std::unordered_map<char32_t, Forms> forms = readForms();
    const auto found = forms.find(letter);
    return found == forms.end() || found->second[form] == 0 ? letter : found->second[form];
}

} // namespace orv
