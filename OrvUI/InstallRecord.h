#pragma once

#include "OrvCore/Models.h"
#include "OrvCore/StoreFile.h"

#include <QMap>

namespace orv {

/// What an install reads, as it stood at some moment: by file name; those that are not there are left out.
struct ManifestStamp {
    qint64 modified = 0; ///< in milliseconds since 1970
    qint64 sizeBytes = 0;
    QString owner = {}; ///< of the mark of an install that runs: by whom, as `ChildRecords` names a process

    bool operator==(const ManifestStamp&) const = default;
};
using Manifests = QMap<QString, ManifestStamp>;

/// "installs.json": installs that ended well and left nothing by which one could tell (a package.json without
/// dependencies makes no node_modules; some tools keep their environments elsewhere). Without it the user would be
/// asked again at every run. Safe on any thread; looks into the target's folder.
class InstallRecord {
public:
    explicit InstallRecord(const QString& filePath);
    [[nodiscard]] static QString defaultPath(); ///< in the support folder

    /// True when its marker is missing and no install that ended well is on record, or when the marker is still as
    /// an install left it that did not end well. One that did not end at all left it as it is found by the first look
    /// after whoever ran it is gone, which is noted.
    [[nodiscard]] bool isInstallNeeded(const ServiceTarget& target);
    /// To be taken before an install begins: what is edited while it runs may have come too late for it.
    [[nodiscard]] static Manifests manifests(const QString& directory);
    /// True when this very install of the folder ended well, here or in another process, and its manifests are still
    /// the ones that it was made from.
    [[nodiscard]] bool covers(const QString& directory, const QString& installCommand);
    /// Notes that an install begins. Until `remember` or `forget` follows, what it makes does not count: a killed one
    /// may have made its marker, and nothing in it. What is changed after `abandon` is somebody else's work, and does.
    StoreResult begin(const QString& directory, const QString& installCommand);
    /// Lock files count as they are now, since it is the install that writes them. Also forgets the folders that are
    /// gone.
    StoreResult remember(const QString& directory, const QString& installCommand, const Manifests& before);
    StoreResult forget(const QString& directory, const QString& installCommand);
    /// Notes that an install that began has ended without success, if nothing else is known of it.
    StoreResult abandon(const ServiceTarget& target, const QString& installCommand);

private:
    /// By folder, then by install command.
    using Values = QMap<QString, QMap<QString, Manifests>>;

    [[nodiscard]] std::optional<Manifests> recorded(const QString& directory, const QString& installCommand);

    StoreFile<Values> m_file;
};

} // namespace orv
