#pragma once

#include "OrvTerminal/View/LinePainter.h"
#include "TermEngine/TextRange.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <optional>
#include <vector>

namespace orv {

class TerminalSession;

/// A search over screen and history of a terminal. Main thread.
class TerminalFind : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ isActive WRITE setActive NOTIFY activeChanged FINAL)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY queryChanged FINAL)
    Q_PROPERTY(bool matchesCase READ matchesCase WRITE setMatchesCase NOTIFY queryChanged FINAL)
    Q_PROPERTY(bool isExpression READ isExpression WRITE setExpression NOTIFY queryChanged FINAL)
    Q_PROPERTY(bool isValid READ isValid NOTIFY resultChanged FINAL)
    Q_PROPERTY(int count READ count NOTIFY resultChanged FINAL)
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
    [[nodiscard]] int count() const { return static_cast<int>(m_matches.size()); }
    /// From 1; 0 when there is none.
    [[nodiscard]] int current() const { return m_current; }
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
    void search();
    void searchAnew();
    void step(int direction);

    TerminalSession& m_session;
    QTimer m_outputCame;
    bool m_isActive = false;
    QString m_text;
    bool m_matchesCase = false;
    bool m_isExpression = false;
    bool m_isValid = true;
    std::vector<term::TextRange> m_matches; ///< the oldest first
    int m_current = 0;
};

} // namespace orv
