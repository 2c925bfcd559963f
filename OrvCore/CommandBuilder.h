#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/StackDetector.h"

namespace orv {

/// Turns a service into the shell line that starts or installs it. Pure but for looking into the target's folder; safe
/// on any thread.
namespace CommandBuilder {

/// The one quoting rule for a POSIX shell: always in single quotes, each "'" inside as "'\''".
[[nodiscard]] QString quote(const QString& text);

/// A word as it stands where each of its characters is harmless to a shell, quoted where one is not.
[[nodiscard]] QString word(const QString& text);

/// "cd " + quoted folder + " && " + the run part. `flutterDevice` matters only to a Flutter service.
[[nodiscard]] QString command(
    ServiceKind kind, const QString& folder, const std::optional<QString>& framework,
    const std::optional<QString>& flutterDevice);
/// The run part alone.
[[nodiscard]] QString body(
    ServiceKind kind, const QString& folder, const std::optional<QString>& framework,
    const std::optional<QString>& flutterDevice);
/// The same two over stacks that were detected already, fallbacks included (the scanner has them).
[[nodiscard]] QString command(
    const QList<DetectedStack>& stacks, ServiceKind kind, const QString& folder,
    const std::optional<QString>& framework, const std::optional<QString>& flutterDevice);
[[nodiscard]] QString body(
    const QList<DetectedStack>& stacks, ServiceKind kind, const QString& folder,
    const std::optional<QString>& framework, const std::optional<QString>& flutterDevice);

/// The detected stack that a target stands for: of its kind, with its framework where one has it, else the first.
[[nodiscard]] std::optional<DetectedStack> stack(
    ServiceKind kind, const QString& folder, const std::optional<QString>& framework);

/// True when none of `installMarkers` is in the folder, and there is one to look for.
[[nodiscard]] bool needsInstall(const ServiceTarget& target);
/// What an install leaves in the target's folder, by name: one of them is enough. Empty where there is none.
[[nodiscard]] QStringList installMarkers(const ServiceTarget& target);
[[nodiscard]] QString installBody(const ServiceTarget& target);
/// "cd " + quoted folder + " && " + the install command.
[[nodiscard]] QString install(const ServiceTarget& target);

/// What an install command does in the end, and where: "cd ../.. && npm install", told for the parts of a workspace, is
/// the same for all of them.
struct InstallPlace {
    QString folder;
    QString command;

    bool operator==(const InstallPlace&) const = default;
};
[[nodiscard]] InstallPlace installPlace(const QString& directory, const QString& installBody);

} // namespace CommandBuilder
} // namespace orv
