#include "OrvCore/Account.h"

#include <QFile>

#include <cerrno>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace orv {

Account Account::current() {
    constexpr size_t limit = size_t{1} << 20;
    passwd record{};
    passwd* found = nullptr;
    std::vector<char> buffer(4096);
    while (::getpwuid_r(::getuid(), &record, buffer.data(), buffer.size(), &found) == ERANGE && buffer.size() < limit) {
        buffer.resize(buffer.size() * 2);
    }
    if (found == nullptr) {
        return {};
    }
    return {
        QString::fromLocal8Bit(found->pw_gecos).section(u',', 0, 0),
        QFile::decodeName(found->pw_dir),
        QFile::decodeName(found->pw_shell),
    };
}

} // namespace orv
