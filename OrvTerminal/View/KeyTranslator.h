#pragma once

#include "TermEngine/KeyEvent.h"

#include <QByteArray>
#include <QHash>

#include <set>

class QKeyEvent;

namespace orv {

/// Makes the engine's key events of Qt's. What a key writes without modifiers Qt does not say; it is learnt from the
/// keys that are pressed without any, and until then taken from the layout of a PC-101 keyboard where that agrees.
class KeyTranslator {
public:
    /// The text of the event is in `text` and has to outlive it. False: a key that no program hears of.
    [[nodiscard]] bool translate(const QKeyEvent& event, term::KeyEvent& made, QByteArray& text);
    [[nodiscard]] static term::KeyModifiers modifiersOf(Qt::KeyboardModifiers modifiers);

private:
    [[nodiscard]] char32_t plainOf(const QKeyEvent& event, const QString& written);
    void countHeld(term::KeyEvent& made);

    QHash<quint32, char32_t> m_plain; ///< by scan code
    std::set<term::Key> m_held;       ///< of the keys of modifiers
};

} // namespace orv
