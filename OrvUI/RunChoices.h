#pragma once

#include "OrvCore/StoreFile.h"

#include <QMap>
#include <QString>

#include <optional>

namespace orv {

/// What was last chosen for a project when it was run.
struct RunChoice {
    std::optional<QString> action; ///< the label of a run action ("Both")
    std::optional<QString> device; ///< the key of a row of the devices ("flutter:linux")

    bool operator==(const RunChoice&) const = default;
};

/// "choices.json": the choices for each project, so that they outlast a restart. Safe on any thread.
class RunChoices {
public:
    explicit RunChoices(const QString& filePath);

    /// Empty of a project for which nothing was chosen.
    [[nodiscard]] RunChoice of(const QString& projectID) const;
    StoreResult setAction(const QString& projectID, const QString& label);
    /// None: the tool itself chooses again.
    StoreResult setDevice(const QString& projectID, const std::optional<QString>& device);
    StoreResult flush();
    /// Takes in what another process wrote; true when that is something else.
    bool reload();
    [[nodiscard]] const QString& filePath() const { return m_file.path(); }

private:
    using Values = QMap<QString, RunChoice>;
    StoreResult change(const QString& projectID, const std::function<void(RunChoice&)>& change);

    StoreFile<Values> m_file;
};

} // namespace orv
