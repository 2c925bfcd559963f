#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/StoreFile.h"

#include <QMap>

namespace orv {

/// "installs.json": installs that ended well and left nothing by which one could tell (a package.json without
/// dependencies makes no node_modules; some tools keep their environments elsewhere). Without it the user would be
/// asked again at every run. Safe on any thread; looks into the target's folder.
class InstallRecord {
public:
    explicit InstallRecord(const QString& filePath);

    /// True when this very install of the folder ended well, here or in another process, and no manifest in the folder
    /// was changed since.
    [[nodiscard]] bool covers(const QString& directory, const QString& installCommand);
    /// Also forgets the folders that are gone.
    StoreResult remember(const QString& directory, const QString& installCommand, const QDateTime& at);
    StoreResult forget(const QString& directory, const QString& installCommand);

private:
    /// By folder, then by install command: when it ended, in milliseconds since 1970.
    using Values = QMap<QString, QMap<QString, qint64>>;

    StoreFile<Values> m_file;
};

} // namespace orv
