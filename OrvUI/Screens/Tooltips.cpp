#include "OrvUI/Screens/Tooltips.h"

#include "OrvCore/Async.h"
#include "OrvUI/Screens/Theme.h"

#include <chrono>

using namespace std::chrono_literals;

namespace orv {

Tooltips::Tooltips(QObject* parent) : QObject(parent) {
    m_rest.setSingleShot(true);
    m_rest.setInterval(Theme::tooltipDelay);
    m_recent.setSingleShot(true);
    m_recent.setInterval(1s);
    connect(&m_rest, &QTimer::timeout, this, &Tooltips::show);
}

void Tooltips::enter(QQuickItem* item, const QString& text, const QString& shortcut) {
    ORV_ASSERT_MAIN_THREAD();
    if (text.isEmpty()) {
        return;
    }
    m_target = item;
    m_text = text;
    m_shortcut = shortcut;
    if (m_shown || m_recent.isActive()) {
        show();
    } else {
        m_rest.start();
    }
}

void Tooltips::leave(QQuickItem* item) {
    ORV_ASSERT_MAIN_THREAD();
    if (item != m_target) {
        return;
    }
    m_rest.stop();
    if (m_shown) {
        m_shown = false;
        m_recent.start();
        Q_EMIT changed();
    }
}

void Tooltips::show() {
    m_shown = m_target != nullptr;
    Q_EMIT changed();
}

} // namespace orv
