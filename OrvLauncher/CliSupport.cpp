#include "CliSupport.h"

#include "BrokenStores.h"
#include "CliHelp.h"
#include "OrvCore/Paths.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvCore/Settings.h"
#include "OrvCore/StoreFile.h"
#include "OrvCore/Tasks.h"
#include "OrvUI/DraftKeeper.h"
#include "TextLayout.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr std::chrono::milliseconds progressDelay{200};
constexpr std::chrono::milliseconds progressStep{100};
constexpr std::array spinner{u'⠋', u'⠙', u'⠹', u'⠸', u'⠼', u'⠴', u'⠦', u'⠧', u'⠇', u'⠏'};

template <typename Record>
QString errorOf(const Decoded<Record>& decoded) {
    return decoded ? QString() : decoded.error().text();
}

QString settingsError(const QJsonDocument& json) {
    return errorOf(AppSettings::fromJson(json.object()));
}

QString overridesError(const QJsonDocument& json) {
    const QJsonObject values = json.object();
    for (auto entry = values.begin(); entry != values.end(); ++entry) {
        if (const QString error = errorOf(Override::fromJson(entry.value().toObject())); !error.isEmpty()) {
            return entry.key() + u": "_s + error;
        }
    }
    return {};
}

QString tasksError(const QJsonDocument& json) {
    const QJsonArray tasks = json.array();
    for (const QJsonValue task : tasks) {
        if (const QString error = errorOf(ProjectTask::fromJson(task.toObject())); !error.isEmpty()) {
            return error;
        }
    }
    return {};
}

QString draftsPath() {
    return DraftKeeper::filePath(SettingsStore::defaultPath());
}

QString draftsError(const QJsonDocument& json) {
    return DraftKeeper::problem(json.toJson());
}

/// The window shows these as well.
QString text(const char* words) {
    return QCoreApplication::translate("BrokenStores", words);
}

struct Store {
    QString (*path)();
    bool isArray;
    QString (*error)(const QJsonDocument&);
};
constexpr std::array stores{
    Store{SettingsStore::defaultPath, false, settingsError},
    Store{OverrideStore::defaultPath, false, overridesError},
    Store{TaskStore::defaultPath, true, tasksError},
    Store{draftsPath, true, draftsError},
};

/// Why what the store's file holds does not count.
QString contentError(const Store& store, const StoredBytes& stored) {
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(stored.bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        return text(QT_TRANSLATE_NOOP("BrokenStores", "%1, at byte %2")).arg(error.errorString()).arg(error.offset);
    }
    if (json.isArray() != store.isArray) {
        return store.isArray ? text(QT_TRANSLATE_NOOP("BrokenStores", "a list was expected"))
                             : text(QT_TRANSLATE_NOOP("BrokenStores", "an object was expected"));
    }
    return store.error(json);
}

NoProject nothingToRun(const QString& folder) {
    return {exitFailed, u"nothing that can be run was recognised in %1"_s.arg(shortPath(folder))};
}

FoundProject projectAt(const QString& folder, ProjectUse use, const std::shared_ptr<const OverrideStore>& overrides) {
    if (const QString problem = folderProblem(folder); !problem.isEmpty()) {
        return std::unexpected(NoProject{exitFailed, problem});
    }
    ProjectScanner scanner;
    scanner.overrides = overrides;
    if (auto project = scanner.project(folder)) {
        return *project;
    }
    if (use == ProjectUse::services) {
        return std::unexpected(nothingToRun(folder));
    }
    const QString path = QFileInfo(folder).canonicalFilePath();
    return Project{.id = path, .name = QFileInfo(path).fileName(), .root = path, .targets = {}};
}

/// Of the names of folders the one that is meant: the same, or the only one that differs in upper and lower case alone.
QString alike(const QString& name, const QStringList& folders) {
    QStringList found;
    for (const QString& folder : folders) {
        if (folder == name) {
            return folder;
        }
        if (folder.compare(name, Qt::CaseInsensitive) == 0) {
            found.append(folder);
        }
    }
    return found.size() == 1 ? found.first() : QString();
}

