#pragma once

#include "OrvCore/ProjectScanner.h"

#include <QElapsedTimer>
#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// Notices that another scan would find other projects than the last one, and says which. It changes no list: that is
/// for who asks for a scan.
///
/// The scanned folder, the folders that hold projects, and those of the projects are watched, the upper ones first, up
/// to a limit. When names come or go there, a scan is made in the background and compared. Lives on the main thread;
/// costs nothing while nothing happens.
class ScanWatch : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged)
    Q_PROPERTY(QString news READ news NOTIFY newsChanged)
public:
    explicit ScanWatch(QObject* parent = nullptr);
    ~ScanWatch() override;

    [[nodiscard]] AppModel* model() const { return m_model; }
    void setModel(AppModel* model);

    /// "shop is new", "shop is gone", "3 projects are new, 1 is gone"; empty while everything is as it was listed.
    [[nodiscard]] const QString& news() const { return m_news; }
    /// Looks at once, unless all folders are watched anyway: then only whether the scanned one is still the same, of
    /// whose name nothing can be watched.
    Q_INVOKABLE void lookIfBlind();

    std::chrono::milliseconds settleTime = std::chrono::seconds(1); ///< in which changes are waited for to end
    int mostFolders = 256;                                          ///< that are watched

Q_SIGNALS:
    void modelChanged();
    void newsChanged();

private:
    /// The names in each watched folder, as one number; by path.
    using Names = QHash<QString, size_t>;
    /// A folder whatever it is called: device and inode; zero for none.
    using Place = std::pair<quint64, quint64>;
    struct Folders {
        Names names; ///< of those that can be read
        Place root;
        qint64 newestMs = 0; ///< when a name came or went last, in milliseconds since 1970
        bool isWhole = true; ///< the limit was not reached, and the scanned folder can be read
    };
    struct Request {
        QString root;
        QSet<QString> projects; ///< their folders: not walked
        int limit = 0;
        bool operator==(const Request&) const = default;
    };
    [[nodiscard]] static Place placeOf(const QString& folder);
    [[nodiscard]] static Folders foldersOf(const Request& request, const ScanCancellation& cancellation);
    void takeInScan();
    void lookAtRoot();
    void look(bool isFirst);
    void compare();
    void follow(const Folders& folders);
    void setNews(const QString& news);

    QPointer<AppModel> m_model;
    QString m_news;
    Names m_names;
    Place m_root;           ///< whose folders are watched
    bool m_isBlind = false; ///< some folders are not watched
    bool m_isBusy = false;
    bool m_asksRoot = false; ///< whether it is still the same
    bool m_isDue = false;    ///< something changed meanwhile
    int m_generation = 0;    ///< of the list that is compared with
    qint64 m_scanBegan = 0;  ///< in milliseconds since 1970; 0 when nobody saw it
    std::chrono::milliseconds m_rest{0};
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
    std::shared_ptr<ScanCancellation> m_cancellation;
    QThreadPool m_pool;
};

} // namespace orv
