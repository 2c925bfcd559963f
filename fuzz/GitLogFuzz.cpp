#include "FuzzInput.h"
#include "OrvGit/GitParsing.h"

/// What is printed of commits, branches and stashes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    for (const orv::CommitInfo& commit : orv::GitParsing::log(bytes)) {
        require(!commit.id.contains(u'\n') && !commit.subject.contains(u'\x1f'));
    }
    for (const orv::HistoryEntry& entry : orv::GitParsing::history(bytes)) {
        require(!entry.refs.contains(QString()) && !entry.parents.contains(QString()));
    }
    for (const orv::BranchInfo& branch : orv::GitParsing::branchInfos(bytes)) {
        require(branch.ahead >= 0 && branch.behind >= 0);
    }
    const auto stashes = orv::GitParsing::stashes(bytes);
    require(stashes.isEmpty() || stashes.last().index == stashes.size() - 1);
    require(!orv::GitParsing::branches(bytes).contains(QString()));
    return 0;
}
