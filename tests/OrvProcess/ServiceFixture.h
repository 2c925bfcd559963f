#pragma once

#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/ProcessManager.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

namespace orv::test {

using namespace Qt::StringLiterals;

inline const QString child = CommandBuilder::quote(testChildPath());

/// A manager and a folder in which services run.
class Services : public ::testing::Test {
protected:
    ServiceID start(const QString& command, std::optional<int> port = {}, ServiceKind kind = ServiceKind::app) {
        const ServiceTarget target{kind, folder.path(), {}, command, port};
        manager->start(target, u"project"_s);
        return ProcessManager::id(target, u"project"_s);
    }
    [[nodiscard]] bool waitForEnd(
        const ServiceID& id, std::chrono::milliseconds limit = std::chrono::seconds(20)) const {
        return waitFor([&] { return !manager->state(id).isActive(); }, limit);
    }
    [[nodiscard]] bool waitForLine(const ServiceID& id, const QString& text) const {
        return waitFor([&] { return log(id).contains(text); });
    }
    [[nodiscard]] QStringList log(const ServiceID& id) const {
        const LogBuffer& lines = manager->log(id);
        return QStringList(lines.begin(), lines.end());
    }

    TemporaryTree folder;
    std::unique_ptr<ProcessManager> manager = std::make_unique<ProcessManager>(std::chrono::milliseconds(300));
};

} // namespace orv::test

namespace orv {
inline void PrintTo(const ServiceState& state, std::ostream* out) {
    *out << "phase " << static_cast<int>(state.phase) << ", port " << state.port.value_or(-1) << ", \""
         << state.message.toStdString() << '"';
}
} // namespace orv
