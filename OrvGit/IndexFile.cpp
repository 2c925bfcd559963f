#include "OrvGit/LocalFilters_p.h"

#include <QtEndian>

#include <cctype>

namespace orv {
namespace {

constexpr qsizetype headerBytes = 12;
constexpr qsizetype statBytes = 40;
constexpr qsizetype modeAt = 24;
constexpr qsizetype hashBytes = 20;
constexpr quint16 isExtended = 0x4000;
constexpr quint16 lengthBits = 0x0fff;

/// Goes over the entries just as git does: what it would take for another path must not pass for this one.
class IndexReader {
public:
    explicit IndexReader(const QByteArray& index) : m_index(index), m_end(index.size() - hashBytes) {}

    bool readHeader() {
        if (m_end < headerBytes || !m_index.startsWith("DIRC")) {
            return false;
        }
        m_version = number<quint32>(4);
        m_left = number<quint32>(8);
        m_at = headerBytes;
        return m_version >= 2 && m_version <= 4;
    }

    [[nodiscard]] bool hasEntry() const { return m_left > 0; }

    /// Its mode and, in `path`, which held the one of the entry before, its path.
    std::optional<quint32> readEntry(QByteArray& path) {
        const qsizetype flagsAt = m_at + statBytes + hashBytes;
        if (flagsAt + 4 > m_end) {
            return std::nullopt;
        }
        const auto flags = number<quint16>(flagsAt);
        if (m_version == 2 && (flags & isExtended) != 0) {
            return std::nullopt;
        }
        qsizetype name = flagsAt + ((flags & isExtended) != 0 ? 4 : 2);
        if (m_version < 4) {
            path.clear();
        } else if (!cut(name, path)) {
            return std::nullopt;
        }
        const qsizetype end = m_index.indexOf('\0', name);
        if (end < 0 || end >= m_end) {
            return std::nullopt;
        }
        path += m_index.sliced(name, end - name);
        if ((flags & lengthBits) != std::min<qsizetype>(path.size(), lengthBits)) {
            return std::nullopt;
        }
        const auto mode = number<quint32>(m_at + modeAt);
        m_at = m_version == 4 ? end + 1 : m_at + (end - m_at + 8) / 8 * 8;
        --m_left;
        return mode;
    }

    /// An extension with a small letter changes what the entries mean; "link" says that others are in another file.
    bool readExtensions() {
        while (m_at + 8 <= m_end) {
            if (std::islower(static_cast<unsigned char>(m_index[m_at])) != 0) {
                return false;
            }
            m_at += 8 + qsizetype{number<quint32>(m_at + 4)};
        }
        return m_at == m_end;
    }

private:
    template <typename Number>
    [[nodiscard]] Number number(qsizetype at) const {
        return qFromBigEndian<Number>(m_index.constData() + at);
    }

    /// Takes away what the path before has at its end and this one has not.
    bool cut(qsizetype& at, QByteArray& path) const {
        qsizetype bytes = 0;
        for (bool isMore = true; isMore; ++at) {
            if (at >= m_end || bytes > path.size()) {
                return false;
            }
            isMore = (m_index[at] & 0x80) != 0;
            bytes = (bytes << 7) + (m_index[at] & 0x7f) + (isMore ? 1 : 0);
        }
        if (bytes > path.size()) {
            return false;
        }
        path.chop(bytes);
        return true;
    }

    const QByteArray& m_index;
    const qsizetype m_end; ///< of what the hash behind it is of
    quint32 m_version = 0;
    quint32 m_left = 0; ///< entries
    qsizetype m_at = 0;
};

} // namespace

std::optional<QByteArrayList> embeddedRepositories(const QByteArray& index) {
    constexpr quint32 gitlink = 0160000;
    constexpr quint32 folder = 0040000; // stands for entries that are not there
    constexpr quint32 kindBits = 0170000;
    IndexReader reader(index);
    if (!reader.readHeader()) {
        return std::nullopt;
    }
    QByteArrayList found;
    QByteArray path;
    while (reader.hasEntry()) {
        const auto mode = reader.readEntry(path);
        if (!mode || (*mode & kindBits) == folder) {
            return std::nullopt;
        }
        if ((*mode & kindBits) == gitlink) {
            found.append(path);
        }
    }
    return reader.readExtensions() ? std::optional(found) : std::nullopt;
}

} // namespace orv
