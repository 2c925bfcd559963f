#include "OrvCore/FolderReader.h"

#include "OrvCore/RegularFile.h"

#include <QChar>
#include <QFile>
#include <QStringConverter>
#include <QStringDecoder>
#include <QUtf8StringView>

#include <algorithm>
#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace orv {

namespace {

constexpr size_t bufferBytes = 64 * 1024;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

int openRetrying(int parent, const char* path, int flags) {
    int fd = -1;
    do {
        fd = ::openat(parent, path, flags);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

size_t filterBit(std::string_view name) {
    const auto first = static_cast<unsigned char>(name.front());
    const auto middle = static_cast<unsigned char>(name[name.size() / 2]);
    const auto last = static_cast<unsigned char>(name.back());
    return (name.size() * 37 + first * 11U + middle * 5U + last) % 512;
}

FolderReader::Type typeOf(unsigned char listed) {
    switch (listed) {
    case DT_REG:
        return FolderReader::Type::file;
    case DT_DIR:
        return FolderReader::Type::folder;
    case DT_LNK:
        return FolderReader::Type::link;
    case DT_UNKNOWN:
        return FolderReader::Type::unknown;
    default:
        return FolderReader::Type::other;
    }
}

QByteArray asUtf8(QByteArray bytes) {
    const auto marked = QStringConverter::encodingForData(bytes);
    if (marked && *marked != QStringConverter::Utf8) {
        const QString text = QStringDecoder(*marked)(bytes);
        return text.toUtf8();
    }
    if (marked) {
        bytes.remove(0, 3);
    }
    return QUtf8StringView(bytes).isValidUtf8() ? bytes : QString::fromUtf8(bytes).toUtf8();
}

} // namespace

bool FolderReader::open(const QString& path) {
    return take(UniqueFd(openRetrying(AT_FDCWD, QFile::encodeName(path).constData(), folderFlags)));
}

bool FolderReader::openAt(int parent, const char* name) {
    return take(UniqueFd(openRetrying(parent, name, folderFlags | O_NOFOLLOW)));
}

bool FolderReader::take(UniqueFd folder) {
    const int code = errno;
    m_fd = std::move(folder);
    clear();
    m_error = m_fd.isValid() ? 0 : code;
    if (m_fd.isValid()) {
        errno = 0;
        if (list()) {
            m_ranOut = false;
            return true;
        }
        m_error = errno;
    }
    m_ranOut = isRunningOut(m_error);
    m_fd.reset();
    clear();
    return false;
}

void FolderReader::clear() {
    m_names.clear();
    m_entries.clear();
    m_filter.reset();
    m_textName.clear();
    m_text.reset();
}

bool FolderReader::isRunningOut(int code) {
    return code == EMFILE || code == ENFILE || code == ENOMEM;
}

UniqueFd FolderReader::openRegular(std::string_view name, qint64* size) {
    UniqueFd fd = RegularFile::open(m_fd.get(), std::string(name).c_str(), size);
    m_ranOut = m_ranOut || (!fd.isValid() && isRunningOut(errno));
    return fd;
}

#ifdef Q_OS_LINUX
bool FolderReader::list() {
    m_buffer.resize(bufferBytes);
    for (;;) {
        if (m_interrupted && m_interrupted()) {
            return false;
        }
        const ssize_t filled = ::getdents64(m_fd.get(), m_buffer.data(), m_buffer.size());
        if (filled <= 0) {
            return filled == 0;
        }
        for (const char* at = m_buffer.data(); at < m_buffer.data() + filled;) {
            const auto* entry = reinterpret_cast<const dirent64*>(at);
            add(entry->d_name, typeOf(entry->d_type));
            at += entry->d_reclen;
        }
    }
}
#else
bool FolderReader::list() {
    // The stream closes the descriptor that it is given; this one is kept for the questions that follow.
    UniqueFd copy(::fcntl(m_fd.get(), F_DUPFD_CLOEXEC, 0));
    DIR* stream = copy.isValid() ? ::fdopendir(copy.get()) : nullptr;
    if (stream == nullptr) {
        return false;
    }
    static_cast<void>(copy.release());
    bool complete = true;
    errno = 0;
    for (int count = 1; const dirent* entry = ::readdir(stream); ++count) {
        if (count % 512 == 0 && m_interrupted && m_interrupted()) {
            complete = false;
            break;
        }
        add(entry->d_name, typeOf(entry->d_type));
        errno = 0;
    }
    complete = complete && errno == 0;
    ::closedir(stream);
    return complete;
}
#endif

void FolderReader::add(std::string_view name, Type type) {
    if (name == "." || name == ".." || name.empty()) {
        return;
    }
    m_entries.push_back({static_cast<std::uint32_t>(m_names.size()), static_cast<std::uint32_t>(name.size()), type});
    m_names.append(name).push_back('\0');
    m_filter.set(filterBit(name));
}

const FolderReader::Entry* FolderReader::find(std::string_view wanted) const {
    if (wanted.empty() || !m_filter.test(filterBit(wanted))) {
        return nullptr;
    }
    const auto found = std::ranges::find_if(m_entries, [&](const Entry& entry) { return name(entry) == wanted; });
    return found == m_entries.end() ? nullptr : &*found;
}

bool FolderReader::isFolder(const Entry& entry) const {
    if (entry.type != Type::unknown) {
        return entry.type == Type::folder;
    }
    struct stat status{};
    const char* const terminated = m_names.data() + entry.offset; // every name has a zero behind it
    return ::fstatat(m_fd.get(), terminated, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

std::vector<std::string> FolderReader::namesEndingIn(std::string_view suffix) const {
    std::vector<std::string> names;
    for (const Entry& entry : m_entries) {
        if (name(entry).ends_with(suffix)) {
            names.emplace_back(name(entry));
        }
    }
    std::ranges::sort(names);
    return names;
}

bool FolderReader::exists(std::string_view relative) const {
    const Entry* entry = find(relative.substr(0, relative.find('/')));
    if (entry == nullptr) {
        return false;
    }
    const bool isListed = entry->length == relative.size();
    if (isListed && entry->type != Type::link) {
        return true;
    }
    return ::faccessat(m_fd.get(), std::string(relative).c_str(), F_OK, 0) == 0;
}

bool FolderReader::hasFile(std::string_view relative) const {
    const Entry* entry = find(relative.substr(0, relative.find('/')));
    if (entry == nullptr) {
        return false;
    }
    const bool isListed = entry->length == relative.size();
    if (isListed && entry->type != Type::link && entry->type != Type::unknown) {
        return entry->type == Type::file;
    }
    struct stat status{};
    return ::fstatat(m_fd.get(), std::string(relative).c_str(), &status, 0) == 0 && S_ISREG(status.st_mode);
}

std::optional<QByteArray> FolderReader::text(std::string_view name) {
    if (!hasFile(name)) {
        return std::nullopt;
    }
    if (m_textName == name) {
        return m_text;
    }
    m_textName = name;
    m_text.reset();
    qint64 size = 0;
    const UniqueFd fd = openRegular(name, &size);
    if (!fd.isValid() || size > textLimitBytes) {
        return std::nullopt;
    }
    if (auto bytes = RegularFile::readUpTo(fd.get(), size)) {
        m_text = asUtf8(*std::move(bytes));
    }
    return m_text;
}

std::optional<QByteArray> FolderReader::prefix(std::string_view name, qint64 bytes) {
    qint64 size = 0;
    const UniqueFd fd = openRegular(name, &size);
    return fd.isValid() ? RegularFile::readUpTo(fd.get(), std::min(size, bytes)) : std::nullopt;
}

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Steps over a run of digits and gives it without leading zeros.
std::string_view takeNumber(std::string_view& text) {
    size_t length = 0;
    while (length < text.size() && isDigit(text[length])) {
        ++length;
    }
    std::string_view number = text.substr(0, length);
    text.remove_prefix(length);
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

/// Steps over one UTF-8 character and gives it folded to one case. A byte out of place stands for itself.
char32_t takeFolded(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        text.remove_prefix(1);
        return lead >= 'A' && lead <= 'Z' ? lead + 32U : lead;
    }
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || text.size() < length) {
        text.remove_prefix(1);
        return lead;
    }
    char32_t point = lead & (0xFFU >> (length + 1));
    for (size_t i = 1; i < length; ++i) {
        point = point << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    text.remove_prefix(length);
    return QChar::toCaseFolded(point);
}

} // namespace

bool naturalLess(std::string_view left, std::string_view right) {
    std::string_view a = left;
    std::string_view b = right;
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            const std::string_view x = takeNumber(a);
            const std::string_view y = takeNumber(b);
            if (x != y) {
                return x.size() != y.size() ? x.size() < y.size() : x < y;
            }
            continue;
        }
        const char32_t x = takeFolded(a);
        const char32_t y = takeFolded(b);
        if (x != y) {
            return x < y;
        }
    }
    return a.empty() != b.empty() ? a.empty() : left < right;
}

} // namespace orv
