#include "OrvGit/GitPath.h"

#include <QStringDecoder>

#include <array>
#include <cstring>
#include <utility>

namespace orv {
namespace {

constexpr char16_t firstEscape = 0xDC80;
constexpr char16_t lastEscape = 0xDCFF;

bool isEscape(QChar letter) {
    return letter.unicode() >= firstEscape && letter.unicode() <= lastEscape;
}

bool isAscii(QByteArrayView bytes) {
    quint64 all = 0;
    const char* next = bytes.data();
    const char* const end = next + bytes.size();
    for (quint64 word = 0; end - next >= qsizetype{sizeof word}; next += sizeof word) {
        std::memcpy(&word, next, sizeof word);
        all |= word;
    }
    for (; next < end; ++next) {
        all |= static_cast<uchar>(*next);
    }
    return (all & 0x8080'8080'8080'8080U) == 0;
}

/// How many bytes the valid sequence at the beginning has; 0 when there is none.
qsizetype validLength(QByteArrayView bytes) {
    const auto first = static_cast<uchar>(bytes.front());
    const qsizetype length = first < 0x80 ? 1 : first < 0xC0 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    return length > 0 && length <= bytes.size() && bytes.first(length).isValidUtf8() ? length : 0;
}

constexpr std::array letterEscapes{
    std::pair{'a', '\a'}, std::pair{'b', '\b'}, std::pair{'t', '\t'}, std::pair{'n', '\n'},  std::pair{'v', '\v'},
    std::pair{'f', '\f'}, std::pair{'r', '\r'}, std::pair{'"', '"'},  std::pair{'\\', '\\'},
};

bool isOctal(char letter) {
    return letter >= '0' && letter <= '7';
}

} // namespace

QString GitPath::fromBytes(QByteArrayView bytes) {
    // Nearly every path is plain; reading it as UTF-8 takes longer than all else that is done with it.
    if (isAscii(bytes)) {
        return QString::fromLatin1(bytes);
    }
    // What is not UTF-8 shows as this letter, which a path may also hold itself.
    if (QString text = QString::fromUtf8(bytes); !text.contains(QChar(QChar::ReplacementCharacter))) {
        return text;
    }
    QString path;
    while (!bytes.isEmpty()) {
        const qsizetype length = validLength(bytes);
        if (length == 0) {
            path += QChar(static_cast<char16_t>(0xDC00 + static_cast<uchar>(bytes.front())));
        } else {
            path += QString::fromUtf8(bytes.first(length));
        }
        bytes = bytes.sliced(std::max(length, qsizetype{1}));
    }
    return path;
}

QByteArray GitPath::toBytes(const QString& path) {
    QByteArray bytes;
    qsizetype begin = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        const bool isPaired = i > 0 && path[i - 1].isHighSurrogate();
        if (isEscape(path[i]) && !isPaired) {
            bytes += QStringView(path).sliced(begin, i - begin).toUtf8();
            bytes += static_cast<char>(path[i].unicode() & 0xFFU);
            begin = i + 1;
        }
    }
    return begin == 0 ? path.toUtf8() : bytes + QStringView(path).sliced(begin).toUtf8();
}

QByteArray GitPath::unquoted(QByteArrayView text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
        return text.toByteArray();
    }
    text = text.sliced(1).chopped(1);
    QByteArray path;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            path += text[i];
            continue;
        }
        ++i;
        if (i + 2 < text.size() && isOctal(text[i]) && isOctal(text[i + 1]) && isOctal(text[i + 2])) {
            path += static_cast<char>((text[i] - '0') * 64 + (text[i + 1] - '0') * 8 + (text[i + 2] - '0'));
            i += 2;
            continue;
        }
        char meant = text[i];
        for (const auto& [letter, byte] : letterEscapes) {
            meant = text[i] == letter ? byte : meant;
        }
        path += meant;
    }
    return path;
}

QByteArray GitPath::quoted(QByteArrayView path) {
    QByteArray text("\"");
    for (const char byte : path) {
        const auto value = static_cast<uchar>(byte);
        if (byte == '"' || byte == '\\') {
            text += '\\';
            text += byte;
        } else if (value < 0x20 || value >= 0x7F) {
            text += '\\';
            text += static_cast<char>('0' + value / 64);
            text += static_cast<char>('0' + value / 8 % 8);
            text += static_cast<char>('0' + value % 8);
        } else {
            text += byte;
        }
    }
    return text + '"';
}

} // namespace orv
