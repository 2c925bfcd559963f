#include "GitWords_p.h"
#include "OrvGit/GitService.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

bool isBranchName(const QString& name) {
    const auto isForbidden = [](QChar letter) {
        return letter <= u' ' || letter == u'\x7f' || u"~^:?*[\\"_s.contains(letter);
    };
    const auto isForbiddenPart = [](QStringView part) {
        return part.isEmpty() || part.startsWith(u'.') || part.endsWith(".lock"_L1);
    };
    return name != "HEAD"_L1 && name != "@"_L1 && !name.startsWith(u'-') && !name.endsWith(u'.') &&
           !name.contains(".."_L1) && !name.contains("@{"_L1) && std::ranges::none_of(name, isForbidden) &&
           std::ranges::none_of(QStringView(name).split(u'/'), isForbiddenPart);
}

GitOutcome<void> requireBranchName(const QString& name) {
    return isBranchName(name)
               ? GitOutcome<void>()
               : std::unexpected(GitError::refused(GitWords::tr("“%1” is not a name for a branch.").arg(name)));
}

bool isFolderName(const QString& name) {
    constexpr qsizetype longest = 255;
    return !name.trimmed().isEmpty() && name != "."_L1 && name != ".."_L1 &&
           name.compare(".git"_L1, Qt::CaseInsensitive) != 0 && !name.contains(u'/') && !name.contains(u'\0') &&
           name.toUtf8().size() <= longest;
}

QString folderNameOfUrl(const QString& url) {
    QString rest = url.trimmed();
    const auto chop = [&rest](QLatin1StringView end) {
        if (rest.endsWith(end)) {
            rest.chop(end.size());
        }
    };
    if (const qsizetype scheme = rest.indexOf("://"_L1); scheme >= 0) {
        rest = rest.sliced(scheme + 3);
        // Of "host/a/b" the host is no name.
        const qsizetype slash = rest.indexOf(u'/');
        rest = slash < 0 ? QString() : rest.sliced(slash);
    }
    while (rest.endsWith(u'/')) {
        rest.chop(1);
    }
    chop("/.git"_L1);
    rest = rest.sliced(rest.lastIndexOf(u'/') + 1);
    // "host:tool" of ssh.
    rest = rest.sliced(rest.lastIndexOf(u':') + 1);
    chop(".git"_L1);
    return isFolderName(rest) ? rest : QString();
}

} // namespace orv
