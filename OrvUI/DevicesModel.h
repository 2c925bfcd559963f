#pragma once

#include "OrvUI/DeviceTools.h"
#include "OrvUI/RowModel.h"
#include "OrvUI/RunChoices.h"

#include <QFuture>
#include <QObject>
#include <QSet>
#include <QThreadPool>

namespace orv {

struct DeviceRow {
    QString key; ///< "flutter:linux", "simulator:" and its id, "avd:" and its name
    QString title;
    QString detail;        ///< "Desktop", "Web", "Device", "Simulator", "Emulator"
    QString section;       ///< "Connected", "iOS 18.2", "Android"
    bool isBooted = false; ///< of a simulator or emulator
    bool isChosen = false; ///< for the project

    /// The name of its picture in the set of icons.
    [[nodiscard]] QString glyph() const;

    bool operator==(const DeviceRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<DeviceRow>>& roles();
};

/// What a Flutter app can run on, and what is chosen for each project. Lives on the main thread; the tools run in a
/// pool of its own.
class DevicesModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QAbstractListModel* devices READ devices CONSTANT)
    Q_PROPERTY(QString projectID READ projectID WRITE setProjectID NOTIFY projectIDChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY loadingChanged)
    Q_PROPERTY(QStringList hints READ hints NOTIFY hintsChanged)
    Q_PROPERTY(QString chosenKey READ chosenKey NOTIFY chosenChanged)
    /// The sheet that asks for a device is open.
    Q_PROPERTY(bool isAsking READ isAsking NOTIFY askingChanged)

public:
    /// `choices` outlives it.
    DevicesModel(DeviceTools tools, RunChoices& choices, QObject* parent = nullptr);
    ~DevicesModel() override;

    [[nodiscard]] QAbstractListModel* devices() { return &m_rows; }
    [[nodiscard]] const QList<DeviceRow>& rows() const { return m_rows.rows(); }
    /// Whose choice the rows show.
    [[nodiscard]] const QString& projectID() const { return m_projectID; }
    void setProjectID(const QString& projectID);
    /// Rows that contain it, in any case.
    [[nodiscard]] const QString& searchText() const { return m_searchText; }
    void setSearchText(const QString& text);
    [[nodiscard]] bool isLoading() const { return m_pending > 0; }
    [[nodiscard]] QStringList hints() const; ///< sentences that say what to install
    [[nodiscard]] QString chosenKey() const { return chosen(m_projectID).value_or(QString()); }

    [[nodiscard]] bool isAsking() const { return m_isAsking; }
    /// On what the project is to run.
    Q_INVOKABLE void ask(const QString& projectID);
    Q_INVOKABLE void endAsking();

    /// Lists everything anew; rows come as their tools answer. While it is under way, a second call joins the first.
    Q_INVOKABLE QFuture<void> refresh();
    QFuture<QList<FlutterDevice>> listFlutter();
    [[nodiscard]] const QList<FlutterDevice>& flutterDevices() const { return m_flutter; }
    [[nodiscard]] const QList<SimulatorDevice>& simulators() const { return m_simulators; }
    [[nodiscard]] const QList<DeviceTools::Emulator>& emulators() const { return m_emulators; }

    /// The key of the device that was chosen for the project.
    [[nodiscard]] std::optional<QString> chosen(const QString& projectID) const;
    /// An empty key takes the choice back.
    StoreResult choose(const QString& projectID, const QString& key);
    void takeInChoices(); ///< they are others, by another process
    /// Whether a chosen device may have to be started, which is more than to name it.
    [[nodiscard]] static bool needsBoot(const QString& key);
    [[nodiscard]] static QString deviceID(const QString& key); ///< by its own tool: "chrome", "Pixel_9"
    /// Boots the device where it has to be, once for all who wait for it; what "flutter run -d" takes, or why there is
    /// none, as a sentence.
    QFuture<DeviceTools::Booted> ready(const QString& key);

    /// The project runs as soon as its device is up, if it is awaited still by then.
    void await(const QString& projectID);
    void endAwaiting(const QString& projectID);
    [[nodiscard]] bool isAwaited(const QString& projectID) const { return m_awaited.contains(projectID); }

Q_SIGNALS:
    void projectIDChanged();
    void searchTextChanged();
    void loadingChanged();
    void hintsChanged();
    void chosenChanged();
    void askingChanged();
    void awaitedChanged();

private:
    template <typename Devices>
    void take(
        QFuture<void>& all, DeviceTools::Listing<Devices> (DeviceTools::*list)(const std::atomic<bool>&) const,
        Devices DevicesModel::* devices, size_t hint);
    void update();

    const DeviceTools m_tools;
    RunChoices& m_choices;
    QString m_projectID;
    QString m_searchText;
    QList<FlutterDevice> m_flutter;
    QList<SimulatorDevice> m_simulators;
    QList<DeviceTools::Emulator> m_emulators;
    std::array<QString, 3> m_hints; ///< of Flutter, of the simulators, of the emulators
    int m_pending = 0;
    bool m_isAsking = false;
    QSet<QString> m_awaited;                              ///< projects
    QHash<QString, QFuture<DeviceTools::Booted>> m_boots; ///< the last one of each device, by its key
    QFuture<void> m_refresh;
    RowModel<DeviceRow> m_rows;
    std::atomic<bool> m_isEnding = false;
    QThreadPool m_pool; // last, so that what runs in it ends first
};

} // namespace orv
