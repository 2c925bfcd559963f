#include "Graphics.h"

#include <QDir>
#include <QQuickWindow>
#include <QWindow>
#include <QtGlobal>

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

bool hasGraphicsDevice(const QString& devices) {
    // Kernel drivers draw by a render node; those beside the kernel (NVIDIA's, WSL's, Arm's, Qualcomm's) by a device of
    // their own. A "card0" without a render node only shows what somebody else drew.
    static const std::array places = {
        std::pair{u"dri"_s, u"renderD*"_s}, std::pair{QString(), u"nvidiactl"_s}, std::pair{QString(), u"dxg"_s},
        std::pair{QString(), u"mali*"_s},   std::pair{QString(), u"kgsl-3d*"_s},
    };
    return std::ranges::any_of(places, [&devices](const auto& place) {
        const auto& [folder, name] = place;
        return !QDir(devices + u'/' + folder).entryList({name}, QDir::Files | QDir::System).isEmpty();
    });
}

void chooseGraphics() {
#ifdef Q_OS_LINUX
    const bool isChosen =
        std::ranges::any_of(std::array{"QT_QUICK_BACKEND", "QSG_RHI_BACKEND", "QMLSCENE_DEVICE"}, [](const char* name) {
            return qEnvironmentVariableIsSet(name);
        });
    if (!isChosen && !hasGraphicsDevice(u"/dev"_s)) {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
#endif
}

void drawWithoutDelay() {
    constexpr const char* variable = "QT_QPA_UPDATE_IDLE_TIME";
    if (qEnvironmentVariableIsSet(variable)) {
        return;
    }
    qputenv(variable, "0");
    // It is read when the first window asks for a frame. What is started later shall not inherit it.
    QWindow window;
    window.create();
    window.requestUpdate();
    qunsetenv(variable);
}

} // namespace orv
