#pragma once

#include "Console.h"
#include "OrvUI/AppModel.h"
#include "SignalWatcher.h"
#include "TextLayout.h"

#include <QFuture>
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPromise>
#include <QTimer>

#include <memory>

namespace orv {

/// One run of a project's services in the terminal: their output, line by line with a label, what becomes of them, and
/// their end. Nothing else may run in the model. Main thread.
///
/// Output goes to stdout, everything said about it to stderr; with `json` both are events on stdout, one a line:
/// "install", "state", "log", "skipped", "address", "end".
class RunSession : public QObject {
    Q_OBJECT
public:
    struct Options {
        ServiceKinds kinds;
        std::optional<QString> device; ///< for a Flutter service
        bool installs = false;         ///< installs what is missing without asking
        bool json = false;
    };

    RunSession(AppModel& model, Console& console, const Project& project, const Options& options, QObject* parent);

    /// Ends when every service has: with the exit code of the process.
    QFuture<int> start();

private:
    struct Said {
        int port = 0;
        bool isUp = false; ///< or does it not listen there yet

        bool operator==(const Said&) const = default;
    };
    /// What was printed of a service so far.
    struct Shown {
        QString label;
        Style style = Style::plain;
        std::optional<Said> said;
        QTimer* patience = nullptr; ///< until an address is given that nothing confirms
    };

    [[nodiscard]] bool isAnyActive() const;
    Shown& shown(const ServiceID& id);
    void addLabels();
    [[nodiscard]] QString label(const ServiceID& id);

    void deferredToInstall();
    void refuseInstall(const QString& heading);
    void install();
    void installEnded();
    void stateChanged(const ServiceID& id);
    void linesSkipped(const ServiceID& id, qsizetype count);
    void logAppended(const ServiceID& id, qsizetype added);
    void sayWhatIsLeft();
    void sayAddress(const ServiceID& id, bool hasWaited);
    void waitForAddress(const ServiceID& id, std::chrono::milliseconds limit);
    void stopAsked();
    void stop();
    void endIfOver();
    void end(int exitCode);

    void say(const QString& message, Style style = Style::plain);
    void event(const QString& name, const ServiceID* id, QJsonObject fields);

    AppModel& m_model;
    Console& m_console;
    Project m_project;
    Options m_options;
    SignalWatcher m_signals;
    QHash<ServiceID, Shown> m_shown;
    QPromise<int> m_exit;
    int m_labelWidth = 0;
    bool m_wasLaunched = false; ///< nothing more will be started
    bool m_isStopping = false;
    bool m_saidOrphans = false; ///< that what an earlier run has left is ended first
    bool m_wasGivenUp = false;  ///< interrupted before anything of the project was started
    bool m_hasFailed = false;
    bool m_hasEnded = false;
};

} // namespace orv
