#pragma once

#include <QByteArray>
#include <QString>
#include <expected>
#include <functional>
#include <mutex>
#include <vector>

namespace orv {

/// Why a store could not be written.
struct StoreError {
    enum class Kind { locked, unwritable, full };
    Kind kind = Kind::unwritable;
    QString path;
    QString reason; ///< the system's words

    bool operator==(const StoreError&) const = default;
    [[nodiscard]] QString text() const;
};
using StoreResult = std::expected<void, StoreError>;

/// What stands on disk: nothing, a content, or something that can't be read as one.
struct StoredBytes {
    enum class State { absent, present, unreadable };
    State state = State::absent;
    QByteArray bytes;
};

/// The parts of a store file that do not depend on the record.
namespace StoreIO {
/// A larger file is no store of ours and counts as unreadable.
inline constexpr qint64 limitBytes = 32 * 1024 * 1024;

[[nodiscard]] StoredBytes read(const QString& path);
/// Holds the lock file beside `path` (flock: the kernel lets go of it when its holder dies) while `action` runs.
[[nodiscard]] StoreResult withLock(const QString& path, const std::function<StoreResult()>& action);
/// Makes the folder, writes beside, syncs, renames over. What stood there stays whole until the new content is.
[[nodiscard]] StoreResult write(const QString& path, const QByteArray& bytes);
/// Moves what stands at `path` to "<name>.corrupt" (".corrupt.2", ... when that is taken).
[[nodiscard]] StoreResult setAside(const QString& path);
} // namespace StoreIO

/// One small JSON file that several processes change.
///
/// A change is a function from record to record. It is applied, under the lock file, to what is on disk at that moment,
/// so that nothing which another process finished writing is lost. A change that could not be written stays in memory and
/// is applied again with the next one. A missing file is the default record; so is an unreadable one, which is set aside
/// before it is written over. Safe on any thread.
template <typename Record>
class StoreFile {
public:
    using Change = std::function<void(Record&)>;
    struct Codec {
        std::function<QByteArray(const Record&)> encode;
        std::function<std::expected<Record, QString>(const QByteArray&)> decode;
        std::function<Record()> fallback;
    };

    StoreFile(QString path, Codec codec) : m_path(std::move(path)), m_codec(std::move(codec)) { m_record = load().record; }

    [[nodiscard]] Record record() const {
        const std::scoped_lock lock(m_mutex);
        return m_record;
    }
    [[nodiscard]] const QString& path() const { return m_path; }

    /// Calls `reader` with the record under the lock: for a look at a part of it without a copy of the whole.
    template <typename Reader>
    auto read(Reader&& reader) const {
        const std::scoped_lock lock(m_mutex);
        return reader(std::as_const(m_record));
    }

    StoreResult change(Change change) {
        const std::scoped_lock lock(m_mutex);
        change(m_record);
        m_unwritten.push_back(std::move(change));
        StoreResult result = StoreIO::withLock(m_path, [this]() -> StoreResult {
            Loaded loaded = load();
            for (const Change& pending : m_unwritten) {
                pending(loaded.record);
            }
            if (loaded.unreadable) {
                if (StoreResult moved = StoreIO::setAside(m_path); !moved) {
                    return moved;
                }
            }
            if (StoreResult written = StoreIO::write(m_path, m_codec.encode(loaded.record)); !written) {
                return written;
            }
            m_record = std::move(loaded.record);
            return {};
        });
        if (result) {
            m_unwritten.clear();
        }
        return result;
    }

    /// Takes in what is on disk now; true when the record is another one afterwards.
    bool reload() {
        const std::scoped_lock lock(m_mutex);
        Record fresh = load().record;
        for (const Change& pending : m_unwritten) {
            pending(fresh);
        }
        if (fresh == m_record) {
            return false;
        }
        m_record = std::move(fresh);
        return true;
    }

private:
    struct Loaded {
        Record record;
        bool unreadable = false;
    };

    Loaded load() const {
        const StoredBytes stored = StoreIO::read(m_path);
        if (stored.state == StoredBytes::State::present) {
            if (auto decoded = m_codec.decode(stored.bytes)) {
                return {std::move(*decoded), false};
            }
        }
        return {m_codec.fallback(), stored.state != StoredBytes::State::absent};
    }

    const QString m_path;
    const Codec m_codec;
    mutable std::mutex m_mutex;
    Record m_record;
    std::vector<Change> m_unwritten;
};

} // namespace orv
