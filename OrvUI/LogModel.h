#pragma once

#include "OrvProcess/LogBuffer.h"
#include "OrvUI/ErrorLines.h"
#include "OrvUI/StyledText.h"

#include <QAbstractListModel>

#include <algorithm>
#include <deque>

namespace orv {

/// A line of output as it is shown.
struct LogText {
    struct Hit {
        qsizetype start = 0;
        qsizetype length = 0;
        bool isCurrent = false;

        bool operator==(const Hit&) const = default;
    };

    qint64 line = -1; ///< LogModel's serial of it
    QString text;     ///< without controls
    QList<TextRun> runs;
    QList<LinkRun> links;
    QList<Hit> hits; ///< what a search found
    ErrorLines::Place error = ErrorLines::Place::none;

    bool operator==(const LogText&) const = default;
};

/// The lines of a service's output as rows, with colours, filter and search. Lives on the main thread.
///
/// The lines stay where they are, in the log; of each this keeps only a few bytes. A row is parsed when it is looked
/// at. Lines that come are insertions, lines that go removals; the list is never reset. While rows go, those of which
/// the log has dropped the lines are empty.
class LogModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QString filterText READ filterText WRITE setFilterText NOTIFY filterChanged)
    Q_PROPERTY(bool onlyErrors READ onlyErrors WRITE setOnlyErrors NOTIFY filterChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(int matchCount READ matchCount NOTIFY matchesChanged)
    Q_PROPERTY(int currentMatch READ currentMatch NOTIFY matchesChanged)
    Q_PROPERTY(int currentMatchRow READ currentMatchRow NOTIFY matchesChanged)
    Q_PROPERTY(int lineCount READ lineCount NOTIFY lineCountChanged)

public:
    enum Role {
        NumberRole = Qt::UserRole, ///< of the line since the service's start, from 1
        TimeRole,                  ///< when it came, "14:03:27.512"; empty: nobody knows
        TextRole,                  ///< without controls
        ContentRole,               ///< LogText
    };
    /// A line's place in the output as far as this model has seen it, from 0. No other line ever has the same one.
    using Serial = qint64;
    /// Beyond these a search counts no further.
    static constexpr qsizetype matchLimit = 100'000;
    static constexpr qsizetype matchLimitOfLine = 1000;

    explicit LogModel(QObject* parent = nullptr);

    /// Shows this log, which stays where it is until it is another one's turn; none: nothing. `before` lines were
    /// printed before the first one that it has, and the first `cleared` of all are left out.
    void setLog(const LogBuffer* log, qint64 before = 0, qint64 cleared = 0);
    /// How many lines of the output, from its first one on, are left out or gone.
    [[nodiscard]] qint64 clearedLines() const { return m_before + m_clearedBefore - m_logFirst; }
    /// The log has taken in lines and dropped so many of its oldest, of those that came too.
    void noteAppended(qsizetype dropped);
    /// So many lines never came into the log.
    void noteSkipped(qsizetype count);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// Rows that contain it, in any case.
    [[nodiscard]] const QString& filterText() const { return m_filterText; }
    void setFilterText(const QString& text);
    [[nodiscard]] bool onlyErrors() const { return m_onlyErrors; }
    void setOnlyErrors(bool isOn);
    [[nodiscard]] const QString& searchText() const { return m_searchText; }
    void setSearchText(const QString& text);
    [[nodiscard]] int matchCount() const { return static_cast<int>(m_matches.size()); }
    [[nodiscard]] int currentMatch() const { return m_current + 1; } ///< from 1; 0: none
    [[nodiscard]] int currentMatchRow() const;                       ///< -1: none
    [[nodiscard]] int lineCount() const { return static_cast<int>(m_lines.size()); }

    /// Round in a circle.
    Q_INVOKABLE void nextMatch();
    Q_INVOKABLE void previousMatch();
    /// Searches for it, from this row on where nothing was found before.
    Q_INVOKABLE void searchFrom(const QString& text, int row);
    /// Leaves out what has come so far.
    Q_INVOKABLE void clear();
    /// Every shown row, a line each.
    [[nodiscard]] Q_INVOKABLE QString allText() const;
    /// Writes the same into a file, each line behind its time where that is known; why not, or nothing.
    [[nodiscard]] QString save(const QString& path) const;
    /// The rows at which reports of errors begin, for marks beside the scroll bar; the newest ones of many.
    [[nodiscard]] QList<int> errorRows() const;

    [[nodiscard]] Serial serialOf(int row) const;
    /// Of that line or of the first one behind it that is shown; the number of rows where there is none.
    [[nodiscard]] int rowFrom(Serial serial) const;
    [[nodiscard]] QString text(int row) const;
    /// Those before it have gone or are left out.
    [[nodiscard]] Serial oldestLine() const { return std::max(m_logFirst, m_clearedBefore); }

Q_SIGNALS:
    void filterChanged();
    void searchTextChanged();
    void matchesChanged();
    /// Someone went to a match or searched for something else, so the current one is to be looked at.
    void matchAsked();
    void lineCountChanged();

private:
    struct Line {
        TextPen pen; ///< at its beginning
        ErrorLines::Place error = ErrorLines::Place::none;
    };
    struct Match {
        Serial line = 0;
        int start = 0;
    };

    [[nodiscard]] Serial nextSerial() const { return m_first + static_cast<Serial>(m_lines.size()); }
    /// Of one that is gone: nothing is known.
    [[nodiscard]] Line lineOf(Serial serial) const {
        return serial < m_first ? Line() : m_lines[static_cast<size_t>(serial - m_first)];
    }
    [[nodiscard]] const QString& raw(Serial serial) const;
    [[nodiscard]] QString time(Serial serial) const;
    [[nodiscard]] int rowOf(Serial serial) const; ///< -1 where it is not shown
    [[nodiscard]] bool passes(Serial serial) const;
    void learn(qsizetype count);
    void forgetBefore(Serial first);
    void removeRowsBefore(Serial first);
    void insertFrom(Serial first);
    void refilter();
    void showRows(const std::deque<Serial>& wanted);
    void addMatches(Serial serial);
    void search();
    void setCurrent(int match);
    void touchRow(int row);
    void matchFrom(int row);
    [[nodiscard]] LogText content(Serial serial) const;

    const LogBuffer* m_log = nullptr;
    qint64 m_before = 0;      ///< lines that were printed and are not in the log any more, or never were
    Serial m_logFirst = 0;    ///< of the log's first line
    Serial m_first = 0;       ///< of the first of `m_lines`
    std::deque<Line> m_lines; ///< those of the log
    TextPen m_pen;            ///< behind the last of them
    ErrorLines m_errors;

    Serial m_shownFrom = 0;     ///< rows begin here while nothing is filtered
    Serial m_shownTo = 0;       ///< and end before this one
    std::deque<Serial> m_shown; ///< the rows while something is
    bool m_usesShown = false;   ///< which of the two
    Serial m_clearedBefore = 0;

    QString m_filterText;
    bool m_onlyErrors = false;
    QString m_searchText;
    std::deque<Match> m_matches; ///< in the order of the rows
    int m_current = -1;
};

} // namespace orv
