#include "FuzzInput.h"
#include "OrvGit/CloneProgress.h"
#include "OrvGit/GitService.h"

/// A line of a clone, which is taken for a URL and a failure's text, too.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto progress = orv::parseCloneProgress(text)) {
        require(progress->fraction() >= 0 && progress->fraction() <= 1);
        require(!progress->percent || (*progress->percent >= 0 && *progress->percent <= 100));
    }
    const QString name = orv::folderNameOfUrl(text);
    require(name.isEmpty() || (orv::isFolderName(name) && text.contains(name)));
    require(!orv::GitError::classify(text, 1).text().isEmpty());
    const QString lock = orv::lockedIndex(text);
    require(lock.isEmpty() || text.contains(lock));
    return 0;
}
