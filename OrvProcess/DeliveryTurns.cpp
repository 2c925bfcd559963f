#include "OrvProcess/DeliveryTurns.h"

#include "OrvCore/Async.h"
#include "OrvProcess/ProcessReader.h"

#include <algorithm>

namespace orv {

DeliveryTurns::DeliveryTurns(QObject* parent) : QObject(parent) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &DeliveryTurns::turn);
}

void DeliveryTurns::request(ProcessReader* reader) {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_waiting.contains(reader)) {
        m_waiting.append(reader);
    }
    plan();
}

void DeliveryTurns::turn() {
    const auto deadline = std::chrono::steady_clock::now() + budget;
    auto left = budget;
    const QPointer<DeliveryTurns> self(this);
    while (!m_waiting.isEmpty() && left.count() > 0) {
        const QPointer<ProcessReader> reader = m_waiting.takeFirst();
        const bool more = reader && reader->deliver(left);
        if (!self) {
            return;
        }
        if (more && !m_waiting.contains(reader)) {
            m_waiting.append(reader);
        }
        left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
    }
    m_sinceTurn.start();
    plan();
}

void DeliveryTurns::plan() {
    const bool hurries = std::any_of(m_waiting.cbegin(), m_waiting.cend(), [](const QPointer<ProcessReader>& reader) {
        return reader && reader->hasEnded();
    });
    if (m_waiting.isEmpty() || (m_timer.isActive() && !hurries)) {
        return;
    }
    const bool isDue = hurries || !m_sinceTurn.isValid();
    const std::chrono::milliseconds since(isDue ? pace.count() : m_sinceTurn.elapsed());
    m_timer.start(std::max(pace - since, std::chrono::milliseconds(0)));
}

} // namespace orv
