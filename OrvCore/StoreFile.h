#pragma once

#include <QByteArray>
#include <QString>

#include <expected>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace orv {

/// Why a store could not be written.
struct StoreError {
    enum class Kind {
        locked,     ///< another process held the lock file all the time
        unwritable, ///< no rights, a file in the folder's place, a read-only disk, ...
        full,       ///< no space or no quota left
        overtaken,  ///< an earlier change that could not be written is given up: someone else changed the same since
    };
    Kind kind = Kind::unwritable;
    QString path;
    QString reason; ///< the system's words

    bool operator==(const StoreError&) const = default;
    [[nodiscard]] QString text() const;
};
using StoreResult = std::expected<void, StoreError>;

/// What stands on disk.
struct StoredBytes {
    enum class State {
        absent,
        present,
        unreadable, ///< will not become readable by itself: a folder, no rights, too large, ...
        failed,     ///< the system could not read now (no descriptors, no memory); says nothing about the file
    };
    State state = State::absent;
    QByteArray bytes;
    QString reason; ///< the system's words, when it is unreadable or failed
};

/// The parts of a store file that do not depend on the record. Blocking; any thread.
///
/// A symbolic link is followed: what is written, locked and set aside is the file that it leads to.
namespace StoreIO {
/// A larger file is no store of ours and counts as unreadable; none is written.
inline constexpr qint64 limitBytes = qint64{32} * 1024 * 1024;

[[nodiscard]] StoredBytes read(const QString& path);
/// Makes the folder and holds the lock file ("<name>.lock" beside `path`, flock(2): the kernel lets go of it when its
/// holder dies) while `action` runs. Tries for two seconds, then answers `locked`.
[[nodiscard]] StoreResult withLock(const QString& path, const std::function<StoreResult()>& action);
/// Writes "<name>.new" beside, syncs, renames over, so that what stood there stays whole until the new content is. Call
/// it under the lock. What a killed writer left of "<name>.new" is gone afterwards.
[[nodiscard]] StoreResult write(const QString& path, const QByteArray& bytes);
/// Gives what stands at `path` the name "<name>.corrupt" as well (".corrupt.2", ... when something else has that),
/// without a copy. The path itself stays taken until it is written over, where the file system allows for that.
[[nodiscard]] StoreResult setAside(const QString& path);
/// Where a chain of symbolic links leads to, there or not; `path` itself when it leads round in a circle.
[[nodiscard]] QString target(const QString& path);
/// The folder with every folder on the way to it, for the user alone where they are new.
[[nodiscard]] StoreResult makeFolder(const QString& folder);
} // namespace StoreIO

/// One small JSON file that several processes change.
///
/// A change is a function from record to record. It is applied, under the lock file, to what is on disk at that moment,
/// so that nothing which another process finished writing is lost. A change that could not be written stays in memory
/// and is applied again with the next one or by `flush`, so it may run several times and depends on nothing but the
/// record. It is given up when another process has changed the same part of the record since.
///
/// A missing file is the default record. An unreadable one stands for the last record that this process saw there, or
/// for the default one, and is set aside before it is written over.
///
/// Safe on any thread. Who reads never waits for the disk or for the lock file; who changes does, up to two seconds.
template <typename Record>
class StoreFile {
public:
    using Change = std::function<void(Record&)>;
    struct Codec {
        std::function<QByteArray(const Record&)> encode;
        std::function<std::expected<Record, QString>(const QByteArray&)> decode;
        std::function<Record()> fallback;
        /// Whether two records made from `base` differ from it in the same part. Absent: changes never collide.
        std::function<bool(const Record& base, const Record& mine, const Record& theirs)> collide = {};
    };

    StoreFile(QString path, Codec codec) : m_path(std::move(path)), m_codec(std::move(codec)) {
        m_base = look().record;
        m_record = m_base;
    }

    [[nodiscard]] Record record() const {
        const std::scoped_lock lock(m_mutex);
        return m_record;
    }
    [[nodiscard]] const QString& path() const { return m_path; }
    /// Another number whenever the record is another one, by whatever way it became so.
    [[nodiscard]] quint64 generation() const {
        const std::scoped_lock lock(m_mutex);
        return m_generation;
    }

    /// Calls `reader` with the record under the lock: for a look at a part of it without a copy of the whole.
    template <typename Reader>
    auto read(Reader&& reader) const {
        const std::scoped_lock lock(m_mutex);
        return reader(std::as_const(m_record));
    }

