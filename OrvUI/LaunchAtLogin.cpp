#include "OrvUI/LaunchAtLogin.h"

#include "OrvCore/Async.h"

namespace orv {

LaunchAtLogin::LaunchAtLogin(std::unique_ptr<LoginItemController> controller, QObject* parent)
    : QObject(parent), m_controller(std::move(controller)), m_isEnabled(m_controller && m_controller->isEnabled()) {}

LaunchAtLogin::~LaunchAtLogin() = default;

void LaunchAtLogin::setEnabled(bool isEnabled) {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_controller) {
        return;
    }
    const auto result = m_controller->setEnabled(isEnabled);
    m_error = result ? QString() : result.error();
    m_isEnabled = m_controller->isEnabled();
    Q_EMIT changed(); // a switch that could not be turned has to go back
}

void LaunchAtLogin::refresh() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_controller && m_controller->isEnabled() != m_isEnabled) {
        m_isEnabled = !m_isEnabled;
        Q_EMIT changed();
    }
}

} // namespace orv
