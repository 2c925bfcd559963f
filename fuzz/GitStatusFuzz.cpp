#include "FuzzInput.h"
#include "OrvGit/GitParsing.h"
#include "OrvGit/GitPath.h"

/// A status: counting gives what listing gives, and no path has changed on its way.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    orv::RepoStatus status = orv::GitParsing::status(bytes);
    int count = 0;
    const orv::RepoStatus counted = orv::GitParsing::statusCounts(bytes, count);
    require(count == status.changes.size());
    for (const orv::FileChange& change : status.changes) {
        require(bytes.contains(orv::GitPath::toBytes(change.path)));
        require(!change.isUntracked() || !change.isStaged());
    }
    status.changes.clear();
    require(status == counted);
    require(orv::GitPath::toBytes(orv::GitPath::fromBytes(bytes)) == bytes);
    require(orv::GitPath::unquoted(orv::GitPath::quoted(bytes)) == bytes);
    return 0;
}