/// Of a folder with nothing to run in it; says so where projects lie below it.
FoundProject projectInFolder(
    const QString& folder, const QList<Project>& projects, ProjectUse use,
    const std::shared_ptr<const OverrideStore>& overrides) {
    FoundProject found = projectAt(folder, use, overrides);
    if (found || !folderProblem(folder).isEmpty()) {
        return found;
    }
    QStringList below;
    for (const Project& project : projects) {
        if (project.root.startsWith(QFileInfo(folder).canonicalFilePath() + u'/')) {
            below.append(u"\n  "_s + shortPath(project.root));
        }
    }
    if (below.isEmpty()) {
        return found;
    }
    return std::unexpected(NoProject{
        exitUsage,
        u"%1 is no project, but has some in it; name one of them:"_s.arg(shortPath(folder)) + below.join(QString())});
}

FoundProject projectNamed(
    const QString& name, const QString& root, const QList<Project>& projects, ProjectUse use,
    const std::shared_ptr<const OverrideStore>& overrides) {
    QList<Project> matches;
    QStringList names;
    for (const Project& project : projects) {
        if (project.id == name) {
            return project;
        }
        names.append(project.name);
        if (project.name.compare(name, Qt::CaseInsensitive) == 0) {
            matches.append(project);
        }
    }
    if (matches.size() == 1) {
        return matches.first();
    }
    if (matches.isEmpty()) {
        const QStringList folders = QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        if (const QString folder = alike(name, folders); !folder.isEmpty()) {
            return projectInFolder(root + u'/' + folder, projects, use, overrides);
        }
        return std::unexpected(NoProject{
            exitFailed, u"there is no folder and no project '%1' in %2."_s.arg(printable(name), shortPath(root)) +
                            didYouMean(name, names + folders)});
    }
    QString message = u"'%1' could be any of these; name the folder:"_s.arg(name);
    for (const Project& match : matches) {
        message += u"\n  "_s + printable(match.root);
    }
    return std::unexpected(NoProject{exitUsage, message});
}

} // namespace

QStringList brokenStores() {
    QStringList texts;
    for (const Store& store : stores) {
        const QString path = store.path();
        const StoredBytes stored = StoreIO::read(path);
        if (stored.state == StoredBytes::State::unreadable) {
            texts.append(
                text(QT_TRANSLATE_NOOP("BrokenStores", "%1 can't be read and does not count.")).arg(shortPath(path)));
        } else if (stored.state != StoredBytes::State::absent) {
            if (const QString error = contentError(store, stored); !error.isEmpty()) {
                const QString broken = text(QT_TRANSLATE_NOOP(
                    "BrokenStores",
                    "%1 is broken and does not count: %2. It is kept as %3.corrupt when something is saved."));
                texts.append(broken.arg(shortPath(path), error, QFileInfo(path).fileName()));
            }
        }
    }
    return texts;
}

void reportBrokenStores(const Invocation& call) {
    for (const QString& text : brokenStores()) {
        call.note(text);
    }
}

QString configuredScanRoot() {
    return SettingsStore().settings().scanRoot;
}

QByteArray compactJson(const QJsonValue& value) {
    return QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).sliced(1).chopped(1);
}

void printJson(Stream& stream, const QJsonValue& value) {
    if (value.isArray()) {
        stream.write(QJsonDocument(value.toArray()).toJson());
    } else if (value.isObject()) {
        stream.write(QJsonDocument(value.toObject()).toJson());
    } else {
        stream.write(compactJson(value) + '\n');
    }
}

QString absolutePath(const QString& word) {
    const QString path = QDir::cleanPath(QDir::current().absoluteFilePath(word));
    return path.size() > 1 && path.endsWith(u'/') ? path.chopped(1) : path;
}

QString shortPath(const QString& path) {
    const QString home = Paths::realHome();
    const bool isBelow = home.size() > 1 && (path == home || path.startsWith(home + u'/'));
    return printable(isBelow ? u'~' + path.sliced(home.size()) : path);
}

QString folderProblem(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) {
        return u"folder not found: "_s + shortPath(path);
    }
    if (!info.isDir()) {
        return u"not a folder: "_s + shortPath(path);
    }
    return info.isReadable() && info.isExecutable() ? QString() : u"no permission to read "_s + shortPath(path);
}

