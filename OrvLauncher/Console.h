#pragma once

#include <QByteArray>
#include <QString>

namespace orv {

/// One of the standard streams, written in UTF-8 and unbuffered.
///
/// A reader that went away (`orvlauncher scan | head -1`) closes the stream: what is written afterwards is dropped.
class Stream {
public:
    explicit Stream(int fd);

    [[nodiscard]] bool isTerminal() const { return m_isTerminal; }
    /// A terminal that can do it, and a user who did not set NO_COLOR.
    [[nodiscard]] bool hasColor() const { return m_hasColor; }
    /// Columns of the terminal as it is now; 0 where there is none, and nothing is cut to fit.
    [[nodiscard]] int width() const;
    [[nodiscard]] bool isClosed() const { return m_isClosed; }

    void write(const QByteArray& utf8);
    void write(QStringView text) { write(text.toUtf8()); }
    void writeLine(QStringView text) { write(text.toUtf8() + '\n'); }

private:
    int m_fd;
    bool m_isTerminal;
    bool m_hasColor;
    bool m_isClosed = false;
};

/// Results go to `out`, everything said beside them to `err`.
struct Console {
    Stream out{1};
    Stream err{2};
};

} // namespace orv