    /// A change that changes nothing writes nothing.
    StoreResult change(Change change) {
        const std::scoped_lock disk(m_disk);
        m_unwritten.push_back({std::move(change), {}});
        show(replayed(m_base).record);
        return writeAll(false);
    }

    /// Writes what could not be written before; makes the file where it is missing.
    StoreResult save() {
        const std::scoped_lock disk(m_disk);
        return writeAll(true);
    }

    /// Writes what could not be written before, if anything: the last chance before the process ends.
    StoreResult flush() {
        const std::scoped_lock disk(m_disk);
        return m_unwritten.empty() ? StoreResult() : writeAll(false);
    }

    /// Takes in what is on disk now; true when the record is another one afterwards.
    bool reload() {
        const std::scoped_lock disk(m_disk);
        m_base = look().record;
        return show(replayed(m_base).record);
    }

private:
    struct Look {
        Record record;
        StoredBytes::State state;
        QString reason;
    };
    struct Unwritten {
        Change change;
        std::optional<Record> base; ///< what stood on disk when it could not be written; absent before it was tried
    };
    struct Replayed {
        Record record;
        bool isComplete = true;
    };

    StoreResult writeAll(bool makeFile) {
        bool isComplete = true;
        const StoreResult result = StoreIO::withLock(m_path, [&]() -> StoreResult {
            const Look found = look();
            if (found.state == StoredBytes::State::failed) {
                return std::unexpected(StoreError{StoreError::Kind::unwritable, m_path, found.reason});
            }
            m_base = found.record;
            Replayed next = replayed(found.record);
            isComplete = next.isComplete;
            if (next.record != found.record || (makeFile && found.state != StoredBytes::State::present)) {
                if (StoreResult written = writeOver(found.state, next.record); !written) {
                    return written;
                }
            }
            m_base = std::move(next.record);
            return {};
        });
        if (!result) {
            for (Unwritten& unwritten : m_unwritten) {
                unwritten.base = unwritten.base ? unwritten.base : m_base;
            }
            show(replayed(m_base).record);
            return result;
        }
        m_unwritten.clear();
        show(m_base);
        return isComplete ? result : std::unexpected(StoreError{StoreError::Kind::overtaken, m_path, {}});
    }

    StoreResult writeOver(StoredBytes::State found, const Record& record) {
        if (found == StoredBytes::State::unreadable) {
            if (StoreResult moved = StoreIO::setAside(m_path); !moved) {
                return moved;
            }
        }
        StoreResult written = StoreIO::write(m_path, m_codec.encode(record));
        if (written) {
            m_seen = record;
        }
        return written;
    }

    Look look() {
        StoredBytes stored = StoreIO::read(m_path);
        if (stored.state == StoredBytes::State::present) {
            if (auto decoded = m_codec.decode(stored.bytes)) {
                m_seen = *decoded;
                return {*std::move(decoded), stored.state, {}};
            }
            stored.state = StoredBytes::State::unreadable;
        }
        if (stored.state == StoredBytes::State::absent) {
            m_seen.reset();
        }
        return {m_seen ? *m_seen : m_codec.fallback(), stored.state, stored.reason};
    }

    /// What is not written yet, applied to what is.
    Replayed replayed(const Record& written) const {
        Replayed result{written};
        for (const Unwritten& unwritten : m_unwritten) {
            if (isOvertaken(unwritten, written)) {
                result.isComplete = false;
            } else {
                unwritten.change(result.record);
            }
        }
        return result;
    }

    bool isOvertaken(const Unwritten& unwritten, const Record& written) const {
        if (!m_codec.collide || !unwritten.base) {
            return false;
        }
        Record mine = *unwritten.base;
        unwritten.change(mine);
        return m_codec.collide(*unwritten.base, mine, written);
    }

    bool show(Record record) {
        const std::scoped_lock lock(m_mutex);
        if (record == m_record) {
            return false;
        }
        m_record = std::move(record);
        ++m_generation;
        return true;
    }

    const QString m_path;
    const Codec m_codec;

    std::mutex m_disk;            ///< taken before the other one, and held as long as a change or a look takes
    Record m_base;                ///< what is on disk, as far as it is known
    std::optional<Record> m_seen; ///< the last record that this process read or wrote there
    std::vector<Unwritten> m_unwritten;

    mutable std::mutex m_mutex;
    Record m_record; ///< what is on disk with what is not written yet
    quint64 m_generation = 0;
};

} // namespace orv