QString scanRootProblem(const QString& root) {
    const QString problem = folderProblem(root);
    return problem.isEmpty() ? problem : problem + u"\nChoose another one: orvlauncher settings set scanRoot FOLDER"_s;
}

QString pathWithin(const QString& folder, const QString& path) {
    return QDir(folder).relativeFilePath(path);
}

Progress::Progress(Stream& stream, const QString& text, QObject* parent)
    : QObject(parent), m_stream(stream), m_text(text) {
    if (!stream.isTerminal()) {
        return;
    }
    m_elapsed.start();
    m_timer.setInterval(progressDelay);
    connect(&m_timer, &QTimer::timeout, this, &Progress::draw);
    m_timer.start();
}

Progress::~Progress() {
    if (m_isShown) {
        m_stream.write(QByteArrayView("\r\x1b[K").toByteArray());
    }
}

void Progress::draw() {
    m_isShown = true;
    m_timer.setInterval(progressStep);
    const auto step = static_cast<size_t>(m_elapsed.elapsed() / progressStep.count()) % spinner.size();
    const int width = m_stream.width();
    const QString line = QChar(spinner[step]) + u' ' + m_text + u" %1 s"_s.arg(m_elapsed.elapsed() / 1000);
    m_stream.write(u"\r\x1b[K"_s + (width > 0 ? elided(line, width - 1) : line));
}

int refusal(const Invocation& call, const NoProject& reason) {
    return reason.exitCode == exitUsage ? call.usageError(reason.message) : call.failure(reason.message);
}

QFuture<FoundProject> findProject(
    const Invocation& call, const QString& word, ProjectUse use,
    const std::shared_ptr<const OverrideStore>& overrides) {
    const bool isPath = word.contains(u'/') || word == u"."_s || word == u".."_s;
    const QString folder = absolutePath(word);
    const bool isFolder = QFileInfo(folder).isDir();
    if (isFolder) {
        // A name means a project before it means any folder.
        FoundProject found = projectAt(folder, isPath ? use : ProjectUse::services, overrides);
        if (found || isPath) {
            return QtFuture::makeReadyFuture(std::move(found));
        }
    } else if (isPath) {
        return QtFuture::makeReadyFuture(
            FoundProject(std::unexpected(NoProject{exitFailed, u"folder not found: "_s + shortPath(folder)})));
    }
    const QString root = configuredScanRoot();
    if (const QString problem = scanRootProblem(root); !problem.isEmpty()) {
        return QtFuture::makeReadyFuture(
            isFolder ? projectAt(folder, use, overrides) : std::unexpected(NoProject{exitFailed, problem}));
    }
    auto* progress = new Progress(
        call.console.err, u"Looking for '%1' in %2…"_s.arg(printable(word), shortPath(root)), call.context);
    const QString fallback = isFolder && use == ProjectUse::folder ? folder : QString();
    QFuture<FoundProject> found = runInPool([word, root, use, overrides, fallback]() -> FoundProject {
        ProjectScanner scanner;
        scanner.overrides = overrides;
        const auto projects = scanner.scan(root);
        if (!projects) {
            return std::unexpected(NoProject{exitFailed, projects.error().text()});
        }
        const FoundProject named = projectNamed(word, root, *projects, use, overrides);
        return named || fallback.isEmpty() ? named : projectAt(fallback, use, overrides);
    });
    onFinished(found, progress, [progress](const FoundProject&) { progress->deleteLater(); });
    return found;
}

std::expected<ProjectTask, int> taskMeant(const Invocation& call, QList<ProjectTask> tasks, const QString& word) {
    const QString start = word.toLower().remove(u'{').remove(u'}');
    tasks.removeIf([&](const ProjectTask& task) { return !task.id.toString(QUuid::WithoutBraces).startsWith(start); });
    if (tasks.size() == 1 && !start.isEmpty()) {
        return tasks.first();
    }
    return std::unexpected(
        tasks.isEmpty() || start.isEmpty()
            ? call.failure(u"there is no task '%1'; 'orvlauncher tasks' lists them."_s.arg(printable(word)))
            : call.usageError(u"%1 tasks begin with '%2'; give more of the id."_s.arg(tasks.size()).arg(word)));
}

} // namespace orv
