#include "OrvCore/JsonSkim.h"

#include <QUtf8StringView>

#include <array>
#include <cstdint>
#include <cstring>

namespace orv {
namespace {

constexpr bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

/// Which bytes a run over a string need not stop at.
constexpr std::array<bool, 256> plainBytes = [] {
    std::array<bool, 256> plain{};
    for (size_t byte = 0x20; byte < plain.size(); ++byte) {
        plain[byte] = byte != '"' && byte != '\\';
    }
    return plain;
}();

class Skimmer {
public:
    explicit Skimmer(QByteArrayView text) : m_at(text.begin()), m_end(text.end()), m_text(text) {}

    std::optional<JsonTop> run() {
        skipBlanks();
        if (!take('{') || !object()) {
            return {};
        }
        skipBlanks();
        const bool isUtf8 = !m_hasHighBytes || QUtf8StringView(m_text.data(), m_text.size()).isValidUtf8();
        return m_at == m_end && m_hasType && isUtf8 ? std::optional(m_top) : std::nullopt;
    }

private:
    struct Text {
        QByteArrayView bytes; ///< between the quotes
        bool isPlain = true;  ///< without escapes
    };

    void skipBlanks() {
        while (m_at != m_end && (*m_at == ' ' || *m_at == '\t' || *m_at == '\n' || *m_at == '\r')) {
            ++m_at;
        }
    }
    bool take(char wanted) {
        if (m_at == m_end || *m_at != wanted) {
            return false;
        }
        ++m_at;
        return true;
    }
    bool takeWord(QByteArrayView word) {
        if (m_end - m_at < word.size() || std::memcmp(m_at, word.data(), static_cast<size_t>(word.size())) != 0) {
            return false;
        }
        m_at += word.size();
        return true;
    }

    /// Behind the opening quote.
    bool string(Text& text) {
        const char* const begin = m_at;
        uint8_t seen = 0;
        while (true) {
            while (m_at != m_end && plainBytes[static_cast<uint8_t>(*m_at)]) {
                seen |= static_cast<uint8_t>(*m_at++);
            }
            if (m_at == m_end) {
                return false;
            }
            if (*m_at == '"') {
                break;
            }
            if (!escape()) {
                return false;
            }
            text.isPlain = false;
        }
        constexpr uint8_t highBit = 0x80;
        m_hasHighBytes = m_hasHighBytes || (seen & highBit) != 0;
        text.bytes = QByteArrayView(begin, m_at++);
        return true;
    }

    /// At the byte that was not plain.
    bool escape() {
        if (!take('\\') || m_at == m_end) {
            return false;
        }
        const char kind = *m_at++;
        if (kind != 'u') {
            return std::strchr("\"\\/bfnrt", kind) != nullptr && kind != '\0';
        }
        constexpr int digits = 4;
        // What begins with a "d" may be half of a pair.
        if (m_end - m_at < digits || *m_at == 'd' || *m_at == 'D') {
            return false;
        }
        for (int digit = 0; digit < digits; ++digit) {
            const char letter = *m_at++;
            const bool isHex = isDigit(letter) || (letter >= 'a' && letter <= 'f') || (letter >= 'A' && letter <= 'F');
            if (!isHex) {
                return false;
            }
        }
        return true;
    }

    bool number() {
        constexpr std::ptrdiff_t longest = 15; // that a double holds
        const char* const begin = m_at;
        take('-');
        const char* const whole = m_at;
        while (m_at != m_end && isDigit(*m_at)) {
            ++m_at;
        }
        if (m_at == whole || (*whole == '0' && m_at - whole > 1)) {
            return false;
        }
        if (take('.')) {
            const char* const fraction = m_at;
            while (m_at != m_end && isDigit(*m_at)) {
                ++m_at;
            }
            if (m_at == fraction) {
                return false;
            }
        }
        const bool hasExponent = m_at != m_end && (*m_at == 'e' || *m_at == 'E');
        return !hasExponent && m_at - begin <= longest;
    }

    bool value() {
        if (m_at == m_end) {
            return false;
        }
        switch (*m_at) {
        case '"': {
            ++m_at;
            Text text;
            return string(text);
        }
        case '{':
            ++m_at;
            return object();
        case '[':
            ++m_at;
            return array();
        case 't':
            return takeWord("true");
        case 'f':
            return takeWord("false");
        case 'n':
            return takeWord("null");
        default:
            return number();
        }
    }

    /// Behind the bracket.
    bool array() {
        if (++m_depth > deepest) {
            return false;
        }
        skipBlanks();
        if (!take(']')) {
            do {
                skipBlanks();
                if (!value()) {
                    return false;
                }
                skipBlanks();
            } while (take(','));
            if (!take(']')) {
                return false;
            }
        }
        --m_depth;
        return true;
    }

    /// Behind the brace.
    bool object() {
        if (++m_depth > deepest) {
            return false;
        }
        skipBlanks();
        if (!take('}')) {
            do {
                skipBlanks();
                Text key;
                if (!take('"') || !string(key)) {
                    return false;
                }
                skipBlanks();
                if (!take(':')) {
                    return false;
                }
                skipBlanks();
                if (!(m_depth == 1 ? topValue(key) : value())) {
                    return false;
                }
                skipBlanks();
            } while (take(','));
            if (!take('}')) {
                return false;
            }
        }
        --m_depth;
        return true;
    }

    bool topValue(const Text& key) {
        if (!key.isPlain) {
            return false;
        }
        const bool isType = key.bytes == QByteArrayView("type");
        if (!isType && key.bytes != QByteArrayView("session_id")) {
            return value();
        }
        Text text;
        if (!take('"') || !string(text) || !text.isPlain || (isType ? m_hasType : m_top.sessionID.has_value())) {
            return false;
        }
        if (isType) {
            m_hasType = true;
            m_top.type = text.bytes;
        } else {
            m_top.sessionID = text.bytes;
        }
        return true;
    }

    static constexpr int deepest = 64;

    const char* m_at;
    const char* const m_end;
    const QByteArrayView m_text;
    JsonTop m_top;
    bool m_hasType = false;
    bool m_hasHighBytes = false;
    int m_depth = 0;
};

} // namespace

std::optional<JsonTop> skimJson(QByteArrayView text) {
    return Skimmer(text).run();
}

} // namespace orv
