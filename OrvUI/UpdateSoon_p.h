#pragma once

#include <QMetaObject>
#include <QObject>

#include <functional>
#include <utility>

namespace orv {

/// Runs an update once in the next turn of the event loop, however often it was asked for until then.
class UpdateSoon {
public:
    UpdateSoon(QObject* context, std::function<void()> update) : m_context(context), m_update(std::move(update)) {}

    void operator()() {
        if (std::exchange(m_isDue, true)) {
            return;
        }
        QMetaObject::invokeMethod(
            m_context,
            [this] {
                m_isDue = false;
                m_update();
            },
            Qt::QueuedConnection);
    }

private:
    QObject* m_context; ///< dies with this one
    std::function<void()> m_update;
    bool m_isDue = false;
};

} // namespace orv
