#include "OrvProcess/ProcessSpawner.h"

#include "OrvCore/LoginShell.h"
#include "OrvCore/Pipe.h"

#include <QFile>
#include <QProcessEnvironment>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {

std::expected<SpawnedProcess, SpawnError> ProcessSpawner::spawn(
    const QString& command, const QString& directory, const EnvironmentEntries& environment) {
    auto pipe = Pipe::make();
    if (!pipe) {
        return std::unexpected(pipe.error());
    }
    const QByteArray shell = QFile::encodeName(loginShell());
    const auto pid = ChildProcess::spawn({
        .program = shell,
        .arguments = {shell, "-lc", command.toUtf8()},
        .variables = ChildProcess::environment(environment),
        .directory = directory,
        .output = pipe->writeEnd.get(),
        .errors = pipe->writeEnd.get(),
    });
    if (!pid) {
        return std::unexpected(pid.error());
    }
    return SpawnedProcess{*pid, std::move(pipe->readEnd)};
}

EnvironmentEntries ProcessSpawner::pipeEnvironment(const QProcessEnvironment& inherited) {
    EnvironmentEntries entries{{u"PYTHONUNBUFFERED"_s, u"1"_s}};
    // Tools that know one of these need not know the others: a "no" in any of them holds for all.
    const bool isRefused = std::ranges::any_of(
        std::array{u"FORCE_COLOR"_s, u"CLICOLOR"_s, u"CLICOLOR_FORCE"_s}, [&inherited](const QString& name) {
            const QString value = inherited.value(name);
            return value == "0"_L1 || value.compare("false"_L1, Qt::CaseInsensitive) == 0;
        });
    // no-color.org: an empty value does not count.
    if (inherited.value(u"NO_COLOR"_s).isEmpty() && !isRefused) {
        entries.insert(u"FORCE_COLOR"_s, u"1"_s);
        entries.insert(u"CLICOLOR_FORCE"_s, u"1"_s);
    }
    entries.removeIf([&inherited](const auto& entry) { return inherited.contains(entry.key()); });
    return entries;
}

} // namespace orv
