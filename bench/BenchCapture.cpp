#include "OrvCore/CommandBuilder.h"
#include "OrvCore/LoginShell.h"
#include "OrvProcess/ProcessManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr const char* usage = R"(usage: orv-bench-capture shell               prints the shell that services run under
       orv-bench-capture COUNT COMMAND...     runs the command, which prints COUNT numbered lines, as a service; prints
                                              the milliseconds until the last line was in, and the longest stall of
                                              the event loop until then
)";

/// The number in a line that orv-bench-lines printed.
int lineNumber(const QString& line) {
    constexpr qsizetype offset = 27;
    constexpr qsizetype width = 8;
    return line.size() == 94 ? line.mid(offset, width).toInt() : 0;
}

/// One service followed from its start to its end.
class Capture : public QObject {
    Q_OBJECT
public:
    Capture(const orv::ServiceTarget& target, int count)
        : m_target(target), m_id(orv::ProcessManager::id(target, u"bench"_s)), m_count(count) {
        connect(&m_manager, &orv::ProcessManager::logAppended, this, &Capture::onAppended);
        connect(&m_manager, &orv::ProcessManager::stateChanged, this, &Capture::onStateChanged);
        m_beat.setTimerType(Qt::PreciseTimer);
        m_beat.setInterval(std::chrono::milliseconds(1));
        connect(&m_beat, &QTimer::timeout, this, [this] {
            m_stall = std::max(m_stall, m_sinceBeat.nsecsElapsed());
            m_sinceBeat.restart();
        });
    }

    void start() {
        m_sinceStart.start();
        m_sinceBeat.start();
        m_beat.start();
        m_manager.start(m_target, u"bench"_s);
    }

private:
    void onAppended(const orv::ServiceID& id) {
        const orv::LogBuffer& log = m_manager.log(id);
        if (m_taken == 0 && !log.isEmpty() && lineNumber(log.at(log.size() - 1)) == m_count) {
            m_taken = m_sinceStart.nsecsElapsed();
            m_stall = std::max(m_stall, m_sinceBeat.nsecsElapsed());
            m_beat.stop();
        }
    }

    void onStateChanged(const orv::ServiceID& id) {
        const orv::ServiceState state = m_manager.state(id);
        if (state.isActive()) {
            return;
        }
        if (m_taken == 0 || !state.message.isEmpty() || !isNewest(m_manager.log(id))) {
            std::fprintf(stderr, "not the lines that were printed; %s\n", qPrintable(state.message));
            QCoreApplication::exit(1);
            return;
        }
        std::printf("%.3f %.3f\n", static_cast<double>(m_taken) / 1e6, static_cast<double>(m_stall) / 1e6);
        QCoreApplication::exit(0);
    }

    /// Exactly the newest lines, each in its place.
    [[nodiscard]] bool isNewest(const orv::LogBuffer& log) const {
        int expected = m_count;
        const auto end = log.rbegin() + std::min<qsizetype>(log.size(), m_count);
        return log.size() >= std::min<qsizetype>(m_count, orv::ProcessManager::maxLogLines) &&
               std::all_of(log.rbegin(), end, [&](const QString& line) { return lineNumber(line) == expected--; });
    }

    orv::ServiceTarget m_target;
    orv::ServiceID m_id;
    int m_count;
    orv::ProcessManager m_manager{std::chrono::seconds(3)};
    QTimer m_beat;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceBeat;
    qint64 m_taken = 0;
    qint64 m_stall = 0;
};

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words == QStringList{u"shell"_s}) {
        std::printf("%s\n", qPrintable(orv::loginShell()));
        return 0;
    }
    const int count = words.value(0).toInt();
    if (count < 1 || words.size() < 2) {
        std::fputs(usage, stderr);
        return 2;
    }
    QStringList quoted = words.mid(1);
    std::ranges::transform(quoted, quoted.begin(), orv::CommandBuilder::quote);
    Capture capture(
        {.directory = QDir::currentPath(), .framework = {}, .command = quoted.join(u' '), .port = {}}, count);
    QTimer::singleShot(0, &capture, &Capture::start);
    return QCoreApplication::exec();
}

#include "BenchCapture.moc"
