#pragma once

#include "OrvUI/GitOverview.h"

namespace orv {

/// Makes a project: a new folder, or a clone of a repository. One at a time. Lives on the main thread; what takes time
/// runs in the overview's pool.
class NewProject : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY progressChanged)
    /// Nobody looks at what is being made, or was not made and why; over when there is nothing of it to be seen.
    Q_PROPERTY(bool aside READ isAside WRITE setAside NOTIFY asideChanged)
    Q_PROPERTY(QString name READ name NOTIFY progressChanged)
    Q_PROPERTY(double fraction READ fraction NOTIFY progressChanged)
    Q_PROPERTY(QString progressLine READ progressLine NOTIFY progressChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)
public:
    explicit NewProject(GitOverview& overview, QObject* parent = nullptr);
    ~NewProject() override;

    /// Why there can be no such folder, as a sentence; empty when there can be. It looks at the disk.
    Q_INVOKABLE static QString nameProblem(const QString& name, const QString& parentFolder);
    /// The name that a clone of the URL gets by itself; empty when it has none.
    Q_INVOKABLE static QString nameOf(const QString& url);

    /// An empty branch: without a repository. A folder whose repository can't be made is taken away again.
    Q_INVOKABLE void createFolder(const QString& name, const QString& parentFolder, const QString& branch);
    Q_INVOKABLE void clone(const QString& url, const QString& name, const QString& parentFolder);
    /// A clone leaves nothing behind.
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void clearError();

    [[nodiscard]] bool isBusy() const { return m_cancellation.has_value(); }
    [[nodiscard]] bool isAside() const { return m_isAside; }
    void setAside(bool isAside);
    [[nodiscard]] const QString& name() const { return m_name; } ///< of what is made, or was made last
    /// Of the clone, 0 to 1; -1 while it is not known.
    [[nodiscard]] double fraction() const { return m_fraction; }
    /// "Receiving objects: 64% (1833/2864), 12.40 MiB | 5.21 MiB/s"
    [[nodiscard]] const QString& progressLine() const { return m_progressLine; }
    /// Why the last one failed; empty when it did not, or was cancelled.
    [[nodiscard]] const QString& error() const { return m_error; }

Q_SIGNALS:
    void progressChanged();
    void errorChanged();
    void asideChanged();
    void added(const QString& name, const QString& path, bool cloned);
    void cancelled();

private:
    using Outcome = GitOutcome<void>;
    using Work = std::function<Outcome(const GitService& service, QPromise<Outcome>& progress)>;
    enum class Kind { folder, clone };
    void start(Kind kind, const QString& name, const QString& parentFolder, const Work& work);
    void end(Kind kind, const Outcome& outcome, const QString& path);
    void setProgress(double fraction, const QString& line);
    void setError(const QString& error);

    GitOverview& m_overview;
    std::optional<GitCancellation> m_cancellation; ///< of what runs
    bool m_isAside = false;
    QString m_name;
    double m_fraction = -1;
    QString m_progressLine;
    QString m_error;
};

} // namespace orv
