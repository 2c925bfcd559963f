#include "OrvCore/RegularFile.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/LocalFilters_p.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int deepestModule = 8;
constexpr qint64 longestConfiguration = 1024 * 1024;
constexpr qint64 largestIndex = qint64{256} * 1024 * 1024;

GitError unreadable(const QString& path) {
    return GitError::refused(u"“%1” is no file that can be read."_s.arg(path));
}

/// What stands in the repository's own files (git-config(1), FILES).
GitOutcome<QByteArray> configurationText(const RepositoryLayout& layout) {
    QByteArray text;
    for (const QString& path : {layout.commonDirectory + u"/config"_s, layout.gitDirectory + u"/config.worktree"_s}) {
        if (!QFileInfo::exists(path)) {
            continue;
        }
        const auto part = RegularFile::prefix(path, longestConfiguration);
        if (!part) {
            return std::unexpected(unreadable(path));
        }
        text += *part + '\n';
    }
    return text;
}

/// Whether only git can tell what it says: of a filter, or in another file.
bool asksForGit(const QByteArray& text) {
    const QByteArray small = text.toLower();
    return text.size() >= longestConfiguration || small.contains("filter") || small.contains("include");
}

/// Whether the work tree is the folder itself: the configuration names no other one (git-config(1), core.worktree).
/// Only how git itself writes it is understood.
bool isWorkTreeOf(const RepositoryLayout& layout, const QByteArray& text) {
    const QByteArrayList lines = text.split('\n');
    return std::ranges::all_of(lines, [&](const QByteArray& line) {
        const qsizetype equals = line.indexOf('=');
        const QByteArray key = line.first(std::max<qsizetype>(equals, 0)).trimmed().toLower();
        const bool isSection = equals < 0 && line.trimmed().startsWith('[');
        if (!line.toLower().contains("worktree") || isSection || key == "worktreeconfig") {
            return true;
        }
        const QByteArray value = line.sliced(equals + 1).trimmed();
        const bool isPlain =
            std::ranges::none_of(value, [](char letter) { return QByteArrayView("\"\\#;").contains(letter); });
        const QString named = QDir(layout.gitDirectory).filePath(QFile::decodeName(value));
        const QString found = QFileInfo(named).canonicalFilePath();
        return key == "worktree" && isPlain && !found.isEmpty() &&
               found == QFileInfo(layout.folder).canonicalFilePath();
    });
}

class Search {
public:
    explicit Search(const std::optional<GitCancellation>& cancellation) { m_runner.cancellation = cancellation; }

    GitOutcome<LocalFilters> of(const RepositoryLayout& layout) {
        const auto text = addSettings(layout);
        if (!text) {
            return std::unexpected(text.error());
        }
        // Git would wait for a named pipe.
        const QString index = layout.gitDirectory + u"/index"_s;
        if (QFileInfo::exists(index) && !RegularFile::prefix(index, 1)) {
            return std::unexpected(unreadable(index));
        }
        addSubmodules(layout, *text, 0);
        return std::move(m_found);
    }

private:
    /// Gives the text of the configuration.
    GitOutcome<QByteArray> addSettings(const RepositoryLayout& layout) {
        auto text = configurationText(layout);
        if (!text || !asksForGit(*text)) {
            return text;
        }
        const auto listed = m_runner.runRaw(
            {"--git-dir=" + QFile::encodeName(layout.gitDirectory), "config", "--includes", "--show-scope", "-z",
             "--name-only", "--get-regexp", "^(filter\\..*\\.(clean|process|required)|core\\.worktree)$"},
            u"/"_s, GitLimits::local);
        if (!listed) {
            return std::unexpected(listed.error());
        }
        constexpr int noneFound = 1;
        if (listed->code != 0 && listed->code != noneFound) {
            return std::unexpected(listed->error());
        }
        const QByteArrayList words = listed->output.split('\0');
        for (qsizetype i = 0; i + 1 < words.size(); i += 2) {
            const bool isLocal = words[i] == "local" || words[i] == "worktree";
            if (isLocal && words[i + 1] != "core.worktree") {
                m_found.settings.append(words[i + 1]);
            } else if (isLocal) {
                m_found.areSubmodulesKnown = false; // it may be another file that says so
            }
        }
        return text;
    }

    /// What git looks into: the entries of the index that are repositories and are there.
    void addSubmodules(const RepositoryLayout& layout, const QByteArray& text, int depth) {
        const QString path = layout.gitDirectory + u"/index"_s;
        if (!m_found.areSubmodulesKnown || !QFileInfo::exists(path)) {
            return;
        }
        const auto index = RegularFile::read(path, largestIndex);
        const auto entries = index ? embeddedRepositories(*index) : std::nullopt;
        // Other hashes have another length.
        m_found.areSubmodulesKnown = entries && (entries->isEmpty() || isWorkTreeOf(layout, text)) &&
                                     !text.toLower().contains("objectformat") && depth < deepestModule;
        for (const QByteArray& entry : m_found.areSubmodulesKnown ? *entries : QByteArrayList()) {
            addSubmodule(layout.folder, entry, depth + 1);
        }
    }

    void addSubmodule(const QString& outer, const QByteArray& entry, int depth) {
        const QString folder = outer + u'/' + QFile::decodeName(entry);
        if (QFile::encodeName(folder) != QFile::encodeName(outer) + '/' + entry) {
            m_found.areSubmodulesKnown = false; // its name is none that can be said here
        } else if (QFileInfo::exists(folder + u"/.git"_s)) {
            const auto layout = RepositoryLayout::of(folder);
            const auto text = layout ? addSettings(*layout) : std::unexpected(GitError::of(GitError::Kind::notARepo));
            if (text) {
                addSubmodules(*layout, *text, depth);
            } else {
                m_found.areSubmodulesKnown = false;
            }
        }
    }

    GitRunner m_runner;
    LocalFilters m_found;
};

} // namespace

GitOutcome<LocalFilters> LocalFilters::of(const QString& folder, const std::optional<GitCancellation>& cancellation) {
    // From a folder within a repository, git goes up to it.
    auto layout = RepositoryLayout::of(folder);
    for (QString above = folder; !layout && QFileInfo(above).path() != above;) {
        above = QFileInfo(above).path();
        layout = RepositoryLayout::of(above);
    }
    return layout ? Search(cancellation).of(*layout) : LocalFilters();
}

} // namespace orv
