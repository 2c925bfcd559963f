#pragma once

#include "OrvTerminal/View/LinePainter.h"
#include "OrvTerminal/View/MatchList.h"

#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <optional>
#include <vector>

namespace orv {

class TerminalSession;

/// A search over screen and history of a terminal, in slices, so that it holds up no frame. Main thread.
class TerminalFind : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ isActive WRITE setActive NOTIFY activeChanged FINAL)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY queryChanged FINAL)
    Q_PROPERTY(bool matchesCase READ matchesCase WRITE setMatchesCase NOTIFY queryChanged FINAL)
    Q_PROPERTY(bool isExpression READ isExpression WRITE setExpression NOTIFY queryChanged FINAL)
    Q_PROPERTY(bool isValid READ isValid NOTIFY resultChanged FINAL)
    Q_PROPERTY(int count READ count NOTIFY resultChanged FINAL)
    Q_PROPERTY(bool isComplete READ isComplete NOTIFY resultChanged FINAL)
    Q_PROPERTY(int current READ current NOTIFY resultChanged FINAL)
    Q_PROPERTY(QList<qreal> marks READ marks NOTIFY resultChanged FINAL)
public:
    explicit TerminalFind(TerminalSession& session, QObject* parent = nullptr);

    /// While it is not, nothing is searched and nothing marked.
    [[nodiscard]] bool isActive() const { return m_isActive; }
    void setActive(bool active);
    [[nodiscard]] QString text() const { return m_text; }
    void setText(const QString& text);
    [[nodiscard]] bool matchesCase() const { return m_matchesCase; }
    void setMatchesCase(bool matches);
    [[nodiscard]] bool isExpression() const { return m_isExpression; }
    void setExpression(bool isExpression);
    /// False for a regular expression that is none.
    [[nodiscard]] bool isValid() const { return m_isValid; }
    /// Of the matches that are known: the newest, while the search goes on.
    [[nodiscard]] int count() const { return static_cast<int>(m_found.matches().size()); }
    /// False while the search goes on, and where there are more matches than are kept.
    [[nodiscard]] bool isComplete() const { return m_found.isComplete(); }
    /// From 1, of those that are known; 0 when there is none.
    [[nodiscard]] int current() const;
    /// Where lines with matches stand, from 0 at the top to 1; a few hundred at most.
    [[nodiscard]] QList<qreal> marks() const;

    /// The match below the current one, or above it; behind the last comes the first.
    Q_INVOKABLE void next() { step(1); }
    Q_INVOKABLE void previous() { step(-1); }

    [[nodiscard]] std::vector<LineMark> marksOn(std::int64_t line) const;

Q_SIGNALS:
    void activeChanged();
    void queryChanged();
    void resultChanged();
    /// The current match is to be seen.
    void lineWanted(std::int64_t line);

private:
    void searchAnew();
    void restart();
    void takeOutput();
    void slice();
    [[nodiscard]] bool chooseCurrent();
    void step(int direction);
    [[nodiscard]] const term::Buffer& buffer() const;

    TerminalSession& m_session;
    QTimer m_outputCame;
    QTimer m_nextSlice;
    QDeadlineTimer m_quiet; ///< until then what is found is not told
    bool m_isActive = false;
    QString m_text;
    bool m_matchesCase = false;
    bool m_isExpression = false;
    bool m_isValid = true;
    MatchList m_found;
    std::optional<term::TextPlace> m_current; ///< the match that begins here, or the next one
    std::optional<std::int64_t> m_viewEnd;    ///< of a new search: the newest match above is to be the current one
};

} // namespace orv
