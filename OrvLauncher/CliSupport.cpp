#include "CliSupport.h"

#include "CliHelp.h"
#include "OrvCore/Paths.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvCore/Settings.h"
#include "OrvCore/StoreFile.h"
#include "OrvCore/Tasks.h"
#include "TextLayout.h"

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

struct Store {
    QString (*path)();
    bool isArray;
    QString (*error)(const QJsonDocument&);
};
constexpr std::array stores{
    Store{SettingsStore::defaultPath, false, settingsError},
    Store{OverrideStore::defaultPath, false, overridesError},
    Store{TaskStore::defaultPath, true, tasksError},
};

/// Why what the store's file holds does not count.
QString contentError(const Store& store, const StoredBytes& stored) {
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(stored.bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        return u"%1, at byte %2"_s.arg(error.errorString()).arg(error.offset);
    }
    if (json.isArray() != store.isArray) {
        return store.isArray ? u"a list was expected"_s : u"an object was expected"_s;
    }
    return store.error(json);
}

FoundProject projectAt(const QString& folder, const std::shared_ptr<const OverrideStore>& overrides) {
    if (const QString problem = folderProblem(folder); !problem.isEmpty()) {
        return std::unexpected(NoProject{exitFailed, problem});
    }
    ProjectScanner scanner;
    scanner.overrides = overrides;
    if (auto project = scanner.project(folder)) {
        return *project;
    }
    return std::unexpected(
        NoProject{exitFailed, u"nothing that can be run was recognised in %1"_s.arg(shortPath(folder))});
}

FoundProject projectNamed(const QString& name, const QString& root, const QList<Project>& projects) {
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
        return std::unexpected(NoProject{
            exitFailed, u"there is no folder and no project '%1' in %2."_s.arg(printable(name), shortPath(root)) +
                            didYouMean(name, names)});
    }
    QString message = u"'%1' could be any of these; name the folder:"_s.arg(name);
    for (const Project& match : matches) {
        message += u"\n  "_s + printable(match.root);
    }
    return std::unexpected(NoProject{exitUsage, message});
}

} // namespace

void reportBrokenStores(const Invocation& call) {
    for (const Store& store : stores) {
        const QString path = store.path();
        const StoredBytes stored = StoreIO::read(path);
        if (stored.state == StoredBytes::State::unreadable) {
            call.note(u"%1 can't be read and does not count."_s.arg(shortPath(path)));
        } else if (stored.state != StoredBytes::State::absent) {
            if (const QString error = contentError(store, stored); !error.isEmpty()) {
                call.note(
                    u"%1 is broken and does not count: %2. It is kept as %3.corrupt when something is saved."_s.arg(
                        shortPath(path), error, QFileInfo(path).fileName()));
            }
        }
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
    const Invocation& call, const QString& word, const std::shared_ptr<const OverrideStore>& overrides) {
    const bool isPath = word.contains(u'/') || word == u"."_s || word == u".."_s;
    const QString folder = absolutePath(word);
    if (QFileInfo(folder).isDir()) {
        FoundProject found = projectAt(folder, overrides);
        if (found || isPath) {
            return QtFuture::makeReadyFuture(std::move(found));
        }
    } else if (isPath) {
        return QtFuture::makeReadyFuture(
            FoundProject(std::unexpected(NoProject{exitFailed, u"folder not found: "_s + shortPath(folder)})));
    }
    const QString root = configuredScanRoot();
    auto* progress = new Progress(
        call.console.err, u"Looking for '%1' in %2…"_s.arg(printable(word), shortPath(root)), call.context);
    QFuture<FoundProject> found = runInPool([word, root, overrides]() -> FoundProject {
        ProjectScanner scanner;
        scanner.overrides = overrides;
        const auto projects = scanner.scan(root);
        if (!projects) {
            return std::unexpected(NoProject{exitFailed, projects.error().text()});
        }
        return projectNamed(word, root, *projects);
    });
    onFinished(found, progress, [progress](const FoundProject&) { progress->deleteLater(); });
    return found;
}

} // namespace orv
