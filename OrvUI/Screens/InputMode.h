#pragma once

#include <QObject>
#include <QtQmlIntegration>

namespace orv {

/// Whether the person is at the keyboard, which is when the focus is drawn. A QML singleton; lives on the main thread.
class InputMode : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool keyboard READ keyboard NOTIFY keyboardChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] bool keyboard() const { return m_keyboard; }
    /// Whether a key of that text and those modifiers writes letters, not a space alone, which presses things.
    Q_INVOKABLE static bool writes(const QString& text, int modifiers);
    /// Watches the keys and presses of a window.
    void watch(QObject* window);
    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void keyboardChanged();

private:
    void set(bool keyboard);

    bool m_keyboard = false;
};

} // namespace orv
