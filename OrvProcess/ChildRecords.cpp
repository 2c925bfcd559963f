#include "OrvProcess/ChildRecords.h"

#include "OrvProcess/ProcessTable_p.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr QLatin1StringView markVariable("ORV_CHILD");
/// After which what is only half there is not being written any more.
constexpr auto writingTime = 60s;

using Table = QList<ProcessEntry>;

const ProcessEntry* entryOf(pid_t pid, const Table& table) {
    const auto found = std::ranges::find(table, pid, &ProcessEntry::pid);
    return found == table.end() ? nullptr : &*found;
}

ProcessIdentity identityOf(const ProcessEntry& entry) {
    return {entry.pid, QString::number(entry.startTime)};
}

bool lives(const ProcessIdentity& process, const Table& table) {
    const ProcessEntry* entry = entryOf(process.pid, table);
    return entry != nullptr && entry->isAlive && identityOf(*entry) == process;
}

/// Of those of the group that live one; 0 when there is none.
pid_t memberOf(const ChildRecord& child, const Table& table) {
    const pid_t group = child.leader.pid;
    const ProcessEntry* leader = entryOf(group, table);
    if (group <= 1 || (leader != nullptr && identityOf(*leader) != child.leader)) {
        return 0;
    }
    const QByteArray mark = (markVariable + u'=' + child.mark).toUtf8();
    const auto member = std::ranges::find_if(table, [&](const ProcessEntry& entry) {
        return entry.isAlive && entry.group == group && entry.session == group &&
               (leader != nullptr || hasVariable(entry.pid, mark));
    });
    return member == table.end() ? 0 : member->pid;
}

pid_t memberOf(const ChildRecord& child) {
    if (!ChildProcess::groupExists(child.leader.pid) || child.boot != QString::fromLatin1(bootIdentity())) {
        return 0;
    }
    // The whole table costs a file of each process: it is for groups whose leader is gone.
    const QList<ProcessEntry> leader{processEntry(child.leader.pid)};
    return memberOf(child, lives(child.leader, leader) ? leader : processTable());
}

/// False when no process of the group was there to be watched.
bool addMember(const ChildRecord& child, ExitWatch& watch) {
    pid_t member = memberOf(child);
    while (member != 0) {
        const bool isGone = watch.add(member) == ExitWatch::Added::gone;
        // A number that was another's by then is none of the group's.
        const pid_t now = memberOf(child);
        if (!isGone && now == member) {
            return true;
        }
        member = now;
    }
    return false;
}

/// Whole or not at all for who reads it, as long as the system runs; after its next start nobody asks. A child does not
/// wait for the disk.
StoreResult writeUntilRestart(const QString& path, const QByteArray& bytes) {
    if (StoreResult made = StoreIO::makeFolder(QFileInfo(path).path()); !made) {
        return made;
    }
    QFile fresh(path + u".new"_s);
    const bool isWritten =
        fresh.open(QIODevice::WriteOnly, QFile::ReadOwner | QFile::WriteOwner) && fresh.write(bytes) == bytes.size();
    fresh.close();
    const QByteArray from = QFile::encodeName(fresh.fileName());
    if (!isWritten || fresh.error() != QFile::NoError || ::rename(from, QFile::encodeName(path)) != 0) {
        const QString why = fresh.error() != QFile::NoError ? fresh.errorString() : qt_error_string(errno);
        fresh.remove();
        return std::unexpected(StoreError{StoreError::Kind::unwritable, path, why});
    }
    return {};
}

std::optional<ChildRecord> readRecord(const QString& path) {
    const StoredBytes stored = StoreIO::read(path);
    const QJsonDocument document = QJsonDocument::fromJson(stored.bytes);
    const auto child = ChildRecord::fromJson(document.object());
    return child ? std::optional(*child) : std::nullopt;
}

} // namespace

ChildRecords::Note::~Note() {
    QFile::remove(m_path);
}

EnvironmentEntries ChildRecords::environment(const QString& mark) {
    return {{markVariable, mark}};
}

QString ChildRecords::newMark() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

QString ChildRecords::path(const ProcessIdentity& leader) const {
    return m_folder + u"/%1-%2.json"_s.arg(leader.pid).arg(leader.startTime);
}

std::expected<std::shared_ptr<ChildRecords::Note>, StoreError> ChildRecords::note(ChildRecord child, pid_t pid) const {
    if (m_folder.isEmpty()) {
        return nullptr;
    }
    child.leader = identityOf(processEntry(pid));
    child.owner = identityOf(processEntry(::getpid()));
    child.boot = QString::fromLatin1(bootIdentity());
    const QString file = path(child.leader);
    if (const StoreResult written = writeUntilRestart(file, QJsonDocument(child.toJson()).toJson()); !written) {
        return std::unexpected(written.error());
    }
    return std::make_shared<Note>(file);
}

QList<ChildRecord> ChildRecords::orphans() const {
    QList<ChildRecord> found;
    const QFileInfoList files = m_folder.isEmpty() ? QFileInfoList() : QDir(m_folder).entryInfoList(QDir::Files);
    const Table table = files.isEmpty() ? Table() : processTable();
    if (table.isEmpty()) {
        return found;
    }
    const QString boot = QString::fromLatin1(bootIdentity());
    for (const QFileInfo& file : files) {
        const std::optional<ChildRecord> child = readRecord(file.filePath());
        if (!child) {
            if (file.lastModified() < QDateTime::currentDateTime().addDuration(-writingTime)) {
                QFile::remove(file.filePath());
            }
            continue;
        }
        const bool isOfThisStart = child->boot == boot;
        if (isOfThisStart && lives(child->owner, table)) {
            continue;
        }
        if (isOfThisStart && memberOf(*child, table) != 0) {
            found.append(*child);
        } else {
            QFile::remove(file.filePath());
        }
    }
    return found;
}

bool ChildRecords::isAlive(const ChildRecord& child) {
    return memberOf(child) != 0;
}

ExitWatch ChildRecords::watch(QList<ChildRecord>& children) {
    ExitWatch watch;
    children.removeIf([&watch](const ChildRecord& child) { return !addMember(child, watch); });
    return watch;
}

QString ChildRecords::ownName() {
    const ProcessIdentity self = identityOf(processEntry(::getpid()));
    return u"%1 %2 %3"_s.arg(self.pid).arg(self.startTime, QString::fromLatin1(bootIdentity()));
}

bool ChildRecords::livesByName(const QString& name) {
    const ProcessIdentity process{name.section(u' ', 0, 0).toInt(), name.section(u' ', 1, 1)};
    return name.section(u' ', 2) == QString::fromLatin1(bootIdentity()) && lives(process, {processEntry(process.pid)});
}

void ChildRecords::remove(const ChildRecord& child) const {
    QFile::remove(path(child.leader));
}

} // namespace orv
