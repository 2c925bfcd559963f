#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <span>

namespace orv {

/// Makes whole lines of output that comes in pieces.
///
/// A line longer than `limitBytes` is cut there, between two characters. One that rewrites itself (a progress bar
/// without a line feed) is first brought down to what it shows, so what is kept stays bounded. Where the pieces of
/// input begin and end makes no difference to the lines.
class LineAssembler {
public:
    static constexpr qsizetype limitBytes = 64 * 1024;

    /// Where the next `size` bytes of output are to be put; valid until the next call of anything else here.
    [[nodiscard]] std::span<char> room(qsizetype size);
    /// The raw lines that the first `size` bytes of the room complete, each ended by "\n"; empty when there is none.
    /// `memory` is used for what comes next; its content is of no interest.
    [[nodiscard]] QByteArray append(qsizetype size, QByteArray memory = {});
    /// What stands behind the last line feed, ended by "\n" too; empty when nothing does.
    [[nodiscard]] QByteArray finish();

private:
    [[nodiscard]] QByteArray takeLines(qsizetype end, qsizetype filled, QByteArray memory);
    [[nodiscard]] QByteArray appendSlowly(QByteArrayView bytes);
    void shorten(QByteArray& lines);
    void endLine(QByteArray& lines);
    void rewrite(QByteArray& lines);

    QByteArray m_partial;     ///< the line that has no end yet, and room behind it
    qsizetype m_filled = 0;   ///< how much of it is that line
    bool m_rewritten = false; ///< the partial line is too long and holds controls
};

} // namespace orv
