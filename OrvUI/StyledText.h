#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <cstdint>

namespace orv {

/// How a stretch of text looks, by SGR (ECMA-48 8.3.117, and the colours of XTerm Control Sequences).
struct TextPen {
    static constexpr int32_t defaultColour = -1;
    static constexpr int32_t direct = 0x1000000; ///< marks a colour of red, green and blue

    enum Attribute : uint8_t { bold = 1, faint = 2, italic = 4, underline = 8, inverse = 16, hidden = 32, struck = 64 };

    int32_t foreground = defaultColour; ///< 0 to 255 of the palette, or `direct` with 0xRRGGBB
    int32_t background = defaultColour;
    uint8_t attributes = 0;

    bool operator==(const TextPen&) const = default;
};

/// Of characters with one look, by their place in the text without controls.
struct TextRun {
    qsizetype start = 0;
    qsizetype length = 0;
    TextPen pen;

    bool operator==(const TextRun&) const = default;
};

/// Of characters under which a program has put a link (OSC 8).
struct LinkRun {
    qsizetype start = 0;
    qsizetype length = 0;
    QString url;

    bool operator==(const LinkRun&) const = default;
};

/// Lines of output as text and looks. Pure; any thread.
namespace StyledText {

struct Line {
    QString text;         ///< without control sequences
    QList<TextRun> runs;  ///< those that look otherwise than plain text, ascending
    QList<LinkRun> links; ///< ascending
    TextPen end;          ///< the look that goes on in the next line
};

/// `pen` is the look at the beginning.
[[nodiscard]] Line parse(const QString& line, const TextPen& pen);
/// The text alone; `line` itself, without a copy, where there is nothing to take out.
[[nodiscard]] QString plain(const QString& line);
/// The same; `pen` becomes the look that goes on in the next line.
[[nodiscard]] QString plain(const QString& line, TextPen& pen);

} // namespace StyledText
} // namespace orv
