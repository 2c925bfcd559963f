#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace orv {

/// The settings by which the configuration of the repository itself, or of one of its submodules, has programs run on
/// the content of files when it is compared (gitattributes(5), `filter`). The user's own configuration does not count.
/// Git is run only when the files look as if there were any.
[[nodiscard]] QList<QByteArray> localFilterSettings(const QString& folder);

} // namespace orv
