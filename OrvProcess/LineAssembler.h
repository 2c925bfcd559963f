#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace orv {

/// Makes whole lines of output that comes in pieces.
///
/// A line longer than `limitBytes` is cut there, between two characters. One that rewrites itself (a progress bar
/// without a line feed) is first brought down to what it shows, so what is kept stays bounded. Where the pieces of
/// input begin and end makes no difference to the lines.
class LineAssembler {
public:
    static constexpr qsizetype limitBytes = 64 * 1024;

    /// The raw lines that `bytes` completes, each ended by "\n"; empty when there is none. They are put where `memory`
    /// has its content, if that has room.
    [[nodiscard]] QByteArray append(QByteArrayView bytes, QByteArray memory = {});
    /// What stands behind the last line feed, ended by "\n" too; empty when nothing does.
    [[nodiscard]] QByteArray finish();

private:
    void shorten(QByteArray& lines);
    void endLine(QByteArray& lines);
    void rewrite(QByteArray& lines);

    QByteArray m_partial;
    bool m_rewritten = false; ///< the partial line is too long and holds controls
};

} // namespace orv
