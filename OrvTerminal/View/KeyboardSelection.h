#pragma once

#include "TermEngine/TextRange.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <optional>

class QKeyEvent;

namespace orv {

class TerminalSession;

/// Selecting text by keys alone. While it is active, a cursor of its own goes through screen and history; Shift, or a
/// mark that was set, selects from where it began up to there. Main thread.
class KeyboardSelection : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ isActive NOTIFY activeChanged FINAL)
    Q_PROPERTY(QString spoken READ spoken NOTIFY moved FINAL)
public:
    explicit KeyboardSelection(TerminalSession& session, QObject* parent = nullptr);

    [[nodiscard]] bool isActive() const { return m_isActive; }
    /// Begins at the cursor of the terminal, or in the middle of the view where that is scrolled away.
    Q_INVOKABLE void start();
    /// With `Keep::yes` what is selected stays so.
    enum class Keep : std::uint8_t { no, yes };
    void stop(Keep keep);

    /// A cell, at its first column. It follows a change of the width only roughly.
    [[nodiscard]] term::TextPlace cursor() const { return m_cursor; }
    /// For those who don't see it: the line of the cursor, or the beginning of what is selected.
    [[nodiscard]] QString spoken() const;

    enum class Outcome : std::uint8_t { unknown, done, copy, leave };
    /// Whether the key means something here, and what is left to do for the caller.
    Outcome press(const QKeyEvent& event);
    [[nodiscard]] static bool knows(const QKeyEvent& event);

Q_SIGNALS:
    void activeChanged();
    /// The cursor is elsewhere, or something else is selected.
    void moved();

private:
    struct Key;
    using Move = term::TextPlace (KeyboardSelection::*)(int direction) const;

    [[nodiscard]] static const Key* keyOf(const QKeyEvent& event);
    [[nodiscard]] term::TextPlace byCharacter(int direction) const;
    [[nodiscard]] term::TextPlace byLine(int direction) const;
    [[nodiscard]] term::TextPlace byWord(int direction) const;
    [[nodiscard]] term::TextPlace byPage(int direction) const;
    [[nodiscard]] term::TextPlace toEndOfLine(int direction) const;
    [[nodiscard]] term::TextPlace toEndOfText(int direction) const;
    [[nodiscard]] term::TextPlace toPrompt(int direction) const;

    [[nodiscard]] std::int64_t firstLine() const;
    [[nodiscard]] std::int64_t lastLine() const;
    [[nodiscard]] int lengthOf(std::int64_t line) const;
    [[nodiscard]] bool isBlank(term::TextPlace place) const;
    /// The cell to which the place belongs, on a line that is there.
    [[nodiscard]] term::TextPlace onCell(term::TextPlace place) const;
    void moveTo(term::TextPlace place);
    void mark(term::TextSelection::Unit unit);
    void swapEnds(term::TextSelection::Unit unit);
    void select();

    TerminalSession& m_session;
    bool m_isActive = false;
    term::TextPlace m_cursor;
    std::optional<term::TextPlace> m_anchor;
    bool m_isMarked = false; ///< moves select without Shift too
    term::TextSelection::Unit m_unit = term::TextSelection::Unit::character;
};

} // namespace orv
