#include "OrvUI/Screens/InputMode.h"

#include <QEvent>
#include <QKeyEvent>

namespace orv {

void InputMode::watch(QObject* window) {
    window->installEventFilter(this);
}

bool InputMode::writes(const QString& text, int modifiers) {
    const bool isCommand = (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
    return !isCommand && !text.isEmpty() && text[0].isPrint() && !text[0].isSpace();
}

bool InputMode::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key != Qt::Key_Control && key != Qt::Key_Alt && key != Qt::Key_Shift && key != Qt::Key_Meta) {
            set(true);
        }
    } else if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin) {
        set(false);
    }
    return QObject::eventFilter(watched, event);
}

void InputMode::set(bool keyboard) {
    if (keyboard == m_keyboard) {
        return;
    }
    m_keyboard = keyboard;
    Q_EMIT keyboardChanged();
}

} // namespace orv
