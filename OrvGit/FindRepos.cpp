#include "OrvCore/FolderReader.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvGit/GitService.h"

#include <QFile>

namespace orv {
namespace {

constexpr int deepest = 5;

void find(const QString& folder, int depth, FolderReader& reader, QStringList& found) {
    if (!reader.open(folder)) {
        return;
    }
    if (reader.exists(".git")) {
        found.append(folder);
    }
    if (depth == deepest) {
        return;
    }
    static const QSet<QString> skipped = ProjectScanner::defaultSkips();
    QStringList below;
    for (const FolderReader::Entry& entry : reader.entries()) {
        const std::string_view name = reader.name(entry);
        if (name.starts_with('.') || !reader.isFolder(entry)) {
            continue;
        }
        const QString text = QFile::decodeName(QByteArray(name.data(), static_cast<qsizetype>(name.size())));
        if (!skipped.contains(text)) {
            below.append(folder + u'/' + text);
        }
    }
    reader.close();
    for (const QString& each : below) {
        find(each, depth + 1, reader, found);
    }
}

} // namespace

QStringList GitService::findRepos(const QString& folder) {
    QStringList found;
    FolderReader reader;
    find(folder, 0, reader, found);
    found.sort();
    return found;
}

} // namespace orv
