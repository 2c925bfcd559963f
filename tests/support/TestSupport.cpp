#include "tests/support/TestSupport.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <gtest/gtest.h>

namespace orv::test {

bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    QTimer wake;
    wake.start(std::chrono::milliseconds(5));
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

TemporaryTree::TemporaryTree() {
    EXPECT_TRUE(m_dir.isValid());
}

QString TemporaryTree::path(const QString& relative) const {
    return relative.isEmpty() ? m_dir.path() : m_dir.filePath(relative);
}

QString TemporaryTree::add(const QString& relative, const QByteArray& content) {
    const QString full = path(relative);
    if (relative.endsWith(QLatin1Char('/'))) {
        EXPECT_TRUE(QDir().mkpath(full));
        return full.chopped(1);
    }
    EXPECT_TRUE(QDir().mkpath(QFileInfo(full).path()));
    QFile file(full);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << full.toStdString();
    EXPECT_EQ(file.write(content), content.size());
    return full;
}

QString sourcePath(const QString& relative) {
    return QStringLiteral(ORV_SOURCE_DIR "/") + relative;
}

QString testChildPath() {
    return QStringLiteral(ORV_TEST_CHILD);
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

ScopedEnvironment::ScopedEnvironment(const char* name, const char* value)
    : m_name(name), m_old(qgetenv(name)), m_wasSet(qEnvironmentVariableIsSet(name)) {
    value != nullptr ? qputenv(name, value) : qunsetenv(name);
}

ScopedEnvironment::~ScopedEnvironment() {
    m_wasSet ? qputenv(m_name, m_old) : qunsetenv(m_name);
}

ProcessResources ProcessResources::now() {
    ProcessResources found;
    const auto entries = QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot;
    found.descriptors = static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).entryList(entries).size());
    const QStringList tasks = QDir(QStringLiteral("/proc/self/task")).entryList(entries);
    found.threads = static_cast<int>(tasks.size());
    for (const QString& task : tasks) {
        const QByteArray children = readFile(QStringLiteral("/proc/self/task/%1/children").arg(task)).simplified();
        found.children += children.isEmpty() ? 0 : static_cast<int>(children.split(' ').size());
    }
    return found;
}

void PrintTo(const ProcessResources& resources, std::ostream* out) {
    *out << resources.descriptors << " descriptors, " << resources.threads << " threads, " << resources.children
         << " children";
}

} // namespace orv::test
