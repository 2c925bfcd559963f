#include "CliSupport.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvCore/StackDetector.h"
#include "OrvUI/InstallRecord.h"
#include "TextLayout.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

struct FoundStack {
    QString directory;
    DetectedStack stack;
};

/// The stacks of the folder itself, then those of the project's other folders.
QList<FoundStack> stacksOf(const QString& folder, const std::optional<Project>& project) {
    QStringList directories{folder};
    if (project) {
        for (const ServiceTarget& target : project->targets) {
            if (!directories.contains(target.directory)) {
                directories.append(target.directory);
            }
        }
    }
    QList<FoundStack> found;
    for (const QString& directory : std::as_const(directories)) {
        for (const DetectedStack& stack : StackDetector::detect(directory, Fallbacks::allowed)) {
            found.append({directory, stack});
        }
    }
    return found;
}

QJsonObject toJson(const FoundStack& found) {
    QJsonObject json{
        {u"directory"_s, found.directory},
        {u"kind"_s, rawValue(found.stack.kind)},
        {u"framework"_s, found.stack.framework},
        {u"run"_s, found.stack.run}};
    if (found.stack.install) {
        json[u"install"_s] = *found.stack.install;
    }
    if (found.stack.installMarker) {
        json[u"installMarker"_s] = *found.stack.installMarker;
    }
    return json;
}

void printRows(Stream& out, const QString& heading, const QList<std::pair<QString, QString>>& rows) {
    out.writeLine(heading);
    for (const auto& [name, value] : rows) {
        if (!value.isEmpty()) {
            out.writeLine(u"  "_s + painted(padded(name, 9), Style::dim, out.hasColor()) + printable(value));
        }
    }
}

QString headingOf(const Stream& out, const QString& name, ServiceKind kind, const QString& where) {
    return painted(printable(name), Style::bold, out.hasColor()) + u"  "_s +
           painted(rawValue(kind), Style::cyan, out.hasColor()) +
           (where == u"."_s ? QString() : u"  in "_s + printable(where));
}

void printStacks(
    Stream& out, const QString& folder, const QList<FoundStack>& stacks, const std::optional<Project>& project) {
    for (const auto& [directory, stack] : stacks) {
        const QString marker = stack.installMarker.value_or(QString());
        const QString present = QFileInfo::exists(QDir(directory).filePath(marker)) ? u"there"_s : u"missing"_s;
        printRows(
            out, headingOf(out, stack.framework, stack.kind, pathWithin(folder, directory)),
            {{u"run"_s, stack.run},
             {u"install"_s, stack.install.value_or(QString())},
             {u"marker"_s, marker.isEmpty() ? QString() : u"%1 (%2)"_s.arg(marker, present)}});
    }
    if (!project) {
        return;
    }
    InstallRecord installs(InstallRecord::defaultPath());
    QList<CommandBuilder::InstallPlace> places;
    /// "needed: cd '/p/shop' && npm install", once for all the services that it is for.
    const auto install = [&](const ServiceTarget& target) -> QString {
        if (!installs.isInstallNeeded(target)) {
            return {};
        }
        const auto place = CommandBuilder::installPlace(target.directory, CommandBuilder::installBody(target));
        if (places.contains(place)) {
            return u"needed: the same"_s;
        }
        places.append(place);
        return u"needed: cd %1 && %2"_s.arg(CommandBuilder::quote(place.folder), place.command);
    };
    out.writeLine(u"\n"_s + painted(u"Services"_s, Style::dim, out.hasColor()));
    for (const ServiceTarget& target : project->targets) {
        printRows(
            out,
            headingOf(
                out, target.framework.value_or(title(target.kind)), target.kind, pathWithin(folder, target.directory)),
            {{u"command"_s, target.command},
             {u"port"_s, target.port ? QString::number(*target.port) : QString()},
             {u"install"_s, install(target)}});
    }
}

int detectIn(Invocation& call, const QString& folder) {
    if (const QString problem = folderProblem(folder); !problem.isEmpty()) {
        return call.failure(problem);
    }
    ProjectScanner scanner;
    scanner.overrides = std::make_shared<OverrideStore>();
    const std::optional<Project> project = scanner.project(folder);
    const QList<FoundStack> stacks = stacksOf(folder, project);
    if (call.json) {
        QJsonArray array;
        for (const FoundStack& found : stacks) {
            array.append(toJson(found));
        }
        printJson(
            call.console.out,
            QJsonObject{
                {u"path"_s, folder},
                {u"stacks"_s, array},
                {u"project"_s, project ? QJsonValue(project->toJson()) : QJsonValue(QJsonValue::Null)}});
        return int(exitOk);
    }
    if (stacks.isEmpty()) {
        return call.failure(u"nothing that can be run was recognised in %1"_s.arg(shortPath(folder)));
    }
    printStacks(call.console.out, folder, stacks, project);
    return int(exitOk);
}

QFuture<int> detect(Invocation& call) {
    reportBrokenStores(call);
    const QString& word = call.words.first();
    const QString folder = absolutePath(word);
    if (word.contains(u'/') || QFileInfo::exists(folder)) {
        return QtFuture::makeReadyFuture(detectIn(call, folder));
    }
    const auto overrides = std::make_shared<OverrideStore>();
    return exitCodeOf(
        findProject(call, word, ProjectUse::folder, overrides), call.context,
        [&call](const FoundProject& project) -> int {
            return project ? detectIn(call, project->root) : refusal(call, project.error());
        });
}

} // namespace

Command detectCommand() {
    return {
        u"detect"_s,
        u"shows what is recognised in one folder, and why it would run as it would"_s,
        u"Prints each stack of the folder: its kind, what runs it, what installs its dependencies, and the file that\n"
        "tells that they are installed; then each service of the project with its whole command line. A folder with\n"
        "nothing in it is a failure (with --json: an empty list)."_s,
        {{{}, u"FOLDER|PROJECT"_s, 1, 1, u"shows its stacks and services"_s, {}, detect}},
        {{u"orvlauncher detect ."_s, u"the stacks of this folder"_s},
         {u"orvlauncher detect shop --json | jq '.project.targets[].command'"_s,
          u"the command lines that would run"_s}}};
}

} // namespace orv
