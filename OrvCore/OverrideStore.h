#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/StackDetector.h"
#include "OrvCore/StoreFile.h"

namespace orv {

/// A user's correction of one detected service.
struct Override {
    std::optional<ServiceKind> kind;
    std::optional<QString> command;
    std::optional<int> port;

    bool operator==(const Override&) const = default;
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<Override> fromJson(const QJsonObject& json);
};

/// "overrides.json": the corrections, by service. Safe on any thread: the scanner reads while the interface writes.
class OverrideStore {
public:
    using Values = QHash<QString, Override>;

    explicit OverrideStore(const QString& filePath = defaultPath());
    [[nodiscard]] static QString defaultPath();

    /// The key of a service: folder, "|", the detected kind. An override that changes the kind stays under it.
    [[nodiscard]] static QString key(const QString& directory, ServiceKind detectedKind);

    [[nodiscard]] std::optional<Override> override(const QString& key) const;
    [[nodiscard]] Values values() const;
    /// Stores, or with an absent value removes. The change is kept in memory when the file can't be written, and is
    /// written with the next one or by `flush`, unless another process has changed the same service since.
    StoreResult set(const QString& key, const std::optional<Override>& value);
    /// Writes what could not be written before, if anything.
    StoreResult flush();
    /// Takes in what another process wrote; true when that changed anything. `set` takes it in as well.
    bool reload();
    /// Another number whenever the values are others, by whatever way.
    [[nodiscard]] quint64 generation() const;
    [[nodiscard]] QString filePath() const;

    /// The scanner's last step for a target: makes its command where it is empty, then applies the override under its
    /// key. `stacks` are those detected in the target's folder.
    [[nodiscard]] ServiceTarget finish(ServiceTarget target, const QList<DetectedStack>& stacks) const;

private:
    StoreFile<Values> m_file;
};

} // namespace orv
