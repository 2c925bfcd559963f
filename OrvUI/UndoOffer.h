#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>

namespace orv {

/// The one thing that was done last and can be taken back, for a while. Lives on the main thread.
class UndoOffer : public QObject {
    Q_OBJECT
public:
    explicit UndoOffer(std::chrono::milliseconds time, QObject* parent = nullptr);

    /// What was done, as a sentence; empty when there is nothing to take back.
    [[nodiscard]] const QString& text() const { return m_text; }
    /// In the place of what was offered before.
    void offer(const QString& text, std::function<void()> undo);
    /// Takes it back, once.
    void accept();
    void withdraw();

Q_SIGNALS:
    void changed();

private:
    QString m_text;
    std::function<void()> m_undo;
    QTimer m_limit;
};

} // namespace orv
