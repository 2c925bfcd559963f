#pragma once

#include "OrvGit/GitRunner.h"

namespace orv {

/// By what the configuration of a repository itself, or of one of its submodules, has programs run on the content of
/// files when it is compared (gitattributes(5), `filter`). The user's own configuration does not count.
struct LocalFilters {
    QList<QByteArray> settings; ///< names of them all
    /// Whether every submodule that git would look into was found. Where not, it is to be kept from doing so.
    bool areSubmodulesKnown = true;

    /// Read from the files themselves; git is run only when they look as if there were any. Nothing when it can't be
    /// known what the repository says.
    [[nodiscard]] static GitOutcome<LocalFilters> of(
        const QString& folder, const std::optional<GitCancellation>& cancellation);
};

/// The paths of the entries of an index that are repositories of their own (gitformat-index(5)). Nothing when it is not
/// understood to its end, or does not hold all of its entries itself.
[[nodiscard]] std::optional<QByteArrayList> embeddedRepositories(const QByteArray& index);

} // namespace orv
