#include "OrvCore/AgentRunFiles.h"

#include "OrvCore/JsonRecord_p.h"
#include "OrvCore/Paths.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QString recordFile(const QString& runFolder) {
    return runFolder + u"/run.json"_s;
}
QString holdFile(const QString& runFolder) {
    return runFolder + u"/held"_s;
}
QString stopFile(const QString& runFolder) {
    return runFolder + u"/stop"_s;
}

qint64 bytesIn(const QString& folder) {
    qint64 bytes = 0;
    for (QDirIterator file(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); file.hasNext();) {
        file.next();
        bytes += file.fileInfo().size();
    }
    return bytes;
}

} // namespace

QString AgentRunFiles::defaultFolder() {
    return Paths::supportDirectory() + u"/agents"_s;
}

QString AgentRunFiles::runFolder(const QUuid& id) const {
    return m_folder + u'/' + id.toString(QUuid::WithoutBraces);
}

std::expected<UniqueFd, StoreError> AgentRunFiles::hold(const QUuid& id) const {
    const QString folder = runFolder(id);
    if (const StoreResult made = StoreIO::makeFolder(folder); !made) {
        return std::unexpected(made.error());
    }
    constexpr mode_t privateFile = 0600;
    UniqueFd file(::open(QFile::encodeName(holdFile(folder)), O_RDWR | O_CREAT | O_CLOEXEC, privateFile));
    if (!file.isValid() || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        const int code = errno;
        const auto kind = code == EWOULDBLOCK ? StoreError::Kind::locked
                          : code == ENOSPC    ? StoreError::Kind::full
                                              : StoreError::Kind::unwritable;
        return std::unexpected(StoreError{kind, holdFile(folder), qt_error_string(code)});
    }
    return file;
}

bool AgentRunFiles::isHeld(const QUuid& id) const {
    const UniqueFd file(::open(QFile::encodeName(holdFile(runFolder(id))), O_RDWR | O_CLOEXEC));
    return file.isValid() && ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

StoreResult AgentRunFiles::write(const AgentRunRecord& record) const {
    const QString path = recordFile(runFolder(record.id));
    StoreResult written = StoreIO::withLock(
        path, [&] { return StoreIO::write(path, QJsonDocument(record.toJson()).toJson(QJsonDocument::Compact)); });
    touchMarker();
    return written;
}

std::optional<AgentRunRecord> AgentRunFiles::change(
    const QUuid& id, const std::function<void(AgentRunRecord&)>& change) const {
    const QString folder = runFolder(id);
    std::optional<AgentRunRecord> record;
    if (!QFileInfo::exists(recordFile(folder))) {
        return record;
    }
    const StoreResult done = StoreIO::withLock(recordFile(folder), [&]() -> StoreResult {
        record = readOne(folder);
        if (!record) {
            return {};
        }
        change(*record);
        return StoreIO::write(recordFile(folder), QJsonDocument(record->toJson()).toJson(QJsonDocument::Compact));
    });
    touchMarker();
    return done ? record : std::nullopt;
}

std::optional<AgentRunRecord> AgentRunFiles::readOne(const QString& runFolder) const {
    const StoredBytes stored = StoreIO::read(recordFile(runFolder));
    const auto document = json::parse(stored.bytes);
    if (!document) {
        return {};
    }
    auto record = AgentRunRecord::fromJson(document->object());
    // One that was copied here under another name would be taken for the other.
    return record && this->runFolder(record->id) == runFolder ? std::optional(*std::move(record)) : std::nullopt;
}

QList<AgentRunFiles::Stored> AgentRunFiles::read() const {
    QList<Stored> found;
    for (const QString& name : QDir(m_folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString folder = m_folder + u'/' + name;
        // Before the record: a run that ends in between is then one that goes on and is looked at once more.
        const QUuid id = QUuid::fromString(name);
        const bool held = !id.isNull() && isHeld(id);
        if (auto record = readOne(folder)) {
            found.append({*std::move(record), held, QFileInfo::exists(stopFile(folder))});
        }
    }
    std::ranges::stable_sort(
        found, std::ranges::greater(), [](const Stored& stored) { return stored.record.startedAt; });
    return found;
}

StoreResult AgentRunFiles::askToStop(const QUuid& id) const {
    StoreResult written = StoreIO::write(stopFile(runFolder(id)), {});
    touchMarker();
    return written;
}

void AgentRunFiles::prune(const Limits& limits) const {
    QList<Stored> runs = read();
    qint64 bytes = 0;
    QHash<QUuid, qint64> sizes;
    for (const Stored& run : std::as_const(runs)) {
        bytes += *sizes.insert(run.record.id, bytesIn(runFolder(run.record.id)));
    }
    qsizetype count = runs.size();
    bool isChanged = false;
    for (auto run = runs.crbegin(); run != runs.crend() && (count > limits.runs || bytes > limits.bytes); ++run) {
        const AgentRunRecord& record = run->record;
        const bool isOpen = record.worktree && record.worktree->state == AgentWorktreeState::open;
        if (run->isHeld || isOpen || !QDir(runFolder(record.id)).removeRecursively()) {
            continue;
        }
        --count;
        bytes -= sizes.value(record.id);
        isChanged = true;
    }
    if (isChanged) {
        touchMarker();
    }
}

void AgentRunFiles::touchMarker() const {
    QFile file(marker());
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QUuid::createUuid().toByteArray());
    }
}

} // namespace orv
