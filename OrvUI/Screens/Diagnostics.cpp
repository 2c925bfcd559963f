#include "OrvUI/Screens/Diagnostics.h"

#include "OrvCore/LoginShell.h"
#include "OrvUI/AgentCatalog.h"

#include <QGuiApplication>
#include <QLocale>
#include <QScreen>
#include <QSysInfo>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

QString displays() {
    QStringList parts{QGuiApplication::platformName()};
    for (const QScreen* screen : QGuiApplication::screens()) {
        parts.append(
            u"%1x%2 at %3"_s.arg(screen->size().width()).arg(screen->size().height()).arg(screen->devicePixelRatio()));
    }
    return parts.join(u", "_s);
}

QString agents(AppModel& model) {
    QStringList parts;
    const auto& statuses = model.agents().statuses();
    for (auto entry = statuses.begin(); entry != statuses.end(); ++entry) {
        if (entry->installed) {
            parts.append(u"%1 %2"_s.arg(agentInfo(entry.key()).displayName, entry->version.value_or(u"?"_s)));
        }
    }
    return parts.isEmpty() ? u"none found"_s : parts.join(u", "_s);
}

} // namespace

QString Diagnostics::text(AppModel* shown) {
    AppModel& model = *shown;
    const auto services =
        std::ranges::count_if(model.processes().states(), [](const ServiceState& state) { return state.isActive(); });
    qsizetype targets = 0;
    for (const Project& project : model.projects()) {
        targets += project.targets.size();
    }
    const std::pair<QString, QString> lines[] = {
        {u"OrvLauncher"_s, QCoreApplication::applicationVersion()},
        {u"Qt"_s, QString::fromLatin1(qVersion())},
        {u"System"_s,
         u"%1, %2, %3"_s.arg(
             QSysInfo::prettyProductName(), QSysInfo::kernelVersion(), QSysInfo::currentCpuArchitecture())},
        {u"Desktop"_s,
         u"%1 (%2)"_s.arg(
             qEnvironmentVariable("XDG_CURRENT_DESKTOP", u"?"_s), qEnvironmentVariable("XDG_SESSION_TYPE", u"?"_s))},
        {u"Displays"_s, displays()},
        {u"Renderer"_s, qEnvironmentVariable("QT_QUICK_BACKEND", u"Qt's choice"_s)},
        {u"Shell"_s, u"%1 ($SHELL: %2)"_s.arg(loginShell(), qEnvironmentVariable("SHELL", u"?"_s))},
        {u"Language"_s, QLocale::system().name()},
        {u"Projects"_s, u"%1 with %2 services, %3 active"_s.arg(model.projects().size()).arg(targets).arg(services)},
        {u"Agents"_s, agents(model)},
    };
    QString all;
    for (const auto& [name, value] : lines) {
        all += name + u": "_s + value + u'\n';
    }
    return all;
}

} // namespace orv
