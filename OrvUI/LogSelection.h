#pragma once

#include "OrvUI/LogModel.h"

#include <compare>

namespace orv {

/// The text that is selected in the lines of a LogModel. It stays with its lines while others come, go or are filtered
/// out, and goes with them. Lives on the main thread.
class LogSelection : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY changed)
    Q_PROPERTY(bool canSelect READ canSelect NOTIFY linesChanged)

public:
    /// By what it grows.
    enum class Unit { character, word, line };
    /// Before a character of a line, as UTF-16 counts them.
    struct Place {
        LogModel::Serial line = -1;
        qsizetype offset = 0;

        auto operator<=>(const Place&) const = default;
    };
    /// Within one line; `end` is excluded. What goes on in the next line ends behind the last character.
    struct Range {
        qsizetype start = 0;
        qsizetype end = 0;

        [[nodiscard]] bool isEmpty() const { return start >= end; }
        bool operator==(const Range&) const = default;
    };

    explicit LogSelection(const LogModel& lines, QObject* parent = nullptr);

    [[nodiscard]] bool isEmpty() const { return m_first >= m_end; }
    [[nodiscard]] bool canSelect() const { return m_lines.rowCount() > 0; }
    void begin(const Place& place, Unit unit);
    /// From where it began up to there.
    void extend(const Place& place);
    /// By whole lines, from the one where it ended last; where nothing is selected, that row alone.
    void extendByLines(int count, int row);
    Q_INVOKABLE void selectAll();
    Q_INVOKABLE void clear();

    /// The row that was reached last; -1 where nothing is selected.
    [[nodiscard]] int reachedRow() const;
    [[nodiscard]] int rowOf(LogModel::Serial line) const { return m_lines.rowFrom(line); }
    [[nodiscard]] Range within(LogModel::Serial line, qsizetype length) const;
    /// Without the rows that are not shown.
    [[nodiscard]] Q_INVOKABLE QString text() const;

Q_SIGNALS:
    void changed();
    void linesChanged();

private:
    struct Span {
        Place first;
        Place end;
    };
    [[nodiscard]] Span around(const Place& place) const;
    void set(const Place& first, const Place& end);
    void followLines();

    const LogModel& m_lines;
    Unit m_unit = Unit::character;
    Span m_anchor;
    Place m_reached;
    Place m_first;
    Place m_end;
};

} // namespace orv
