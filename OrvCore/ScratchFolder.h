#pragma once

#include "OrvCore/UniqueFd.h"

#include <QTemporaryDir>

namespace orv {

/// A temporary folder that goes with the object. One that a killed process has left goes when the next one is made.
class ScratchFolder {
public:
    ScratchFolder();

    [[nodiscard]] bool isValid() const { return m_lock.isValid(); }
    /// Why it is not valid, in the system's words.
    [[nodiscard]] QString errorString() const { return m_error; }
    [[nodiscard]] QString path() const { return m_folder.path(); }
    [[nodiscard]] QString filePath(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
    UniqueFd m_lock; ///< held for as long as it is in use: the kernel lets go of it when its holder dies
    QString m_error;
};

} // namespace orv
