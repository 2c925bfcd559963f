#pragma once

#include "Cli.h"
#include "OrvCore/Async.h"
#include "OrvCore/Models.h"
#include "OrvCore/OverrideStore.h"
#include "OrvCore/Tasks.h"

#include <QElapsedTimer>
#include <QJsonValue>
#include <QThreadPool>
#include <QTimer>

#include <expected>
#include <memory>
#include <utility>

namespace orv {

/// Says on stderr which stores can't be understood, why, and what becomes of them.
void reportBrokenStores(const Invocation& call);
/// The folder that a scan goes through when none is named.
[[nodiscard]] QString configuredScanRoot();

/// The one JSON value of a command's output, on lines of its own.
void printJson(Stream& stream, const QJsonValue& value);
/// Any value on one line; QJsonDocument knows only arrays and objects.
[[nodiscard]] QByteArray compactJson(const QJsonValue& value);

/// The absolute, clean path that a word of the command line means.
[[nodiscard]] QString absolutePath(const QString& word);
/// Why the folder can't be looked into; empty when it can.
[[nodiscard]] QString folderProblem(const QString& path);
/// Likewise of the folder that the settings name, and what to do about it.
[[nodiscard]] QString scanRootProblem(const QString& root);
/// A path as people read it: "~/shop".
[[nodiscard]] QString shortPath(const QString& path);
/// "web" of "/p/shop/web" in "/p/shop"; "." for the folder itself.
[[nodiscard]] QString pathWithin(const QString& folder, const QString& path);

/// Runs a blocking function of values off the main thread.
template <typename Function>
auto runInPool(Function function) -> QFuture<decltype(function())> {
    using Result = decltype(function());
    auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    QThreadPool::globalInstance()->start([promise, function = std::move(function)] {
        promise->addResult(function());
        promise->finish();
    });
    return promise->future();
}

/// The exit code that `handler` makes of the result of `future`.
template <typename T, typename ToExitCode>
QFuture<int> exitCodeOf(const QFuture<T>& future, QObject* context, ToExitCode handler) {
    auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    onFinished(future, context, [promise, handler = std::move(handler)](const T& result) mutable {
        promise->addResult(handler(result));
        promise->finish();
    });
    return promise->future();
}

/// A line on stderr that says what takes so long: on a terminal only, and not before 200 ms. Gone with the object.
class Progress : public QObject {
public:
    Progress(Stream& stream, const QString& text, QObject* parent);
    ~Progress() override;

private:
    void draw();

    Stream& m_stream;
    QString m_text;
    QTimer m_timer;
    QElapsedTimer m_elapsed;
    bool m_isShown = false;
};

/// Why there is no project of that name, ready to be printed.
struct NoProject {
    int exitCode = exitFailed;
    QString message;
};
/// Prints it; gives the exit code.
int refusal(const Invocation& call, const NoProject& reason);
using FoundProject = std::expected<Project, NoProject>;

/// What a command wants of a project.
enum class ProjectUse {
    services, ///< where nothing can be run it is refused
    folder,   ///< any folder does; it has no targets where nothing can be run
};
/// The project that a word means: a folder, an id, the name of one project below the scan root, or of a folder directly
/// in it (upper and lower case alike). `overrides` may be null: services then stand as they were detected.
[[nodiscard]] QFuture<FoundProject> findProject(
    const Invocation& call, const QString& word, ProjectUse use,
    const std::shared_ptr<const OverrideStore>& overrides = {});

/// The one of these tasks whose id is, or begins with, the word; otherwise the exit code, once that was said.
[[nodiscard]] std::expected<ProjectTask, int> taskMeant(
    const Invocation& call, QList<ProjectTask> tasks, const QString& word);

} // namespace orv
