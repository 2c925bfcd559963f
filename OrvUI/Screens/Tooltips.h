#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QTimer>

namespace orv {

/// Which tooltip is on the screen: after the pointer rested for a while, and at once for a neighbour of one just seen.
/// A QML singleton; lives on the main thread.
class Tooltips : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// What the tooltip belongs to; null while there is none.
    Q_PROPERTY(QQuickItem* target READ target NOTIFY changed FINAL)
    Q_PROPERTY(QString text READ text NOTIFY changed FINAL)
    Q_PROPERTY(QString shortcut READ shortcut NOTIFY changed FINAL)

public:
    explicit Tooltips(QObject* parent = nullptr);

    [[nodiscard]] QQuickItem* target() const { return m_shown ? m_target.data() : nullptr; }
    [[nodiscard]] const QString& text() const { return m_text; }
    [[nodiscard]] const QString& shortcut() const { return m_shortcut; }

    /// The pointer came to `item`.
    Q_INVOKABLE void enter(QQuickItem* item, const QString& text, const QString& shortcut);
    /// It left, or the item was pressed.
    Q_INVOKABLE void leave(QQuickItem* item);

Q_SIGNALS:
    void changed();

private:
    void show();

    QPointer<QQuickItem> m_target;
    QString m_text;
    QString m_shortcut;
    QTimer m_rest;   ///< until the tooltip comes
    QTimer m_recent; ///< runs while a neighbour gets its own at once
    bool m_shown = false;
};

} // namespace orv
