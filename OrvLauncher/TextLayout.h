#pragma once

#include <QList>
#include <QString>

namespace orv {

enum class Style { plain, bold, dim, red, green, yellow, blue, magenta, cyan };

/// The text in that style, or as it is where colours are off.
[[nodiscard]] QString painted(const QString& text, Style style, bool hasColor);

/// Columns that a terminal takes for the text: 2 for East Asian wide characters, 0 for combining ones.
[[nodiscard]] int displayWidth(const QString& text);
enum class Elide { end, middle };
/// At most `width` columns, with "…" where something went.
[[nodiscard]] QString elided(const QString& text, int width, Elide where = Elide::end);
[[nodiscard]] QString padded(const QString& text, int width);

/// Control characters made visible: a name from the disk must neither break a row nor steer the terminal.
[[nodiscard]] QString printable(const QString& text);
/// A line of a program's output with nothing but colours and tabs left of its control sequences; `hasColor` false takes
/// the colours away too. A line in colour ends with the colours reset.
[[nodiscard]] QString safeOutputLine(const QString& line, bool hasColor);

/// Rows in aligned columns under a heading.
class Table {
public:
    struct Column {
        QString title;
        Style style = Style::plain;
        Elide elide = Elide::end;
    };
    explicit Table(QList<Column> columns) : m_columns(std::move(columns)) {}

    void add(const QStringList& cells);
    /// Where the rows are wider than `width` columns (0: without limit), the widest columns give way.
    [[nodiscard]] QString text(int width, bool hasColor) const;

private:
    [[nodiscard]] QList<int> widths(int limit) const;

    QList<Column> m_columns;
    QList<QStringList> m_rows;
};

} // namespace orv
