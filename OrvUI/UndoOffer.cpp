#include "OrvUI/UndoOffer.h"

#include "OrvCore/Async.h"

#include <utility>

namespace orv {

UndoOffer::UndoOffer(std::chrono::milliseconds time, QObject* parent) : QObject(parent) {
    m_limit.setSingleShot(true);
    m_limit.setInterval(time);
    connect(&m_limit, &QTimer::timeout, this, &UndoOffer::withdraw);
}

void UndoOffer::offer(const QString& text, std::function<void()> undo) {
    ORV_ASSERT_MAIN_THREAD();
    m_undo = std::move(undo);
    m_limit.start();
    // One like the last one is news, too.
    m_text = text;
    Q_EMIT changed();
}

void UndoOffer::accept() {
    ORV_ASSERT_MAIN_THREAD();
    const auto undo = std::exchange(m_undo, nullptr);
    withdraw();
    if (undo) {
        undo();
    }
}

void UndoOffer::withdraw() {
    m_limit.stop();
    m_undo = nullptr;
    if (!std::exchange(m_text, {}).isEmpty()) {
        Q_EMIT changed();
    }
}

} // namespace orv
