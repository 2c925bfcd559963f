#pragma once

#include "OrvCore/UniqueFd.h"

#include <QByteArray>
#include <QString>

#include <bitset>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

/// One folder whose entries are listed once; what is asked about it afterwards is answered from that listing wherever
/// the listing can tell. Names and relative paths are the file system's bytes.
///
/// Belongs to one thread at a time. Opening another folder reuses the buffers, so a walk needs one reader a thread.
class FolderReader {
public:
    static constexpr qint64 textLimitBytes = 4 * 1024 * 1024;

    enum class Type : std::uint8_t { unknown, file, folder, link, other };

    /// An entry other than "." and "..".
    struct Entry {
        std::uint32_t offset = 0; ///< of its name
        std::uint32_t length = 0;
        Type type = Type::unknown; ///< a link's own type, not its target's
    };

    /// False when the folder can't be listed; the reader is then empty, and `error` says why.
    bool open(const QString& path);
    /// The same for a path below an open folder; a symbolic link at its end is not followed.
    bool openAt(int parent, const char* name);
    /// Stops listing early, with an empty result, as soon as it says true; asked once every few hundred entries.
    void setInterrupt(std::function<bool()> interrupted) { m_interrupted = std::move(interrupted); }

    [[nodiscard]] int descriptor() const { return m_fd.get(); }
    /// The errno of the last opening; 0 when it went well.
    [[nodiscard]] int error() const { return m_error; }
    /// The system had no descriptor or no memory left for the folder, or for a file in it: what the reader says about
    /// it may be wrong, and right with another try.
    [[nodiscard]] bool ranOut() const { return m_ranOut; }
    /// Whether an errno is of that kind.
    [[nodiscard]] static bool isRunningOut(int code);

    [[nodiscard]] const std::vector<Entry>& entries() const { return m_entries; }
    [[nodiscard]] std::string_view name(const Entry& entry) const {
        return {m_names.data() + entry.offset, entry.length};
    }
    /// Whether an entry is itself a folder; asks the file system where the listing left it open.
    [[nodiscard]] bool isFolder(const Entry& entry) const;
    /// Names that end in `suffix`, in ascending byte order.
    [[nodiscard]] std::vector<std::string> namesEndingIn(std::string_view suffix) const;

    /// Whether something of this relative path exists; a symbolic link counts when its target does.
    [[nodiscard]] bool exists(std::string_view relative) const;
    /// Whether it is a regular file, or a symbolic link to one.
    [[nodiscard]] bool hasFile(std::string_view relative) const;

    /// A text file as valid UTF-8 without byte-order mark: UTF-16 and UTF-32 are converted where a mark tells, bytes
    /// that are no UTF-8 are replaced. Absent for anything but a readable regular file of at most `textLimitBytes`.
    [[nodiscard]] std::optional<QByteArray> text(std::string_view name);
    /// The first bytes of a regular file, as they are.
    [[nodiscard]] std::optional<QByteArray> prefix(std::string_view name, qint64 bytes);

    /// Lets go of the folder; its listing stays.
    void close() { m_fd.reset(); }

private:
    bool take(UniqueFd folder);
    bool list();
    void clear();
    /// A regular file, open; a pipe or a device is not waited for and not touched further.
    [[nodiscard]] UniqueFd openRegular(std::string_view name, qint64* size);
    void add(std::string_view name, Type type);
    [[nodiscard]] const Entry* find(std::string_view name) const;

    UniqueFd m_fd;
    int m_error = 0;
    bool m_ranOut = false;
    std::string m_names; ///< every name with a zero behind it
    std::vector<Entry> m_entries;
    std::bitset<512> m_filter; ///< a name whose bit is unset is not there
    std::vector<char> m_buffer;
    std::function<bool()> m_interrupted;
    std::string m_textName; ///< the last file read, since two questions are asked about some
    std::optional<QByteArray> m_text;
};

/// How lists of folders are sorted for people: without regard to case, with digits as numbers ("web2" before "web10"),
/// and by code point where that leaves a tie. Independent of the locale.
[[nodiscard]] bool naturalLess(std::string_view left, std::string_view right);

} // namespace orv
