#include "CliSupport.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvUI/ModelTypes.h"
#include "TextLayout.h"

#include <QDir>
#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QJsonArray toJson(const QList<Project>& projects) {
    QJsonArray array;
    for (const Project& project : projects) {
        array.append(project.toJson());
    }
    return array;
}

QString serviceLine(const Project& project) {
    QStringList kinds;
    for (const ServiceTarget& target : project.targets) {
        const QString port = target.port ? u':' + QString::number(*target.port) : QString();
        // Two of a kind differ by where they are.
        const bool isOneOfSeveral = std::ranges::count(project.targets, target.kind, &ServiceTarget::kind) > 1;
        const QString folder = QDir(project.root).relativeFilePath(target.directory);
        kinds.append(rawValue(target.kind) + port + (isOneOfSeveral ? u" (%1)"_s.arg(folder) : QString()));
    }
    return kinds.join(u", "_s);
}

void printProjects(Console& console, const QList<Project>& projects, const QString& root) {
    if (projects.isEmpty()) {
        console.err.writeLine(u"No projects in %1."_s.arg(shortPath(root)));
        return;
    }
    Table table(
        {{u"PROJECT"_s, Style::bold},
         {u"STACK"_s},
         {u"SERVICES"_s, Style::cyan},
         {u"FOLDER"_s, Style::dim, Elide::middle}});
    for (const Project& project : projects) {
        table.add({project.name, stackLine(project), serviceLine(project), shortPath(project.root)});
    }
    console.out.write(table.text(console.out.width(), console.out.hasColor()));
    console.err.writeLine(
        projects.size() == 1 ? u"1 project in %1."_s.arg(shortPath(root))
                             : u"%1 projects in %2."_s.arg(projects.size()).arg(shortPath(root)));
}

QFuture<int> scan(Invocation& call) {
    reportBrokenStores(call);
    const QString root = call.words.isEmpty() ? configuredScanRoot() : absolutePath(call.words.first());
    if (!call.words.isEmpty() && call.words.first().isEmpty()) {
        return QtFuture::makeReadyFuture(call.usageError(u"the folder's name is empty."_s));
    }
    if (const QString problem = call.words.isEmpty() ? scanRootProblem(root) : folderProblem(root);
        !problem.isEmpty()) {
        return QtFuture::makeReadyFuture(call.failure(problem));
    }
    auto* progress = new Progress(call.console.err, u"Scanning %1…"_s.arg(shortPath(root)), call.context);
    const auto projects = runInPool([root] {
        ProjectScanner scanner;
        scanner.overrides = std::make_shared<OverrideStore>();
        return scanner.scan(root);
    });
    return exitCodeOf(projects, call.context, [&call, root, progress](const ScanResult<QList<Project>>& found) -> int {
        delete progress;
        if (!found) {
            return call.failure(found.error().text());
        }
        if (call.json) {
            printJson(call.console.out, toJson(*found));
        } else {
            printProjects(call.console, *found, root);
        }
        return exitOk;
    });
}

} // namespace

Command scanCommand() {
    return {
        u"scan"_s,
        u"lists the projects in a folder"_s,
        u"Goes through the folder and everything below it, recognises each project by its marker files, and prints\n"
        "what can be run. Without a folder it takes the one from the settings (scanRoot)."_s,
        {{{}, u"[FOLDER]"_s, 0, 1, u"lists the projects"_s, {}, scan}},
        {{u"orvlauncher scan ~/Projects"_s, u"a table: project, stack, services, folder"_s},
         {u"orvlauncher scan --json | jq -r '.[] | select(.targets[].kind == \"docker\") | .root'"_s,
          u"the folders of all projects with a compose file"_s}}};
}

} // namespace orv
